// The two 3x3 differences and the gradient strength made of them.
//
// Sums run from left to right (or top to bottom) and every variant keeps that order, so the
// strength has the same bits however it is computed.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iostream>
#include <limits>

#include "numeric/aligned_memory.h"
#include "numeric/image_kernels.h"
#include "numeric/isa_variants.h"
#include "numeric/raw_kernels.h"
#include "numeric/vector_ops.h"

namespace vistaTrim {

namespace {

// Rows of `cols` sums, with one pixel of border on either side where neighbours are read.
constexpr int32_t kBorder = 1;

VISTATRIM_VARIANT_BODY float OneTwoOne(float before, float at, float after)
{
    return before + 2.0f * at + after;
}

// sums[x] = p(x-1) + 2 p(x) + p(x+1). The two border pixels are handled outside the loop.
VISTATRIM_VARIANT_BODY void SumAlongRow(const float* row, float* sums, int32_t cols)
{
    const int32_t last = cols - 1;
    sums[0] = OneTwoOne(row[0], row[0], row[std::min(1, last)]);
    VISTATRIM_INDEPENDENT_STEPS
    for (int32_t x = 1; x < last; ++x)
        sums[x] = OneTwoOne(row[x - 1], row[x], row[x + 1]);
    if (last > 0)
        sums[last] = OneTwoOne(row[last - 1], row[last], row[last]);
}

// sums[x] = p(x, y-1) + 2 p(x, y) + p(x, y+1) for x = -1 .. cols, the two ends by repetition.
VISTATRIM_VARIANT_BODY void SumDownColumns(const float* above, const float* at, const float* below,
                                           float* sums, int32_t cols)
{
    VISTATRIM_INDEPENDENT_STEPS
    for (int32_t x = 0; x < cols; ++x)
        sums[x] = OneTwoOne(above[x], at[x], below[x]);
    sums[-1] = sums[0];
    sums[cols] = sums[cols - 1];
}

// Three rotating rows of sums: each source row is summed once and used twice.
VISTATRIM_VARIANT_BODY void RowDifferenceBody(const float* src, float* dst, int32_t cols,
                                              int32_t rows, float* scratch)
{
    const int64_t stride = cols;
    float* sumsAbove = scratch;
    float* sumsAt = scratch + stride;
    float* sumsBelow = scratch + 2 * stride;
    SumAlongRow(src, sumsAbove, cols);
    SumAlongRow(src, sumsAt, cols);
    for (int32_t y = 0; y < rows; ++y) {
        SumAlongRow(src + std::min(y + 1, rows - 1) * stride, sumsBelow, cols);
        float* out = dst + y * stride;
        VISTATRIM_INDEPENDENT_STEPS
        for (int32_t x = 0; x < cols; ++x)
            out[x] = sumsBelow[x] - sumsAbove[x];
        float* const spare = sumsAbove;
        sumsAbove = sumsAt;
        sumsAt = sumsBelow;
        sumsBelow = spare;
    }
}
VISTATRIM_VARIANTS(RowDifference,
                   (const float* src, float* dst, int32_t cols, int32_t rows, float* scratch),
                   (src, dst, cols, rows, scratch))

VISTATRIM_VARIANT_BODY void ColumnDifferenceBody(const float* src, float* dst, int32_t cols,
                                                 int32_t rows, float* scratch)
{
    const int64_t stride = cols;
    float* const sums = scratch + kBorder;
    for (int32_t y = 0; y < rows; ++y) {
        const float* at = src + y * stride;
        SumDownColumns(y > 0 ? at - stride : at, at, y < rows - 1 ? at + stride : at, sums, cols);
        float* out = dst + y * stride;
        VISTATRIM_INDEPENDENT_STEPS
        for (int32_t x = 0; x < cols; ++x)
            out[x] = sums[x - 1] - sums[x + 1];
    }
}
VISTATRIM_VARIANTS(ColumnDifference,
                   (const float* src, float* dst, int32_t cols, int32_t rows, float* scratch),
                   (src, dst, cols, rows, scratch))

// One row of the gradient strength, written to out or added to it.
VISTATRIM_VARIANT_BODY void StrengthRow(const float* above, const float* at, const float* below,
                                        float* out, int32_t cols, float* sums, bool add)
{
    SumDownColumns(above, at, below, sums, cols);
    const int32_t last = cols - 1;
    for (int32_t x = 0; x < cols; x += std::max(last, 1)) {
        const int32_t left = std::max(x - 1, 0);
        const int32_t right = std::min(x + 1, last);
        const float strength = std::fabs(OneTwoOne(below[left], below[x], below[right]) -
                                         OneTwoOne(above[left], above[x], above[right])) +
                               std::fabs(sums[x - 1] - sums[x + 1]);
        out[x] = add ? out[x] + strength : strength;
    }
    VISTATRIM_INDEPENDENT_STEPS
    for (int32_t x = 1; x < last; ++x) {
        const float strength = std::fabs(OneTwoOne(below[x - 1], below[x], below[x + 1]) -
                                         OneTwoOne(above[x - 1], above[x], above[x + 1])) +
                               std::fabs(sums[x - 1] - sums[x + 1]);
        out[x] = add ? out[x] + strength : strength;
    }
}

// Both differences, their absolute values and all sums in one pass over the planes.
VISTATRIM_VARIANT_BODY void StrengthsBody(const float* const* planes, size_t count, float* dst,
                                          int32_t cols, int32_t rows, float* scratch)
{
    const int64_t stride = cols;
    float* const sums = scratch + kBorder;
    for (int32_t y = 0; y < rows; ++y) {
        const int64_t above = std::max(y - 1, 0) * stride;
        const int64_t at = y * stride;
        const int64_t below = std::min(y + 1, rows - 1) * stride;
        StrengthRow(planes[0] + above, planes[0] + at, planes[0] + below, dst + at, cols, sums,
                    false);
        for (size_t k = 1; k < count; ++k)
            StrengthRow(planes[k] + above, planes[k] + at, planes[k] + below, dst + at, cols, sums,
                        true);
    }
}
VISTATRIM_VARIANTS(Strengths,
                   (const float* const* planes, size_t count, float* dst, int32_t cols,
                    int32_t rows, float* scratch),
                   (planes, count, dst, cols, rows, scratch))

int32_t CheckPlanes(const float* src, const float* dst, int32_t cols, int32_t rows,
                    const void* buffer)
{
    if (!src || !dst || !buffer)
        return KernelNullPointer;
    if (cols < 1 || rows < 1)
        return KernelBadSize;
    return KernelSuccess;
}

using SobelKernel = int32_t (*)(const float* src, float* dst, int32_t cols, int32_t rows,
                                void* buffer);

// The scratch message names the same kernel for both: hosts know this message on the error stream.
bool RunSobel(SobelKernel kernel, const float* src, float* dst, int32_t cols, int32_t rows)
{
    void* buffer = AllocateKernelBuffer(SobelBufferSize(cols));
    if (!buffer)
        std::cerr << "compGX: failed to allocate buffer" << std::endl;
    const int32_t status = kernel(src, dst, cols, rows, buffer);
    if (status != KernelSuccess)
        std::cerr << StatusText(status) << std::endl;
    FreeKernelBuffer(buffer);
    return status == KernelSuccess;
}

} // namespace

int32_t SobelBufferSize(int32_t cols)
{
    const int64_t size =
        3 * (std::max<int64_t>(cols, 1) + 2 * kBorder) * static_cast<int64_t>(sizeof(float));
    // Too large for the type: 0, for which no buffer is allocated.
    return size > std::numeric_limits<int32_t>::max() ? 0 : static_cast<int32_t>(size);
}

int32_t SobelRowKernel(const float* src, float* dst, int32_t cols, int32_t rows, void* buffer)
{
    const int32_t status = CheckPlanes(src, dst, cols, rows, buffer);
    if (status == KernelSuccess)
        RowDifference(src, dst, cols, rows, static_cast<float*>(buffer));
    return status;
}

int32_t SobelColumnKernel(const float* src, float* dst, int32_t cols, int32_t rows, void* buffer)
{
    const int32_t status = CheckPlanes(src, dst, cols, rows, buffer);
    if (status == KernelSuccess)
        ColumnDifference(src, dst, cols, rows, static_cast<float*>(buffer));
    return status;
}

void SobelRowDifference(const float* src, float* dst, int32_t cols, int32_t rows)
{
    RunSobel(SobelRowKernel, src, dst, cols, rows);
}

void SobelColumnDifference(const float* src, float* dst, int32_t cols, int32_t rows)
{
    RunSobel(SobelColumnKernel, src, dst, cols, rows);
}

void GradientStrengthStepwise(const float* src, float* dst, int32_t cols, int32_t rows)
{
    const int32_t count = cols < 1 || rows < 1 ? 0 : cols * rows;
    float* temporary =
        static_cast<float*>(AllocateAligned(static_cast<size_t>(count) * sizeof(float), 64));
    const bool haveRows = RunSobel(SobelRowKernel, src, dst, cols, rows);
    const bool haveColumns = RunSobel(SobelColumnKernel, src, temporary, cols, rows);
    // A failed call leaves its destination unchanged. If the row difference failed, dst keeps its
    // old contents and the column difference is not added. If the column difference failed, the
    // temporary plane holds nothing, and dst gets the row difference alone.
    if (haveRows) {
        VectorAbs(count, dst, dst);
        if (haveColumns) {
            VectorAbs(count, temporary, temporary);
            VectorAdd(count, dst, temporary, dst);
        }
    }
    FreeAligned(temporary);
}

// The single pass needs neither the temporary plane nor three more passes. If it cannot run, the
// stepwise form runs and reports why.
void GradientStrength(const float* src, float* dst, int32_t cols, int32_t rows)
{
    void* buffer = AllocateKernelBuffer(SobelBufferSize(cols));
    if (CheckPlanes(src, dst, cols, rows, buffer) == KernelSuccess)
        Strengths(&src, 1, dst, cols, rows, static_cast<float*>(buffer));
    else
        GradientStrengthStepwise(src, dst, cols, rows);
    FreeKernelBuffer(buffer);
}

void SumGradientStrengths(const CPlaneStack& planes, float* dst)
{
    const int32_t cols = planes.Cols;
    const int32_t rows = planes.Rows;
    void* const buffer = AllocateKernelBuffer(SobelBufferSize(cols));
    if (CheckPlanes(planes.Planes[0], dst, cols, rows, buffer) == KernelSuccess) {
        Strengths(planes.Planes.data(), planes.Planes.size(), dst, cols, rows,
                  static_cast<float*>(buffer));
    } else {
        GradientStrength(planes.Planes[0], dst, cols, rows);
        const size_t bytes = static_cast<size_t>(planes.ElementCount) * sizeof(float);
        float* const strength = static_cast<float*>(AllocateAligned(bytes, 64));
        for (size_t k = 1; k < planes.Planes.size(); ++k) {
            GradientStrength(planes.Planes[k], strength, cols, rows);
            VectorAdd(planes.ElementCount, dst, strength, dst);
        }
        FreeAligned(strength);
    }
    FreeKernelBuffer(buffer);
}

} // namespace vistaTrim
