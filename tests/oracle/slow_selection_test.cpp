#include "oracle/slow_selection.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace slowOracle {
namespace {

// A crop of 10 x 10 pixels at (x, y) whose first three measures are all `value`.
Crop CropAt(int x, int y, double value)
{
    Crop crop;
    crop.Left = x;
    crop.Right = x + 9;
    crop.Top = y;
    crop.Bottom = y + 9;
    crop.Scored = true;
    crop.CompositionScore = value;
    crop.CoverageScore = value;
    crop.BorderScore = value;
    return crop;
}

// m crops that do not touch, each better than the one before.
CropGrid SeparateCrops(int m)
{
    CropGrid grid(1, CropRow(1));
    for (int i = 0; i < m; ++i)
        grid[0][0].push_back(CropAt(20 * i, 0, (i + 1) / 2048.0));
    return grid;
}

Selection Select(int32_t n, const CropGrid& grid, const Weights& weights = {0.5, 0.25, 0.25, 0, 0})
{
    return SelectTopCrops(n, grid, 0, kNoIndex, kNoIndex, weights, {});
}

TEST(SlowSelection, NoSurvivorsGiveAnEmptyResult)
{
    EXPECT_TRUE(Select(5, CropGrid()).Result.empty());
    EXPECT_TRUE(Select(0, CropGrid()).Result.empty());
    EXPECT_TRUE(Select(-3, CropGrid()).Result.empty());
    EXPECT_TRUE(Select(5, CropGrid(2, CropRow())).Result.empty()); // rows without cells
}

TEST(SlowSelection, RanksAreSharesOfTheCount)
{
    const std::vector<float> ranks = PercentileRanks({0.7F, 0.1F, 0.9F, 0.2F}, true);
    EXPECT_EQ(ranks, (std::vector<float>{0.75F, 0.25F, 1.0F, 0.5F}));
    const std::vector<float> lowIsBest = PercentileRanks({0.7F, 0.1F, 0.9F, 0.2F}, false);
    EXPECT_EQ(lowIsBest, (std::vector<float>{0.5F, 1.0F, 0.25F, 0.75F}));
}

TEST(SlowSelection, EqualValuesTakeAdjacentRanksByIndex)
{
    const std::vector<float> ranks = PercentileRanks({0.5F, 0.1F, 0.5F, 0.5F}, true);
    EXPECT_EQ(ranks, (std::vector<float>{0.5F, 0.25F, 0.75F, 1.0F}));
}

TEST(SlowSelection, NaNRanksLowest)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const std::vector<float> ranks = PercentileRanks({0.5F, nan, -1.0F, nan}, true);
    EXPECT_EQ(ranks, (std::vector<float>{1.0F, 0.25F, 0.75F, 0.5F}));
}

TEST(SlowSelection, SmallPoolComesBackInKeyOrderUnclustered)
{
    CropGrid grid(1, CropRow(1));
    grid[0][0] = {CropAt(0, 0, 0.2), CropAt(0, 0, 0.9), CropAt(0, 0, 0.5)}; // all the same crop
    const Selection selection = Select(5, grid);
    EXPECT_FALSE(selection.Clustered);
    EXPECT_FALSE(selection.DependsOnTies);
    EXPECT_EQ(selection.Served, (std::vector<size_t>{1, 2, 0}));
    // Thirds as floats, times weights of 1/2, 1/4 and 1/4: exact.
    EXPECT_EQ(selection.Result.at(0).MergedScore, 1.0);
    EXPECT_EQ(selection.Result.at(1).MergedScore, static_cast<double>(2.0F / 3.0F));
    EXPECT_EQ(selection.Result.at(2).MergedScore, static_cast<double>(1.0F / 3.0F));
}

TEST(SlowSelection, OneClusterIsServedByBorderScore)
{
    CropGrid grid(1, CropRow(1));
    const double borders[] = {0.3, 0.5, 0.1, 0.9, 0.7};
    for (int i = 0; i < 5; ++i) {
        Crop crop = CropAt(0, 0, 1.0 - 0.1 * i);
        crop.BorderScore = borders[i];
        grid[0][0].push_back(crop);
    }
    const Selection selection = Select(5, grid, {1, 0, 0, 0, 0});
    EXPECT_TRUE(selection.Clustered);
    EXPECT_EQ(selection.Clusters.size(), 1U);
    EXPECT_EQ(selection.Served, (std::vector<size_t>{3, 4, 1, 0, 2}));
}

TEST(SlowSelection, EarliestMemberWinsAnEqualBorderScore)
{
    CropGrid grid(1, CropRow(1));
    for (int i = 0; i < 3; ++i) {
        Crop crop = CropAt(0, 0, 1.0 - 0.1 * i);
        crop.BorderScore = 0.5;
        grid[0][0].push_back(crop);
    }
    EXPECT_EQ(Select(3, grid, {1, 0, 0, 0, 0}).Served, (std::vector<size_t>{0, 1, 2}));
}

