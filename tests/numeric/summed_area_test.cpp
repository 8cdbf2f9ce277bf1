#include "numeric/summed_area.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <deque>
#include <limits>
#include <memory>
#include <vector>

#include "numeric/kernel_test_support.h"

namespace vistaTrim {
namespace {

// The definitions, row after row: running sums along the rows, then down the columns.
void SlowPlaneTable(const float* plane, float* table, int32_t cols, int32_t rows)
{
    const size_t width = static_cast<size_t>(cols);
    const size_t height = static_cast<size_t>(rows);
    const size_t stride = width + 1;
    std::fill_n(table, stride, 0.0f);
    for (size_t r = 0; r < height; ++r) {
        float* out = table + (r + 1) * stride;
        out[0] = 0.0f;
        float sum = 0.0f;
        for (size_t c = 0; c < width; ++c) {
            sum = sum + plane[r * width + c];
            out[c + 1] = sum;
        }
    }
    for (size_t c = 1; c <= width; ++c) {
        float sum = 0.0f;
        for (size_t r = 1; r <= height; ++r) {
            sum = sum + table[r * stride + c];
            table[r * stride + c] = sum;
        }
    }
}

void SlowPairTable(const float* planeA, const float* planeB, float* table, int32_t cols,
                   int32_t rows)
{
    const size_t width = static_cast<size_t>(cols);
    const size_t height = static_cast<size_t>(rows);
    const size_t stride = width + 1;
    std::fill_n(table, stride, 0.0f);
    for (size_t r = 0; r < height; ++r) {
        float* out = table + (r + 1) * stride;
        out[0] = 0.0f;
        float sum = 0.0f;
        for (size_t c = 0; c < width; ++c) {
            // Exact: two floats have 48 bits between them.
            const double product = static_cast<double>(planeA[r * width + c]) *
                                   static_cast<double>(planeB[r * width + c]);
            sum = static_cast<float>(product + static_cast<double>(sum));
            out[c + 1] = sum;
        }
    }
    for (size_t c = 1; c <= width; ++c) {
        float sum = 0.0f;
        for (size_t r = 1; r <= height; ++r) {
            sum = sum + table[r * stride + c];
            table[r * stride + c] = sum;
        }
    }
}

// A matrix that views storage owned elsewhere: with a Count of 0 it frees nothing.
void Borrow(CFloatMatrix& matrix, const GuardedPlane& plane)
{
    matrix.Rows = static_cast<uint32_t>(plane.Rows);
    matrix.Cols = static_cast<uint32_t>(plane.Cols);
    matrix.Data = const_cast<float*>(plane.Data());
}

uint64_t BitsOf(double value)
{
    uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

// A double table between guards.
class GuardedTable {
public:
    GuardedTable(int32_t cols, int32_t rows)
        : storage(2 * kGuard + static_cast<size_t>(cols) * static_cast<size_t>(rows), kGuardValue)
    {
        Table.Rows = static_cast<uint32_t>(rows);
        Table.Cols = static_cast<uint32_t>(cols);
        Table.Data = storage.data() + kGuard;
    }
    bool GuardsIntact() const
    {
        for (size_t i = 0; i < kGuard; ++i)
            if (storage[i] != kGuardValue || storage[storage.size() - 1 - i] != kGuardValue)
                return false;
        return true;
    }
    // No element from this one on has been written.
    bool UntouchedFrom(size_t element) const
    {
        return std::all_of(storage.begin() + static_cast<ptrdiff_t>(kGuard + element),
                           storage.end(), [](double value) { return value == kGuardValue; });
    }
    std::vector<uint64_t> Bits() const
    {
        std::vector<uint64_t> bits;
        for (size_t i = kGuard; i < storage.size() - kGuard; ++i)
            bits.push_back(BitsOf(storage[i]));
        return bits;
    }

    CDoubleMatrix Table;

private:
    static constexpr size_t kGuard = 67;
    static constexpr double kGuardValue = -1.0e300;
    std::vector<double> storage;
};

// The definition, with nothing kept between elements.
std::vector<uint64_t> TableInStatedOrder(const GuardedPlane& map)
{
    const size_t cols = static_cast<size_t>(map.Cols);
    const size_t rows = static_cast<size_t>(map.Rows);
    std::vector<double> t(cols * rows);
    const auto p = [&](size_t r, size_t c) {
        return static_cast<double>(map.Data()[r * cols + c]);
    };
    for (size_t r = 0; r < rows; ++r)
        for (size_t c = 0; c < cols; ++c) {
            double& out = t[r * cols + c];
            if (r == 0 && c == 0) {
                out = p(0, 0);
            } else if (c == 0) {
                out = p(r, 0) + t[(r - 1) * cols];
            } else if (r == 0) {
                out = p(0, c) + t[c - 1];
            } else {
                out = t[r * cols + c - 1] + t[(r - 1) * cols + c];
                out -= t[(r - 1) * cols + c - 1];
                out += p(r, c);
            }
        }
    std::vector<uint64_t> bits;
    for (double value : t)
        bits.push_back(BitsOf(value));
    return bits;
}

double SlowSum(const GuardedPlane& map, int32_t firstRow, int32_t firstCol, int32_t lastRow,
               int32_t lastCol)
{
    double sum = 0.0;
    for (int32_t r = firstRow; r <= lastRow; ++r)
        for (int32_t c = firstCol; c <= lastCol; ++c)
            sum += static_cast<double>(map.At(c, r));
    return sum;
}

CDoubleMatrix& Build(const GuardedPlane& map, GuardedTable& table)
{
    CFloatMatrix matrix;
    Borrow(matrix, map);
    BuildSummedAreaTable(matrix, table.Table);
    return table.Table;
}

// Thirds over a wide range of magnitudes, so that even short sums are rounded.
GuardedPlane RoundedMap(const PlaneSize& size, uint32_t seed)
{
    GuardedPlane map = GuardedPlane::Fractions(size.Cols, size.Rows, seed);
    for (int32_t i = 0; i < size.Cols * size.Rows; ++i)
        map.Data()[i] = std::ldexp(map.Data()[i] / 3.0f, 11 * (i % 5));
    return map;
}

// Integers keep every sum exact, so the check is EQ and needs no tolerance.
TEST(SummedAreaTable, SumsEveryRectangleFromTheCorner)
{
    for (const PlaneSize& size : AwkwardSizes()) {
        if (size.Cols * size.Rows > 2000)
            continue;
        SCOPED_TRACE(testing::Message() << size.Cols << " x " << size.Rows);
        const GuardedPlane map = GuardedPlane::WholeNumbers(size.Cols, size.Rows, 1);
        GuardedTable guarded(size.Cols, size.Rows);
        const CDoubleMatrix& table = Build(map, guarded);
        for (int32_t r = 0; r < size.Rows; ++r)
            for (int32_t c = 0; c < size.Cols; ++c)
                ASSERT_EQ(table.Data[r * size.Cols + c], SlowSum(map, 0, 0, r, c));
    }
}

TEST(SummedAreaTable, LastElementIsTheTotal)
{
    const GuardedPlane map = GuardedPlane::WholeNumbers(640, 427, 2);
    GuardedTable guarded(640, 427);
    EXPECT_EQ(Build(map, guarded).Data[640 * 427 - 1], SlowSum(map, 0, 0, 426, 639));
}

TEST(SummedAreaTable, AddsInTheStatedOrderToTheLastBit)
{
    for (const PlaneSize& size : AwkwardSizes()) {
        SCOPED_TRACE(testing::Message() << size.Cols << " x " << size.Rows);
        const GuardedPlane map = RoundedMap(size, 3);
        GuardedTable fast(size.Cols, size.Rows);

        Build(map, fast);

        EXPECT_EQ(fast.Bits(), TableInStatedOrder(map));
        EXPECT_TRUE(fast.GuardsIntact());
        EXPECT_TRUE(map.GuardsIntact());
    }
}

TEST(SummedAreaTable, GrowsByAnyNumberOfRows)
{
    for (const PlaneSize& size : {PlaneSize{1, 30}, {5, 31}, {6, 40}, {7, 29}, {67, 53}}) {
        const GuardedPlane map = GuardedPlane::Fractions(size.Cols, size.Rows, 4);
        for (const uint32_t step : {1U, 2U, 5U, 6U, 7U, 12U, 13U, 100U}) {
            SCOPED_TRACE(testing::Message() << size.Cols << " x " << size.Rows << " by " << step);
            GuardedPlane copy = map;
            CFloatMatrix matrix;
            Borrow(matrix, copy);
            GuardedTable grown(size.Cols, size.Rows);
            const uint32_t height = static_cast<uint32_t>(size.Rows);
            for (uint32_t first = 0; first < height; first += step)
                ExtendSummedAreaTable(matrix, grown.Table, first, std::min(step, height - first));
            EXPECT_EQ(grown.Bits(), TableInStatedOrder(map));
            EXPECT_TRUE(grown.GuardsIntact());
        }
    }
}

// Maps of one size with their tables, grown together by `step` rows at a time. The rows of a map
// are NaN until their step, because the analysis has not finished them earlier.
struct TableSet {
    TableSet(const std::vector<GuardedPlane>& planes, uint32_t step)
    {
        const PlaneSize size = {planes[0].Cols, planes[0].Rows};
        Planes.assign(planes.size(),
                      GuardedPlane(size.Cols, size.Rows, std::numeric_limits<float>::quiet_NaN()));
        const std::unique_ptr<CFloatMatrix[]> maps(new CFloatMatrix[planes.size()]);
        const std::unique_ptr<CDoubleMatrix[]> tables(new CDoubleMatrix[planes.size()]);
        for (size_t k = 0; k < planes.size(); ++k) {
            Tables.emplace_back(size.Cols, size.Rows);
            Borrow(maps[k], Planes[k]);
        }
        for (size_t k = 0; k < planes.size(); ++k) {
            tables[k].Rows = static_cast<uint32_t>(size.Rows);
            tables[k].Cols = static_cast<uint32_t>(size.Cols);
            tables[k].Data = Tables[k].Table.Data;
        }
        const uint32_t height = static_cast<uint32_t>(size.Rows);
        for (uint32_t first = 0; first < height; first += step) {
            const uint32_t rows = std::min(step, height - first);
            const size_t done = size_t{first + rows} * tables[0].Cols;
            for (size_t k = 0; k < planes.size(); ++k)
                std::copy_n(planes[k].Data(), done, Planes[k].Data());
            ExtendSummedAreaTables(maps.get(), tables.get(), planes.size(), first, rows);
            for (const GuardedTable& table : Tables)
                EXPECT_TRUE(table.UntouchedFrom(done)) << "after row " << first + rows;
        }
    }

    std::vector<GuardedPlane> Planes;
    std::deque<GuardedTable> Tables; // a deque, because each points into itself and must not move
};

void ExpectStatedOrder(const TableSet& set)
{
    for (size_t k = 0; k < set.Planes.size(); ++k) {
        EXPECT_EQ(set.Tables[k].Bits(), TableInStatedOrder(set.Planes[k])) << "table " << k;
        EXPECT_TRUE(set.Tables[k].GuardsIntact()) << "table " << k;
        EXPECT_TRUE(set.Planes[k].GuardsIntact()) << "table " << k;
    }
}

std::vector<GuardedPlane> RoundedMaps(const PlaneSize& size, size_t count)
{
    std::vector<GuardedPlane> planes;
    for (size_t k = 0; k < count; ++k)
        planes.push_back(RoundedMap(size, static_cast<uint32_t>(20 + k)));
    return planes;
}

TEST(SummedAreaTables, OfAnyNumberOfMapsAddInTheStatedOrderInEveryIsaVariant)
{
    const VariantScope scope;
    for (const PlaneSize& size : AwkwardSizes())
        for (const size_t count : {1U, 4U, 5U, 10U}) {
            if (size.Cols == 640 && count != 10)
                continue;
            const std::vector<GuardedPlane> planes = RoundedMaps(size, count);
            for (const IsaVariant variant : AvailableVariants()) {
                SCOPED_TRACE(testing::Message() << size.Cols << " x " << size.Rows << ", " << count
                                                << " maps, " << NameOf(variant));
                SelectIsaVariant(variant);
                ExpectStatedOrder(TableSet(planes, static_cast<uint32_t>(size.Rows)));
            }
        }
}

TEST(SummedAreaTables, GrowByAnyNumberOfRows)
{
    const VariantScope scope;
    for (const PlaneSize& size : {PlaneSize{3, 31}, {4, 30}, {13, 29}, {67, 53}})
        for (const uint32_t step : {1U, 2U, 3U, 4U, 6U, 7U, 12U, 13U})
            for (const IsaVariant variant : AvailableVariants()) {
                SCOPED_TRACE(testing::Message() << size.Cols << " x " << size.Rows << " by " << step
                                                << ", " << NameOf(variant));
                SelectIsaVariant(variant);
                ExpectStatedOrder(TableSet(RoundedMaps(size, 6), step));
            }
}

TEST(SummedAreaTables, KeepNegativeZeros)
{
    const VariantScope scope;
    for (const IsaVariant variant : AvailableVariants()) {
        SCOPED_TRACE(NameOf(variant));
        SelectIsaVariant(variant);
        ExpectStatedOrder(TableSet(std::vector<GuardedPlane>(4, GuardedPlane(17, 19, -0.0f)), 19));
    }
}

// Nothing is subtracted in the first column: subtracting a corner would turn -0 into +0.
TEST(SummedAreaTable, KeepsNegativeZeros)
{
    const GuardedPlane map(17, 19, -0.0f);
    GuardedTable fast(17, 19);
    Build(map, fast);
    EXPECT_EQ(fast.Bits(), TableInStatedOrder(map));
}

TEST(RegionSum, FromTheCornerIsTheElementItself)
{
    const GuardedPlane map = GuardedPlane::Fractions(33, 17, 4);
    GuardedTable guarded(33, 17);
    const CDoubleMatrix& table = Build(map, guarded);
    for (int32_t r = 0; r < 17; ++r)
        for (int32_t c = 0; c < 33; ++c)
            EXPECT_EQ(BitsOf(RegionSum(table, 0, 0, r, c)), BitsOf(table.Data[r * 33 + c]));
}

TEST(RegionSum, EqualsTheSlowSumOfEveryRectangle)
{
    const GuardedPlane map = GuardedPlane::WholeNumbers(9, 7, 5);
    GuardedTable guarded(9, 7);
    const CDoubleMatrix& table = Build(map, guarded);
    for (int32_t r0 = 0; r0 < 7; ++r0)
        for (int32_t c0 = 0; c0 < 9; ++c0)
            for (int32_t r1 = r0; r1 < 7; ++r1)
                for (int32_t c1 = c0; c1 < 9; ++c1)
                    ASSERT_EQ(RegionSum(table, r0, c0, r1, c1), SlowSum(map, r0, c0, r1, c1));
}

TEST(RegionSum, TakesItsCornersInOrder)
{
    CDoubleMatrix table;
    table.Resize(2, 2);
    const double large = 9007199254740992.0;
    table.Data[0] = 3.0;         // D
    table.Data[1] = 1.0;         // B
    table.Data[2] = large;       // C
    table.Data[3] = large + 2.0; // A
    // A - B is a tie and rounds to its even neighbour, 2^53; minus C gives 0, plus D gives 3. A - C
    // first would round nothing and give 4.
    EXPECT_EQ(RegionSum(table, 1, 1, 1, 1), 3.0);
}

TEST(RegionSum, SubtractsOnlyTheSideThatExists)
{
    CDoubleMatrix table;
    table.Resize(2, 2);
    table.Data[0] = 1.0;
    table.Data[1] = 10.0;
    table.Data[2] = 100.0;
    table.Data[3] = 1000.0;
    EXPECT_EQ(RegionSum(table, 0, 1, 1, 1), 900.0);
    EXPECT_EQ(RegionSum(table, 1, 0, 1, 1), 990.0);
    EXPECT_EQ(RegionSum(table, 1, 1, 1, 1), 891.0);
    EXPECT_EQ(RegionSum(table, 0, 0, 1, 1), 1000.0);
    // A first row or column below 0 counts as 0.
    EXPECT_EQ(RegionSum(table, -3, -1, 1, 1), 1000.0);
    EXPECT_EQ(RegionSum(table, -3, 1, 1, 1), 900.0);
}

TEST(RegionSum, OfOnePixelIsThePixelUpToTheTablesRounding)
{
    // Every other pixel is tiny, so that the sums are rounded.
    GuardedPlane map = GuardedPlane::Fractions(65, 33, 6);
    for (int32_t i = 1; i < 65 * 33; i += 2)
        map.Data()[i] = std::ldexp(map.Data()[i], -30);
    GuardedTable guarded(65, 33);
    const CDoubleMatrix& table = Build(map, guarded);
    double largest = 0.0;
    for (int32_t r = 0; r < 33; ++r)
        for (int32_t c = 0; c < 65; ++c)
            largest = std::max(largest, std::fabs(RegionSum(table, r, c, r, c) -
                                                  static_cast<double>(map.At(c, r))));
    // 2.8e-11 here, about one unit of the largest sum.
    EXPECT_LT(largest, 1e-10);
    EXPECT_GT(largest, 0.0);
}

TEST(RegionSum, CrossedLimitsGiveTheSignedSum)
{
    const GuardedPlane map = GuardedPlane::WholeNumbers(9, 7, 7);
    GuardedTable guarded(9, 7);
    const CDoubleMatrix& table = Build(map, guarded);
    // Rows 4 to 2 mean minus row 3.
    EXPECT_EQ(RegionSum(table, 4, 2, 2, 6), -SlowSum(map, 3, 2, 3, 6));
    EXPECT_EQ(RegionSum(table, 4, 2, 3, 6), 0.0);
}

TEST(RegionMean, DividesTheSum)
{
    const GuardedPlane map = GuardedPlane::Fractions(9, 7, 8);
    GuardedTable guarded(9, 7);
    const CDoubleMatrix& table = Build(map, guarded);
    // Some of these quotients differ from the product with the reciprocal.
    for (int denominator = 1; denominator < 100; ++denominator)
        EXPECT_EQ(RegionMean(table, 2, 3, 5, 8, denominator),
                  RegionSum(table, 2, 3, 5, 8) / denominator);
}

TEST(RegionMean, OfAZeroMapIsZeroForTheSmallestDenominator)
{
    const GuardedPlane map(9, 7);
    GuardedTable guarded(9, 7);
    EXPECT_EQ(RegionMean(Build(map, guarded), 1, 1, 5, 5, 1e-10), 0.0);
}

// The definition of both float tables: along the rows, then down the columns.
std::vector<float> FloatTable(const GuardedPlane& a, const GuardedPlane* b)
{
    const size_t cols = static_cast<size_t>(a.Cols);
    const size_t rows = static_cast<size_t>(a.Rows);
    const size_t stride = cols + 1;
    std::vector<float> table(stride * (rows + 1), 0.0f);
    for (size_t r = 0; r < rows; ++r) {
        float s = 0.0f;
        for (size_t c = 0; c < cols; ++c) {
            const double p = static_cast<double>(a.Data()[r * cols + c]);
            if (b)
                s = static_cast<float>(p * static_cast<double>(b->Data()[r * cols + c]) +
                                       static_cast<double>(s));
            else
                s = s + a.Data()[r * cols + c];
            table[(r + 1) * stride + c + 1] = s;
        }
    }
    for (size_t c = 1; c <= cols; ++c) {
        float s = 0.0f;
        for (size_t r = 1; r <= rows; ++r) {
            s = s + table[r * stride + c];
            table[r * stride + c] = s;
        }
    }
    return table;
}

std::vector<uint32_t> Bits(const std::vector<float>& values)
{
    std::vector<uint32_t> bits(values.size());
    std::memcpy(bits.data(), values.data(), values.size() * sizeof(float));
    return bits;
}

TEST(PlaneTable, SumsRowsThenColumnsToTheLastBit)
{
    for (const PlaneSize& size : AwkwardSizes()) {
        SCOPED_TRACE(testing::Message() << size.Cols << " x " << size.Rows);
        const GuardedPlane plane = GuardedPlane::Fractions(size.Cols, size.Rows, 9);
        const std::vector<uint32_t> expected = Bits(FloatTable(plane, nullptr));
        GuardedPlane fast(size.Cols + 1, size.Rows + 1, 5.0f);
        GuardedPlane plain(size.Cols + 1, size.Rows + 1, 6.0f);

        BuildPlaneTable(plane.Data(), fast.Data(), size.Cols, size.Rows);
        SlowPlaneTable(plane.Data(), plain.Data(), size.Cols, size.Rows);

        EXPECT_EQ(fast.Bits(), expected);
        EXPECT_EQ(plain.Bits(), expected);
        EXPECT_TRUE(fast.GuardsIntact());
        EXPECT_TRUE(plain.GuardsIntact());
    }
}

TEST(PairTable, SumsProductsToTheLastBit)
{
    for (const PlaneSize& size : AwkwardSizes()) {
        SCOPED_TRACE(testing::Message() << size.Cols << " x " << size.Rows);
        const GuardedPlane a = GuardedPlane::Fractions(size.Cols, size.Rows, 10);
        const GuardedPlane b = GuardedPlane::Fractions(size.Cols, size.Rows, 11);
        const std::vector<uint32_t> expected = Bits(FloatTable(a, &b));
        GuardedPlane fast(size.Cols + 1, size.Rows + 1, 5.0f);
        GuardedPlane plain(size.Cols + 1, size.Rows + 1, 6.0f);

        BuildPairTable(a.Data(), b.Data(), fast.Data(), size.Cols, size.Rows);
        SlowPairTable(a.Data(), b.Data(), plain.Data(), size.Cols, size.Rows);

        EXPECT_EQ(fast.Bits(), expected);
        EXPECT_EQ(plain.Bits(), expected);
        EXPECT_TRUE(fast.GuardsIntact());
        EXPECT_TRUE(plain.GuardsIntact());
    }
}

TEST(PairTable, OfAPlaneWithItselfSumsSquares)
{
    const GuardedPlane a = GuardedPlane::WholeNumbers(17, 12, 12);
    GuardedPlane table(18, 13);
    BuildPairTable(a.Data(), a.Data(), table.Data(), 17, 12);
    double sum = 0.0;
    for (float value : a.Pixels())
        sum += static_cast<double>(value) * static_cast<double>(value);
    ASSERT_LT(sum, 16777216.0);
    EXPECT_EQ(static_cast<double>(table.At(17, 12)), sum);
}

// 4097 squared has 25 bits: rounding it to float before adding it would lose the last one.
TEST(PairTable, DoesNotRoundTheProductOnItsOwn)
{
    const GuardedPlane a =
        GuardedPlane::FromFunction(2, 1, [](int32_t x, int32_t) { return x ? 4097.0f : 1.0f; });
    GuardedPlane table(3, 2);
    BuildPairTable(a.Data(), a.Data(), table.Data(), 2, 1);
    EXPECT_EQ(table.At(2, 1), 16785410.0f);
}

TEST(PlaneTable, OfOnesIsRowTimesColumn)
{
    const GuardedPlane ones(640, 427, 1.0f);
    GuardedPlane table(641, 428);
    BuildPlaneTable(ones.Data(), table.Data(), 640, 427);
    for (int32_t r = 0; r <= 427; ++r)
        for (int32_t c = 0; c <= 640; ++c)
            ASSERT_EQ(table.At(c, r), static_cast<float>(r * c));
}

// A float stops counting at 2^24.
TEST(PlaneTable, LongRowLosesDigitsAsAFloatWould)
{
    const GuardedPlane plane = GuardedPlane::FromFunction(
        40, 1, [](int32_t x, int32_t) { return x == 0 ? 16777216.0f : 1.0f; });
    GuardedPlane table(41, 2);
    BuildPlaneTable(plane.Data(), table.Data(), 40, 1);
    EXPECT_EQ(table.At(40, 1), 16777216.0f);
}

// The ones of the second row are summed before they meet the large number above them.
TEST(PlaneTable, RowsAreSummedBeforeColumns)
{
    const GuardedPlane plane = GuardedPlane::FromFunction(9, 2, [](int32_t x, int32_t y) {
        return y == 1 ? 1.0f : x == 0 ? 16777216.0f : 0.0f;
    });
    GuardedPlane table(10, 3);
    BuildPlaneTable(plane.Data(), table.Data(), 9, 2);
    EXPECT_EQ(table.At(1, 2), 16777216.0f);
    EXPECT_EQ(table.At(9, 2), 16777224.0f); // 2^24 + 9 is a tie between + 8 and + 10
}

TEST(BuildTables, FillsEveryTableOfEveryStack)
{
    for (int32_t n = 1; n <= 4; ++n)
        for (const PlaneSize& size : {PlaneSize{1, 1}, PlaneSize{33, 1}, PlaneSize{1, 17},
                                      PlaneSize{31, 19}, PlaneSize{64, 48}}) {
            SCOPED_TRACE(testing::Message()
                         << n << " planes of " << size.Cols << " x " << size.Rows);
            AllocationFaults memory({});
            CPlaneStack stack;
            stack.Create(n, size.Cols, size.Rows);
            std::vector<GuardedPlane> planes;
            for (int32_t k = 0; k < n; ++k) {
                planes.push_back(
                    GuardedPlane::Fractions(size.Cols, size.Rows, static_cast<uint32_t>(20 + k)));
                const std::vector<float> pixels = planes.back().Pixels();
                std::copy(pixels.begin(), pixels.end(), stack.Planes[static_cast<size_t>(k)]);
            }

            BuildTables(stack);

            EXPECT_TRUE(stack.TablesBuilt);
            const size_t elements = static_cast<size_t>((size.Cols + 1) * (size.Rows + 1));
            const auto content = [&](const float* table) {
                EXPECT_EQ(reinterpret_cast<uintptr_t>(table) % 64, 0u);
                return Bits(std::vector<float>(table, table + elements));
            };
            ASSERT_EQ(stack.PlaneTables.size(), planes.size());
            ASSERT_EQ(stack.PairTables.size(), planes.size() * (planes.size() + 1) / 2);
            size_t pair = 0;
            for (size_t i = 0; i < planes.size(); ++i) {
                EXPECT_EQ(content(stack.PlaneTables[i]), Bits(FloatTable(planes[i], nullptr)));
                EXPECT_EQ(pair, (planes.size() + 1) * i - i * (i + 1) / 2);
                for (size_t j = i; j < planes.size(); ++j)
                    EXPECT_EQ(content(stack.PairTables[pair++]),
                              Bits(FloatTable(planes[i], &planes[j])));
            }
            stack.Release();
            EXPECT_EQ(memory.Live, 0);
        }
}

} // namespace
} // namespace vistaTrim
