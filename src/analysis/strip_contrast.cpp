#include "analysis/strip_contrast.h"

#include <algorithm>
#include <cmath>

#include "analysis/distance_maps.h"
#include "numeric/owned_stack.h"
#include "numeric/vector_ops.h"

namespace vistaTrim {

namespace {

using StripGroup = std::vector<CStripRect>;

CStripRect MakeStrip(int32_t left, int32_t top, int32_t right, int32_t bottom)
{
    return {left, top, right, bottom, (right - left + 1) * (bottom - top + 1)};
}

// The four corners in this order, in double, rounded once. The table holds floats: on large bright
// strips its entries have already lost their last digits.
float StripSum(const float* table, int64_t stride, const CStripRect& strip)
{
    const double lastLast = table[(strip.Bottom + 1) * stride + strip.Right + 1];
    const double firstFirst = table[strip.Top * stride + strip.Left];
    const double firstLast = table[strip.Top * stride + strip.Right + 1];
    const double lastFirst = table[(strip.Bottom + 1) * stride + strip.Left];
    return static_cast<float>(lastLast + firstFirst - firstLast - lastFirst);
}

// Both running totals are floats, rounded at every strip.
float SumGroup(const float* table, int64_t stride, const StripGroup& group)
{
    float sum = 0.0f;
    for (const CStripRect& strip : group)
        sum += StripSum(table, stride, strip);
    return sum;
}

float AreaOfGroup(const StripGroup& group)
{
    float area = 0.0f;
    for (const CStripRect& strip : group)
        area += static_cast<float>(strip.Area);
    return area;
}

// The distance of every pixel from the model of one group.
void MeasureGroup(const CPlaneStack& stack, CPlaneStack& out, const StripGroup& group,
                  bool normalise)
{
    COwnedStack mean;
    COwnedStack covariance;
    mean.Create(1, stack.PlaneCount, 1);
    covariance.Create(1, stack.PlaneCount, stack.PlaneCount);
    ComputeStripStatistics(stack, mean.Handle(), covariance.Handle(), group);
    if (stack.PlaneCount == 1)
        ComputeScalarDistanceMap(stack, out, mean.Handle(), covariance.Handle(), normalise);
    else
        ComputeMahalanobisMap(stack, out, mean.Handle(), covariance.Handle(), normalise);
}

// The two distances are added unweighted; only their sum is normalised to 0..1.
void ComputeAnchoredContrast(const CPlaneStack& stack, CPlaneStack& out, const StripGroup& anchor,
                             const StripGroup& rest)
{
    COwnedStack restDistance;
    restDistance.Create(1, stack.Cols, stack.Rows);
    MeasureGroup(stack, out, anchor, false);
    MeasureGroup(stack, restDistance.Handle(), rest, false);
    AddPlanes(out, restDistance.Handle(), 1.0f);
    NormalisePlane(out.Planes[0], out.ElementCount);
}

} // namespace

// The product is rounded to float before truncation: 5 x 0.2f is exactly 1, not a little more.
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

// Mirrors the above, but not to the last bit: the tables sum from the top in both cases.
void ComputeBottomContrast(const CPlaneStack& stack, CPlaneStack& out, float fraction)
{
    const BorderStrips strips = MakeBorderStrips(stack.Cols, stack.Rows, fraction);
    ComputeAnchoredContrast(stack, out, {strips.Bottom}, {strips.Left, strips.Right, strips.Top});
}

void ComputeSideContrasts(const CPlaneStack& stack, CPlaneStack outs[4], float fraction)
{
    const BorderStrips strips = MakeBorderStrips(stack.Cols, stack.Rows, fraction);
    const CStripRect sides[4] = {strips.Top, strips.Bottom, strips.Left, strips.Right};
    for (size_t side = 0; side < 4; ++side)
        MeasureGroup(stack, outs[side], {sides[side]}, true);
}

void ComputeStripStatistics(const CPlaneStack& stack, CPlaneStack& mean, CPlaneStack& covariance,
                            std::vector<CStripRect> group)
{
    const int64_t stride = static_cast<int64_t>(stack.Cols) + 1;
    std::vector<float> sums;
    for (const auto* tables : {&stack.PlaneTables, &stack.PairTables})
        for (const float* table : *tables)
            sums.push_back(SumGroup(table, stride, group));
    StatisticsOfSums(stack.PlaneCount, sums.data(), AreaOfGroup(group), mean.Planes[0],
                     covariance.Planes[0]);
}

void StatisticsOfSums(int32_t planes, const float* sums, float area, float* means,
                      float* covariances)
{
    for (int32_t plane = 0; plane < planes; ++plane)
        means[plane] = *sums++ / area;

    // The mean of the products minus the product of the means, in one step: no n - 1, and no clamp.
    // Float tables of large flat strips can make a variance slightly negative; the regulariser of
    // the distance absorbs that.
    for (int32_t i = 0; i < planes; ++i)
        for (int32_t j = i; j < planes; ++j) {
            const double moment = static_cast<double>(*sums++) / static_cast<double>(area);
            covariances[i * planes + j] = static_cast<float>(
                moment - static_cast<double>(means[i]) * static_cast<double>(means[j]));
        }

    for (int32_t a = 1; a < planes; ++a)
        for (int32_t b = 0; b < a; ++b)
            covariances[a * planes + b] = covariances[b * planes + a];
}

} // namespace vistaTrim
