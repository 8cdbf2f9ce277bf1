#include "turns.h"

#include <algorithm>
#include <cstdint>

namespace vistaTrim::host {

namespace {

// The last one admits everything but the same rectangle again.
constexpr double kLimits[] = {kTurnOverlap, 0.9, 1.0};

double PixelsOf(int64_t width, int64_t height)
{
    return static_cast<double>(std::max<int64_t>(0, width)) *
           static_cast<double>(std::max<int64_t>(0, height));
}

const CInt32CropRect* FirstThatDiffers(const CropList& list, const CropList& given, double limit)
{
    const auto differs = [&given, limit](const CInt32CropRect& crop) {
        return std::all_of(given.begin(), given.end(), [&crop, limit](const CInt32CropRect& other) {
            const double overlap = OverlapOf(crop, other);
            return overlap <= limit && overlap < 1.0;
        });
    };
    const auto found = std::find_if(list.begin(), list.end(), differs);
    return found == list.end() ? nullptr : &*found;
}

const CInt32CropRect* NextCrop(const std::vector<CropList>& lists, size_t turn,
                               const CropList& given)
{
    for (const double limit : kLimits) {
        const CInt32CropRect* own = FirstThatDiffers(lists[turn], given, limit);
        const CInt32CropRect* general = FirstThatDiffers(lists[0], given, limit);
        if (own && (!general || own->Score.RoiScore >= general->Score.RoiScore))
            return own;
        if (general)
            return general;
        for (const CropList& list : lists)
            if (const CInt32CropRect* other = FirstThatDiffers(list, given, limit))
                return other;
    }
    return nullptr;
}

} // namespace

double OverlapOf(const CInt32CropRect& a, const CInt32CropRect& b)
{
    const auto pixels = [](const CInt32CropRect& crop) {
        return PixelsOf(int64_t{crop.Right} - crop.Left + 1, int64_t{crop.Bottom} - crop.Top + 1);
    };
    const double shared =
        PixelsOf(int64_t{std::min(a.Right, b.Right)} - std::max(a.Left, b.Left) + 1,
                 int64_t{std::min(a.Bottom, b.Bottom)} - std::max(a.Top, b.Top) + 1);
    return shared > 0 ? shared / (pixels(a) + pixels(b) - shared) : 0.0;
}

CropList TakeTurns(const std::vector<CropList>& lists, const std::vector<size_t>& order,
                   size_t wanted)
{
    CropList given;
    while (given.size() < wanted) {
        const size_t turn = order.empty() ? 0 : order[given.size() % order.size()];
        const CInt32CropRect* next = NextCrop(lists, turn, given);
        if (!next)
            break;
        given.push_back(*next);
    }
    return given;
}

} // namespace vistaTrim::host
