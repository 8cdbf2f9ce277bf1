// Bilinear resize with half-pixel centres: only the four neighbours of a target pixel's centre
// count, however strong the reduction. Smooth first to get an average.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iostream>
#include <limits>

#include "numeric/image_kernels.h"
#include "numeric/isa_variants.h"
#include "numeric/raw_kernels.h"

namespace vistaTrim {

namespace {

// For each target position of one axis: two source positions and the fraction between them.
struct AxisTable {
    int32_t* First;
    int32_t* Second;
    float* Fraction;
};

void BuildAxisTable(int32_t sourceLength, int32_t targetLength, const AxisTable& axis)
{
    const double ratio = static_cast<double>(sourceLength) / targetLength;
    const int32_t last = sourceLength - 1;
    for (int32_t k = 0; k < targetLength; ++k) {
        const double u = (k + 0.5) * ratio - 0.5;
        const double cell = std::floor(u);
        const int32_t i = static_cast<int32_t>(cell);
        axis.First[k] = std::min(std::max(i, 0), last);
        axis.Second[k] = std::min(std::max(i + 1, 0), last);
        axis.Fraction[k] = static_cast<float>(u - cell);
    }
}

// a + (b - a) * f, written this way, each step rounded: equal neighbours give exactly their value,
// and f = 0 gives a.
VISTATRIM_VARIANT_BODY float Between(float a, float b, float fraction)
{
    return a + (b - a) * fraction;
}

VISTATRIM_VARIANT_BODY void InterpolateRow(const float* row, const AxisTable& axis,
                                           float* __restrict__ out, int32_t count)
{
    const int32_t* first = axis.First;
    const int32_t* second = axis.Second;
    const float* fraction = axis.Fraction;
    for (int32_t x = 0; x < count; ++x)
        out[x] = Between(row[first[x]], row[second[x]], fraction[x]);
}

// Source rows are interpolated along x once and kept while target rows still need them.
VISTATRIM_VARIANT_BODY void ResizePlaneBody(const float* src, int32_t sourceCols, float* dst,
                                            int32_t cols, int32_t rows, const AxisTable& columnAxis,
                                            const AxisTable& rowAxis, float* upper, float* lower)
{
    int32_t upperRow = -1;
    int32_t lowerRow = -1;
    for (int32_t y = 0; y < rows; ++y) {
        const int32_t first = rowAxis.First[y];
        const int32_t second = rowAxis.Second[y];
        if (upperRow != first && lowerRow == first) {
            std::swap(upper, lower);
            std::swap(upperRow, lowerRow);
        }
        if (upperRow != first) {
            InterpolateRow(src + static_cast<int64_t>(first) * sourceCols, columnAxis, upper, cols);
            upperRow = first;
        }
        if (second != first && lowerRow != second) {
            InterpolateRow(src + static_cast<int64_t>(second) * sourceCols, columnAxis, lower,
                           cols);
            lowerRow = second;
        }
        const float* above = upper;
        const float* below = second == first ? upper : lower;
        const float fraction = rowAxis.Fraction[y];
        float* __restrict__ out = dst + static_cast<int64_t>(y) * cols;
        for (int32_t x = 0; x < cols; ++x)
            out[x] = Between(above[x], below[x], fraction);
    }
}
VISTATRIM_VARIANTS(ResizePlane,
                   (const float* src, int32_t sourceCols, float* dst, int32_t cols, int32_t rows,
                    const AxisTable& columnAxis, const AxisTable& rowAxis, float* upper,
                    float* lower),
                   (src, sourceCols, dst, cols, rows, columnAxis, rowAxis, upper, lower))

int32_t CheckSizes(const CPlaneStack& source, const CPlaneStack& target)
{
    const int32_t smallest =
        std::min(std::min(source.Cols, source.Rows), std::min(target.Cols, target.Rows));
    const bool empty = source.Cols == 0 || source.Rows == 0 || target.Cols == 0 || target.Rows == 0;
    // An empty size is reported before an invalid one.
    if (empty)
        return KernelNoOperation;
    return smallest < 0 ? KernelBadSize : KernelSuccess;
}

// Scratch for `floats` four-byte numbers; null if the size does not fit the type.
void* AllocateFloats(int64_t floats)
{
    const int64_t bytes = floats * static_cast<int64_t>(sizeof(float));
    return bytes > std::numeric_limits<int32_t>::max()
               ? nullptr
               : AllocateKernelBuffer(static_cast<int32_t>(bytes));
}

// Tables and working memory of one resize, shared by all its planes.
struct ResizeState {
    void* Tables = nullptr;
    void* Work = nullptr;
    AxisTable Columns = {};
    AxisTable Rows = {};
};

// A source of less than two pixels in either direction has no cell to interpolate in.
int32_t BuildAxisTables(const CPlaneStack& source, const CPlaneStack& target, ResizeState& state)
{
    if (source.Cols < 2 || source.Rows < 2)
        return KernelBadSize;
    state.Tables = AllocateFloats(3 * (static_cast<int64_t>(target.Cols) + target.Rows));
    if (!state.Tables)
        return KernelNullPointer;
    int32_t* next = static_cast<int32_t*>(state.Tables);
    for (AxisTable* axis : {&state.Columns, &state.Rows}) {
        const int64_t length = axis == &state.Columns ? target.Cols : target.Rows;
        axis->First = next;
        axis->Second = next + length;
        axis->Fraction = reinterpret_cast<float*>(next + 2 * length);
        next += 3 * length;
    }
    BuildAxisTable(source.Cols, target.Cols, state.Columns);
    BuildAxisTable(source.Rows, target.Rows, state.Rows);
    return KernelSuccess;
}

int32_t ResizeKernel(const float* src, const CPlaneStack& source, float* dst,
                     const CPlaneStack& target, const ResizeState& state)
{
    if (!src || !dst || !state.Tables || !state.Work)
        return KernelNullPointer;
    float* work = static_cast<float*>(state.Work);
    ResizePlane(src, source.Cols, dst, target.Cols, target.Rows, state.Columns, state.Rows, work,
                work + target.Cols);
    return KernelSuccess;
}

} // namespace

// A failure to build the tables is not reported; each plane's kernel then reports the missing
// tables.
void ResizeStackLinear(CPlaneStack source, CPlaneStack target)
{
    ResizeState state;
    int32_t status = CheckSizes(source, target);
    if (status != KernelSuccess)
        std::cerr << StatusText(status) << std::endl;
    else if (BuildAxisTables(source, target, state) == KernelSuccess)
        state.Work = AllocateFloats(2 * static_cast<int64_t>(target.Cols));
    for (size_t i = 0; i < static_cast<size_t>(std::max(source.PlaneCount, 0)); ++i) {
        status = ResizeKernel(source.Planes[i], source, target.Planes[i], target, state);
        if (status != KernelSuccess)
            std::cerr << StatusText(status) << std::endl;
    }
    FreeKernelBuffer(state.Work);
    FreeKernelBuffer(state.Tables);
}

} // namespace vistaTrim
