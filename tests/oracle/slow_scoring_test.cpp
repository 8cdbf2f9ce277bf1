#include "oracle/slow_scoring.h"

#include <cmath>
#include <stdexcept>

#include <gtest/gtest.h>

namespace slowOracle {
namespace {

Crop MakeCrop(int left, int right, int top, int bottom)
{
    Crop crop;
    crop.Left = left;
    crop.Right = right;
    crop.Top = top;
    crop.Bottom = bottom;
    return crop;
}

Roi MakeRoi(int left, int right, int top, int bottom, int32_t kind)
{
    Roi rect;
    rect.Left = left;
    rect.Right = right;
    rect.Top = top;
    rect.Bottom = bottom;
    rect.Kind = kind;
    return rect;
}

// Running sums of the map `rowStep` * row + `colStep` * col + `base`, each computed from scratch.
// Whole numbers keep them exact.
std::vector<double> TableOf(const ScoringInput& in, double base, double rowStep, double colStep)
{
    std::vector<double> table;
    for (int r = 0; r < in.WorkRows; ++r)
        for (int c = 0; c < in.WorkCols; ++c) {
            double sum = 0.0;
            for (int i = 0; i <= r; ++i)
                for (int j = 0; j <= c; ++j)
                    sum += base + rowStep * i + colStep * j;
            table.push_back(sum);
        }
    return table;
}

ScoringInput Picture(int cols, int rows)
{
    ScoringInput in;
    in.WorkCols = cols;
    in.WorkRows = rows;
    in.DescriptorMean.assign(304, 0.0F);
    in.DescriptorScale.assign(304, 1.0F);
    in.DescriptorWeights.assign(304, 0.0F);
    return in;
}

// Every map is 1 everywhere and every total is the picture's area.
ScoringInput FullPicture(int cols, int rows)
{
    ScoringInput in = Picture(cols, rows);
    const std::vector<double> ones = TableOf(in, 1.0, 0.0, 0.0);
    in.ContrastTable = in.SaliencyTable = in.ContrastMaskTable = in.ColorContrastTable = ones;
    in.EdgeTable = in.PeakTable = ones;
    for (std::vector<double>& table : in.SideTables)
        table = ones;
    in.ContrastMaskTotal = in.ColorContrastTotal = in.EdgeTotal = in.PeakTotal =
        static_cast<float>(cols * rows);
    return in;
}

TEST(SlowScoring, WorkingRectIsTruncatedAndEachEdgeClampedOnOneSide)
{
    ScoringInput in = Picture(320, 240);
    in.ScaleFactor = 0.5F;
    EXPECT_EQ(ToWorkingRect(in, MakeCrop(3, 7, 5, 9)), (WorkRect{2, 1, 4, 3}));
    EXPECT_EQ(ToWorkingRect(in, MakeCrop(0, 639, 0, 479)), (WorkRect{0, 0, 239, 319}));
    EXPECT_EQ(ToWorkingRect(in, MakeCrop(-8, 900, -8, 900)), (WorkRect{0, 0, 239, 319}));
    EXPECT_EQ(ToWorkingRect(in, MakeCrop(700, 900, 500, 900)), (WorkRect{250, 350, 239, 319}));
}

// 25 times the float nearest to 0.64 is 15.99999964, and the nearest float to that is 16.
TEST(SlowScoring, WorkingRectRoundsTheProductBeforeTruncating)
{
    ScoringInput in = Picture(640, 480);
    in.ScaleFactor = 0.64F;
    EXPECT_EQ(ToWorkingRect(in, MakeCrop(25, 50, 25, 75)), (WorkRect{16, 16, 48, 32}));
}

TEST(SlowScoring, ShrinkKeepsAboutAThird)
{
    // Rows: 49.5 * 0.67 + 0.5 = 33.665 and 33.665 + 99 * 0.33 = 66.335.
    // Columns 10..19: 14.5 * 0.67 + 0.5 = 10.215; + 3.3 = 13.515; + 6.27 = 16.485.
    EXPECT_EQ(ShrinkAboutCentre({0, 10, 99, 19}, 0.33F), (WorkRect{33, 13, 66, 16}));
    EXPECT_EQ(ShrinkAboutCentre({5, 7, 5, 7}, 0.33F), (WorkRect{5, 7, 5, 7}));
}

TEST(SlowScoring, RegionSumReadsNothingBeforeTheFirstRowOrColumn)
{
    ScoringInput in = Picture(5, 4);
    const std::vector<double> table = TableOf(in, 1.0, 10.0, 1.0);
    EXPECT_EQ(RegionSum(in, table, {0, 0, 3, 4}), table[19]);
    EXPECT_EQ(RegionSum(in, table, {0, 0, 2, 1}), table[11]);
    EXPECT_EQ(RegionSum(in, table, {2, 3, 2, 3}), 24.0);
    EXPECT_EQ(RegionSum(in, table, {0, 1, 1, 2}), 2.0 + 3.0 + 12.0 + 13.0);
    EXPECT_EQ(RegionSum(in, table, {1, 0, 2, 1}), 11.0 + 12.0 + 21.0 + 22.0);
    EXPECT_EQ(RegionMean(in, table, {1, 0, 2, 1}, 4.0), 16.5);
    EXPECT_THROW(RegionSum(in, table, {0, 0, 4, 4}), std::out_of_range);
    EXPECT_THROW(RegionSum(in, table, {0, 0, 3, 5}), std::out_of_range);
}

TEST(SlowScoring, WholePictureHoldsAllContent)
{
    const ScoringInput in = FullPicture(20, 10);
    const Shares shares = MeasureShares(in, {0, 0, 9, 19});
    EXPECT_EQ(shares.ContrastMask, 1.0);
    EXPECT_EQ(shares.ColorContrast, 1.0);
    EXPECT_EQ(shares.Edge, 1.0);
    EXPECT_EQ(shares.Peak, 1.0F);
    EXPECT_EQ(shares.Coverage, 1.0F);
}

TEST(SlowScoring, CoverageWeighsMaskColourAndEdges)
{
    ScoringInput in = FullPicture(10, 10);
    in.ContrastMaskTotal = 200.0F;  // a = 0.5
    in.ColorContrastTotal = 400.0F; // b = 0.25
    in.EdgeTotal = 800.0F;          // c = 0.125
    in.PeakTotal = 300.0F;
    const Shares shares = MeasureShares(in, {0, 0, 9, 9});
    EXPECT_EQ(shares.ContrastMask, 0.5);
    EXPECT_EQ(shares.ColorContrast, 0.25);
    EXPECT_EQ(shares.Edge, 0.125);
    EXPECT_EQ(shares.Peak, 1.0F / 3.0F);
    EXPECT_FLOAT_EQ(shares.Coverage, 0.275F); // 0.15 + 0.075 + 0.05
}

TEST(SlowScoring, EmptyMapHasNoShare)
{
    ScoringInput in = FullPicture(10, 10);
    in.PeakTable.assign(100, 0.0);
    in.PeakTotal = 1e-10F;
    EXPECT_EQ(MeasureShares(in, {0, 0, 9, 9}).Peak, 0.0F);
    EXPECT_EQ(CentrePeakShare(in, {0, 0, 9, 9}), 0.0F);
}

TEST(SlowScoring, CentrePeakReadsTheCentralPart)
{
    // Rows 33..66 of 100, columns 6..12 of 20: 9.5 * 0.67 + 0.5 = 6.865, + 19 * 0.33 = 13.135.
    const ScoringInput in = FullPicture(20, 100);
    EXPECT_EQ(CentrePeakShare(in, {0, 0, 99, 19}), static_cast<float>(34.0 * 8.0 / 2000.0));
}

TEST(SlowScoring, ContentIsReachedAtExactlyFourTenthsOfBoth)
{
    const double limit = 0.4F;
    EXPECT_TRUE(ReachesContent(limit, limit));
    EXPECT_FALSE(ReachesContent(0.5, 0.39));
    EXPECT_FALSE(ReachesContent(0.39, 0.5));
    // 0.4 as a double lies below 0.4f: a share of exactly 4 in 10 does not reach it.
    EXPECT_FALSE(ReachesContent(0.4, limit));
    EXPECT_FALSE(ReachesContent(limit, std::nextafter(limit, 0.0)));
}

TEST(SlowScoring, BandIsHalfTheBorderBandAndAtLeastOnePixel)
{
    ScoringInput in = Picture(10, 10);
    const int expected[] = {1, 1, 1, 1, 2, 2, 3};
    for (int band = 0; band <= 6; ++band) {
        in.BorderBand = band;
        EXPECT_EQ(BandWidth(in), expected[band]);
    }
}

// A picture of 30 x 20 whose four side maps are 1, 2, 3 and 4 everywhere; bands of 2 pixels.
ScoringInput SidedPicture()
{
    ScoringInput in = FullPicture(30, 20);
    in.BorderBand = 5;
    for (int side = 0; side < 4; ++side)
        in.SideTables[side] = TableOf(in, side + 1.0, 0.0, 0.0);
    in.SideGain[0] = 1.0F;
    in.SideGain[1] = 0.5F;
    in.SideGain[2] = 0.25F;
    in.SideGain[3] = 0.125F;
    return in;
}

TEST(SlowScoring, BorderCostAddsPerDirectionAndPerimeterMeans)
{
    const ScoringInput in = SidedPicture();
    const WorkRect rect = {5, 10, 12, 19}; // 10 wide, 8 high
    EXPECT_EQ(SideValue(in, rect, 0), 10.0F);
    EXPECT_EQ(SideValue(in, rect, 1), 20.0F);
    EXPECT_EQ(SideValue(in, rect, 2), 24.0F);
    EXPECT_EQ(SideValue(in, rect, 3), 32.0F);
    // With gains 10, 10, 6 and 4: 10 / 8 + 20 / 10 + 30 / 18.
    EXPECT_EQ(BorderCost(in, rect), 3.25F + static_cast<float>(30.0 / 18.0));
}

// Every map grows downwards and to the right, so a band's value shows where it was read.
TEST(SlowScoring, BandsRunInsideTheCrop)
{
    ScoringInput in = SidedPicture();
    for (std::vector<double>& table : in.SideTables)
        table = TableOf(in, 0.0, 100.0, 1.0);
    const WorkRect rect = {5, 10, 12, 11};                          // columns 10 and 11
    EXPECT_EQ(SideValue(in, rect, 0), (500.0F + 600.0F) + 21.0F);   // rows 5, 6
    EXPECT_EQ(SideValue(in, rect, 1), (1100.0F + 1200.0F) + 21.0F); // rows 11, 12
    // Rows 5..12 sum to 68; both bands are both columns.
    EXPECT_EQ(SideValue(in, rect, 2), 6800.0F + 8.0F * 10.5F);
    EXPECT_EQ(SideValue(in, rect, 3), 6800.0F + 8.0F * 10.5F);
}

TEST(SlowScoring, BandPastTheOppositeSideOfASmallCropCounts)
{
    const ScoringInput in = SidedPicture();
    const WorkRect rect = {5, 10, 5, 10}; // one pixel, bands of 2
    EXPECT_EQ(SideValue(in, rect, 0), 1.0F);
    EXPECT_EQ(SideValue(in, rect, 1), 2.0F);
    EXPECT_EQ(SideValue(in, rect, 2), 3.0F);
    EXPECT_EQ(SideValue(in, rect, 3), 4.0F);
    // 1 + 1 + 0.75 + 0.5: divided by each side of 1, and by their sum of 2.
    EXPECT_EQ(BorderCost(in, rect), 3.25F + 1.625F);
}

TEST(SlowScoring, BandOutsideThePictureGivesBorderScoreZero)
{
    const ScoringInput in = SidedPicture();
    EXPECT_EQ(SideValue(in, {0, 0, 0, 0}, 0), 1.0F);
    EXPECT_EQ(SideValue(in, {0, 0, 0, 0}, 1), 1e10F); // rows -1..0
    EXPECT_EQ(SideValue(in, {0, 0, 0, 0}, 3), 1e10F);
    EXPECT_EQ(SideValue(in, {19, 29, 19, 29}, 0), 1e10F); // rows 19..20
    EXPECT_EQ(SideValue(in, {19, 29, 19, 29}, 1), 2.0F);
    EXPECT_EQ(SideValue(in, {19, 29, 19, 29}, 2), 1e10F);
    EXPECT_EQ(BorderScoreOfCost(BorderCost(in, {0, 0, 0, 0})), 0.0F);
}

TEST(SlowScoring, BorderScoreFallsWithCost)
{
    EXPECT_EQ(BorderScoreOfCost(0.0F), 1.0F);
    EXPECT_FLOAT_EQ(BorderScoreOfCost(10.0F), 0.36787944F);
}

void ExpectCells(int first, int last, int cells, const std::vector<int>& limits)
{
    for (int i = 0; i < cells; ++i) {
        SCOPED_TRACE(testing::Message() << "cell " << i);
        const CellLimits cell = FindCellLimits(first, last, cells, i);
        EXPECT_EQ(cell.First - first, limits[static_cast<size_t>(2 * i)]);
        EXPECT_EQ(cell.Last - first, limits[static_cast<size_t>(2 * i + 1)]);
    }
}

TEST(SlowScoring, TenRowsFallIntoFourCells)
{
    ExpectCells(0, 9, 4, {0, 1, 2, 4, 5, 6, 7, 9});
    ExpectCells(100, 109, 4, {0, 1, 2, 4, 5, 6, 7, 9});
}

TEST(SlowScoring, TwelveCellsShareTwoRows)
{
    // Starts are i / 6, floored; ends are (i + 1) / 6 - 1, floored, but at least the start.
    ExpectCells(0, 1, 12, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1});
    ExpectCells(7, 7, 4, {0, 0, 0, 0, 0, 0, 0, 0});
}

// 10 / 12 as a float lies below 5 / 6, so six cells end at 4.99999988; the nearest float is 5.
TEST(SlowScoring, CellLimitsAreRoundedToFloatBeforeFloor)
{
    EXPECT_EQ(FindCellLimits(0, 9, 12, 6).First, 5);
    EXPECT_EQ(FindCellLimits(0, 9, 12, 5).Last, 4);
}

TEST(SlowScoring, DescriptorRunsGridByGridRowByRow)
{
    ScoringInput in = Picture(24, 24);
    in.ContrastTable = TableOf(in, 0.0, 100.0, 1.0);
    in.SaliencyTable = TableOf(in, 7.0, 1.0, 100.0);
    const std::vector<float> descriptor = CompositionDescriptor(in, {0, 0, 23, 23});
    ASSERT_EQ(descriptor.size(), 304U);

    size_t slot = 0;
    const auto expectGrid = [&](int n, bool contrast) {
        const float side = 24.0F / static_cast<float>(n);
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j, ++slot) {
                SCOPED_TRACE(testing::Message() << "slot " << slot);
                const float row = static_cast<float>(i) * side + (side - 1.0F) / 2.0F;
                const float col = static_cast<float>(j) * side + (side - 1.0F) / 2.0F;
                EXPECT_EQ(descriptor[slot],
                          contrast ? 100.0F * row + col : 7.0F + row + 100.0F * col);
            }
    };
    expectGrid(4, true);
    expectGrid(8, true);
    expectGrid(4, false);
    expectGrid(8, false);
    expectGrid(12, false);
    EXPECT_EQ(slot, 304U);
}

