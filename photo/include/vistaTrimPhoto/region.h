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
bool IsHard(WishKind kind);        // no crop may miss it
bool WantsInside(WishKind kind);

// Met means met in full: the whole region lies inside the crop, or no pixel of it.
bool IsMet(const Wish& wish, const PixelRect& crop);

} // namespace vistaTrim::photo

#endif
