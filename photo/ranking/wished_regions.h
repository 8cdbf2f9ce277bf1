// Regions of the working picture that crops must or should hold or avoid, from any source.
#ifndef VISTATRIM_PHOTO_RANKING_WISHED_REGIONS_H
#define VISTATRIM_PHOTO_RANKING_WISHED_REGIONS_H

#include <cstddef>
#include <vector>

#include "vistaTrim/records.h"

namespace vistaTrim::photo {

struct WishedRegion {
    CInt32Rect Rect;    // at least one pixel
    bool Inside = true; // hold it; false: avoid it
    bool Hard = false;  // every crop must meet it
    // Crops that meet more of these come before all that meet fewer.
    bool First = false;
    // What a crop loses in utility if it misses all of the region, in proportion to the missed
    // part of its area. 2.3 makes a crop ten times less probable, 0 costs nothing.
    double Cost = 0;
    // What it loses in addition if it misses any part.
    double CutCost = 0;
    // Candidates are also moved so that they hold all of these, where their size allows it.
    bool Moves = false;
};

// The cost of the wishes that the user names: it decides among crops that hold only a part.
constexpr double kNamedWishCost = 12;
// The cost of regions named by the face finder, metadata or a file, of the room that a head takes
// around its face, and of the face itself: high enough that hardly any crop that cuts a face ranks
// above one that does not. Cutting even a little of a face costs something: most of it is not
// enough.
constexpr double kFoundRegionCost = 16;
constexpr double kHeadCost = 4;
constexpr double kFaceCost = 8;
constexpr double kCutFaceCost = 4;

bool MeetsHardRegions(const CInt32CropRect& crop, const std::vector<WishedRegion>& regions);
// How many of the regions that go first the crop meets in full.
size_t RegionsMet(const CInt32CropRect& crop, const std::vector<WishedRegion>& regions);
double CostOfMissing(const CInt32CropRect& crop, const std::vector<WishedRegion>& regions);

} // namespace vistaTrim::photo

#endif
