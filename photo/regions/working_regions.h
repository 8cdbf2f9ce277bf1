// Wishes of the photograph as the engine takes them: regions of the working picture.
#ifndef VISTATRIM_PHOTO_REGIONS_WORKING_REGIONS_H
#define VISTATRIM_PHOTO_REGIONS_WORKING_REGIONS_H

#include <vector>

#include "vistaTrim/records.h"
#include "vistaTrimPhoto/geometry.h"
#include "vistaTrimPhoto/region.h"

namespace vistaTrim::photo {

// Every working pixel that the rectangle touches. Rounding outward is right for every wish: a crop
// that contains all of these pixels contains the rectangle, and a crop that avoids them avoids the
// rectangle. The rectangle must lie inside the photograph.
CInt32Rect ToWorkingOutward(const PixelRect& rect, PixelSize photo, PixelSize working);

// The other way: every pixel of the photograph that the working rectangle touches.
PixelRect ToPhotographOutward(const PixelRect& rect, PixelSize working, PixelSize photo);

// All wishes, clipped to the photograph. Throws PhotoError for a region to keep that is outside; a
// region to avoid that is outside is dropped.
std::vector<Wish> WishesInside(const std::vector<Wish>& wishes, PixelSize photo);

RoiKind EngineKind(WishKind kind);

// True if the crop meets the wish. `region` is the wish's rectangle in the working picture.
bool IsMetInWorkingPicture(const Wish& wish, const CInt32Rect& region, const CInt32Rect& crop);

} // namespace vistaTrim::photo

#endif
