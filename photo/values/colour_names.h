// The CSS colour names.
#ifndef VISTATRIM_PHOTO_VALUES_COLOUR_NAMES_H
#define VISTATRIM_PHOTO_VALUES_COLOUR_NAMES_H

#include <cstdint>
#include <optional>
#include <string>

namespace vistaTrim::photo {

// 0xRRGGBB of "tomato", whatever its case.
std::optional<uint32_t> ColourOfName(const std::string& name);

} // namespace vistaTrim::photo

#endif
