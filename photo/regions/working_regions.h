// Wishes of the photograph as the engine takes them: regions of the working picture.
#ifndef VISTATRIM_PHOTO_REGIONS_WORKING_REGIONS_H
#define VISTATRIM_PHOTO_REGIONS_WORKING_REGIONS_H

#include <vector>

#include "vistaTrim/records.h"
#include "vistaTrimPhoto/geometry.h"
#include "vistaTrimPhoto/region.h"

namespace vistaTrim::photo {

// Every working pixel that the rectangle touches. Outward is the right way for all wishes: a
// crop that holds all of these pixels holds the rectangle itself, and a crop that keeps clear
// of them keeps clear of the rectangle. The rectangle must lie inside the photograph.
CInt32Rect ToWorkingOutward(const PixelRect& rect, PixelSize photo, PixelSize working);

// The other way: every pixel of the photograph that the working rectangle touches.
PixelRect ToPhotographOutward(const PixelRect& rect, PixelSize working, PixelSize photo);

// All wishes as far as they lie inside the photograph. Throws PhotoError for a region that must
// or should be kept and lies outside; one that is to be avoided is avoided already, and dropped.
std::vector<Wish> WishesInside(const std::vector<Wish>& wishes, PixelSize photo);

RoiKind EngineKind(WishKind kind);

// Does the crop of the working picture meet the wish, whose region there is `region`?
bool IsMetInWorkingPicture(const Wish& wish, const CInt32Rect& region, const CInt32Rect& crop);

} // namespace vistaTrim::photo

#endif
