#include "regions/working_regions.h"

#include <string>

#include "vistaTrimPhoto/photo_error.h"

namespace vistaTrim::photo {

namespace {

int32_t FloorScaled(int64_t value, int64_t to, int64_t from)
{
    return static_cast<int32_t>(value * to / from);
}

int32_t CeilScaled(int64_t value, int64_t to, int64_t from)
{
    return static_cast<int32_t>((value * to + from - 1) / from);
}

} // namespace

CInt32Rect ToWorkingOutward(const PixelRect& rect, PixelSize photo, PixelSize working)
{
    return {FloorScaled(rect.X, working.Width, photo.Width),
            CeilScaled(int64_t{rect.X} + rect.Width, working.Width, photo.Width) - 1,
            FloorScaled(rect.Y, working.Height, photo.Height),
            CeilScaled(int64_t{rect.Y} + rect.Height, working.Height, photo.Height) - 1};
}

PixelRect ToPhotographOutward(const PixelRect& rect, PixelSize working, PixelSize photo)
{
    const int32_t left = FloorScaled(rect.X, photo.Width, working.Width);
    const int32_t top = FloorScaled(rect.Y, photo.Height, working.Height);
    return {left, top, CeilScaled(int64_t{rect.X} + rect.Width, photo.Width, working.Width) - left,
            CeilScaled(int64_t{rect.Y} + rect.Height, photo.Height, working.Height) - top};
}

std::vector<Wish> WishesInside(const std::vector<Wish>& wishes, PixelSize photo)
{
    std::vector<Wish> inside;
    for (const Wish& wish : wishes) {
        const PixelRect clipped = ClippedTo(wish.Rect, photo);
        if (clipped.Width > 0 && clipped.Height > 0)
            inside.push_back({wish.Kind, clipped});
        else if (WantsInside(wish.Kind))
            throw PhotoError(PhotoError::Kind::DoesNotFit, wish,
                             "lies outside the photograph, which is " +
                                 std::to_string(photo.Width) + " x " +
                                 std::to_string(photo.Height));
    }
    return inside;
}

RoiKind EngineKind(WishKind kind)
{
    if (WantsInside(kind))
        return IsHard(kind) ? RoiHardInclude : RoiSoftInclude;
    return IsHard(kind) ? RoiHardExclude : RoiSoftExclude;
}

bool IsMetInWorkingPicture(const Wish& wish, const CInt32Rect& region, const CInt32Rect& crop)
{
    if (WantsInside(wish.Kind))
        return crop.Left <= region.Left && region.Right <= crop.Right && crop.Top <= region.Top &&
               region.Bottom <= crop.Bottom;
    return crop.Right < region.Left || region.Right < crop.Left || crop.Bottom < region.Top ||
           region.Bottom < crop.Top;
}

} // namespace vistaTrim::photo