TEST(SlowScoring, OnePixelFillsEverySlotOfATable)
{
    ScoringInput in = Picture(9, 9);
    in.ContrastTable = TableOf(in, 0.0, 10.0, 1.0);
    in.SaliencyTable = TableOf(in, 1000.0, 10.0, 1.0);
    const std::vector<float> descriptor = CompositionDescriptor(in, {4, 6, 4, 6});
    for (size_t i = 0; i < 304; ++i)
        EXPECT_EQ(descriptor[i], i < 80 ? 46.0F : 1046.0F);
}

TEST(SlowScoring, DescriptorAtItsMeanLeavesTheBias)
{
    ScoringInput in = FullPicture(40, 30);
    in.DescriptorMean.assign(304, 1.0F);
    in.DescriptorWeights.assign(304, 2.0F);
    in.DescriptorBias = -0.3835262358188629;
    const Composition composition = EvaluateComposition(in, {3, 4, 20, 33});
    EXPECT_EQ(composition.Dot, 0.0);
    EXPECT_FLOAT_EQ(composition.Score, static_cast<float>((3.0 - 0.3835262358188629) / 6.0));
    EXPECT_EQ(composition.Score, composition.ScoreLeftToRight);
}

TEST(SlowScoring, StandardisedSlotIsCentredThenMultiplied)
{
    ScoringInput in = FullPicture(40, 30);
    in.DescriptorMean.assign(304, 0.75F);
    in.DescriptorScale.assign(304, 8.0F);
    in.DescriptorWeights[303] = 0.5F;
    in.DescriptorWeights[0] = -0.25F;
    const Composition composition = EvaluateComposition(in, {0, 0, 29, 39});
    EXPECT_EQ(composition.Descriptor[17], 1.0F);
    EXPECT_EQ(composition.Standardised[17], 2.0F);
    EXPECT_EQ(composition.Dot, 0.5);
    EXPECT_EQ(composition.DotLeftToRight, 0.5F);
    EXPECT_EQ(composition.DotMagnitude, 1.5);
    EXPECT_EQ(composition.Score, static_cast<float>(3.5 / 6.0));
}

