#include "scoring/selection.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

#include <gtest/gtest.h>

#include "candidates/cells_of_grid.h"
#include "oracle/slow_selection.h"
#include "scoring/crop_analyzer.h"
#include "scoring/scoring_test_support.h"

using namespace vistaTrim;

namespace scoringTests {
namespace {

// Of the analyzer, selection reads only the rectangles of interest.
class Selecting : public testing::Test {
protected:
    Selecting() : Analyzer(ZeroAnalyzer(1, 1))
    {
    }

    const std::vector<CInt32CropRect>& Select(int32_t n, const CropGridRows& grid,
                                              int32_t rankingMode = 0,
                                              const WeightDistribution& weights = Even())
    {
        return Analyzer->SelectTopCrops(n, CellsOf(grid), rankingMode, weights);
    }

    static WeightDistribution Even()
    {
        return WeightDistribution(0.5, 0.25, 0.25);
    }

    std::unique_ptr<WritableAnalyzer> Analyzer;
};

CInt32CropRect Candidate(int left, int right, int top, int bottom, double value)
{
    CInt32CropRect crop(left, right, top, bottom);
    crop.Score.Scored = true;
    crop.Score.CompositionScore = value;
    crop.Score.CoverageScore = value;
    crop.Score.BorderScore = value;
    crop.Score.PeakScore = value;
    crop.Score.CentrePeakScore = value;
    return crop;
}

CropGridRows GridOf(const CropCell& cell)
{
    return CropGridRows(1, CropRow(1, cell));
}

// count crops that do not touch, each better than the one before it.
CropCell SeparateCrops(int count)
{
    CropCell cell;
    for (int i = 0; i < count; ++i)
        cell.push_back(Candidate(20 * i, 20 * i + 9, 0, 9, (i + 1) / 65536.0));
    return cell;
}

std::vector<int> Lefts(const std::vector<CInt32CropRect>& crops)
{
    std::vector<int> lefts;
    for (const CInt32CropRect& crop : crops)
        lefts.push_back(crop.Left);
    return lefts;
}

TEST_F(Selecting, NoCandidatesGiveAnEmptyListForAnyRequest)
{
    for (const int32_t n : {-1, 0, 1, 5, INT32_MAX}) {
        EXPECT_TRUE(Select(n, CropGridRows()).empty());
        EXPECT_TRUE(Select(n, CropGridRows(3)).empty()); // rows without cells
        EXPECT_TRUE(Select(n, CropGridRows(3, CropRow(2))).empty());
    }
}

TEST_F(Selecting, FewerThanRequestedAreReturnedInKeyOrderNearDuplicatesIncluded)
{
    const CropCell cell = {Candidate(0, 99, 0, 99, 0.1), Candidate(1, 100, 0, 99, 0.3),
                           Candidate(2, 101, 0, 99, 0.2)};
    EXPECT_EQ(Lefts(Select(5, GridOf(cell))), (std::vector<int>{1, 2, 0}));
    EXPECT_EQ(Lefts(Select(4, GridOf(cell))), (std::vector<int>{1, 2, 0}));
}

TEST_F(Selecting, OneClusterIsServedInOrderOfBorderScore)
{
    CropCell cell;
    const double borders[] = {0.2, 0.5, 0.1, 0.4, 0.3};
    for (int i = 0; i < 5; ++i) {
        cell.push_back(Candidate(i, i + 99, 0, 99, 0.9 - 0.1 * i));
        cell.back().Score.BorderScore = borders[i];
    }
    EXPECT_EQ(Lefts(Select(5, GridOf(cell))), (std::vector<int>{1, 3, 4, 0, 2}));
    // A request for one serves the crop with the cleanest borders, not the leader.
    EXPECT_EQ(Lefts(Select(1, GridOf(cell))), (std::vector<int>{1}));
}

TEST_F(Selecting, EqualBorderScoresAreServedInKeyOrder)
{
    CropCell cell;
    for (int i = 0; i < 5; ++i) {
        cell.push_back(Candidate(i, i + 99, 0, 99, 0.9 - 0.1 * i));
        cell.back().Score.BorderScore = 0.5;
    }
    EXPECT_EQ(Lefts(Select(5, GridOf(cell), 1)), (std::vector<int>{0, 1, 2, 3, 4}));
}

TEST_F(Selecting, ServingEndsAtTheFirstEmptyCluster)
{
    // Clusters of five, one and one: six crops requested, seven available.
    CropCell cell;
    for (int i = 0; i < 5; ++i)
        cell.push_back(Candidate(i, i + 99, 0, 99, 0.9 - 0.01 * i));
    cell.push_back(Candidate(500, 599, 0, 99, 0.5));
    cell.push_back(Candidate(1000, 1099, 0, 99, 0.4));
    const std::vector<int> lefts = Lefts(Select(6, GridOf(cell)));
    EXPECT_EQ(lefts, (std::vector<int>{0, 500, 1000, 1}));
}

TEST_F(Selecting, RequestForZeroServesNothing)
{
    EXPECT_TRUE(Select(0, GridOf(SeparateCrops(8))).empty());
    EXPECT_TRUE(Select(-1, GridOf(SeparateCrops(8))).empty());
    EXPECT_TRUE(Select(INT32_MIN, GridOf(SeparateCrops(8))).empty());
}

TEST_F(Selecting, TheListIsOverwrittenByTheNextSelection)
{
    EXPECT_EQ(&Select(3, GridOf(SeparateCrops(8))), &Analyzer->SelectedCrops);
    EXPECT_EQ(Analyzer->SelectedCrops.size(), 3u);
    Select(2, GridOf(SeparateCrops(8)));
    EXPECT_EQ(Analyzer->SelectedCrops.size(), 2u);
}

TEST(CropOverlap, IsOneWithItselfAndZeroSideBySide)
{
    const CInt32CropRect crop(10, 19, 10, 19);
    EXPECT_EQ(CropOverlap(crop, crop), 1.0f);
    EXPECT_EQ(CropOverlap(crop, CInt32CropRect(20, 29, 10, 19)), 0.0f);
    EXPECT_EQ(CropOverlap(crop, CInt32CropRect(10, 19, 0, 9)), 0.0f);
    EXPECT_EQ(CropOverlap(crop, CInt32CropRect(19, 28, 10, 19)),
              static_cast<float>(10.0 / 190.0)); // one shared column
}

TEST(CropOverlap, LargeRectanglesDoNotWrap)
{
    const CInt32CropRect large(0, 99999, 0, 99999);
    EXPECT_EQ(CropOverlap(large, CInt32CropRect(0, 99999, 0, 49999)), 0.5f);
}

// 4097 x 4097 shared pixels are 2^24 + 8193; above 2^24 a float holds only even numbers.
TEST(CropOverlap, SharedPixelsAreCountedInFloat)
{
    const CInt32CropRect inner(0, 4096, 0, 4096);
    const CInt32CropRect outer(0, 4097, 0, 4096);
    const double shared = 16785408; // one less than their number
    const double all = 4098.0 * 4097.0 + 4097.0 * 4097.0;
    const float expected = static_cast<float>(shared / (all - shared));
    ASSERT_NE(expected, static_cast<float>((shared + 1) / (all - shared - 1)));
    EXPECT_EQ(CropOverlap(inner, outer), expected);
    EXPECT_EQ(CropOverlap(outer, inner), expected);
}

TEST_F(Selecting, OverlapOfExactlyTheLimitDoesNotJoin)
{
    const CInt32CropRect leader(0, 99, 0, 99);
    const CInt32CropRect atMost(0, 82, 0, 99); // 83 / 100, rounded to float
    ASSERT_EQ(CropOverlap(leader, atMost), 0.83f);
    CropCell cell = {Candidate(0, 99, 0, 99, 0.9), Candidate(0, 82, 0, 99, 0.8),
                     Candidate(0, 99, 0, 83, 0.7)};
    ASSERT_GT(CropOverlap(cell[0], cell[2]), 0.83f);
    // The third joins the first. The second leads its own cluster, so it is served although its
    // borders are the worst; in the first one's cluster it would be served last.
    cell[1].Score.BorderScore = 0.01;
    const auto& served = Select(2, GridOf(cell), 1);
    ASSERT_EQ(served.size(), 2u);
    EXPECT_EQ(served[0].Right, 99);
    EXPECT_EQ(served[1].Right, 82);
}

TEST_F(Selecting, MembersAreComparedWithTheLeaderOnly)
{
    // Neighbours overlap enough, but the two at the ends do not.
    const CropCell cell = {Candidate(0, 99, 0, 99, 0.9), Candidate(8, 107, 0, 99, 0.8),
                           Candidate(16, 115, 0, 99, 0.7)};
    ASSERT_GT(CropOverlap(cell[1], cell[2]), 0.83f);
    ASSERT_LT(CropOverlap(cell[0], cell[2]), 0.83f);
    EXPECT_EQ(Lefts(Select(2, GridOf(cell))), (std::vector<int>{0, 16}));
}

TEST(PercentileRanks, AreSharesOfTheCountByAscendingValue)
{
    const std::vector<RankEntry> entries = {{0.7f, 0}, {0.1f, 1}, {0.9f, 2}, {0.2f, 3}};
    EXPECT_EQ(PercentileRanks(entries, true), (std::vector<float>{0.75f, 0.25f, 1.0f, 0.5f}));
    EXPECT_EQ(PercentileRanks(entries, false), (std::vector<float>{0.5f, 1.0f, 0.25f, 0.75f}));
}

TEST(PercentileRanks, TiesAreDecidedByIndexWhateverTheInputOrder)
{
    std::vector<RankEntry> entries = {{0.5f, 0}, {0.1f, 1}, {0.5f, 2}, {0.5f, 3}};
    const std::vector<float> ranks = {0.5f, 0.25f, 0.75f, 1.0f};
    EXPECT_EQ(PercentileRanks(entries, true), ranks);
    std::reverse(entries.begin(), entries.end());
    EXPECT_EQ(PercentileRanks(entries, true), ranks);
}

TEST(PercentileRanks, ZerosOfEitherSignTieAndNaNsComeFirst)
{
    const float nan = std::nanf("");
    const float infinity = std::numeric_limits<float>::infinity();
    const std::vector<RankEntry> entries = {{0.0f, 0},    {-0.0f, 1},     {nan, 2},
                                            {-nan, 3},    {-infinity, 4}, {infinity, 5},
                                            {-1e-45f, 6}, {1e-45f, 7}};
    EXPECT_EQ(PercentileRanks(entries, true),
              (std::vector<float>{0.625f, 0.75f, 0.125f, 0.25f, 0.375f, 1.0f, 0.5f, 0.875f}));
}

TEST(PercentileRanks, RandomListsMatchTheSlowFormAtEverySize)
{
    std::mt19937 random(5);
    for (const size_t count : {0u, 1u, 2u, 100u, 511u, 512u, 513u, 2000u})
        for (const bool higherIsBetter : {true, false})
            for (const int kinds : {1, 7, 1000000}) {
                std::vector<RankEntry> entries;
                std::vector<float> values;
                for (size_t i = 0; i < count; ++i) {
                    float value =
                        static_cast<float>(static_cast<int>(random() % 2000000) - 1000000);
                    value = kinds == 1000000 ? value * 1e-6f
                                             : static_cast<float>(static_cast<int>(value) % kinds);
                    if (random() % 50 == 0)
                        value = std::nanf("");
                    values.push_back(value);
                    entries.push_back({value, static_cast<int32_t>(i)});
                }
                EXPECT_EQ(PercentileRanks(entries, higherIsBetter),
                          slowOracle::PercentileRanks(values, higherIsBetter));
            }
}

TEST_F(Selecting, ThePoolIsCutFromAThousandCandidatesUp)
{
    // A request for every candidate gets the whole pool, since none of them overlap.
    const auto poolOf = [this](int count) {
        const CropGridRows grid = GridOf(SeparateCrops(count));
        return Select(count, grid).size();
    };
    EXPECT_EQ(poolOf(199), 199u);
    EXPECT_EQ(poolOf(999), 999u);
    EXPECT_EQ(poolOf(1000), 200u);
    EXPECT_EQ(poolOf(1005), 201u);
}

TEST_F(Selecting, AModeOfOneMeasureUsesItsWeightUnscaled)
{
    // The first is best by composition, the second by coverage, the third by borders.
    CropCell cell = SeparateCrops(3);
    const double low = 0.125, high = 0.5;
    for (size_t i = 0; i < 3; ++i) {
        cell[i].Score.CompositionScore = i == 0 ? high : low + 0.001 * static_cast<double>(i);
        cell[i].Score.CoverageScore = i == 1 ? high : low + 0.001 * static_cast<double>(i);
        cell[i].Score.BorderScore = i == 2 ? high : low + 0.001 * static_cast<double>(i);
    }
    const WeightDistribution weights(2.0, 4.0, 8.0, 100.0, 100.0);
    for (const int32_t mode : {1, 2, 3}) {
        const auto& best = Select(4, GridOf(cell), mode, weights);
        EXPECT_EQ(best[0].Left, 20 * (mode - 1));
        EXPECT_EQ(best[0].Score.MergedScore, mode == 1 ? 2.0 : mode == 2 ? 4.0 : 8.0);
    }
    for (const int32_t mode : {0, 4, -1, 77})
        EXPECT_GT(Select(4, GridOf(cell), mode, weights)[0].Score.MergedScore, 100.0);
}

TEST_F(Selecting, WithoutWeightsTheTiersAloneDecide)
{
    CropCell cell = SeparateCrops(4);
    cell[2].CoversContent = true;
    cell[0].Score.RoiScore = 0.1;
    cell[1].Score.RoiScore = 0.1;
    const auto& best = Select(5, GridOf(cell), 1, WeightDistribution(0.0, 1.0, 1.0));
    // Wishes before content before index.
    EXPECT_EQ(Lefts(best), (std::vector<int>{40, 60, 0, 20}));
    for (const CInt32CropRect& crop : best)
        EXPECT_EQ(crop.Score.MergedScore, 0.0); // excludes the tiers
}

TEST_F(Selecting, NegativeWeightsReverseTheFirstThreeAndDisableTheLastTwo)
{
    const CropGridRows grid = GridOf(SeparateCrops(4));
    EXPECT_EQ(Lefts(Select(5, grid, 0, WeightDistribution(-1, 0, 0))),
              (std::vector<int>{0, 20, 40, 60}));
    EXPECT_EQ(Lefts(Select(5, grid, 0, WeightDistribution(0.5, 0, 0, -9, -9))),
              (std::vector<int>{60, 40, 20, 0}));
    CropCell cell = SeparateCrops(4);
    for (size_t i = 0; i < 4; ++i)
        cell[i].Score.PeakScore = cell[i].Score.CentrePeakScore = -static_cast<double>(i);
    EXPECT_EQ(Lefts(Select(5, GridOf(cell), 0, WeightDistribution(0.5, 0, 0, 1, 0))),
              (std::vector<int>{0, 20, 40, 60}));
    EXPECT_EQ(Lefts(Select(5, GridOf(cell), 0, WeightDistribution(0.5, 0, 0, 0, 1))),
              (std::vector<int>{0, 20, 40, 60}));
}

TEST_F(Selecting, SmallDifferencesOfRankSurviveBesideTheFirstTier)
{
    // Keys of 1000000 and a fraction: a float would hold sixteenths there.
    const auto& best = Select(51, GridOf(SeparateCrops(50)), 0, WeightDistribution(0.001, 0, 0));
    for (size_t i = 0; i < best.size(); ++i)
        EXPECT_EQ(best[i].Left, 20 * (49 - static_cast<int>(i)));
}

TEST_F(Selecting, HardRectanglesFilterBeforeTheRanking)
{
    const CropCell cell = SeparateCrops(10);
    CRectOfInterest include(65, 66, 3, 4, false);
    include.Kind = RoiHardInclude;
    Analyzer->RectsOfInterest.push_back(include);
    const auto& only = Select(5, GridOf(cell));
    ASSERT_EQ(Lefts(only), (std::vector<int>{60}));
    EXPECT_EQ(only[0].Score.MergedScore, 1.0); // the best of one

    CRectOfInterest exclude(69, 75, 9, 12, false);
    exclude.Kind = RoiHardExclude;
    Analyzer->RectsOfInterest.push_back(exclude);
    EXPECT_TRUE(Select(5, GridOf(cell)).empty());
}

// One region to contain and one to avoid, disjoint and overlapping.
TEST_F(Selecting, OverlappingHardIncludeAndExcludeEmptyTheList)
{
    const CropGridRows grid = GridOf(SeparateCrops(8)); // each ten pixels square, ten apart
    CRectOfInterest hold(42, 47, 2, 7, false);
    hold.Kind = RoiHardInclude;
    CRectOfInterest avoid(48, 48, 2, 7, false);
    avoid.Kind = RoiHardExclude;
    Analyzer->RectsOfInterest = {hold};
    EXPECT_EQ(Lefts(Select(5, grid)), (std::vector<int>{40}));
    // A crop that contains the first touches the second, although the two do not overlap.
    Analyzer->RectsOfInterest = {hold, avoid};
    EXPECT_TRUE(Select(5, grid).empty());
    Analyzer->RectsOfInterest[1].Left = 47;
    for (const int32_t n : {0, 1, 5})
        EXPECT_TRUE(Select(n, grid).empty());
    Analyzer->RectsOfInterest[1] = avoid;
    Analyzer->RectsOfInterest[1].Left = Analyzer->RectsOfInterest[1].Right = 50; // beside the crop
    EXPECT_EQ(Lefts(Select(5, grid)), (std::vector<int>{40}));
}

// 0.1 and the float nearest to it differ by 1.5e-9. In a key of unrounded doubles the tier would
// turn that into 1.5e-3, more than the difference between these ranks.
TEST_F(Selecting, RoiScoresEnterTheKeyAsFloats)
{
    CropCell cell = {Candidate(0, 9, 0, 9, 0.2), Candidate(100, 109, 0, 9, 0.8)};
    cell[0].Score.RoiScore = static_cast<double>(0.1f);
    cell[1].Score.RoiScore = 0.1;
    ASSERT_GT(cell[0].Score.RoiScore, cell[1].Score.RoiScore);
    const WeightDistribution slight(0.001, 0, 0);
    EXPECT_EQ(Lefts(Select(5, GridOf(cell), 0, slight)), (std::vector<int>{100, 0}));
    cell[0].Score.RoiScore = static_cast<double>(std::nextafter(0.1f, 1.0f));
    EXPECT_EQ(Lefts(Select(5, GridOf(cell), 0, slight)), (std::vector<int>{0, 100}));
}

TEST_F(Selecting, TheGridsRecordsAreUnchanged)
{
    const CropGridRows grid = GridOf(SeparateCrops(20));
    const CropGridRows before = grid;
    Select(5, grid);
    for (size_t i = 0; i < 20; ++i)
        EXPECT_TRUE(SameRecord(grid[0][0][i], before[0][0][i]));
}

TEST_F(Selecting, OnlyTheGivenCellsAreRanked)
{
    CropGridRows grid(2, CropRow(2));
    int left = 0;
    for (CropRow& row : grid)
        for (CropCell& cell : row) {
            cell.push_back(Candidate(left, left + 9, 0, 9, 0.5));
            left += 20;
        }
    const auto lefts = [&](uint32_t aspect, uint32_t scale) {
        return Lefts(Analyzer->SelectTopCrops(9, CellsOf(grid, aspect, scale), 0, Even()));
    };
    EXPECT_EQ(lefts(1, NoIndex).size(), 2u);
    EXPECT_EQ(lefts(1, 0), (std::vector<int>{40}));
    EXPECT_EQ(lefts(NoIndex, 1).size(), 2u);
    EXPECT_EQ(lefts(NoIndex, NoIndex).size(), 4u);
}

TEST_F(Selecting, NaNsKeepTheOrderStable)
{
    const double nan = std::nan("");
    for (const int count : {1, 2, 40, 1500}) {
        std::mt19937 random(static_cast<uint32_t>(count));
        CropCell cell = SeparateCrops(count);
        for (CInt32CropRect& crop : cell) {
            for (double* field :
                 {&crop.Score.CompositionScore, &crop.Score.CoverageScore, &crop.Score.BorderScore,
                  &crop.Score.PeakScore, &crop.Score.CentrePeakScore, &crop.Score.RoiScore})
                if (random() % 3 == 0)
                    *field = nan;
        }
        const CropGridRows grid = GridOf(cell);
        const std::vector<CInt32CropRect> once =
            Select(7, grid, 0, WeightDistribution(0.2, 0.2, 0.2, 0.2, 0.2));
        const std::vector<CInt32CropRect> again =
            Select(7, grid, 0, WeightDistribution(0.2, 0.2, 0.2, 0.2, 0.2));
        EXPECT_EQ(Lefts(once), Lefts(again));
        EXPECT_EQ(once.size(), static_cast<size_t>(std::min(count, 7)));

        for (CInt32CropRect& crop : cell)
            crop.Score.RoiScore = nan; // as a soft rectangle of no area leaves it everywhere
        EXPECT_EQ(Select(7, GridOf(cell)).size(), static_cast<size_t>(std::min(count, 7)));
        EXPECT_EQ(Select(7, GridOf(cell), 0, WeightDistribution(nan, nan, nan, nan, nan)).size(),
                  static_cast<size_t>(std::min(count, 7)));
    }
}

// Random crops of a few sizes, so that clusters form.
CropGridRows RandomGrid(std::mt19937& random, int count, int kindsOfValue)
{
    CropGridRows grid(1 + random() % 3);
    for (CropRow& row : grid)
        row.resize(random() % 4); // sometimes a row without cells
    grid[0].resize(std::max<size_t>(grid[0].size(), 1));
    // With a kindsOfValue of 0 every value of a measure occurs once.
    std::vector<double> distinct[5];
    for (std::vector<double>& values : distinct) {
        for (int i = 0; i < count; ++i)
            values.push_back((i + 1) / 8192.0);
        std::shuffle(values.begin(), values.end(), random);
    }
    int at = 0;
    const auto value = [&](int measure) {
        return kindsOfValue == 0
                   ? distinct[measure][static_cast<size_t>(at)]
                   : static_cast<double>(random() % static_cast<uint32_t>(kindsOfValue)) / 64.0;
    };
    for (at = 0; at < count; ++at) {
        CropRow* row = &grid[random() % grid.size()];
        if (row->empty())
            row = &grid[0];
        const int size = 100 + 50 * static_cast<int>(random() % 5);
        const int left = static_cast<int>(random() % static_cast<uint32_t>(641 - size));
        const int top = static_cast<int>(random() % static_cast<uint32_t>(481 - size));
        CInt32CropRect crop(left, left + size - 1, top, top + size - 1);
        crop.CoversContent = random() % 3 == 0;
        crop.Score.Scored = true;
        crop.Score.CompositionScore = value(0);
        crop.Score.CoverageScore = value(1);
        crop.Score.BorderScore = value(2);
        crop.Score.PeakScore = value(3);
        crop.Score.CentrePeakScore = value(4);
        const double wishes[] = {1.0, 1.0, static_cast<double>(0.05f), static_cast<double>(0.1f)};
        crop.Score.RoiScore = wishes[random() % 4];
        (*row)[random() % row->size()].push_back(crop);
    }
    return grid;
}

slowOracle::CropGrid OracleGrid(const CropGridRows& grid)
{
    slowOracle::CropGrid copy;
    for (const CropRow& row : grid) {
        copy.emplace_back();
        for (const CropCell& cell : row) {
            copy.back().emplace_back();
            for (const CInt32CropRect& crop : cell)
                copy.back().back().push_back(OracleCrop(crop));
        }
    }
    return copy;
}

bool MatchesTheOracle(const CInt32CropRect& a, const slowOracle::Crop& b)
{
    return a.Left == b.Left && a.Right == b.Right && a.Top == b.Top && a.Bottom == b.Bottom &&
           a.CoversContent == b.CoversContent &&
           SameBits(a.Score.CompositionScore, b.CompositionScore) &&
           SameBits(a.Score.CoverageScore, b.CoverageScore) &&
           SameBits(a.Score.BorderScore, b.BorderScore) &&
           SameBits(a.Score.PeakScore, b.PeakScore) &&
           SameBits(a.Score.CentrePeakScore, b.CentrePeakScore) &&
           SameBits(a.Score.RoiScore, b.RoiScore) && SameBits(a.Score.MergedScore, b.MergedScore);
}

// Both decide ties by index, so the lists agree even with ties.
class SelectionAgainstSlow : public testing::TestWithParam<int> {};

TEST_P(SelectionAgainstSlow, ListsAgreeRecordByRecord)
{
    const int count = GetParam();
    const auto analyzer = ZeroAnalyzer(1, 1);
    std::mt19937 random(static_cast<uint32_t>(900 + count));
    // The first gives no two sets of ranks the same sum; the others tie often.
    const WeightDistribution weightings[] = {
        WeightDistribution(0.314159265, 0.271828182, 0.141421356, 0.057721566, 0.161803398),
        WeightDistribution(0.2, 0.2, 0.2, 0.2, 0.2),
        WeightDistribution(0.6, 0.2, 0.2),
        WeightDistribution(-0.4, 0.3, 0.7, 0.1, -0.5),
        WeightDistribution(0, 0, 0),
        WeightDistribution(3, 1, 2, 0, 4)};
    const int pool = static_cast<int>(slowOracle::PoolSizeOf(static_cast<size_t>(count)));
    // The slow form counts instead of sorting, so large sets get fewer rounds.
    const int rounds = count > 2000 ? 2 : count > 500 ? 5 : 40;
    int tied = 0;
    int clear = 0;
    for (int round = 0; round < rounds; ++round) {
        const int kindsOfValue = round % 2 == 0 ? 0 : round % 4 == 1 ? 40 : 1;
        const CropGridRows grid = RandomGrid(random, count, kindsOfValue);
        const slowOracle::CropGrid slowGrid = OracleGrid(grid);
        analyzer->RectsOfInterest.clear();
        std::vector<slowOracle::Roi> slowRects;
        if (round % 3 == 2) {
            CRectOfInterest rect(300, 309, 200, 209, false);
            rect.Kind = round % 2 == 0 ? RoiHardExclude : RoiHardInclude;
            analyzer->RectsOfInterest.push_back(rect);
            slowRects.push_back(OracleRoi(rect));
        }
        const WeightDistribution& weights = weightings[static_cast<size_t>(round / 2) % 6];
        const slowOracle::Weights slowWeights{weights.Weight1, weights.Weight2, weights.Weight3,
                                              weights.Weight4, weights.Weight5};
        const int32_t mode = round == 0 ? 0 : static_cast<int32_t>(random() % 5);
        // Fewer requests of the largest sets, which take the slow form long.
        const std::vector<int32_t> wanted =
            count > 2000 && round > 0
                ? std::vector<int32_t>{-1, 10, pool}
                : std::vector<int32_t>{-1, 0, 1, 3, 10, pool - 1, pool, pool + 1, count + 7};
        for (const int32_t n : wanted) {
            const slowOracle::Selection slow =
                slowOracle::SelectTopCrops(n, slowGrid, mode, slowOracle::kNoIndex,
                                           slowOracle::kNoIndex, slowWeights, slowRects);
            slow.DependsOnTies ? ++tied : ++clear;
            const auto& fast = analyzer->SelectTopCrops(n, CellsOf(grid), mode, weights);
            ASSERT_EQ(fast.size(), slow.Result.size()) << "n " << n << " mode " << mode;
            for (size_t i = 0; i < fast.size(); ++i)
                ASSERT_TRUE(MatchesTheOracle(fast[i], slow.Result[i])) << "n " << n << " at " << i;
        }
    }
    if (count > 1) {
        EXPECT_GT(tied, 0);
        EXPECT_GT(clear, 0);
    }
}

INSTANTIATE_TEST_SUITE_P(Sizes, SelectionAgainstSlow,
                         testing::Values(0, 1, 2, 5, 40, 199, 512, 999, 1000, 1005, 5000));

TEST_F(Selecting, EveryIsaVariantServesTheSameList)
{
    std::mt19937 random(61);
    const CropGridRows grid = RandomGrid(random, 3000, 0);
    const EachVariant variants;
    SelectIsaVariant(IsaVariantPlain);
    const std::vector<CInt32CropRect> plain = Select(400, grid);
    for (const IsaVariant variant : variants.Variants) {
        SelectIsaVariant(variant);
        const auto& list = Select(400, grid);
        ASSERT_EQ(list.size(), plain.size());
        for (size_t i = 0; i < list.size(); ++i)
            EXPECT_TRUE(SameRecord(list[i], plain[i]));
    }
}

} // namespace
} // namespace scoringTests
