#include "ranking/moved_crops.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <set>
#include <utility>

namespace vistaTrim::photo {

namespace {

using Sides = std::array<int32_t, 4>;

Sides SidesOf(const CInt32CropRect& crop)
{
    return {crop.Left, crop.Right, crop.Top, crop.Bottom};
}

// Accepts each place once.
class NewPlaces {
public:
    explicit NewPlaces(const CropList& known)
    {
        for (const CInt32CropRect& crop : known)
            Seen.insert(SidesOf(crop));
    }

    void Add(const CInt32CropRect& crop)
    {
        if (Seen.insert(SidesOf(crop)).second)
            Added.push_back(crop);
    }

    CropList Take()
    {
        return std::move(Added);
    }

private:
    std::set<Sides> Seen;
    CropList Added;
};

std::optional<CInt32Rect> SmallestAround(const std::vector<WishedRegion>& regions, bool uncutOnly)
{
    std::optional<CInt32Rect> around;
    for (const WishedRegion& region : regions) {
        if (!region.Moves || (uncutOnly && region.CutCost <= 0))
            continue;
        const CInt32Rect& rect = region.Rect;
        if (around)
            around =
                CInt32Rect{std::min(around->Left, rect.Left), std::max(around->Right, rect.Right),
                           std::min(around->Top, rect.Top), std::max(around->Bottom, rect.Bottom)};
        else
            around = rect;
    }
    return around;
}

// How far first..last has to move to hold the other span, which is not longer.
int32_t StepToHold(int32_t first, int32_t last, int32_t otherFirst, int32_t otherLast)
{
    return std::min(otherFirst - first, 0) + std::max(otherLast - last, 0);
}

} // namespace

CropList MovedToHold(const CropList& crops, const std::vector<WishedRegion>& regions)
{
    NewPlaces places(crops);
    for (const bool uncutOnly : {false, true}) {
        const std::optional<CInt32Rect> held = SmallestAround(regions, uncutOnly);
        if (!held)
            continue;
        for (const CInt32CropRect& crop : crops) {
            if (crop.Right - crop.Left < held->Right - held->Left ||
                crop.Bottom - crop.Top < held->Bottom - held->Top)
                continue;
            const int32_t x = StepToHold(crop.Left, crop.Right, held->Left, held->Right);
            const int32_t y = StepToHold(crop.Top, crop.Bottom, held->Top, held->Bottom);
            if (x != 0 || y != 0)
                places.Add(
                    CInt32CropRect(crop.Left + x, crop.Right + x, crop.Top + y, crop.Bottom + y));
        }
    }
    return places.Take();
}

CropList CentredLargest(const CropList& crops, PixelSize picture)
{
    const auto area = [](const CInt32CropRect& crop) {
        return (int64_t{crop.Right} - crop.Left + 1) * (int64_t{crop.Bottom} - crop.Top + 1);
    };
    int64_t largest = 0;
    for (const CInt32CropRect& crop : crops)
        largest = std::max(largest, area(crop));
    NewPlaces places(crops);
    for (const CInt32CropRect& crop : crops) {
        if (area(crop) != largest)
            continue;
        const int32_t left = (picture.Width - (crop.Right - crop.Left + 1)) / 2;
        const int32_t top = (picture.Height - (crop.Bottom - crop.Top + 1)) / 2;
        places.Add(
            CInt32CropRect(left, left + crop.Right - crop.Left, top, top + crop.Bottom - crop.Top));
    }
    return places.Take();
}

} // namespace vistaTrim::photo