TEST(SlowScoring, ModelOutputSaturatesAtThree)
{
    EXPECT_EQ(CompositionScoreOfDot(3.5F, 0.0), 1.0F);
    EXPECT_EQ(CompositionScoreOfDot(-3.5F, 0.0), 0.0F);
    EXPECT_EQ(CompositionScoreOfDot(3.0F, 0.0), 1.0F);
    EXPECT_EQ(CompositionScoreOfDot(0.0F, 0.0), 0.5F);
    EXPECT_EQ(CompositionScoreOfDot(3.25F, -0.5), static_cast<float>(5.75 / 6.0));
}

TEST(SlowScoring, CoverageOfARectangleIsItsShareInsideTheCrop)
{
    const Rect crop = {0, 99, 0, 99};
    EXPECT_EQ(RectCoverage(crop, {10, 19, 10, 19}), 1.0F);
    EXPECT_EQ(RectCoverage(crop, crop), 1.0F);
    EXPECT_EQ(RectCoverage(crop, {95, 104, 0, 9}), 0.5F);
    EXPECT_EQ(RectCoverage(crop, {99, 108, 99, 108}), 0.01F);
    EXPECT_EQ(RectCoverage(crop, {100, 109, 0, 9}), 0.0F);
    EXPECT_EQ(RectCoverage(crop, {200, 209, 200, 209}), 0.0F);
    EXPECT_TRUE(std::isnan(RectCoverage(crop, {10, 9, 10, 19})));
}

