#include "options/text_values.h"

#include <charconv>

#include "options/colour_names.h"

namespace vistaTrim::cli {

using photo::Colour;
using photo::PixelRect;
using photo::PixelSize;

namespace {

constexpr int32_t kLargestPixel = 100000000; // the sum of two still fits 32 bits

std::vector<std::string> Split(const std::string& text, char separator)
{
    std::vector<std::string> pieces(1);
    for (const char c : text) {
        if (c == separator)
            pieces.emplace_back();
        else
            pieces.back().push_back(c);
    }
    return pieces;
}

std::optional<int32_t> ParsePixel(const std::string& text, int32_t least)
{
    int32_t value = 0;
    const char* end = text.data() + text.size();
    const std::from_chars_result parsed = std::from_chars(text.data(), end, value);
    if (parsed.ec != std::errc() || parsed.ptr != end || value < least || value > kLargestPixel)
        return std::nullopt;
    return value;
}

} // namespace

std::optional<PixelSize> ParseSize(const std::string& text)
{
    const std::vector<std::string> pieces = Split(text, 'x');
    if (pieces.size() != 2)
        return std::nullopt;
    const std::optional<int32_t> width = ParsePixel(pieces[0], 1);
    const std::optional<int32_t> height = ParsePixel(pieces[1], 1);
    if (!width || !height)
        return std::nullopt;
    return PixelSize{*width, *height};
}

std::optional<PixelRect> ParseRect(const std::string& text)
{
    const std::vector<std::string> pieces = Split(text, ',');
    if (pieces.size() != 4)
        return std::nullopt;
    const std::optional<int32_t> x = ParsePixel(pieces[0], 0);
    const std::optional<int32_t> y = ParsePixel(pieces[1], 0);
    const std::optional<int32_t> width = ParsePixel(pieces[2], 1);
    const std::optional<int32_t> height = ParsePixel(pieces[3], 1);
    if (!x || !y || !width || !height)
        return std::nullopt;
    return PixelRect{*x, *y, *width, *height};
}

std::optional<std::vector<double>> ParseNumbers(const std::string& text)
{
    std::vector<double> numbers;
    for (const std::string& piece : Split(text, ',')) {
        double value = 0;
        const char* end = piece.data() + piece.size();
        const std::from_chars_result parsed =
            std::from_chars(piece.data(), end, value, std::chars_format::fixed);
        if (parsed.ec != std::errc() || parsed.ptr != end)
            return std::nullopt;
        // from_chars accepts "nan", which is useless here.
        if (!(value - value == 0.0))
            return std::nullopt;
        numbers.push_back(value);
    }
    return numbers;
}

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

} // namespace vistaTrim::cli
