// A region that the user wants inside or outside the crops, in pixels of the photograph.
#ifndef VISTATRIM_HOST_WISH_H
#define VISTATRIM_HOST_WISH_H

#include "geometry.h"

namespace vistaTrim::host {

enum class WishKind { Keep, MustKeep, Avoid, MustAvoid };

struct Wish {
    WishKind Kind = WishKind::Keep;
    PixelRect Rect;
};

const char* NameOf(WishKind kind); // as the option is called, without the dashes
bool IsHard(WishKind kind);
bool WantsInside(WishKind kind);
RoiKind LibraryKind(WishKind kind);

// Met means met in full: all of the region inside, or no pixel of it.
bool IsMet(const Wish& wish, const PixelRect& crop);

} // namespace vistaTrim::host

#endif
