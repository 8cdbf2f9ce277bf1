// Regions of the working picture that crops must or had better hold or avoid, from whatever source.
#ifndef VISTATRIM_PHOTO_RANKING_WISHED_REGIONS_H
#define VISTATRIM_PHOTO_RANKING_WISHED_REGIONS_H

#include <cstddef>
#include <vector>

#include "vistaTrim/records.h"

namespace vistaTrim::photo {

struct WishedRegion {
    CInt32Rect Rect;    // at least one pixel
    bool Inside = true; // to hold; false: to avoid
    bool Hard = false;  // no crop may miss it
    // Crops that meet more of these come before all that meet fewer.
    bool First = false;
    // What a crop loses in utility if it misses all of the region, in proportion to the missed
    // part of its area. 2.3 makes a crop ten times less probable, 0 costs nothing.
    double Cost = 0;
};

// The cost of the wishes that the user names: it decides among crops that hold a part only.
constexpr double kNamedWishCost = 12;
// The cost of regions that a face finder, metadata or a file names: high enough that hardly any
// crop that cuts a face comes before one that does not.
constexpr double kFoundRegionCost = 16;

bool MeetsHardRegions(const CInt32CropRect& crop, const std::vector<WishedRegion>& regions);
// How many of the regions that go first the crop meets in full.
size_t RegionsMet(const CInt32CropRect& crop, const std::vector<WishedRegion>& regions);
double CostOfMissing(const CInt32CropRect& crop, const std::vector<WishedRegion>& regions);

} // namespace vistaTrim::photo

#endif
