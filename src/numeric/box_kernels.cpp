// Minimum and maximum over a box, in place: along the rows, then down the columns.
//
// The border repeats the nearest pixel, which cannot change a minimum or maximum: the box is in
// effect clipped to the picture, so a box larger than the picture is not traversed in full.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iostream>
#include <limits>

#include "numeric/image_kernels.h"
#include "numeric/isa_variants.h"
#include "numeric/raw_kernels.h"

namespace vistaTrim {

namespace {

// Boxes of up to this radius are compared in registers.
constexpr int32_t kMaxUnrolledRadius = 3;

VISTATRIM_VARIANT_BODY float Extreme(float a, float b, bool largest)
{
    if (largest)
        return a < b ? b : a;
    return b < a ? b : a;
}

// out[x] = the extreme of lines[0][x] .. lines[last][x]; last and largest are literals.
VISTATRIM_VARIANT_BODY void ExtremeOfLines(const float* const* lines, int32_t last, bool largest,
                                           float* __restrict__ out, int32_t count)
{
    for (int32_t x = 0; x < count; ++x) {
        // A box has at least one line. NOLINTNEXTLINE(clang-analyzer-core.NullDereference)
        float extreme = lines[0][x];
        for (int32_t k = 1; k <= last; ++k)
            extreme = Extreme(extreme, lines[k][x], largest);
        out[x] = extreme;
    }
}

VISTATRIM_VARIANT_BODY void TakeExtreme(const float* line, bool largest, float* __restrict__ out,
                                        int32_t count)
{
    for (int32_t x = 0; x < count; ++x)
        out[x] = Extreme(out[x], line[x], largest);
}

// The radius of a box on either side of its pixel along one axis.
struct BoxReach {
    int32_t Before;
    int32_t After;
};

// The box of one call, clipped to the picture, and its scratch.
struct BoxPlan {
    BoxReach X;
    BoxReach Y;
    int64_t RingRows;   // rows held at a time: those that one box spans
    int64_t RingStride; // floats from one to the next
    float* Row;         // one source row, repeated pixels on either side
    float* Ring;        // rows that hold the extremes along x
};

VISTATRIM_VARIANT_BODY float* RingRow(const BoxPlan& plan, int32_t row)
{
    return plan.Ring + row % plan.RingRows * plan.RingStride;
}

VISTATRIM_VARIANT_BODY void ExtremesAlongRow(const float* row, const BoxPlan& plan, BoxReach reach,
                                             bool fixed, bool largest, float* out, int32_t cols)
{
    float* padded = plan.Row;
    std::memcpy(padded, row, static_cast<size_t>(cols) * sizeof(float));
    for (int32_t k = 1; k <= reach.Before; ++k)
        padded[-k] = row[0];
    for (int32_t k = 1; k <= reach.After; ++k)
        padded[cols - 1 + k] = row[cols - 1];
    const float* first = padded - reach.Before;
    const int32_t last = reach.Before + reach.After;
    if (fixed) {
        const float* lines[2 * kMaxUnrolledRadius + 1];
        for (int32_t k = 0; k <= last; ++k)
            lines[k] = first + k;
        ExtremeOfLines(lines, last, largest, out, cols);
    } else {
        std::memcpy(out, first, static_cast<size_t>(cols) * sizeof(float));
        for (int32_t k = 1; k <= last; ++k)
            TakeExtreme(first + k, largest, out, cols);
    }
}

// A row is written back only when no later row needs its old values: by then the ring holds the
// extremes along x of every row in the box, including that row.
VISTATRIM_VARIANT_BODY void BoxRows(float* data, int64_t stride, int32_t cols, int32_t rows,
                                    const BoxPlan& plan, BoxReach reachX, BoxReach reachY,
                                    bool fixed, bool largest)
{
    int32_t done = 0;
    for (int32_t y = 0; y < rows; ++y) {
        const int32_t firstRow = std::max(y - reachY.Before, 0);
        const int32_t lastRow = y < rows - reachY.After ? y + reachY.After : rows - 1;
        for (; done <= lastRow; ++done)
            ExtremesAlongRow(data + done * stride, plan, reachX, fixed, largest,
                             RingRow(plan, done), cols);
        float* out = data + y * stride;
        if (fixed) {
            const int32_t last = reachY.Before + reachY.After;
            const float* lines[2 * kMaxUnrolledRadius + 1];
            for (int32_t k = 0; k <= last; ++k)
                lines[k] =
                    RingRow(plan, std::min(std::max(y + k - reachY.Before, firstRow), lastRow));
            ExtremeOfLines(lines, last, largest, out, cols);
        } else {
            std::memcpy(out, RingRow(plan, firstRow), static_cast<size_t>(cols) * sizeof(float));
            for (int32_t row = firstRow + 1; row <= lastRow; ++row)
                TakeExtreme(RingRow(plan, row), largest, out, cols);
        }
    }
}

VISTATRIM_VARIANT_BODY bool ReachesEvenly(const BoxPlan& plan, int32_t reach)
{
    return plan.X.Before == reach && plan.X.After == reach && plan.Y.Before == reach &&
           plan.Y.After == reach;
}

VISTATRIM_VARIANT_BODY void BoxOfReach(float* data, int64_t stride, int32_t cols, int32_t rows,
                                       const BoxPlan& plan, bool largest)
{
    if (ReachesEvenly(plan, 2))
        BoxRows(data, stride, cols, rows, plan, {2, 2}, {2, 2}, true, largest);
    else if (ReachesEvenly(plan, 3))
        BoxRows(data, stride, cols, rows, plan, {3, 3}, {3, 3}, true, largest);
    else
        BoxRows(data, stride, cols, rows, plan, plan.X, plan.Y, false, largest);
}

VISTATRIM_VARIANT_BODY void BoxMinimumBody(float* data, int64_t stride, int32_t cols, int32_t rows,
                                           const BoxPlan& plan)
{
    BoxOfReach(data, stride, cols, rows, plan, false);
}
VISTATRIM_VARIANTS(BoxMinimum,
                   (float* data, int64_t stride, int32_t cols, int32_t rows, const BoxPlan& plan),
                   (data, stride, cols, rows, plan))

VISTATRIM_VARIANT_BODY void BoxMaximumBody(float* data, int64_t stride, int32_t cols, int32_t rows,
                                           const BoxPlan& plan)
{
    BoxOfReach(data, stride, cols, rows, plan, true);
}
VISTATRIM_VARIANTS(BoxMaximum,
                   (float* data, int64_t stride, int32_t cols, int32_t rows, const BoxPlan& plan),
                   (data, stride, cols, rows, plan))

BoxReach CutReach(int32_t maskSize, int32_t anchor, int32_t length)
{
    return {std::min(anchor, length - 1), std::min(maskSize - 1 - anchor, length - 1)};
}

BoxPlan PlanBox(int32_t cols, int32_t rows, int32_t maskSize, int32_t anchor)
{
    BoxPlan plan = {};
    plan.X = CutReach(maskSize, anchor, cols);
    plan.Y = CutReach(maskSize, anchor, rows);
    plan.RingRows = std::min<int64_t>(static_cast<int64_t>(plan.Y.Before) + plan.Y.After + 1, rows);
    plan.RingStride = RoundUpToLine(cols);
    return plan;
}

// Floats of the padded row up to its first pixel, and of all of it.
int64_t RowOffset(const BoxPlan& plan)
{
    return RoundUpToLine(plan.X.Before);
}
int64_t RowFloats(const BoxPlan& plan)
{
    return RowOffset(plan) + plan.RingStride + RoundUpToLine(plan.X.After);
}

int32_t CheckBox(int32_t cols, int32_t rows, int32_t maskSize, int32_t anchor)
{
    if (cols < 1 || rows < 1)
        return KernelBadSize;
    if (maskSize < 1)
        return KernelBadMaskSize;
    if (anchor < 0 || anchor >= maskSize)
        return KernelBadAnchor;
    return KernelSuccess;
}

// Both operations print these messages: the minimum also says dilation.
void RunBox(CFloatMatrix& map, int32_t maskSize, bool largest)
{
    const int32_t cols = static_cast<int32_t>(map.Cols);
    const int32_t rows = static_cast<int32_t>(map.Rows);
    int32_t size = 0;
    const int32_t centre = maskSize > 0 ? (maskSize - 1) / 2 : 0;
    int32_t status = BoxBufferSize(cols, rows, maskSize, centre, &size);
    if (status != KernelSuccess)
        std::cerr << "Dilation buffer allocation: " << StatusText(status) << std::endl;
    void* buffer = AllocateKernelBuffer(size);
    if (!buffer)
        std::cerr << "Dilation buffer allocation: failed to allocate buffer." << std::endl;
    status = BoxKernel(map.Data, static_cast<int64_t>(map.Cols) * 4, cols, rows, maskSize, centre,
                       largest, buffer);
    if (status != KernelSuccess)
        std::cerr << "Dilation b: " << StatusText(status) << std::endl;
    FreeKernelBuffer(buffer);
}

} // namespace

int32_t BoxBufferSize(int32_t cols, int32_t rows, int32_t maskSize, int32_t anchor, int32_t* size)
{
    const int32_t status = CheckBox(cols, rows, maskSize, anchor);
    if (status != KernelSuccess)
        return status;
    const BoxPlan plan = PlanBox(cols, rows, maskSize, anchor);
    const int64_t floats = RowFloats(plan) + plan.RingRows * plan.RingStride;
    if (floats > std::numeric_limits<int32_t>::max() / static_cast<int64_t>(sizeof(float)))
        return KernelBadSize;
    *size = static_cast<int32_t>(floats * static_cast<int64_t>(sizeof(float)));
    return KernelSuccess;
}

int32_t BoxKernel(float* data, int64_t rowStep, int32_t cols, int32_t rows, int32_t maskSize,
                  int32_t anchor, bool largest, void* buffer)
{
    constexpr int64_t kPixelBytes = sizeof(float);
    if (!data || !buffer)
        return KernelNullPointer;
    const int32_t status = CheckBox(cols, rows, maskSize, anchor);
    if (status != KernelSuccess)
        return status;
    if (rowStep < cols * kPixelBytes)
        return KernelBadStep;
    if (rowStep % kPixelBytes != 0)
        return KernelUnevenStep;
    BoxPlan plan = PlanBox(cols, rows, maskSize, anchor);
    plan.Row = static_cast<float*>(buffer) + RowOffset(plan);
    plan.Ring = static_cast<float*>(buffer) + RowFloats(plan);
    const int64_t stride = rowStep / kPixelBytes;
    if (largest)
        BoxMaximum(data, stride, cols, rows, plan);
    else
        BoxMinimum(data, stride, cols, rows, plan);
    return KernelSuccess;
}

void ErodeBox(CFloatMatrix& map, int32_t size)
{
    RunBox(map, size, false);
}

void DilateBox(CFloatMatrix& map, int32_t size)
{
    RunBox(map, size, true);
}

} // namespace vistaTrim
