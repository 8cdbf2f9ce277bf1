// Whether two finders found the same thing.
#ifndef VISTATRIM_PHOTO_REGIONS_SAME_REGION_H
#define VISTATRIM_PHOTO_REGIONS_SAME_REGION_H

#include <vector>

#include "vistaTrimPhoto/found_region.h"

namespace vistaTrim::photo {

// True for two regions of one kind whose intersection is more than half of their union.
bool AreTheSame(const FoundRegion& a, const FoundRegion& b);

// Adds the region unless the list holds the same one, which then stays.
void AddUnlessKnown(const FoundRegion& region, std::vector<FoundRegion>& regions);

// True if another region covers half of it, or it covers half of another: the same thing was found
// twice or in part.
bool IsCovered(const FoundRegion& region, const std::vector<FoundRegion>& others);

} // namespace vistaTrim::photo

#endif
