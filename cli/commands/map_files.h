// Writes maps as files.
#ifndef VISTATRIM_CLI_COMMANDS_MAP_FILES_H
#define VISTATRIM_CLI_COMMANDS_MAP_FILES_H

#include <string>
#include <vector>

#include "vistaTrimPhoto/analysis.h"

namespace vistaTrim::cli {

// Writes PREFIX-NAME.png for each and returns the names. Throws PhotoError, or ProgramError if one
// of the files exists and is not to be replaced.
std::vector<std::string> WriteMapFiles(const std::vector<photo::Map>& maps,
                                       const std::string& prefix, bool replace);

} // namespace vistaTrim::cli

#endif
