#include "scoring/rects_of_interest.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace vistaTrim {

namespace {

CInt32Rect RectOf(const CRectOfInterest& rect)
{
    return CInt32Rect(rect.Left, rect.Right, rect.Top, rect.Bottom);
}

std::vector<CRectOfInterest> EnabledOfKinds(const std::vector<CRectOfInterest>& rects,
                                            int32_t include, int32_t exclude)
{
    std::vector<CRectOfInterest> list;
    for (const CRectOfInterest& rect : rects)
        if (rect.Enabled && (rect.Kind == include || rect.Kind == exclude))
            list.push_back(rect);
    return list;
}

// Falls from 1 with the city-block distance of the two centres, measured in half the
// rectangle's width plus height.
double CentreNearness(const CInt32Rect& crop, const CInt32Rect& rect)
{
    // Twice the distance, so that sums of opposite sides stay integers.
    const int64_t down = int64_t{crop.Top} + crop.Bottom - rect.Top - rect.Bottom;
    const int64_t across = int64_t{crop.Left} + crop.Right - rect.Left - rect.Right;
    const int64_t distance = std::abs(down) + std::abs(across);
    const int64_t size =
        (int64_t{rect.Right} - rect.Left + 1) + (int64_t{rect.Bottom} - rect.Top + 1);
    return std::exp(-(static_cast<double>(distance) / static_cast<double>(size)));
}

} // namespace

std::vector<CRectOfInterest> SoftRects(const std::vector<CRectOfInterest>& rects)
{
    return EnabledOfKinds(rects, RoiSoftInclude, RoiSoftExclude);
}

std::vector<CRectOfInterest> HardRects(const std::vector<CRectOfInterest>& rects)
{
    return EnabledOfKinds(rects, RoiHardInclude, RoiHardExclude);
}

float RectCoverage(const CInt32Rect& crop, const CInt32Rect& rect)
{
    // 64 bits, because a host's rectangle may lie anywhere.
    const int64_t width =
        int64_t{std::min(crop.Right, rect.Right)} - std::max(crop.Left, rect.Left) + 1;
    const int64_t height =
        int64_t{std::min(crop.Bottom, rect.Bottom)} - std::max(crop.Top, rect.Top) + 1;
    const int64_t common = std::max<int64_t>(width, 0) * std::max<int64_t>(height, 0);
    return static_cast<float>(static_cast<double>(common) / static_cast<double>(rect.Area()));
}

float ComputeRoiScore(const std::vector<CRectOfInterest>& softRects, const CInt32Rect& crop)
{
    if (softRects.empty())
        return 1.0f;

    float covered = 0.0f;
    float met = 0.0f;
    double nearness = 0.0;
    for (const CRectOfInterest& soft : softRects) {
        const CInt32Rect rect = RectOf(soft);
        const float share = RectCoverage(crop, rect);
        if (soft.Kind == RoiSoftInclude) {
            covered += share;
            if (share == 1.0f)
                met += 1.0f;
            // Only the nearest rectangle counts. Tests "greater", so that NaN never counts.
            const double near = CentreNearness(crop, rect);
            if (near > nearness)
                nearness = near;
        } else if (soft.Kind == RoiSoftExclude) {
            // One rounding: 1 - share has more digits than a float when share is small.
            covered = static_cast<float>(covered + (1.0 - static_cast<double>(share)));
            if (share == 0.0f)
                met += 1.0f;
        }
    }

    const double count = static_cast<double>(softRects.size());
    if (met == count)
        return 1.0f;
    // Fully met wishes count first, then the shares of all, then a little nearness. The last factor
    // keeps even the best of these a tier below a crop that meets every wish.
    const double wishes = (met + covered / count) / count;
    const float sum =
        static_cast<float>(wishes + static_cast<double>(static_cast<float>(nearness)) * 0.01f);
    return static_cast<float>(static_cast<double>(sum) * 0.1f);
}

bool PassesHardRects(const std::vector<CRectOfInterest>& hardRects, const CInt32Rect& crop)
{
    // Must be fully contained or fully avoided. Tests "not equal", so that the NaN of a rectangle
    // without area rejects every crop.
    for (const CRectOfInterest& hard : hardRects) {
        const float share = RectCoverage(crop, RectOf(hard));
        if (hard.Kind == RoiHardInclude && share != 1.0f)
            return false;
        if (hard.Kind == RoiHardExclude && share != 0.0f)
            return false;
    }
    return true;
}

} // namespace vistaTrim
