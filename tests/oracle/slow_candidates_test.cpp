#include "oracle/slow_candidates.h"

#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

namespace slowOracle {
namespace {

std::vector<Ratio> DefaultAspects()
{
    return {{64.0 / 27.0, true}, {16.0 / 9.0, true}, {3.0 / 2.0, true},
            {4.0 / 3.0, true},   {3.0 / 4.0, true},  {2.0 / 3.0, true}};
}

std::vector<Ratio> DefaultScales()
{
    return {{0.4, true}, {0.5, true}, {0.6, true}, {0.7, true},
            {0.8, true}, {0.9, true}, {1.0, true}};
}

GeneratorModel DefaultModel(uint32_t width, uint32_t height)
{
    return GeneratorModel(width, height, DefaultAspects(), DefaultScales(), 25);
}

void ExpectSides(const Crop& crop, int left, int right, int top, int bottom)
{
    EXPECT_EQ(crop.Left, left);
    EXPECT_EQ(crop.Right, right);
    EXPECT_EQ(crop.Top, top);
    EXPECT_EQ(crop.Bottom, bottom);
}

size_t CountAll(const CropGrid& grid)
{
    size_t count = 0;
    for (const CropRow& row : grid)
        for (const CropCell& cell : row)
            count += cell.size();
    return count;
}

// The message `model` throws when it fills the whole grid; empty if it throws none.
std::string MessageOfGenerateAll(GeneratorModel& model)
{
    try {
        model.GenerateAll();
    } catch (const char* text) {
        return text;
    }
    return std::string();
}

TEST(SlowCandidates, DefaultTablesGiveTheKnownTotals)
{
    EXPECT_EQ(CountAll(DefaultModel(640, 480).GenerateAll()), 14501U);
    EXPECT_EQ(CountAll(DefaultModel(480, 640).GenerateAll()), 11501U);
    EXPECT_EQ(CountAll(DefaultModel(640, 640).GenerateAll()), 12975U);
}

TEST(SlowCandidates, FullWidthCropMovesDownOnly)
{
    const CellResult cell = EnumerateCell(640, 480, 16.0 / 9.0, 1.0, 25);
    ASSERT_FALSE(cell.Error);
    ASSERT_EQ(cell.Crops.size(), 25U);
    for (int j = 0; j < 25; ++j)
        ExpectSides(cell.Crops[static_cast<size_t>(j)], 0, 639, 5 * j, 5 * j + 359);
}

TEST(SlowCandidates, FullHeightCropMovesSidewaysOnly)
{
    const CellResult cell = EnumerateCell(640, 480, 2.0 / 3.0, 1.0, 25);
    ASSERT_EQ(cell.Crops.size(), 25U);
    ExpectSides(cell.Crops.front(), 0, 319, 0, 479);
    ExpectSides(cell.Crops[1], 13, 332, 0, 479); // 320 / 24 = 13.33..., floored
    ExpectSides(cell.Crops.back(), 320, 639, 0, 479);
}

TEST(SlowCandidates, WholePictureIsOneCandidate)
{
    const CellResult cell = EnumerateCell(640, 480, 4.0 / 3.0, 1.0, 25);
    ASSERT_EQ(cell.Crops.size(), 1U);
    ExpectSides(cell.Crops[0], 0, 639, 0, 479);
}

TEST(SlowCandidates, CellRunsDownEachColumnOfPositions)
{
    const CellResult cell = EnumerateCell(640, 480, 4.0 / 3.0, 0.5, 25);
    ASSERT_EQ(cell.Crops.size(), 475U); // 25 columns of 19
    ExpectSides(cell.Crops[0], 0, 319, 0, 239);
    ExpectSides(cell.Crops[1], 0, 319, 13, 252);
    ExpectSides(cell.Crops[2], 0, 319, 26, 265);
    ExpectSides(cell.Crops[3], 0, 319, 40, 279); // the floored gaps differ by one
    ExpectSides(cell.Crops[18], 0, 319, 240, 479);
    ExpectSides(cell.Crops[19], 13, 332, 0, 239);
    ExpectSides(cell.Crops[474], 320, 639, 240, 479);
}

TEST(SlowCandidates, AxisWithLessRoomGetsFewerPositions)
{
    const CellResult cell = EnumerateCell(640, 480, 64.0 / 27.0, 0.4, 25);
    ASSERT_EQ(cell.Crops.size(), 600U); // 25 columns of 24
    ExpectSides(cell.Crops[0], 0, 255, 0, 107);
    EXPECT_EQ(cell.Crops[23].Left, 0);
    EXPECT_EQ(cell.Crops[24].Left, 16);
}

// By height: floor(192.4 + 0.5) = 192, 256 wide. By width it would be floor(256.53 + 0.5) = 257.
TEST(SlowCandidates, ThePicturesOwnRatioIsAnchoredOnTheHeight)
{
    const CellResult cell = EnumerateCell(640, 480, 640.0 / 480.0, 192.4 / 480.0, 25);
    ExpectSides(cell.Crops.at(0), 0, 255, 0, 191);
}

TEST(SlowCandidates, StepIsNeverBelowOnePixel)
{
    const CellResult cell = EnumerateCell(20, 10, 1.0, 1.0, 25);
    ASSERT_EQ(cell.Crops.size(), 11U);
    for (int i = 0; i < 11; ++i)
        ExpectSides(cell.Crops[static_cast<size_t>(i)], i, i + 9, 0, 9);
}

// With one wanted position the step is the whole free room, and both its ends are taken.
TEST(SlowCandidates, BoundOfOneGivesBothEndsOfEachAxis)
{
    const CellResult cell = EnumerateCell(640, 480, 4.0 / 3.0, 0.5, 1);
    ASSERT_EQ(cell.Crops.size(), 4U);
    ExpectSides(cell.Crops[0], 0, 319, 0, 239);
    ExpectSides(cell.Crops[1], 0, 319, 240, 479);
    ExpectSides(cell.Crops[2], 320, 639, 0, 239);
    ExpectSides(cell.Crops[3], 320, 639, 240, 479);
}

// A crop side of 0 at position 0 would end at -1, which as an unsigned number is far outside.
// At other positions it ends one pixel before it begins, inside the picture, and is kept.
TEST(SlowCandidates, CropWithoutPixelsIsSkippedOnlyAtTheOrigin)
{
    const CellResult cell = EnumerateCell(1, 1, 4.0 / 3.0, 0.4, 25);
    ASSERT_FALSE(cell.Error);
    ASSERT_EQ(cell.Crops.size(), 1U);
    ExpectSides(cell.Crops[0], 1, 0, 1, 0);
}

TEST(SlowCandidates, CropLargerThanThePictureIsAnError)
{
    EXPECT_TRUE(EnumerateCell(640, 480, 4.0 / 3.0, 1.01, 25).Error);
    EXPECT_FALSE(EnumerateCell(640, 480, 4.0 / 3.0, 1.0, 25).Error);
    EXPECT_TRUE(EnumerateCell(640, 480, 4.0 / 3.0, 1e12, 25).Error);
}

TEST(SlowCandidates, NegativeCropSideIsAnError)
{
    EXPECT_TRUE(EnumerateCell(640, 480, 4.0 / 3.0, -0.5, 25).Error);
}

TEST(SlowCandidates, CropSideBeyondThirtyTwoBitsIsAnError)
{
    EXPECT_TRUE(EnumerateCell(640, 480, 4.0 / 3.0, 1e300, 2).Error);
    EXPECT_TRUE(EnumerateCell(640, 480, 4.0 / 3.0, 4294967296.0 / 480.0, 2).Error); // 2^32 rows
}

// 0 - 1 wraps: one gap across the axis with more room, a position on every pixel of the other.
TEST(SlowCandidates, DensityOfZeroFillsTheAxisWithLessRoom)
{
    const CellResult cell = EnumerateCell(640, 480, 4.0 / 3.0, 0.5, 0);
    ASSERT_EQ(cell.Crops.size(), 2U * 241U);
    ExpectSides(cell.Crops[1], 0, 319, 1, 240);
    ExpectSides(cell.Crops.back(), 320, 639, 240, 479);
}

TEST(SlowGeneratorModel, CropSizeOffTheTableAddsAScaleAndFillsOneCell)
{
    GeneratorModel model = DefaultModel(640, 480);
    uint32_t aspectIndex = 99;
    uint32_t scaleIndex = 99;
    const CropCell cell = model.GenerateForCropSize(300.0, 200.0, aspectIndex, scaleIndex);

    EXPECT_EQ(aspectIndex, 2U);
    EXPECT_EQ(scaleIndex, 7U);
    EXPECT_EQ(model.Aspects.size(), 6U);
    ASSERT_EQ(model.Scales.size(), 8U);
    EXPECT_EQ(model.Scales[7].Value, 0.46875);
    EXPECT_TRUE(model.Scales[7].Enabled);
    ExpectSides(cell.at(0), 0, 299, 0, 199);

    // The scan created rows 0 and 1, and the cells before the new one.
    ASSERT_EQ(model.Grid.size(), 3U);
    EXPECT_TRUE(model.Grid[0].empty());
    EXPECT_TRUE(model.Grid[1].empty());
    ASSERT_EQ(model.Grid[2].size(), 8U);
    EXPECT_EQ(CountAll(model.Grid), cell.size());
}

TEST(SlowGeneratorModel, NewScaleReachesEveryRowOfALaterRequest)
{
    GeneratorModel model = DefaultModel(640, 480);
    uint32_t aspectIndex = 0;
    uint32_t scaleIndex = 0;
    model.GenerateForCropSize(300.0, 200.0, aspectIndex, scaleIndex);
    for (const CropRow& row : model.GenerateAll()) {
        ASSERT_EQ(row.size(), 8U);
        EXPECT_FALSE(row[7].empty());
    }
}

TEST(SlowGeneratorModel, CropSizeOnTheTableAddsNothing)
{
    GeneratorModel model = DefaultModel(640, 480);
    uint32_t aspectIndex = 99;
    uint32_t scaleIndex = 99;
    const CropCell cell = model.GenerateForCropSize(320.0, 240.0, aspectIndex, scaleIndex);
    EXPECT_EQ(aspectIndex, 3U);
    EXPECT_EQ(scaleIndex, 1U);
    EXPECT_EQ(model.Aspects.size(), 6U);
    EXPECT_EQ(model.Scales.size(), 7U);
    EXPECT_EQ(cell.size(), 475U);
    ASSERT_EQ(model.Grid.size(), 4U);
    EXPECT_EQ(model.Grid[3].size(), 2U);
}

TEST(SlowGeneratorModel, RatioWithinTheToleranceIsTheTablesRow)
{
    GeneratorModel model = DefaultModel(640, 480);
    uint32_t aspectIndex = 99;
    model.GenerateForAspectRatio(1.5 + 0.0009 / 640.0, aspectIndex);
    EXPECT_EQ(aspectIndex, 2U);
    EXPECT_EQ(model.Aspects.size(), 6U);
    model.GenerateForAspectRatio(1.5 + 0.0011 / 640.0, aspectIndex);
    EXPECT_EQ(aspectIndex, 6U);
    ASSERT_EQ(model.Aspects.size(), 7U);
    EXPECT_TRUE(model.Aspects[6].Enabled);
    EXPECT_EQ(model.Grid.size(), 7U);
}

TEST(SlowGeneratorModel, FirstRowWithinTheToleranceWinsOverANearerOne)
{
    GeneratorModel model(640, 480, {{1.5 + 0.0005 / 640.0, true}, {1.5, true}}, {{1.0, true}}, 25);
    uint32_t aspectIndex = 99;
    model.GenerateForAspectRatio(1.5, aspectIndex);
    EXPECT_EQ(aspectIndex, 0U);
}

TEST(SlowGeneratorModel, UnknownRatioIsAddedWithItsFlagAndNoGridRow)
{
    GeneratorModel model = DefaultModel(640, 480);
    model.SetAspectRatioEnabled(1.0, false);
    model.SetCropRectScaleRatioEnabled(0.25, true);
    model.SetCropRectScaleRatioEnabled(0.5, false);
    ASSERT_EQ(model.Aspects.size(), 7U);
    EXPECT_EQ(model.Aspects[6].Value, 1.0);
    EXPECT_FALSE(model.Aspects[6].Enabled);
    ASSERT_EQ(model.Scales.size(), 8U);
    EXPECT_TRUE(model.Scales[7].Enabled);
    EXPECT_FALSE(model.Scales[1].Enabled);
    EXPECT_TRUE(model.Grid.empty());
}

TEST(SlowGeneratorModel, DisabledRowsAreFilledButNotReturned)
{
    GeneratorModel model = DefaultModel(640, 480);
    model.SetAspectRatioEnabled(3.0 / 2.0, false);
    model.SetCropRectScaleRatioEnabled(0.4, false);
    EXPECT_EQ(CountAll(model.GenerateAll()), 14501U);

    const CropGrid enabled = model.GetEnabledGrid(kNoIndex);
    ASSERT_EQ(enabled.size(), 5U);
    for (const CropRow& row : enabled)
        EXPECT_EQ(row.size(), 6U);
    ExpectSides(enabled[2].back().at(0), 0, 639, 0, 479); // 4/3 moved up one row

    const CropCell flat = model.GetEnabledCropRects(kNoIndex);
    EXPECT_EQ(flat.size(), CountAll(enabled));
    EXPECT_TRUE(model.GetEnabledCropRects(2).empty());
    EXPECT_EQ(model.GetEnabledGrid(3).size(), 1U);
    EXPECT_THROW(model.GetEnabledGrid(6), std::out_of_range);
}

TEST(SlowGeneratorModel, RowWithAllScalesDisabledIsReturnedWithoutCells)
{
    GeneratorModel model(640, 480, {{1.5, true}}, {{0.5, false}}, 25);
    model.GenerateAll();
    const CropGrid enabled = model.GetEnabledGrid(kNoIndex);
    ASSERT_EQ(enabled.size(), 1U);
    EXPECT_TRUE(enabled[0].empty());
}

TEST(SlowGeneratorModel, ScaleAboveOneThrowsEveryTime)
{
    GeneratorModel model = DefaultModel(640, 480);
    model.SetCropRectScaleRatioEnabled(1.5, false);
    EXPECT_EQ(MessageOfGenerateAll(model), "RandomCropGenerator: error\n");
    EXPECT_EQ(MessageOfGenerateAll(model), "RandomCropGenerator: error\n");
    ASSERT_EQ(model.Grid.size(), 1U);
    ASSERT_EQ(model.Grid[0].size(), 8U);
    EXPECT_FALSE(model.Grid[0][6].empty());
    EXPECT_TRUE(model.Grid[0][7].empty());

    // A crop size touches one cell only and still works.
    uint32_t aspectIndex = 0;
    uint32_t scaleIndex = 0;
    EXPECT_EQ(model.GenerateForCropSize(320.0, 240.0, aspectIndex, scaleIndex).size(), 475U);
}

TEST(SlowGeneratorModel, FilledCellKeepsItsScores)
{
    GeneratorModel model = DefaultModel(640, 480);
    model.GenerateAll();
    model.Grid[3][1][7].Scored = true;
    uint32_t aspectIndex = 0;
    uint32_t scaleIndex = 0;
    EXPECT_TRUE(model.GenerateForCropSize(320.0, 240.0, aspectIndex, scaleIndex).at(7).Scored);
    EXPECT_TRUE(model.GenerateAll().at(3).at(1).at(7).Scored);
}

} // namespace
} // namespace slowOracle