TEST(SlowSelection, ServingEndsAtAnEmptyCluster)
{
    CropGrid grid(1, CropRow(1));
    double value = 0.9;
    for (int i = 0; i < 5; ++i, value -= 0.05)
        grid[0][0].push_back(CropAt(0, 0, value));
    grid[0][0].push_back(CropAt(100, 0, value));
    grid[0][0].push_back(CropAt(200, 0, value - 0.05));
    const Selection selection = Select(6, grid);
    ASSERT_EQ(selection.Clusters.size(), 3U);
    EXPECT_EQ(selection.Clusters[0].size(), 5U);
    EXPECT_EQ(selection.Served, (std::vector<size_t>{0, 5, 6, 1}));
}

TEST(SlowSelection, CropsAreComparedWithTheLeaderOnly)
{
    // Crops 20 wide: one pixel apart they overlap by 19 / 21 = 0.905, two apart by
    // 18 / 22 = 0.818.
    CropGrid grid(1, CropRow(1));
    for (int i = 0; i < 3; ++i) {
        Crop crop = CropAt(i, 0, 0.9 - 0.1 * i);
        crop.Right = crop.Left + 19;
        grid[0][0].push_back(crop);
    }
    const Selection selection = Select(3, grid);
    ASSERT_EQ(selection.Clusters.size(), 2U);
    EXPECT_EQ(selection.Clusters[0], (std::vector<size_t>{0, 1}));
    EXPECT_EQ(selection.Clusters[1], (std::vector<size_t>{2}));
}

TEST(SlowSelection, OverlapIsIntersectionOverUnion)
{
    const Crop crop = CropAt(0, 0, 0.5);
    EXPECT_EQ(CropOverlap(crop, crop), 1.0F);
    EXPECT_EQ(CropOverlap(crop, CropAt(9, 0, 0.5)), 10.0F / 190.0F);
    EXPECT_EQ(CropOverlap(crop, CropAt(10, 0, 0.5)), 0.0F);
    EXPECT_EQ(CropOverlap(crop, CropAt(30, 0, 0.5)), 0.0F);
    EXPECT_EQ(CropOverlap(crop, CropAt(0, 30, 0.5)), 0.0F);
    EXPECT_EQ(CropOverlap(crop, CropAt(50, 50, 0.5)), 0.0F); // both gaps negative
}

TEST(SlowSelection, OverlapOfExactlyTheLimitDoesNotJoin)
{
    CropGrid grid(1, CropRow(1));
    Crop big;
    big.Right = 99;
    Crop small = big;
    small.Right = 82;
    big.CompositionScore = 1.0;
    small.CompositionScore = 0.5;
    EXPECT_EQ(CropOverlap(big, small), 0.83F);
    grid[0][0] = {big, small};
    EXPECT_EQ(Select(2, grid, {1, 0, 0, 0, 0}).Clusters.size(), 2U);
    grid[0][0][1].Right = 83;
    EXPECT_EQ(Select(2, grid, {1, 0, 0, 0, 0}).Clusters.size(), 1U);
}

TEST(SlowSelection, ModeOfOneMeasureUsesItsWeightUnscaled)
{
    CropGrid grid(1, CropRow(1));
    Crop a = CropAt(0, 0, 0.5);
    Crop b = CropAt(100, 0, 0.5);
    a.CompositionScore = 0.9;
    b.CoverageScore = 0.9;
    a.BorderScore = 0.9;
    a.PeakScore = 0.1;
    b.PeakScore = 0.9;
    grid[0][0] = {a, b};
    const Weights weights = {3, 5, 7, 11, 0};
    const auto merged = [&grid, &weights](int32_t mode) {
        const Selection selection = SelectTopCrops(9, grid, mode, kNoIndex, kNoIndex, weights, {});
        return std::vector<double>{selection.Survivors[0].MergedScore,
                                   selection.Survivors[1].MergedScore};
    };
    EXPECT_EQ(merged(1), (std::vector<double>{3.0, 1.5}));
    EXPECT_EQ(merged(2), (std::vector<double>{2.5, 5.0}));
    EXPECT_EQ(merged(3), (std::vector<double>{7.0, 3.5}));
    EXPECT_EQ(merged(0), (std::vector<double>{3.0 + 2.5 + 7.0 + 5.5, 1.5 + 5.0 + 3.5 + 11.0}));
    EXPECT_EQ(merged(4), merged(0));
    EXPECT_EQ(merged(-1), merged(0));
}

TEST(SlowSelection, ZeroWeightLeavesTheOrderToTheTiers)
{
    CropGrid grid(1, CropRow(1));
    Crop plain = CropAt(0, 0, 0.9);
    Crop covering = CropAt(100, 0, 0.5);
    Crop wished = CropAt(200, 0, 0.1);
    plain.RoiScore = 0.1;
    covering.RoiScore = 0.1;
    covering.CoversContent = true;
    grid[0][0] = {plain, covering, wished};
    const Selection selection = SelectTopCrops(9, grid, 1, kNoIndex, kNoIndex, {}, {});
    EXPECT_EQ(selection.Served, (std::vector<size_t>{2, 1, 0}));
    EXPECT_EQ(selection.Result[1].MergedScore, 0.0);
    EXPECT_EQ(selection.Keys[1] - selection.Keys[0], 1.0);
    EXPECT_EQ(selection.Keys[0], 1000000.0 * static_cast<double>(0.1F));
}

