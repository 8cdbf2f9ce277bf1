#include "regions/region_wishes.h"

#include <cmath>

namespace vistaTrim::photo {

namespace {

// Shares of the face's height and width. Of 158 faces that lie below the top edge of a crop that a
// person chose, 98 % are at least 0.43 of their height away from it. The room beside and below them
// is larger still, so there just enough for ears and chin will do.
constexpr double kRoomAbove = 0.4;
constexpr double kRoomBelow = 0.2;
constexpr double kRoomBeside = 0.2;

constexpr double kSlack = 0.1;

// Regions that cover this much of the photograph leave nothing to choose.
constexpr double kWholePicture = 0.9;

bool FillsPhotograph(const PixelRect& rect, PixelSize photo)
{
    return static_cast<double>(rect.Width) * rect.Height >=
           kWholePicture * photo.Width * photo.Height;
}

} // namespace

PixelRect HeadOf(const PixelRect& face, PixelSize photo)
{
    const auto above = static_cast<int32_t>(std::lround(kRoomAbove * face.Height));
    const auto below = static_cast<int32_t>(std::lround(kRoomBelow * face.Height));
    const auto beside = static_cast<int32_t>(std::lround(kRoomBeside * face.Width));
    return ClippedTo(
        {face.X - beside, face.Y - above, face.Width + 2 * beside, face.Height + above + below},
        photo);
}

PixelRect CoreOf(const PixelRect& face, PixelSize photo)
{
    const auto across = static_cast<int32_t>(std::lround(kSlack * face.Width));
    const auto down = static_cast<int32_t>(std::lround(kSlack * face.Height));
    return ClippedTo(
        {face.X - across, face.Y - down, face.Width + 2 * across, face.Height + 2 * down}, photo);
}

std::vector<RegionWish> WishesOf(const std::vector<FoundRegion>& regions, PixelSize photo)
{
    std::vector<RegionWish> wishes;
    for (size_t i = 0; i < regions.size(); ++i) {
        const FoundRegion& region = regions[i];
        if (!region.Wish)
            continue;
        const bool isFace = region.Kind == RegionKind::Face && WantsInside(*region.Wish);
        const PixelRect rect = isFace ? HeadOf(region.Rect, photo) : ClippedTo(region.Rect, photo);
        if (rect.Width < 1 || rect.Height < 1)
            continue;
        if (*region.Wish == WishKind::Keep && FillsPhotograph(rect, photo))
            continue;
        wishes.push_back({{*region.Wish, rect}, i, std::nullopt});
        if (isFace)
            wishes.back().Core = CoreOf(region.Rect, photo);
    }
    return wishes;
}

} // namespace vistaTrim::photo
