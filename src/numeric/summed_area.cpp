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

// ---- Four double tables at once ----

#if defined(__x86_64__)

// One table in each lane of a register. Registers of two doubles gain nothing over the skewed rows:
// the transposition costs what the lanes save in additions. Eight lanes were no faster than four.
constexpr int32_t kLanes = 4;
// Rows that run together, each one block of columns behind the row above: three independent chains.
constexpr ptrdiff_t kLaneRows = 3;
static_assert(kTableBand % kLaneRows == 0, "no rows of a band are left over");

// StoredDoubles lie in memory, aligned like a double. Typedefs, because that is what the attributes
// are documented for.

// NOLINTBEGIN(modernize-use-using)
typedef double Doubles __attribute__((vector_size(kLanes * sizeof(double))));
typedef double StoredDoubles
    __attribute__((vector_size(kLanes * sizeof(double)), aligned(sizeof(double)), may_alias));
// NOLINTEND(modernize-use-using)

struct FourTables {
    const float* Map[kLanes];
    double* Table[kLanes];
    ptrdiff_t Cols;
};

VISTATRIM_VARIANT_BODY Doubles Widened(const float* from)
{
    return Doubles{static_cast<double>(from[0]), static_cast<double>(from[1]),
                   static_cast<double>(from[2]), static_cast<double>(from[3])};
}

VISTATRIM_VARIANT_BODY void Transpose(Doubles* block)
{
    const Doubles even01 = __builtin_shufflevector(block[0], block[1], 0, 4, 2, 6);
    const Doubles odd01 = __builtin_shufflevector(block[0], block[1], 1, 5, 3, 7);
    const Doubles even23 = __builtin_shufflevector(block[2], block[3], 0, 4, 2, 6);
    const Doubles odd23 = __builtin_shufflevector(block[2], block[3], 1, 5, 3, 7);
    block[0] = __builtin_shufflevector(even01, even23, 0, 1, 4, 5);
    block[1] = __builtin_shufflevector(odd01, odd23, 0, 1, 4, 5);
    block[2] = __builtin_shufflevector(even01, even23, 2, 3, 6, 7);
    block[3] = __builtin_shufflevector(odd01, odd23, 2, 3, 6, 7);
}

// The last elements of a row in progress and of the row above, in the lanes of their tables.
struct RowFront {
    Doubles Left;
    Doubles AboveLeft;
};

// Four columns of row r, from column c on. above and out hold one column in each element.
VISTATRIM_VARIANT_BODY void AddBlock(const FourTables& four, ptrdiff_t r, ptrdiff_t c,
                                     const Doubles* above, RowFront& front, Doubles* out)
{
    const ptrdiff_t at = r * four.Cols + c;
    Doubles block[kLanes];
    for (int32_t k = 0; k < kLanes; ++k)
        block[k] = Widened(four.Map[k] + at);
    Transpose(block);
    Doubles left = front.Left;
    Doubles aboveLeft = front.AboveLeft;
    for (int32_t k = 0; k < kLanes; ++k) {
        // Nothing is subtracted in the first column: that would turn -0 into +0.
        if (k == 0 && c == 0)
            left = block[k] + above[k];
        else
            left = ((left + above[k]) - aboveLeft) + block[k];
        aboveLeft = above[k];
        out[k] = left;
        block[k] = left;
    }
    front = {left, aboveLeft};
    Transpose(block);
    for (int32_t k = 0; k < kLanes; ++k)
        *reinterpret_cast<StoredDoubles*>(four.Table[k] + at) = block[k];
}

// The rows in progress: the block above the first row, then the last block of each row.
struct LaneRows {
    Doubles Lines[kLaneRows + 1][kLanes];
    RowFront Fronts[kLaneRows];
};

// The block of row r + i in this step, if the row has one. i is a constant once this is inlined.
VISTATRIM_VARIANT_BODY void AdvanceRow(const FourTables& four, ptrdiff_t r, ptrdiff_t i,
                                       ptrdiff_t step, ptrdiff_t blocks, LaneRows& rows)
{
    const ptrdiff_t block = step - i;
    if (block < 0 || block >= blocks)
        return;
    const ptrdiff_t c = block * kLanes;
    if (i == 0) {
        for (int32_t k = 0; k < kLanes; ++k)
            rows.Lines[0][k] =
                *reinterpret_cast<const StoredDoubles*>(four.Table[k] + (r - 1) * four.Cols + c);
        Transpose(rows.Lines[0]);
    }
    AddBlock(four, r + i, c, rows.Lines[i], rows.Fronts[i], rows.Lines[i + 1]);
}

// Rows r .. r + kLaneRows - 1, r > 0, of all four tables.
__attribute__((target("avx2"))) void AddRowsInLanes(const FourTables& four, ptrdiff_t r)
{
    const ptrdiff_t blocks = four.Cols / kLanes;
    LaneRows rows = {};
    for (ptrdiff_t step = 0; step < blocks + kLaneRows - 1; ++step) {
        // Bottom row first, so that the block above it is not yet overwritten.
        static_assert(kLaneRows == 3, "one call for each row");
        AdvanceRow(four, r, 2, step, blocks, rows);
        AdvanceRow(four, r, 1, step, blocks, rows);
        AdvanceRow(four, r, 0, step, blocks, rows);
    }
    if (blocks * kLanes < four.Cols)
        for (ptrdiff_t row = r; row < r + kLaneRows; ++row)
            for (int32_t k = 0; k < kLanes; ++k)
                AddRow(four.Map[k] + row * four.Cols, four.Table[k] + (row - 1) * four.Cols,
                       four.Table[k] + row * four.Cols, blocks * kLanes, four.Cols);
}

void ExtendFourTables(const CFloatMatrix* maps, CDoubleMatrix* tables, uint32_t firstRow,
                      uint32_t rows)
{
    FourTables four;
    four.Cols = maps[0].Cols;
    for (int32_t k = 0; k < kLanes; ++k) {
        four.Map[k] = maps[k].Data;
        four.Table[k] = tables[k].Data;
    }
    const ptrdiff_t end = ptrdiff_t{firstRow} + rows;
    ptrdiff_t r = firstRow;
    const auto extendEach = [&](ptrdiff_t to) {
        for (int32_t k = 0; k < kLanes; ++k)
            ExtendSummedAreaTable(maps[k], tables[k], static_cast<uint32_t>(r),
                                  static_cast<uint32_t>(to - r));
        r = to;
    };
    if (r == 0)
        extendEach(std::min<ptrdiff_t>(end, 1));
    for (; r + kLaneRows <= end; r += kLaneRows)
        AddRowsInLanes(four, r);
    extendEach(end);
}

#endif

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

void ExtendSummedAreaTables(const CFloatMatrix* maps, CDoubleMatrix* tables, size_t count,
                            uint32_t firstRow, uint32_t rows)
{
    size_t k = 0;
#if defined(__x86_64__)
    if (ActiveIsaVariant() >= IsaVariantAvx2)
        for (; k + kLanes <= count; k += kLanes)
            ExtendFourTables(maps + k, tables + k, firstRow, rows);
#endif
    for (; k < count; ++k)
        ExtendSummedAreaTable(maps[k], tables[k], firstRow, rows);
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
