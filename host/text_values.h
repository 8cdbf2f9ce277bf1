// The values of options, as texts.
#ifndef VISTATRIM_HOST_TEXT_VALUES_H
#define VISTATRIM_HOST_TEXT_VALUES_H

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "geometry.h"

namespace vistaTrim::host {

// "1920x1080"; both at least 1.
std::optional<PixelSize> ParseSize(const std::string& text);

// "X,Y,W,H"; X and Y at least 0, W and H at least 1.
std::optional<PixelRect> ParseRect(const std::string& text);

// Numbers with commas between them, in the notation of C whatever the locale.
std::optional<std::vector<double>> ParseNumbers(const std::string& text);

// "#rrggbb", or "white" or "black": red, green, blue, 0..255.
std::optional<std::array<double, 3>> ParseColour(const std::string& text);

} // namespace vistaTrim::host

#endif
