#include "ranking/turns.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace vistaTrim::photo {

namespace {

// The last one admits everything but the same rectangle again.
constexpr double kLimits[] = {kTurnOverlap, 0.9, 1.0};

double PixelsOf(int64_t width, int64_t height)
{
    return static_cast<double>(std::max<int64_t>(0, width)) *
           static_cast<double>(std::max<int64_t>(0, height));
}

bool Differs(const CInt32CropRect& crop, const CropList& given, double limit)
{
    return std::all_of(given.begin(), given.end(), [&crop, limit](const CInt32CropRect& other) {
        const double overlap = OverlapOf(crop, other);
        return overlap <= limit && overlap < 1.0;
    });
}

// Goes through the lists for one limit after the other.
class CServer {
public:
    explicit CServer(const std::vector<CropList>& lists) : Lists(lists)
    {
        for (std::vector<size_t>& places : Places)
            places.assign(lists.size(), 0);
    }

    // The next crop of a turn, or null if no list has another one.
    const CInt32CropRect* Next(size_t turn, const CropList& given)
    {
        for (size_t limit = 0; limit < std::size(kLimits); ++limit) {
            const CInt32CropRect* own = First(turn, limit, given);
            const CInt32CropRect* general = First(0, limit, given);
            if (own && (!general || own->Score.RoiScore >= general->Score.RoiScore))
                return own;
            if (general)
                return general;
            for (size_t list = 1; list < Lists.size(); ++list)
                if (const CInt32CropRect* other = First(list, limit, given))
                    return other;
        }
        return nullptr;
    }

private:
    // What once was too much like a given crop always will be, so each place only moves on.
    const CInt32CropRect* First(size_t list, size_t limit, const CropList& given)
    {
        const CropList& crops = Lists[list];
        size_t& place = Places[limit][list];
        while (place < crops.size() && !Differs(crops[place], given, kLimits[limit]))
            ++place;
        return place < crops.size() ? &crops[place] : nullptr;
    }

    const std::vector<CropList>& Lists;
    std::vector<size_t> Places[std::size(kLimits)];
};

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
    CServer server(lists);
    CropList given;
    while (given.size() < wanted) {
        const size_t turn = order.empty() ? 0 : order[given.size() % order.size()];
        const CInt32CropRect* next = server.Next(turn, given);
        if (!next)
            break;
        given.push_back(*next);
    }
    return given;
}

} // namespace vistaTrim::photo
