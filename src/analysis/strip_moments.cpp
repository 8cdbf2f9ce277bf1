#include "analysis/strip_moments.h"

#include <algorithm>

#include "numeric/isa_variants.h"

namespace vistaTrim {

namespace {

constexpr size_t kPlanes = 3;
constexpr size_t kPairs = 6;
constexpr size_t kTables = kPlanes + kPairs;

// Rows summed side by side. A running sum depends on itself at each pixel, but the sums of
// different rows are independent.
constexpr int32_t kLanes = 16;
// Columns turned into lanes at a time: three blocks of them fit into the first-level cache.
constexpr int32_t kBlockCols = 64;

// The sums of kLanes rows, from their first column to the current one.
struct RowSums {
    float Of[kTables][kLanes];
};

// Pixels by column, so that the rows lie side by side.
struct ColumnBlock {
    float Of[kPlanes][kBlockCols][kLanes];
};

VISTATRIM_VARIANT_BODY void TurnIntoLanesBody(const float* const* rows, int32_t cols,
                                              float (*lanes)[kLanes])
{
    for (int32_t c = 0; c < cols; ++c)
        for (int32_t k = 0; k < kLanes; ++k)
            lanes[c][k] = rows[k][c];
}

VISTATRIM_VARIANT_BODY void AddPlaneColumn(const float* x, float* __restrict__ sum)
{
    for (int32_t k = 0; k < kLanes; ++k)
        sum[k] = sum[k] + x[k];
}

// The product of two floats is exact in double, and the sum is rounded to float.
VISTATRIM_VARIANT_BODY void AddPairColumn(const float* x, const float* y, float* __restrict__ sum)
{
    for (int32_t k = 0; k < kLanes; ++k) {
        const double product = static_cast<double>(x[k]) * static_cast<double>(y[k]);
        sum[k] = static_cast<float>(product + static_cast<double>(sum[k]));
    }
}

VISTATRIM_VARIANT_BODY void AddColumnsBody(const float* const (*rows)[kLanes], int32_t firstCol,
                                           int32_t cols, ColumnBlock& block, RowSums& sums)
{
    for (size_t plane = 0; plane < kPlanes; ++plane) {
        const float* starts[kLanes];
        for (int32_t k = 0; k < kLanes; ++k)
            starts[k] = rows[plane][k] + firstCol;
        TurnIntoLanesBody(starts, cols, block.Of[plane]);
    }
    RowSums running = sums;
    for (int32_t c = 0; c < cols; ++c) {
        const float* const x = block.Of[0][c];
        const float* const y = block.Of[1][c];
        const float* const z = block.Of[2][c];
        AddPlaneColumn(x, running.Of[0]);
        AddPlaneColumn(y, running.Of[1]);
        AddPlaneColumn(z, running.Of[2]);
        AddPairColumn(x, x, running.Of[3]);
        AddPairColumn(x, y, running.Of[4]);
        AddPairColumn(x, z, running.Of[5]);
        AddPairColumn(y, y, running.Of[6]);
        AddPairColumn(y, z, running.Of[7]);
        AddPairColumn(z, z, running.Of[8]);
    }
    sums = running;
}
VISTATRIM_VARIANTS(AddColumns,
                   (const float* const (*rows)[kLanes], int32_t firstCol, int32_t cols,
                    ColumnBlock& block, RowSums& sums),
                   (rows, firstCol, cols, block, sums))

void TakePlace(std::vector<int32_t>& places, int32_t place)
{
    if (place > 0)
        places.push_back(place);
}

void SortPlaces(std::vector<int32_t>& places)
{
    std::sort(places.begin(), places.end());
    places.erase(std::unique(places.begin(), places.end()), places.end());
}

size_t IndexOf(const std::vector<int32_t>& places, int32_t place)
{
    return static_cast<size_t>(std::lower_bound(places.begin(), places.end(), place) -
                               places.begin());
}

} // namespace

CStripMoments::CStripMoments(const CPlaneStack& planes, const std::vector<CStripRect>& strips)
{
    for (const CStripRect& strip : strips) {
        TakePlace(CornerRows, strip.Top);
        TakePlace(CornerRows, strip.Bottom + 1);
        TakePlace(CornerCols, strip.Left);
        TakePlace(CornerCols, strip.Right + 1);
    }
    SortPlaces(CornerRows);
    SortPlaces(CornerCols);
    const size_t width = CornerCols.size();
    const size_t height = CornerRows.size();
    Corners.resize(kTables * height * width);

    // A table holds running sums along the rows, which are then summed down the columns. Only
    // columns that contain a corner are summed down.
    std::vector<float> down(kTables * width, 0.0f);
    ColumnBlock block;
    std::vector<RowSums> atCorner(width);
    size_t nextCornerRow = 0;
    for (int32_t firstRow = 0; firstRow < planes.Rows; firstRow += kLanes) {
        // The last lanes may have no row of their own; they repeat the last row, unread.
        const int32_t rows = std::min(planes.Rows - firstRow, kLanes);
        const float* starts[kPlanes][kLanes];
        for (size_t plane = 0; plane < kPlanes; ++plane)
            for (int32_t k = 0; k < kLanes; ++k)
                starts[plane][k] =
                    planes.Planes[plane] +
                    static_cast<int64_t>(firstRow + std::min(k, rows - 1)) * planes.Cols;

        RowSums sums = {};
        int32_t col = 0;
        for (size_t corner = 0; corner < width; ++corner) {
            while (col < CornerCols[corner]) {
                const int32_t cols = std::min(CornerCols[corner] - col, kBlockCols);
                AddColumns(starts, col, cols, block, sums);
                col += cols;
            }
            atCorner[corner] = sums;
        }

        for (int32_t k = 0; k < rows; ++k) {
            for (size_t table = 0; table < kTables; ++table)
                for (size_t corner = 0; corner < width; ++corner) {
                    float& sum = down[table * width + corner];
                    sum = sum + atCorner[corner].Of[table][k];
                }
            if (nextCornerRow < height && CornerRows[nextCornerRow] == firstRow + k + 1) {
                for (size_t table = 0; table < kTables; ++table)
                    std::copy_n(&down[table * width], width,
                                &Corners[(table * height + nextCornerRow) * width]);
                ++nextCornerRow;
            }
        }
    }
}

float CStripMoments::Corner(size_t table, int32_t row, int32_t col) const
{
    if (row == 0 || col == 0)
        return 0.0f;
    return Corners[(table * CornerRows.size() + IndexOf(CornerRows, row)) * CornerCols.size() +
                   IndexOf(CornerCols, col)];
}

// The order of ComputeStripStatistics.
float CStripMoments::StripSum(size_t table, const CStripRect& strip) const
{
    const double lastLast = Corner(table, strip.Bottom + 1, strip.Right + 1);
    const double firstFirst = Corner(table, strip.Top, strip.Left);
    const double firstLast = Corner(table, strip.Top, strip.Right + 1);
    const double lastFirst = Corner(table, strip.Bottom + 1, strip.Left);
    return static_cast<float>(lastLast + firstFirst - firstLast - lastFirst);
}

void CStripMoments::Statistics(const std::vector<CStripRect>& group, float* means,
                               float* covariances) const
{
    float sums[kTables] = {};
    float area = 0.0f;
    for (const CStripRect& strip : group) {
        for (size_t table = 0; table < kTables; ++table)
            sums[table] += StripSum(table, strip);
        area += static_cast<float>(strip.Area);
    }
    StatisticsOfSums(static_cast<int32_t>(kPlanes), sums, area, means, covariances);
}

} // namespace vistaTrim