TEST(SlowScoring, HardRectanglesRequireAllOrNothing)
{
    const Rect crop = {0, 99, 0, 99};
    EXPECT_TRUE(PassesHardRects({}, crop));
    EXPECT_TRUE(PassesHardRects({MakeRoi(0, 99, 90, 99, kHardInclude)}, crop));
    EXPECT_FALSE(PassesHardRects({MakeRoi(0, 99, 90, 100, kHardInclude)}, crop));
    EXPECT_TRUE(PassesHardRects({MakeRoi(100, 120, 0, 9, kHardExclude)}, crop));
    EXPECT_FALSE(PassesHardRects({MakeRoi(99, 120, 0, 9, kHardExclude)}, crop));
    EXPECT_FALSE(PassesHardRects(
        {MakeRoi(0, 9, 0, 9, kHardInclude), MakeRoi(5, 5, 5, 5, kHardExclude)}, crop));
    EXPECT_FALSE(PassesHardRects({MakeRoi(10, 9, 0, 9, kHardInclude)}, crop)); // no pixels
    EXPECT_FALSE(PassesHardRects({MakeRoi(10, 9, 0, 9, kHardExclude)}, crop));
}

TEST(SlowScoring, ListsHoldTheEnabledRectanglesOfTheirKinds)
{
    std::vector<Roi> rects;
    for (int32_t kind = -1; kind <= 4; ++kind)
        rects.push_back(MakeRoi(kind + 10, kind + 20, 0, 9, kind));
    const std::vector<Roi> soft = SoftRects(rects);
    ASSERT_EQ(soft.size(), 2U);
    EXPECT_EQ(soft[0].Kind, kSoftInclude);
    EXPECT_EQ(soft[1].Kind, kSoftExclude);
    const std::vector<Roi> hard = HardRects(rects);
    ASSERT_EQ(hard.size(), 2U);
    EXPECT_EQ(hard[0].Kind, kHardInclude);
    EXPECT_EQ(hard[1].Kind, kHardExclude);
    for (Roi& rect : rects)
        rect.Enabled = false;
    EXPECT_TRUE(SoftRects(rects).empty());
    EXPECT_TRUE(HardRects(rects).empty());
}

