#include "ranking/wished_regions.h"

#include <algorithm>
#include <cstdint>

namespace vistaTrim::photo {

namespace {

// The share of the region that misses its wish: the part outside the crop if it is to be held, the
// part inside if it is to be avoided. Exactly 0 for a region that is met.
double MissedShare(const CInt32CropRect& crop, const WishedRegion& region)
{
    const CInt32Rect& rect = region.Rect;
    const auto shared = [](int32_t low, int32_t high, int32_t otherLow, int32_t otherHigh) {
        return static_cast<double>(
            std::max<int64_t>(0, int64_t{std::min(high, otherHigh)} - std::max(low, otherLow) + 1));
    };
    const double inside = shared(crop.Left, crop.Right, rect.Left, rect.Right) *
                          shared(crop.Top, crop.Bottom, rect.Top, rect.Bottom);
    const double area = shared(rect.Left, rect.Right, rect.Left, rect.Right) *
                        shared(rect.Top, rect.Bottom, rect.Top, rect.Bottom);
    return (region.Inside ? area - inside : inside) / area;
}

} // namespace

bool MeetsHardRegions(const CInt32CropRect& crop, const std::vector<WishedRegion>& regions)
{
    return std::all_of(regions.begin(), regions.end(), [&crop](const WishedRegion& region) {
        return !region.Hard || MissedShare(crop, region) == 0;
    });
}

size_t RegionsMet(const CInt32CropRect& crop, const std::vector<WishedRegion>& regions)
{
    return static_cast<size_t>(
        std::count_if(regions.begin(), regions.end(), [&crop](const WishedRegion& region) {
            return region.First && MissedShare(crop, region) == 0;
        }));
}

double CostOfMissing(const CInt32CropRect& crop, const std::vector<WishedRegion>& regions)
{
    double cost = 0;
    for (const WishedRegion& region : regions) {
        const double missed = MissedShare(crop, region);
        cost += region.Cost * missed + (missed > 0 ? region.CutCost : 0);
    }
    return cost;
}

} // namespace vistaTrim::photo
