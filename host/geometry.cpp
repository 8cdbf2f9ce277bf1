#include "geometry.h"

#include <algorithm>

namespace vistaTrim::host {

namespace {

int32_t FloorScaled(int64_t value, int64_t to, int64_t from)
{
    return static_cast<int32_t>(value * to / from);
}

int32_t CeilScaled(int64_t value, int64_t to, int64_t from)
{
    return static_cast<int32_t>((value * to + from - 1) / from);
}

} // namespace

bool operator==(const PixelSize& a, const PixelSize& b)
{
    return a.Width == b.Width && a.Height == b.Height;
}

bool operator==(const PixelRect& a, const PixelRect& b)
{
    return a.X == b.X && a.Y == b.Y && a.Width == b.Width && a.Height == b.Height;
}

bool Contains(const PixelRect& outer, const PixelRect& inner)
{
    return outer.X <= inner.X && outer.Y <= inner.Y &&
           outer.X + outer.Width >= inner.X + inner.Width &&
           outer.Y + outer.Height >= inner.Y + inner.Height;
}

bool Overlaps(const PixelRect& a, const PixelRect& b)
{
    return a.X < b.X + b.Width && b.X < a.X + a.Width && a.Y < b.Y + b.Height &&
           b.Y < a.Y + a.Height;
}

PixelRect ClippedTo(const PixelRect& rect, PixelSize photo)
{
    const int32_t left = std::clamp(rect.X, 0, photo.Width);
    const int32_t top = std::clamp(rect.Y, 0, photo.Height);
    const int32_t right = std::clamp(rect.X + rect.Width, 0, photo.Width);
    const int32_t bottom = std::clamp(rect.Y + rect.Height, 0, photo.Height);
    return {left, top, right - left, bottom - top};
}

PixelSize WorkingSize(PixelSize photo)
{
    const int64_t longSide = std::max(photo.Width, photo.Height);
    const auto scaled = [longSide](int64_t side) {
        const int64_t rounded = (2 * side * kWorkingLongSide + longSide) / (2 * longSide);
        return static_cast<int32_t>(std::max<int64_t>(1, rounded));
    };
    return {scaled(photo.Width), scaled(photo.Height)};
}

CInt32Rect ToWorkingOutward(const PixelRect& rect, PixelSize photo, PixelSize working)
{
    return {FloorScaled(rect.X, working.Width, photo.Width),
            CeilScaled(int64_t{rect.X} + rect.Width, working.Width, photo.Width) - 1,
            FloorScaled(rect.Y, working.Height, photo.Height),
            CeilScaled(int64_t{rect.Y} + rect.Height, working.Height, photo.Height) - 1};
}

} // namespace vistaTrim::host
