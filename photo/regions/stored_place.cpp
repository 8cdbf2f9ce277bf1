#include "regions/stored_place.h"

#include <algorithm>
#include <cmath>

namespace vistaTrim::photo {

namespace {

bool LiesOnItsSide(int orientation)
{
    return orientation >= 5 && orientation <= 8;
}

} // namespace

PixelSize StoredSize(PixelSize displayed, int orientation)
{
    return LiesOnItsSide(orientation) ? PixelSize{displayed.Height, displayed.Width} : displayed;
}

RelativeRect ToDisplayed(const RelativeRect& stored, int orientation)
{
    const double left = stored.X;
    const double top = stored.Y;
    const double right = 1.0 - stored.X - stored.Width; // distance to the right border
    const double bottom = 1.0 - stored.Y - stored.Height;
    const double width = stored.Width;
    const double height = stored.Height;
    switch (orientation) {
    case 2: return {right, top, width, height};
    case 3: return {right, bottom, width, height};
    case 4: return {left, bottom, width, height};
    case 5: return {top, left, height, width};
    case 6: return {bottom, left, height, width};
    case 7: return {bottom, right, height, width};
    case 8: return {top, right, height, width};
    default: return stored;
    }
}

PixelRect ToPixelsOutward(const RelativeRect& rect, PixelSize picture)
{
    // Rounding errors must not add another pixel.
    constexpr double kSlack = 1e-6;
    const double left = rect.X * picture.Width + kSlack;
    const double top = rect.Y * picture.Height + kSlack;
    const double right = (rect.X + rect.Width) * picture.Width - kSlack;
    const double bottom = (rect.Y + rect.Height) * picture.Height - kSlack;
    if (!std::isfinite(left + top + right + bottom) || !(right > left) || !(bottom > top))
        return {};
    const auto clamped = [](double value, int32_t highest) {
        return static_cast<int32_t>(std::clamp(value, 0.0, static_cast<double>(highest)));
    };
    const int32_t x = clamped(std::floor(left), picture.Width);
    const int32_t y = clamped(std::floor(top), picture.Height);
    return {x, y, clamped(std::ceil(right), picture.Width) - x,
            clamped(std::ceil(bottom), picture.Height) - y};
}

} // namespace vistaTrim::photo
