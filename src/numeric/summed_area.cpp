#include "numeric/summed_area.h"

#include <algorithm>
#include <cstddef>

#include "numeric/aligned_memory.h"
#include "numeric/isa_variants.h"

namespace vistaTrim {

namespace {

constexpr size_t kTableAlignment = 64;
constexpr ptrdiff_t kDoublesPerLine = 8; // of the cache
constexpr size_t kFloatsPerLine = 16;

// ---- Double tables ----

// Columns first .. last - 1 of one row below the first.
inline void AddRow(const float* map, const double* above, double* out, ptrdiff_t first,
                   ptrdiff_t last)
{
    ptrdiff_t c = first;
    if (c == 0 && c < last) {
        out[0] = static_cast<double>(map[0]) + above[0];
        ++c;
    }
    for (; c < last; ++c)
        out[c] = ((out[c - 1] + above[c]) - above[c - 1]) + static_cast<double>(map[c]);
}

// Each element depends on its left neighbour through three additions, so a single row leaves the
// adders idle. Six rows run together, each one column behind the row above: six independent chains,
// and what a row needs from above is still in a register. More rows run out of registers.
constexpr ptrdiff_t kFrontRows = kTableBand;

// Rows r .. r + kFrontRows - 1, r > 0, of a table with more than kFrontRows columns. more: at least
// kFrontRows rows follow.
void AddRowsSkewed(const float* map, double* table, ptrdiff_t r, ptrdiff_t cols, bool more)
{
    // Fills row i up to the column where its part of the common front begins.
    for (ptrdiff_t i = 0; i < kFrontRows; ++i)
        AddRow(map + (r + i) * cols, table + (r + i - 1) * cols, table + (r + i) * cols, 0,
               kFrontRows - i);

    const float* const source = map + r * cols;
    const double* const above = table + (r - 1) * cols;
    double* const out = table + r * cols;
    double left[kFrontRows];      // the element before this one in the row
    double aboveLeft[kFrontRows]; // the one above that
    for (ptrdiff_t i = 0; i < kFrontRows; ++i) {
        left[i] = out[i * cols + kFrontRows - 1 - i];
        aboveLeft[i] = above[i * cols + kFrontRows - 1 - i];
    }
    // Rows are too short for the hardware prefetcher, and a cache line must be loaded before it can
    // be written. So prefetch the same columns of the next rows, once per cache line of the table;
    // any alignment works. The map's lines are prefetched twice this way. Without next rows the
    // prefetch hits the current line, which is cached already.
    const ptrdiff_t ahead = more ? kFrontRows * cols : 0;
    for (ptrdiff_t front = kFrontRows; front < cols; ++front) {
        const bool askAhead = front % kDoublesPerLine == 0;
        // Bottom row first, so that left[i - 1] is still the element above this one.
        for (ptrdiff_t i = kFrontRows - 1; i >= 0; --i) {
            const ptrdiff_t at = i * cols + front - i;
            const double up = i > 0 ? left[i - 1] : above[front];
            left[i] = ((left[i] + up) - aboveLeft[i]) + static_cast<double>(source[at]);
            aboveLeft[i] = up;
            out[at] = left[i];
            if (askAhead) {
                __builtin_prefetch(out + at + ahead, 1);
                __builtin_prefetch(source + at + ahead);
            }
        }
    }

    // The ends of the rows that lag behind.
    for (ptrdiff_t i = 1; i < kFrontRows; ++i)
        AddRow(source + i * cols, above + i * cols, out + i * cols, cols - i, cols);
}

// ---- Float tables ----

// A running sum depends on itself at every element, but the sums of different rows are independent,
// so eight rows run side by side. The sum down the columns is added on the way: it needs the row
// sums in the order in which they are computed.
constexpr size_t kRowsAtOnce = 8;

// Prefetches the current columns of the next eight rows, once per cache line; rows need no
// alignment. ahead is the distance to those rows, 0 if there are none.
VISTATRIM_VARIANT_BODY void PrefetchNextRows(float* present, size_t stride, size_t c, size_t ahead)
{
    if (ahead != 0 && c % kFloatsPerLine == 0)
        for (size_t k = 0; k < kRowsAtOnce; ++k)
            __builtin_prefetch(present + k * stride + ahead, 1);
}

// rows table rows below `above`; rows is a constant once this is inlined.
VISTATRIM_VARIANT_BODY void AddPlaneRows(const float* __restrict__ plane, float* __restrict__ above,
                                         size_t cols, size_t rows, size_t ahead)
{
    const size_t stride = cols + 1;
    float rowSum[kRowsAtOnce] = {};
    for (size_t k = 1; k <= rows; ++k)
        above[k * stride] = 0.0f;
    for (size_t c = 0; c < cols; ++c) {
        float sum = above[c + 1];
        for (size_t k = 0; k < rows; ++k) {
            rowSum[k] = rowSum[k] + plane[k * cols + c];
            sum = sum + rowSum[k];
            above[(k + 1) * stride + c + 1] = sum;
        }
        PrefetchNextRows(above + stride + c + 1, stride, c, ahead);
    }
}

VISTATRIM_VARIANT_BODY void AddPairRows(const float* __restrict__ planeA,
                                        const float* __restrict__ planeB, float* __restrict__ above,
                                        size_t cols, size_t rows, size_t ahead)
{
    const size_t stride = cols + 1;
    float rowSum[kRowsAtOnce] = {};
    for (size_t k = 1; k <= rows; ++k)
        above[k * stride] = 0.0f;
    for (size_t c = 0; c < cols; ++c) {
        float sum = above[c + 1];
        for (size_t k = 0; k < rows; ++k) {
            const double product = static_cast<double>(planeA[k * cols + c]) *
                                   static_cast<double>(planeB[k * cols + c]);
            rowSum[k] = static_cast<float>(product + static_cast<double>(rowSum[k]));
            sum = sum + rowSum[k];
            above[(k + 1) * stride + c + 1] = sum;
        }
        PrefetchNextRows(above + stride + c + 1, stride, c, ahead);
    }
}

float* AllocateTable(const CPlaneStack& stack)
{
    const size_t elements =
        (static_cast<size_t>(stack.Rows) + 1) * (static_cast<size_t>(stack.Cols) + 1);
    return static_cast<float*>(AllocateAligned(elements * sizeof(float), kTableAlignment));
}

} // namespace

void BuildSummedAreaTable(const CFloatMatrix& map, CDoubleMatrix& table)
{
    ExtendSummedAreaTable(map, table, 0, map.Rows);
}

void ExtendSummedAreaTable(const CFloatMatrix& map, CDoubleMatrix& table, uint32_t firstRow,
                           uint32_t rows)
{
    const ptrdiff_t height = map.Rows;
    const ptrdiff_t cols = map.Cols;
    const ptrdiff_t end = ptrdiff_t{firstRow} + rows;
    const float* p = map.Data;
    double* t = table.Data;

    ptrdiff_t r = firstRow;
    if (r == 0) {
        t[0] = p[0];
        for (ptrdiff_t c = 1; c < cols; ++c)
            t[c] = static_cast<double>(p[c]) + t[c - 1];
        r = 1;
    }
    if (cols > kFrontRows)
        for (; r + kFrontRows <= end; r += kFrontRows)
            AddRowsSkewed(p, t, r, cols, r + 2 * kFrontRows <= height);
    for (; r < end; ++r)
        AddRow(p + r * cols, t + (r - 1) * cols, t + r * cols, 0, cols);
}

void BuildPlaneTable(const float* plane, float* table, int32_t cols, int32_t rows)
{
    const size_t width = static_cast<size_t>(cols);
    const size_t height = static_cast<size_t>(rows);
    const size_t stride = width + 1;
    std::fill_n(table, stride, 0.0f);
    size_t r = 0;
    for (; r + kRowsAtOnce <= height; r += kRowsAtOnce) {
        const size_t ahead = r + 2 * kRowsAtOnce <= height ? kRowsAtOnce * stride : 0;
        AddPlaneRows(plane + r * width, table + r * stride, width, kRowsAtOnce, ahead);
    }
    for (; r < height; ++r)
        AddPlaneRows(plane + r * width, table + r * stride, width, 1, 0);
}

void BuildPairTable(const float* planeA, const float* planeB, float* table, int32_t cols,
                    int32_t rows)
{
    const size_t width = static_cast<size_t>(cols);
    const size_t height = static_cast<size_t>(rows);
    const size_t stride = width + 1;
    std::fill_n(table, stride, 0.0f);
    size_t r = 0;
    for (; r + kRowsAtOnce <= height; r += kRowsAtOnce) {
        const size_t ahead = r + 2 * kRowsAtOnce <= height ? kRowsAtOnce * stride : 0;
        AddPairRows(planeA + r * width, planeB + r * width, table + r * stride, width, kRowsAtOnce,
                    ahead);
    }
    for (; r < height; ++r)
        AddPairRows(planeA + r * width, planeB + r * width, table + r * stride, width, 1, 0);
}

void BuildTables(CPlaneStack& stack)
{
    stack.TablesBuilt = true;
    for (float*& table : stack.PlaneTables)
        table = AllocateTable(stack);
    for (float*& table : stack.PairTables)
        table = AllocateTable(stack);

    const size_t n = static_cast<size_t>(stack.PlaneCount);
    for (size_t k = 0; k < n; ++k)
        BuildPlaneTable(stack.Planes[k], stack.PlaneTables[k], stack.Cols, stack.Rows);
    size_t pair = 0;
    for (size_t i = 0; i < n; ++i)
        for (size_t j = i; j < n; ++j)
            BuildPairTable(stack.Planes[i], stack.Planes[j], stack.PairTables[pair++], stack.Cols,
                           stack.Rows);
}

} // namespace vistaTrim