TEST(SlowScoring, MetWishesScoreOne)
{
    const Rect crop = {0, 99, 0, 99};
    EXPECT_EQ(RoiScore({}, crop), 1.0F);
    EXPECT_EQ(RoiScore({MakeRoi(0, 9, 0, 9, kSoftInclude)}, crop), 1.0F);
    EXPECT_EQ(RoiScore({MakeRoi(90, 99, 90, 99, kSoftInclude)}, crop), 1.0F);
    EXPECT_EQ(RoiScore({MakeRoi(100, 109, 0, 9, kSoftExclude)}, crop), 1.0F);
}

// In half pixels the centres are |99 - 9| + |99 - 199| = 190 apart; sides 20: exp(-9.5).
TEST(SlowScoring, HalfAWishScoresItsShareAndACentreDistanceTerm)
{
    const Rect crop = {0, 99, 0, 99};
    const float score = RoiScore({MakeRoi(95, 104, 0, 9, kSoftInclude)}, crop);
    const double near = static_cast<float>(std::exp(-9.5));
    const float y = static_cast<float>(0.5 + near * static_cast<double>(0.01F));
    EXPECT_EQ(score, y * 0.1F);
    EXPECT_GT(score, 0.05F);
}

// Distance over sides is a floating-point quotient: 10 / 20 does not become 0.
TEST(SlowScoring, CentreDistanceIsNotAnIntegerDivision)
{
    // Crop 0..9, rectangle 5..14: half inside, distance |9 - 19| = 10 half pixels, sides 20.
    const float score = RoiScore({MakeRoi(5, 14, 0, 9, kSoftInclude)}, {0, 9, 0, 9});
    const double near = static_cast<float>(std::exp(-0.5));
    EXPECT_EQ(score, static_cast<float>(0.5 + near * static_cast<double>(0.01F)) * 0.1F);
}

