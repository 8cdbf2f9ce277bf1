// The options of a run that its results depend on, as text.
#ifndef VISTATRIM_CLI_OPTIONS_RESULT_OPTIONS_H
#define VISTATRIM_CLI_OPTIONS_RESULT_OPTIONS_H

#include <map>
#include <string>

#include <CLI/CLI.hpp>

#include "options/options.h"

namespace vistaTrim::cli {

// By name; options that were not given are missing. Call after parsing. A file is represented by
// its content, since people move files.
std::map<std::string, std::string> ResultOptionsOf(const CLI::App& command, const Options& values);

// "content 0123456789abcdef"
std::string ContentMark(const std::string& content);

} // namespace vistaTrim::cli

#endif
