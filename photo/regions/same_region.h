// Whether two finders found the same thing.
#ifndef VISTATRIM_PHOTO_REGIONS_SAME_REGION_H
#define VISTATRIM_PHOTO_REGIONS_SAME_REGION_H

#include <vector>

#include "vistaTrimPhoto/found_region.h"

namespace vistaTrim::photo {

// Regions of one kind of which more than half of what they cover together is common.
bool AreTheSame(const FoundRegion& a, const FoundRegion& b);

// The one that was there first stays.
void AddUnlessKnown(const FoundRegion& region, std::vector<FoundRegion>& regions);

// One of the others covers half of it, or it covers half of one of them: they are one thing, found
// twice or in part.
bool IsCovered(const FoundRegion& region, const std::vector<FoundRegion>& others);

} // namespace vistaTrim::photo

#endif