TEST(SlowScoring, TouchedExclusionHasNoDistanceTerm)
{
    const float score = RoiScore({MakeRoi(99, 108, 99, 108, kSoftExclude)}, {0, 99, 0, 99});
    EXPECT_EQ(score, 0.99F * 0.1F);
}

TEST(SlowScoring, FullWishesWeighMoreThanParts)
{
    const Rect crop = {0, 99, 0, 99};
    // Include met, exclude half inside: met 1, covered 1.5, x = (1 + 0.75) / 2 = 0.875.
    // Distance |99 - 9| half pixels each way, sides 20: exp(-9).
    const float score =
        RoiScore({MakeRoi(0, 9, 0, 9, kSoftInclude), MakeRoi(95, 104, 0, 9, kSoftExclude)}, crop);
    const double near = static_cast<float>(std::exp(-9.0));
    EXPECT_EQ(score, static_cast<float>(0.875 + near * static_cast<double>(0.01F)) * 0.1F);
    EXPECT_TRUE(std::isnan(RoiScore({MakeRoi(10, 9, 0, 9, kSoftInclude)}, crop)));
}

TEST(SlowScoring, EvaluationFillsTheMeasuresOnce)
{
    ScoringInput in = SidedPicture();
    Crop crop = MakeCrop(10, 19, 5, 12);
    crop.RoiScore = 0.25;
    crop.MergedScore = 7.0;
    EvaluateCropRect(in, crop);
    EXPECT_TRUE(crop.Scored);
    EXPECT_EQ(crop.CompositionScore, 0.5);
    EXPECT_EQ(crop.CoverageScore, static_cast<double>(static_cast<float>(80.0 / 600.0)));
    EXPECT_EQ(crop.PeakScore, static_cast<double>(static_cast<float>(80.0 / 600.0)));
    // Rows 5..12: 8.5 * 0.67 + 0.5 = 6.195, with 1.65 and 3.96: 7..10. Columns 10..19: 13..16.
    EXPECT_EQ(crop.CentrePeakScore, static_cast<double>(static_cast<float>(16.0 / 600.0)));
    EXPECT_EQ(crop.BorderScore,
              static_cast<double>(BorderScoreOfCost(3.25F + static_cast<float>(30.0 / 18.0))));
    EXPECT_FALSE(crop.CoversContent);
    EXPECT_EQ(crop.RoiScore, 0.25);
    EXPECT_EQ(crop.MergedScore, 7.0);

    const Crop before = crop;
    in.PeakTotal = 1.0F;
    EvaluateCropRect(in, crop);
    EXPECT_EQ(crop.PeakScore, before.PeakScore);
}

