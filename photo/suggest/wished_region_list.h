// All wishes of a request as the ranking takes them.
#ifndef VISTATRIM_PHOTO_SUGGEST_WISHED_REGION_LIST_H
#define VISTATRIM_PHOTO_SUGGEST_WISHED_REGION_LIST_H

#include <vector>

#include "ranking/wished_regions.h"
#include "regions/region_wishes.h"
#include "vistaTrimPhoto/found_region.h"
#include "vistaTrimPhoto/geometry.h"
#include "vistaTrimPhoto/region.h"

namespace vistaTrim::photo {

// One region of the working picture for each wish: first those of the request, then those of found
// regions. The core of a face to keep follows its head as a region of its own.
//
// Hard wishes cost nothing: no crop that misses one is served. Found regions may be wrong, so they
// never precede what the user named, and faces that the finder is unsure of cost less.
//
// named    the request's own, inside the photograph
// found    what the regions ask for; its indices are those of `regions`
// photo    the photograph as displayed
// working  the working picture
std::vector<WishedRegion> ListWishedRegions(const std::vector<Wish>& named,
                                            const std::vector<RegionWish>& found,
                                            const std::vector<FoundRegion>& regions,
                                            PixelSize photo, PixelSize working);

} // namespace vistaTrim::photo

#endif
