#include "scoring/row_means.h"

#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "numeric/summed_area.h"
#include "scoring/scoring_test_support.h"

using namespace vistaTrim;

namespace scoringTests {
namespace {

TEST(RowMeans, MatchEachRectangleInEveryIsaVariant)
{
    const auto analyzer = NoiseAnalyzer(50, 70, 3);
    const CDoubleMatrix& table = analyzer->EdgeTable;
    std::mt19937 random(4);
    const EachVariant variants;
    for (int trial = 0; trial < 300; ++trial) {
        const WorkingRect rows = RandomRect(random, 50, 70);
        const size_t count = 1 + random() % 40;
        std::vector<int32_t> firstCols;
        std::vector<int32_t> lastCols;
        for (size_t i = 0; i < count; ++i) {
            const WorkingRect rect = RandomRect(random, 50, 70);
            firstCols.push_back(rect.FirstCol);
            lastCols.push_back(rect.LastCol);
        }
        const double denominator = 0.25 + static_cast<double>(random() % 1000);
        for (const IsaVariant variant : variants.Variants) {
            SelectIsaVariant(variant);
            std::vector<double> means(count + 1, -7.0);
            RowMeans(table, rows.FirstRow, rows.LastRow, firstCols.data(), lastCols.data(), count,
                     denominator, means.data());
            for (size_t i = 0; i < count; ++i)
                ASSERT_TRUE(SameBits(means[i], RegionMean(table, rows.FirstRow, firstCols[i],
                                                          rows.LastRow, lastCols[i], denominator)))
                    << "variant " << variant << " at " << i;
            EXPECT_EQ(means.back(), -7.0);
        }
    }
}

// The sanitizers check that nothing beyond the table is read.
TEST(RowMeans, ColumnsBeyondTheMapAreNotRead)
{
    const auto analyzer = NoiseAnalyzer(3, 20, 5);
    const int32_t firstCols[] = {-9, 0, 12, 19, -1};
    const int32_t lastCols[] = {4, 400, 20, 19, 19};
    double means[5];
    RowMeans(analyzer->PeakTable, 0, 2, firstCols, lastCols, 5, 1.0, means);
    EXPECT_EQ(means[0], RegionSum(analyzer->PeakTable, 0, 0, 2, 4));
    EXPECT_EQ(means[3], RegionSum(analyzer->PeakTable, 0, 19, 2, 19));
    EXPECT_EQ(means[4], RegionSum(analyzer->PeakTable, 0, 0, 2, 19));
}

} // namespace
} // namespace scoringTests
