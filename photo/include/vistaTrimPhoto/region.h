// Regions of a photograph that crops should hold or avoid.
#ifndef VISTATRIM_PHOTO_REGION_H
#define VISTATRIM_PHOTO_REGION_H

#include "vistaTrimPhoto/geometry.h"

namespace vistaTrim::photo {

enum class WishKind { Keep, MustKeep, Avoid, MustAvoid };

struct Wish {
    WishKind Kind = WishKind::Keep;
    PixelRect Rect;
};

const char* NameOf(WishKind kind); // "keep", "must-keep", "avoid", "must-avoid"
bool IsHard(WishKind kind);        // every crop must meet it
bool WantsInside(WishKind kind);

// Met means met in full: all of the region lies inside the crop, or none of it does.
bool IsMet(const Wish& wish, const PixelRect& crop);

} // namespace vistaTrim::photo

#endif
