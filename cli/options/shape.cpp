#include "options/shape.h"

#include <algorithm>

namespace vistaTrim::cli {

std::string FileSafeRatio(std::string text)
{
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == ':' || c == '/'; }, 'x');
    return text;
}

std::optional<Shape> ShapeOfRatio(const std::string& text)
{
    const std::optional<photo::Ratio> ratio = photo::ParseRatio(text);
    if (!ratio)
        return std::nullopt;
    const std::string safe = FileSafeRatio(text);
    return Shape{safe, safe, *ratio, {}};
}

Shape ShapeOfSize(photo::PixelSize size)
{
    const photo::Ratio ratio = photo::Reduced(size.Width, size.Height);
    return {std::to_string(size.Width) + "x" + std::to_string(size.Height),
            FileSafeRatio(ratio.Text()), ratio, size};
}

} // namespace vistaTrim::cli
