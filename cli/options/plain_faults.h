// What the parser says, in the words of this program.
#ifndef VISTATRIM_CLI_OPTIONS_PLAIN_FAULTS_H
#define VISTATRIM_CLI_OPTIONS_PLAIN_FAULTS_H

#include <string>

#include <CLI/CLI.hpp>

namespace vistaTrim::cli {

// Names the option, and the value or what is missing. `app` is the one whose commands were parsed.
std::string InPlainWords(const CLI::App& app, const CLI::ParseError& fault);

} // namespace vistaTrim::cli

#endif
