// Files that options name.
#ifndef VISTATRIM_CLI_OPTIONS_OPTION_FILES_H
#define VISTATRIM_CLI_OPTIONS_OPTION_FILES_H

#include <stdexcept>
#include <string>

namespace vistaTrim::cli {

// Such a file is at fault, not the command line.
class FileFault : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Empty if the file can be read. Does not open it: it may be a pipe.
std::string FaultOfFile(const std::string& option, const std::string& file);

} // namespace vistaTrim::cli

#endif
