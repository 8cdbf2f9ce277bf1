// Parses the values of options.
#ifndef VISTATRIM_CLI_OPTIONS_TEXT_VALUES_H
#define VISTATRIM_CLI_OPTIONS_TEXT_VALUES_H

#include <optional>
#include <string>
#include <vector>

#include "vistaTrimPhoto/geometry.h"
#include "vistaTrimPhoto/photograph.h"

namespace vistaTrim::cli {

// "1920x1080"; both at least 1.
std::optional<photo::PixelSize> ParseSize(const std::string& text);

// "X,Y,W,H"; X and Y at least 0, W and H at least 1.
std::optional<photo::PixelRect> ParseRect(const std::string& text);

// Comma-separated numbers in C notation, whatever the locale.
std::optional<std::vector<double>> ParseNumbers(const std::string& text);

// "#rrggbb", "#rgb" or a name of style sheets, as "tomato": red, green, blue, 0..255.
std::optional<photo::Colour> ParseColour(const std::string& text);

} // namespace vistaTrim::cli

#endif