TEST(SlowSelection, NegativeWeightReversesTheFirstThreeAndDropsTheLastTwo)
{
    CropGrid grid = SeparateCrops(3);
    grid[0][0][0].PeakScore = 1.0;
    EXPECT_EQ(Select(9, grid, {-1, 0, 0, 0, 0}).Served, (std::vector<size_t>{0, 1, 2}));
    const Selection dropped = Select(9, grid, {1, 0, 0, -50, -50});
    EXPECT_EQ(dropped.Served, (std::vector<size_t>{2, 1, 0}));
    EXPECT_TRUE(dropped.Ranks[3].empty());
    EXPECT_TRUE(dropped.Ranks[4].empty());
    EXPECT_EQ(dropped.Result[0].MergedScore, 1.0);
    grid[0][0][1].PeakScore = 0.5;
    EXPECT_EQ(Select(9, grid, {1, 0, 0, 50, 0}).Served, (std::vector<size_t>{0, 1, 2}));
}

TEST(SlowSelection, PoolIsCutToAFifthFromAThousandCandidatesUp)
{
    EXPECT_EQ(PoolSizeOf(0), 0U);
    EXPECT_EQ(PoolSizeOf(999), 999U);
    EXPECT_EQ(PoolSizeOf(1000), 200U); // 0.2f is a little above 0.2
    EXPECT_EQ(PoolSizeOf(1004), 200U);
    EXPECT_EQ(PoolSizeOf(1005), 201U);
    EXPECT_EQ(Select(200, SeparateCrops(1000)).Result.size(), 200U);
    EXPECT_EQ(Select(201, SeparateCrops(1000)).Result.size(), 200U); // below n: unclustered
    EXPECT_EQ(Select(999, SeparateCrops(999)).Result.size(), 999U);
}

TEST(SlowSelection, KeysOfAMillionStillSeparateRanks)
{
    const Selection selection = Select(9, SeparateCrops(900));
    EXPECT_FALSE(selection.DependsOnTies);
    for (size_t i = 0; i < 9; ++i)
        EXPECT_EQ(selection.Served[i], 899 - i);
}

TEST(SlowSelection, HardRectanglesRemoveBeforeRanking)
{
    Roi keepClear;
    keepClear.Left = 40;
    keepClear.Right = 49;
    keepClear.Bottom = 9;
    keepClear.Kind = kHardExclude;
    const auto survivors = [](const Roi& rect) {
        return SelectTopCrops(9, SeparateCrops(4), 0, kNoIndex, kNoIndex, {1, 0, 0, 0, 0}, {rect});
    };
    EXPECT_EQ(survivors(keepClear).Survivors.size(), 3U);
    EXPECT_EQ(survivors(keepClear).Ranks[0].front(), 1.0F / 3.0F);
    Roi mustHold = keepClear;
    mustHold.Kind = kHardInclude;
    EXPECT_EQ(survivors(mustHold).Result.at(0).Left, 40);
    EXPECT_EQ(survivors(mustHold).Result.size(), 1U);
    mustHold.Enabled = false;
    EXPECT_EQ(survivors(mustHold).Survivors.size(), 4U);
}

TEST(SlowSelection, IndicesChooseRowsAndCells)
{
    CropGrid grid(2, CropRow(2));
    for (int a = 0; a < 2; ++a)
        for (int s = 0; s < 2; ++s)
            grid[static_cast<size_t>(a)][static_cast<size_t>(s)].push_back(
                CropAt(100 * a, 100 * s, 0.1 + 0.2 * a + 0.4 * s));
    const auto served = [&grid](uint32_t a, uint32_t s) {
        return SelectTopCrops(9, grid, 0, a, s, {1, 0, 0, 0, 0}, {}).Result;
    };
    EXPECT_EQ(served(kNoIndex, kNoIndex).size(), 4U);
    ASSERT_EQ(served(1, kNoIndex).size(), 2U);
    EXPECT_EQ(served(1, kNoIndex)[0].Left, 100);
    ASSERT_EQ(served(kNoIndex, 0).size(), 2U);
    EXPECT_EQ(served(kNoIndex, 0)[0].Top, 0);
    ASSERT_EQ(served(1, 0).size(), 1U);
}

TEST(SlowSelection, TiesAreReported)
{
    CropGrid grid = SeparateCrops(3);
    EXPECT_FALSE(Select(3, grid).DependsOnTies);
    grid[0][0][1].PeakScore = 0.0; // equal to the others, but it carries no weight
    EXPECT_FALSE(Select(3, grid).DependsOnTies);
    EXPECT_TRUE(Select(3, grid, {1, 1, 1, 1, 0}).DependsOnTies);
    grid[0][0][1].RoiScore = std::numeric_limits<double>::quiet_NaN();
    const Selection selection = Select(4, grid);
    EXPECT_TRUE(selection.DependsOnTies);
    EXPECT_EQ(selection.Served, (std::vector<size_t>{2, 0, 1})); // NaN comes last
}

} // namespace
} // namespace slowOracle
