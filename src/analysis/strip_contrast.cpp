#include "analysis/strip_contrast.h"

#include <algorithm>
#include <cmath>

#include "analysis/distance_maps.h"
#include "analysis/owned_stack.h"
#include "numeric/vector_ops.h"

namespace vistaTrim {

namespace {

using StripGroup = std::vector<CStripRect>;

CStripRect MakeStrip(int32_t left, int32_t top, int32_t right, int32_t bottom)
{
    return {left, top, right, bottom, (right - left + 1) * (bottom - top + 1)};
}

// The four corners in this order, in double, rounded once. The table itself is a float table:
// on large bright strips its entries have lost their last digits already.
float StripSum(const float* table, int64_t stride, const CStripRect& strip)
{
    const double lastLast = table[(strip.Bottom + 1) * stride + strip.Right + 1];
    const double firstFirst = table[strip.Top * stride + strip.Left];
    const double firstLast = table[strip.Top * stride + strip.Right + 1];
    const double lastFirst = table[(strip.Bottom + 1) * stride + strip.Left];
    return static_cast<float>(lastLast + firstFirst - firstLast - lastFirst);
}

struct GroupTotal {
    float Sum;
    float Area;
};

// Both running totals are floats, rounded at every strip.
GroupTotal SumGroup(const float* table, int64_t stride, const StripGroup& group)
{
    GroupTotal total = {0.0f, 0.0f};
    for (const CStripRect& strip : group) {
        total.Sum += StripSum(table, stride, strip);
        total.Area += static_cast<float>(strip.Area);
    }
    return total;
}

// Pixels measured against both models before the next ones: a few rows, which stay in the cache.
constexpr int32_t kBlock = 2048;

// The model of one group, ready to measure pixels by.
CDistanceModel ModelOfGroup(const CPlaneStack& stack, const StripGroup& group)
{
    COwnedStack mean;
    COwnedStack covariance;
    mean.Create(1, stack.PlaneCount, 1);
    covariance.Create(1, stack.PlaneCount, stack.PlaneCount);
    ComputeStripStatistics(stack, mean, covariance, group);
    return CDistanceModel(mean, covariance, stack.PlaneCount == 1);
}

// The distance maps of both models and their sum as the plain form has it (ComputeMahalanobisMap
// or ComputeScalarDistanceMap twice, AddPlanes, NormalisePlane), to the bit, but block by block
// and with no plane in between: the first touch of such planes costs more than the arithmetic.
// The two distances are added as they come, each with its natural weight; only their sum is
// brought to 0..1.
void ComputeAnchoredContrast(const CPlaneStack& stack, CPlaneStack& out, const StripGroup& anchor,
                             const StripGroup& rest)
{
    CDistanceModel anchorModel = ModelOfGroup(stack, anchor);
    CDistanceModel restModel = ModelOfGroup(stack, rest);
    std::vector<float> restDistance(kBlock);
    CPlaneRange range;

    for (int32_t first = 0; first < stack.ElementCount; first += kBlock) {
        const int32_t count = std::min(stack.ElementCount - first, kBlock);
        float* const distance = out.Planes[0] + first;
        anchorModel.Measure(stack, first, count, distance);
        restModel.Measure(stack, first, count, restDistance.data());
        VectorAdd(count, distance, restDistance.data(), distance);
        range.Include(distance, count);
    }
    NormaliseMeasuredPlane(out.Planes[0], out.ElementCount, range);
}

void ComputeSideContrast(const CPlaneStack& stack, CPlaneStack& out, const CStripRect& strip)
{
    CDistanceModel model = ModelOfGroup(stack, {strip});
    CPlaneRange range;
    for (int32_t first = 0; first < stack.ElementCount; first += kBlock) {
        const int32_t count = std::min(stack.ElementCount - first, kBlock);
        model.Measure(stack, first, count, out.Planes[0] + first);
        range.Include(out.Planes[0] + first, count);
    }
    NormaliseMeasuredPlane(out.Planes[0], out.ElementCount, range);
}

} // namespace

// The product is rounded to float before it is cut: 5 x 0.2f is 1 and not a little more.
BorderStrips MakeBorderStrips(int32_t cols, int32_t rows, float fraction)
{
    const float width = static_cast<float>(std::min(cols, rows)) * fraction;
    const int32_t band = std::max(static_cast<int32_t>(std::floor(width)), 1);

    BorderStrips strips;
    strips.Top = MakeStrip(0, 0, cols - 1, std::min(rows - 1, band - 1));
    strips.Bottom = MakeStrip(0, std::max(rows - band, 0), cols - 1, rows - 1);
    strips.Left = MakeStrip(0, 0, std::min(cols - 1, band - 1), rows - 1);
    strips.Right = MakeStrip(std::max(cols - band, 0), 0, cols - 1, rows - 1);
    return strips;
}

void ComputeTopContrast(const CPlaneStack& stack, CPlaneStack& out, float fraction)
{
    const BorderStrips strips = MakeBorderStrips(stack.Cols, stack.Rows, fraction);
    ComputeAnchoredContrast(stack, out, {strips.Top}, {strips.Left, strips.Right, strips.Bottom});
}

// Not the mirror image of the above to the last bit: the tables sum from the top in both.
void ComputeBottomContrast(const CPlaneStack& stack, CPlaneStack& out, float fraction)
{
    const BorderStrips strips = MakeBorderStrips(stack.Cols, stack.Rows, fraction);
    ComputeAnchoredContrast(stack, out, {strips.Bottom}, {strips.Left, strips.Right, strips.Top});
}

void ComputeSideContrasts(const CPlaneStack& stack, CPlaneStack outs[4], float fraction)
{
    const BorderStrips strips = MakeBorderStrips(stack.Cols, stack.Rows, fraction);
    ComputeSideContrast(stack, outs[0], strips.Top);
    ComputeSideContrast(stack, outs[1], strips.Bottom);
    ComputeSideContrast(stack, outs[2], strips.Left);
    ComputeSideContrast(stack, outs[3], strips.Right);
}

void ComputeStripStatistics(const CPlaneStack& stack, CPlaneStack& mean, CPlaneStack& covariance,
                            std::vector<CStripRect> group)
{
    const int64_t stride = int64_t(stack.Cols) + 1;
    const int32_t n = stack.PlaneCount;
    float* const means = mean.Planes[0];
    float* const covariances = covariance.Planes[0];

    for (int32_t plane = 0; plane < n; ++plane) {
        const GroupTotal total = SumGroup(stack.PlaneTables[size_t(plane)], stride, group);
        means[plane] = total.Sum / total.Area;
    }

    // The mean of the products less the product of the means, in one step: no n - 1, and no
    // clamp. Float tables of large flat strips can make a variance slightly negative; the
    // regulariser of the distance absorbs that.
    size_t pair = 0;
    for (int32_t i = 0; i < n; ++i)
        for (int32_t j = i; j < n; ++j) {
            const GroupTotal total = SumGroup(stack.PairTables[pair], stride, group);
            covariances[i * n + j] =
                static_cast<float>(double(total.Sum) / total.Area - double(means[i]) * means[j]);
            ++pair;
        }

    for (int32_t a = 1; a < n; ++a)
        for (int32_t b = 0; b < a; ++b)
            covariances[a * n + b] = covariances[b * n + a];
}

} // namespace vistaTrim