TEST(SlowScoring, WholePictureCoversContent)
{
    const ScoringInput in = SidedPicture();
    Crop crop = MakeCrop(0, 29, 0, 19);
    EvaluateCropRect(in, crop);
    EXPECT_TRUE(crop.CoversContent);
    Crop marked = MakeCrop(0, 2, 0, 2); // too small, but the flag is never cleared
    marked.CoversContent = true;
    EvaluateCropRect(in, marked);
    EXPECT_TRUE(marked.CoversContent);
}

TEST(SlowScoring, WalkScoresOnlyTheChosenRowsAndCells)
{
    const ScoringInput in = SidedPicture();
    const CropGrid fresh(2, CropRow(3, CropCell(1, MakeCrop(10, 19, 5, 12))));
    const auto scored = [&in, &fresh](uint32_t a, uint32_t s) {
        CropGrid grid = fresh;
        EvaluateCropRects(in, {}, grid, a, s);
        int bits = 0;
        for (size_t i = 0; i < 6; ++i)
            bits |= grid[i / 3][i % 3][0].Scored ? 1 << i : 0;
        return bits;
    };
    EXPECT_EQ(scored(kNoIndex, kNoIndex), 0b111111);
    EXPECT_EQ(scored(1, kNoIndex), 0b111000);
    EXPECT_EQ(scored(kNoIndex, 1), 0b010010);
    EXPECT_EQ(scored(1, 2), 0b100000);
}

TEST(SlowScoring, WalkRewritesRoiScoreEveryTime)
{
    const ScoringInput in = SidedPicture();
    CropGrid grid(1, CropRow(1, CropCell(1, MakeCrop(10, 19, 5, 12))));
    const Roi outside = MakeRoi(0, 4, 0, 4, kSoftInclude);
    EvaluateCropRects(in, {outside}, grid, kNoIndex, kNoIndex);
    EXPECT_LT(grid[0][0][0].RoiScore, 0.102);
    EvaluateCropRects(in, {MakeRoi(0, 4, 0, 4, kHardInclude)}, grid, kNoIndex, kNoIndex);
    EXPECT_EQ(grid[0][0][0].RoiScore, 1.0);
}

} // namespace
} // namespace slowOracle
