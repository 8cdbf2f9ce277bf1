// Why the program could not do what was requested.
#ifndef VISTATRIM_CLI_OPTIONS_PROGRAM_ERROR_H
#define VISTATRIM_CLI_OPTIONS_PROGRAM_ERROR_H

#include <stdexcept>

namespace vistaTrim::cli {

// The text names the file or the option. For the photograph being processed, whoever reports the
// error adds the name.
class ProgramError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// A file that an option names cannot be used: nothing was done, as with a wrong command line.
class OptionFileError : public ProgramError {
public:
    using ProgramError::ProgramError;
};

} // namespace vistaTrim::cli

#endif
