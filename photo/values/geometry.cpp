#include "vistaTrimPhoto/geometry.h"

#include <algorithm>
#include <cmath>

namespace vistaTrim::photo {

bool operator==(const PixelSize& a, const PixelSize& b)
{
    return a.Width == b.Width && a.Height == b.Height;
}

bool operator==(const PixelRect& a, const PixelRect& b)
{
    return a.X == b.X && a.Y == b.Y && a.Width == b.Width && a.Height == b.Height;
}

// 64 bits, because a region may lie anywhere.
bool Contains(const PixelRect& outer, const PixelRect& inner)
{
    return outer.X <= inner.X && outer.Y <= inner.Y &&
           int64_t{outer.X} + outer.Width >= int64_t{inner.X} + inner.Width &&
           int64_t{outer.Y} + outer.Height >= int64_t{inner.Y} + inner.Height;
}

bool Overlaps(const PixelRect& a, const PixelRect& b)
{
    return a.X < int64_t{b.X} + b.Width && b.X < int64_t{a.X} + a.Width &&
           a.Y < int64_t{b.Y} + b.Height && b.Y < int64_t{a.Y} + a.Height;
}

PixelRect ClippedTo(const PixelRect& rect, PixelSize photo)
{
    const auto clamped = [](int64_t value, int32_t highest) {
        return static_cast<int32_t>(std::clamp<int64_t>(value, 0, highest));
    };
    const int32_t left = clamped(rect.X, photo.Width);
    const int32_t top = clamped(rect.Y, photo.Height);
    const int32_t right = clamped(int64_t{rect.X} + rect.Width, photo.Width);
    const int32_t bottom = clamped(int64_t{rect.Y} + rect.Height, photo.Height);
    return {left, top, right - left, bottom - top};
}

PixelSize FittedSize(PixelSize crop, PixelSize box)
{
    const double scale = std::min(static_cast<double>(box.Width) / crop.Width,
                                  static_cast<double>(box.Height) / crop.Height);
    const auto scaled = [scale](int32_t side) {
        return static_cast<int32_t>(std::max(1L, std::lround(side * scale)));
    };
    return {std::min(scaled(crop.Width), box.Width), std::min(scaled(crop.Height), box.Height)};
}

PixelSize ScaledToLongSide(PixelSize photo, int32_t longSide)
{
    const int64_t own = std::max(photo.Width, photo.Height);
    const auto scaled = [own, longSide](int64_t side) {
        return static_cast<int32_t>(std::max<int64_t>(1, (2 * side * longSide + own) / (2 * own)));
    };
    return {scaled(photo.Width), scaled(photo.Height)};
}

PixelSize WorkingSize(PixelSize photo)
{
    return ScaledToLongSide(photo, kWorkingLongSide);
}

} // namespace vistaTrim::photo
