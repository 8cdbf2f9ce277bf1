// Files that options name.
#ifndef VISTATRIM_CLI_OPTIONS_OPTION_FILES_H
#define VISTATRIM_CLI_OPTIONS_OPTION_FILES_H

#include <string>

namespace vistaTrim::cli {

// Both throw an OptionFileError that names the option and the file.

// Checks that the file can be read. Does not open it: it may be a pipe.
void CheckOptionFile(const std::string& option, const std::string& file);

std::string ReadOptionFile(const std::string& option, const std::string& file);

} // namespace vistaTrim::cli

#endif
