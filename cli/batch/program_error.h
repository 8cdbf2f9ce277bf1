// Why the program could not do what it was asked to.
#ifndef VISTATRIM_CLI_BATCH_PROGRAM_ERROR_H
#define VISTATRIM_CLI_BATCH_PROGRAM_ERROR_H

#include <stdexcept>

namespace vistaTrim::cli {

// The text names the file or the option, unless it is the photograph under work, whose name whoever
// reports the error adds.
class ProgramError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace vistaTrim::cli

#endif
