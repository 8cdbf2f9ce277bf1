// Sizes and rectangles as people write them.
#include <charconv>
#include <string>
#include <vector>

#include "vistaTrimPhoto/geometry.h"

namespace vistaTrim::photo {

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

} // namespace vistaTrim::photo
