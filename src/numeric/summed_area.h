// Summed-area tables (F. Crow, Summed-area tables for texture mapping, 1984), of two kinds.
//
// The double kind serves scoring: same shape as its map, element (r, c) = sum over rows 0..r and
// columns 0..c, no zero row or column: readers treat an index below 0 as 0.
//
// The float kind serves the border statistics: (rows + 1) x (cols + 1), a zero row and column
// first. Its sums exceed the 24 bits of a float on real pictures. That is accepted: the statistics
// depend on this rounding.
#ifndef VISTATRIM_NUMERIC_SUMMED_AREA_H
#define VISTATRIM_NUMERIC_SUMMED_AREA_H

#include <cstddef>
#include <cstdint>

#include "numeric/matrix.h"
#include "numeric/plane_stack.h"

namespace vistaTrim {

// map must have at least one element; table is already sized.
void BuildSummedAreaTable(const CFloatMatrix& map, CDoubleMatrix& table);
// Rows firstRow .. firstRow + rows - 1 of it; all rows above must be filled. Fastest for kTableBand
// rows, or a multiple of them, after the first kTableBand + 1.
void ExtendSummedAreaTable(const CFloatMatrix& map, CDoubleMatrix& table, uint32_t firstRow,
                           uint32_t rows);
constexpr uint32_t kTableBand = 6;
// The same for several maps of one size, with the same bits. Faster: four tables are filled at
// once, one in each lane of a register, where registers hold four doubles.
void ExtendSummedAreaTables(const CFloatMatrix* maps, CDoubleMatrix* tables, size_t count,
                            uint32_t firstRow, uint32_t rows);

// Sum of the table's map over an inclusive rectangle: ((A - B) - C) + D, in this order.
// The last limits must lie inside the table; crossed limits give the signed sum.
inline double RegionSum(const CDoubleMatrix& table, int32_t firstRow, int32_t firstCol,
                        int32_t lastRow, int32_t lastCol)
{
    const double* data = table.Data;
    const int64_t stride = table.Cols;
    const double a = data[lastRow * stride + lastCol];
    const double b = firstRow < 1 ? 0.0 : data[(firstRow - 1) * stride + lastCol];
    const double c = firstCol < 1 ? 0.0 : data[lastRow * stride + (firstCol - 1)];
    const double d =
        firstRow < 1 || firstCol < 1 ? 0.0 : data[(firstRow - 1) * stride + (firstCol - 1)];
    return ((a - b) - c) + d;
}

inline double RegionMean(const CDoubleMatrix& table, int32_t firstRow, int32_t firstCol,
                         int32_t lastRow, int32_t lastCol, double denominator)
{
    return RegionSum(table, firstRow, firstCol, lastRow, lastCol) / denominator;
}

// Each step rounded to float: running sums along the rows first, then down the columns.
void BuildPlaneTable(const float* plane, float* table, int32_t cols, int32_t rows);
// The same over the products of two planes.
void BuildPairTable(const float* planeA, const float* planeB, float* table, int32_t cols,
                    int32_t rows);
// Allocates and fills all plane and pair tables of a stack; once per stack.
void BuildTables(CPlaneStack& stack);

} // namespace vistaTrim

#endif
