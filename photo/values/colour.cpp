#include "vistaTrimPhoto/colour.h"

#include <charconv>
#include <cstdint>

#include "values/colour_names.h"

namespace vistaTrim::photo {

std::optional<Colour> ParseColour(const std::string& text)
{
    const auto ofRgb = [](uint32_t rgb) {
        return Colour{static_cast<double>(rgb >> 16), static_cast<double>(rgb >> 8 & 0xFF),
                      static_cast<double>(rgb & 0xFF)};
    };
    if (const std::optional<uint32_t> named = ColourOfName(text))
        return ofRgb(*named);
    if ((text.size() != 4 && text.size() != 7) || text[0] != '#')
        return std::nullopt;
    std::string digits;
    for (size_t i = 1; i < text.size(); ++i)
        digits.append(text.size() == 4 ? 2 : 1, text[i]); // #fa0 is short for #ffaa00
    uint32_t rgb = 0;
    const char* end = digits.data() + digits.size();
    const std::from_chars_result parsed = std::from_chars(digits.data(), end, rgb, 16);
    if (parsed.ec != std::errc() || parsed.ptr != end)
        return std::nullopt;
    return ofRgb(rgb);
}

} // namespace vistaTrim::photo
