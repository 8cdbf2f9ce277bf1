// Colours, and how people write them.
#ifndef VISTATRIM_PHOTO_COLOUR_H
#define VISTATRIM_PHOTO_COLOUR_H

#include <array>
#include <optional>
#include <string>

namespace vistaTrim::photo {

using Colour = std::array<double, 3>; // red, green, blue, 0..255

// "#rrggbb", "#rgb" or a CSS colour name such as "tomato", in upper or lower case. nullopt for any
// other text.
std::optional<Colour> ParseColour(const std::string& text);

} // namespace vistaTrim::photo

#endif
