#include "regions/same_region.h"

#include <algorithm>

namespace vistaTrim::photo {

namespace {

int64_t AreaOf(const PixelRect& rect)
{
    return int64_t{rect.Width} * rect.Height;
}

int64_t CommonArea(const PixelRect& a, const PixelRect& b)
{
    const int64_t width = std::min(a.X + a.Width, b.X + b.Width) - int64_t{std::max(a.X, b.X)};
    const int64_t height = std::min(a.Y + a.Height, b.Y + b.Height) - int64_t{std::max(a.Y, b.Y)};
    return std::max<int64_t>(0, width) * std::max<int64_t>(0, height);
}

} // namespace

bool AreTheSame(const FoundRegion& a, const FoundRegion& b)
{
    const int64_t common = CommonArea(a.Rect, b.Rect);
    return a.Kind == b.Kind && 2 * common > AreaOf(a.Rect) + AreaOf(b.Rect) - common;
}

void AddUnlessKnown(const FoundRegion& region, std::vector<FoundRegion>& regions)
{
    if (std::none_of(regions.begin(), regions.end(),
                     [&region](const FoundRegion& other) { return AreTheSame(region, other); }))
        regions.push_back(region);
}

bool IsCovered(const FoundRegion& region, const std::vector<FoundRegion>& others)
{
    return std::any_of(others.begin(), others.end(), [&region](const FoundRegion& other) {
        return 2 * CommonArea(region.Rect, other.Rect) >
               std::min(AreaOf(region.Rect), AreaOf(other.Rect));
    });
}

} // namespace vistaTrim::photo
