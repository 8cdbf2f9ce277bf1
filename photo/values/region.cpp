#include "vistaTrimPhoto/region.h"

namespace vistaTrim::photo {

const char* NameOf(WishKind kind)
{
    switch (kind) {
    case WishKind::Keep: return "keep";
    case WishKind::MustKeep: return "must-keep";
    case WishKind::Avoid: return "avoid";
    case WishKind::MustAvoid: break;
    }
    return "must-avoid";
}

bool IsHard(WishKind kind)
{
    return kind == WishKind::MustKeep || kind == WishKind::MustAvoid;
}

bool WantsInside(WishKind kind)
{
    return kind == WishKind::Keep || kind == WishKind::MustKeep;
}

bool IsMet(const Wish& wish, const PixelRect& crop)
{
    return WantsInside(wish.Kind) ? Contains(crop, wish.Rect) : !Overlaps(crop, wish.Rect);
}

} // namespace vistaTrim::photo
