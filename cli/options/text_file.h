// Text files that users name.
#ifndef VISTATRIM_CLI_OPTIONS_TEXT_FILE_H
#define VISTATRIM_CLI_OPTIONS_TEXT_FILE_H

#include <string>

namespace vistaTrim::cli {

// The whole content. Throws a ProgramError that names the file and says why it cannot be read.
std::string ReadTextFile(const std::string& file);

// Why ReadTextFile would fail, or empty. Does not open the file: it may be a pipe.
std::string FaultOfFile(const std::string& file);

} // namespace vistaTrim::cli

#endif
