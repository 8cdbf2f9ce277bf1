#include "suggest/wished_region_list.h"

#include "regions/working_regions.h"

namespace vistaTrim::photo {

std::vector<WishedRegion> ListWishedRegions(const std::vector<Wish>& named,
                                            const std::vector<RegionWish>& found,
                                            const std::vector<FoundRegion>& regions,
                                            PixelSize photo, PixelSize working)
{
    std::vector<WishedRegion> list;
    for (const Wish& wish : named) {
        const bool hard = IsHard(wish.Kind);
        WishedRegion region;
        region.Rect = ToWorkingOutward(wish.Rect, photo, working);
        region.Inside = WantsInside(wish.Kind);
        region.Hard = hard;
        region.First = !hard;
        region.Cost = hard ? 0 : kNamedWishCost;
        list.push_back(region);
    }
    for (const RegionWish& wish : found) {
        const FoundRegion& from = regions[wish.Region];
        // Confidences of other sources are not comparable with those of the finder.
        const double sureness = from.Source == RegionSource::FaceFinder ? from.Confidence : 1.0;
        WishedRegion region;
        region.Rect = ToWorkingOutward(wish.Wish.Rect, photo, working);
        region.Inside = WantsInside(wish.Wish.Kind);
        region.Hard = IsHard(wish.Wish.Kind);
        region.Cost = region.Hard ? 0 : sureness * (wish.Core ? kHeadCost : kFoundRegionCost);
        region.Moves = region.Inside && !region.Hard;
        list.push_back(region);
        if (!wish.Core || region.Hard)
            continue;
        region.Rect = ToWorkingOutward(*wish.Core, photo, working);
        region.Cost = sureness * kFaceCost;
        region.CutCost = sureness * kCutFaceCost;
        list.push_back(region);
    }
    return list;
}

} // namespace vistaTrim::photo
