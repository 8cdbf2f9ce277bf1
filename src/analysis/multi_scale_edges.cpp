#include "analysis/multi_scale_edges.h"

#include <algorithm>
#include <list>

#include "numeric/image_kernels.h"
#include "numeric/isa_variants.h"
#include "numeric/owned_stack.h"
#include "numeric/vector_ops.h"

namespace vistaTrim {

namespace {

// The double product is truncated without rounding to float: 0.04f is just below 0.04 and 0.2f just
// above 0.2, so 25 pixels become 0 at the first scale and 5 pixels become 1 at the second.
int32_t ScaledLength(int32_t length, float scale)
{
    return static_cast<int32_t>(static_cast<double>(static_cast<float>(length)) *
                                static_cast<double>(scale));
}

VISTATRIM_VARIANT_BODY void DivideRowBody(float* row, int32_t length, double divisor)
{
    VISTATRIM_INDEPENDENT_STEPS
    for (int32_t i = 0; i < length; ++i)
        row[i] = static_cast<float>(row[i] / divisor);
}
VISTATRIM_VARIANTS(DivideRow, (float* row, int32_t length, double divisor), (row, length, divisor))

// Rows summed side by side. Each sum depends on its last addition, so eight take little longer than
// one; the order of additions within a row is unchanged.
constexpr int32_t kRowsAtOnce = 8;

// NormaliseRowBySum on kRowsAtOnce rows. Skipping an element equals adding 0, since a sum is never
// -0.
void NormaliseRows(float* rows, int32_t length, float offset, float threshold)
{
    float sums[kRowsAtOnce] = {};
    for (int32_t i = 0; i < length; ++i)
        for (int32_t r = 0; r < kRowsAtOnce; ++r) {
            const float x = rows[static_cast<int64_t>(r) * length + i];
            sums[r] += x > threshold ? x : 0.0f;
        }
    for (int32_t r = 0; r < kRowsAtOnce; ++r)
        DivideRow(rows + static_cast<int64_t>(r) * length, length,
                  static_cast<double>(sums[r]) + static_cast<double>(offset));
}

} // namespace

void ComputeMultiScaleEdges(const CPlaneStack& source, CPlaneStack& out, bool normaliseOutput,
                            bool normaliseRows, std::vector<float> scales)
{
    float* const sum = out.Planes[0];

    // A list, because owned stacks cannot be moved.
    std::list<COwnedStack> scaledStacks;
    bool refusal = false; // a resize rejected a picture one pixel wide or high
    for (const float scale : scales) {
        const int32_t cols = ScaledLength(source.Cols, scale);
        const int32_t rows = ScaledLength(source.Rows, scale);
        if (cols <= 0 || rows <= 0)
            continue;
        COwnedStack& scaled = scaledStacks.emplace_back();
        scaled.Create(source.PlaneCount, cols, rows);
        ResizeStackLinear(source, scaled.Handle());
        refusal = refusal || std::min(cols, rows) < 2;
    }

    // Both buffers serve every scale, at its small size and at the full one. They start as zeros
    // for the sake of one case: the resize rejects a picture one pixel wide or high, so the buffer
    // goes into the sum with whatever followed its first few elements. Zeros make that case give
    // the same map every time. Otherwise every element is written before it is read, and the first
    // scale goes straight into the sum.
    COwnedStack buffers;
    buffers.Create(2, source.Cols, source.Rows);
    float* const edgeBuffer = buffers.Planes[0];
    float* const smoothBuffer = buffers.Planes[1];
    if (refusal)
        std::fill_n(edgeBuffer, buffers.ElementCount, 0.0f);
    if (refusal || scaledStacks.empty())
        std::fill_n(sum, out.ElementCount, 0.0f);

    for (const COwnedStack& scaled : scaledStacks) {
        const int32_t cols = scaled.Cols;
        const int32_t rows = scaled.Rows;
        const int32_t count = scaled.ElementCount;
        const bool first = &scaled == &scaledStacks.front() && !refusal;
        float* const full = first ? sum : edgeBuffer;
        CPlaneStack smallEdges;
        CPlaneStack smallSmoothed;
        CPlaneStack fullEdges;
        smallEdges.WrapPlaneOnly(cols, rows, edgeBuffer);
        smallSmoothed.WrapPlaneOnly(cols, rows, smoothBuffer);
        fullEdges.WrapPlaneOnly(source.Cols, source.Rows, full);

        SumGradientStrengths(scaled.Handle(), edgeBuffer); // no plane counts more than another
        NormalisePlane(edgeBuffer, count);
        if (normaliseRows)
            NormaliseRowsBySum(smallEdges);
        SmoothStack(smallEdges, smallSmoothed, 0.5);
        ResizeStackLinear(smallSmoothed, fullEdges);

        // The count of the small plane is intended: only the first `count` elements of the full
        // plane, its top few rows, are measured and stretched to 0..1. The rest keep the lower
        // strength left by smoothing and resizing, so edges at the very top of a picture weigh
        // more, with a seam in the middle of a row. The composition model was fitted on such maps.
        NormalisePlane(full, count);
        if (!first)
            VectorAdd(out.ElementCount, sum, full, sum);
    }

    if (normaliseOutput)
        NormalisePlane(sum, out.ElementCount);
}

void NormaliseRowsBySum(CPlaneStack& stack)
{
    const float offset = static_cast<float>(stack.Cols) * 0.01f;
    const float threshold = 0.05f;
    float* const plane = stack.Planes[0];
    int32_t row = 0;
    for (; row + kRowsAtOnce <= stack.Rows; row += kRowsAtOnce)
        NormaliseRows(plane + static_cast<int64_t>(row) * stack.Cols, stack.Cols, offset,
                      threshold);
    for (; row < stack.Rows; ++row)
        NormaliseRowBySum(plane + static_cast<int64_t>(row) * stack.Cols, stack.Cols, offset,
                          threshold);
}

// The threshold only keeps faint elements out of the sum: every element is divided and none is
// cleared.
void NormaliseRowBySum(float* row, int32_t length, float offset, float threshold)
{
    float sum = 0.0f;
    for (int32_t i = 0; i < length; ++i)
        if (row[i] > threshold)
            sum += row[i];
    DivideRow(row, length, static_cast<double>(sum) + static_cast<double>(offset));
}

} // namespace vistaTrim
