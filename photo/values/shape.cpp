#include "vistaTrimPhoto/shape.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace vistaTrim::photo {

std::string FileSafeRatio(std::string text)
{
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == ':' || c == '/'; }, 'x');
    return text;
}

std::string ShownRatio(std::string fileSafe)
{
    std::replace(fileSafe.begin(), fileSafe.end(), 'x', ':');
    return fileSafe;
}

std::string ShownName(const Shape& shape)
{
    const bool isRatio = !shape.Fill && shape.Name == shape.RatioText;
    return isRatio ? ShownRatio(shape.RatioText) : shape.Name;
}

std::optional<Shape> ShapeOfRatio(const std::string& text)
{
    const std::optional<Ratio> ratio = ParseRatio(text);
    if (!ratio)
        return std::nullopt;
    const std::string safe = FileSafeRatio(text);
    return Shape{safe, safe, *ratio, {}};
}

Shape ShapeOfSize(PixelSize size)
{
    const Ratio ratio = Reduced(size.Width, size.Height);
    return {std::to_string(size.Width) + "x" + std::to_string(size.Height),
            FileSafeRatio(ratio.Text()), ratio, size};
}

Request RequestFor(const Shape& shape, Request request, PixelSize photo)
{
    request.Aspects = {shape.Aspect};
    if (!shape.Fill)
        return request;
    std::vector<double>& scales = request.Scales;
    if (scales.empty())
        scales.assign(std::begin(kDefaultScales), std::end(kDefaultScales));
    const double largest = std::min<double>(photo.Width, photo.Height * shape.Aspect.Value());
    const auto tooSmall = [&](double scale) { return largest * scale < shape.Fill->Width; };
    const double top = *std::max_element(scales.begin(), scales.end());
    scales.erase(std::remove_if(scales.begin(), scales.end(), tooSmall), scales.end());
    if (scales.empty())
        scales.push_back(top);
    return request;
}

} // namespace vistaTrim::photo
