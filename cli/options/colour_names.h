// The names of colours in style sheets.
#ifndef VISTATRIM_CLI_OPTIONS_COLOUR_NAMES_H
#define VISTATRIM_CLI_OPTIONS_COLOUR_NAMES_H

#include <cstdint>
#include <optional>
#include <string>

namespace vistaTrim::cli {

// 0xRRGGBB of "tomato", whatever its case.
std::optional<uint32_t> ColourOfName(const std::string& name);

} // namespace vistaTrim::cli

#endif
