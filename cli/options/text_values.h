// Parses option values that are plain numbers.
#ifndef VISTATRIM_CLI_OPTIONS_TEXT_VALUES_H
#define VISTATRIM_CLI_OPTIONS_TEXT_VALUES_H

#include <optional>
#include <string>
#include <vector>

namespace vistaTrim::cli {

// Comma-separated numbers in C notation, whatever the locale.
std::optional<std::vector<double>> ParseNumbers(const std::string& text);

} // namespace vistaTrim::cli

#endif
