#include "candidates/random_crop_generator.h"

#include <cmath>
#include <limits>
#include <new>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "cells_of_grid.h"
#include "generator_tables.h"

namespace vistaTrim {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kSanitizedAllocator = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) ||                         \
    __has_feature(memory_sanitizer)
constexpr bool kSanitizedAllocator = true;
#else
constexpr bool kSanitizedAllocator = false;
#endif
#else
constexpr bool kSanitizedAllocator = false;
#endif

constexpr uint32_t kRow64By27 = 0;
constexpr uint32_t kRow16By9 = 1;
constexpr uint32_t kRow3By2 = 2;
constexpr uint32_t kRow4By3 = 3;
constexpr uint32_t kRow2By3 = 5;
constexpr uint32_t kScale04 = 0;
constexpr uint32_t kScale05 = 1;
constexpr uint32_t kScale10 = 6;

size_t CountAll(const CropGridRows& grid)
{
    size_t count = 0;
    for (const CropRow& row : grid)
        for (const CropCell& cell : row)
            count += cell.size();
    return count;
}

void ExpectSides(const CInt32CropRect& crop, int left, int right, int top, int bottom)
{
    EXPECT_EQ(crop.Left, left);
    EXPECT_EQ(crop.Right, right);
    EXPECT_EQ(crop.Top, top);
    EXPECT_EQ(crop.Bottom, bottom);
}

CropCell OneCell(uint32_t width, uint32_t height, double aspect, double scale, uint32_t density)
{
    return OneCellGenerator(width, height, aspect, scale, density).GenerateAspectRow(0).at(0);
}

// The distinct left edges of a cell, in order.
std::vector<int32_t> Columns(const CropCell& cell)
{
    std::vector<int32_t> columns;
    for (const CInt32CropRect& crop : cell)
        if (columns.empty() || columns.back() != crop.Left)
            columns.push_back(crop.Left);
    return columns;
}

// The message thrown by filling the whole grid; empty if it throws none.
std::string MessageOfGenerateAll(RandomCropGenerator& generator)
{
    try {
        generator.GenerateAll();
    } catch (const char* text) {
        return text;
    }
    return std::string();
}

// The message of a std::length_error, or a word for any other outcome.
std::string OutcomeOfGenerateAll(RandomCropGenerator& generator)
{
    try {
        generator.GenerateAll();
    } catch (const std::length_error& error) {
        return error.what();
    } catch (const std::bad_alloc&) {
        return "bad_alloc";
    }
    return "none";
}

TEST(RandomCropGenerator, DefaultTablesGiveTheKnownTotals)
{
    EXPECT_EQ(CountAll(DefaultGenerator(640, 480).GenerateAll()), 14501U);
    // Portrait does not mirror landscape: the table lacks the inverses of 64/27 and 16/9.
    EXPECT_EQ(CountAll(DefaultGenerator(480, 640).GenerateAll()), 11501U);
    EXPECT_EQ(CountAll(DefaultGenerator(640, 640).GenerateAll()), 12975U);
}

TEST(RandomCropGenerator, FullWidthCropMovesDownOnly)
{
    const CropCell cell = DefaultGenerator(640, 480).GenerateAll()[kRow16By9][kScale10];
    ASSERT_EQ(cell.size(), 25U);
    for (int j = 0; j < 25; ++j)
        ExpectSides(cell[static_cast<size_t>(j)], 0, 639, 5 * j, 5 * j + 359);
}

// Neither axis has free room: their ratio must not divide by 0.
TEST(RandomCropGenerator, WholePictureIsOneCandidate)
{
    const CropCell cell = DefaultGenerator(640, 480).GenerateAll()[kRow4By3][kScale10];
    ASSERT_EQ(cell.size(), 1U);
    ExpectSides(cell[0], 0, 639, 0, 479);
}

TEST(RandomCropGenerator, PositionsRunDownEachColumnFromTheLeft)
{
    const CropCell cell = DefaultGenerator(640, 480).GenerateAll()[kRow4By3][kScale05];
    ASSERT_EQ(cell.size(), 475U); // 25 columns of 19, both steps 13.33...
    ExpectSides(cell[0], 0, 319, 0, 239);
    ExpectSides(cell[1], 0, 319, 13, 252);
    ExpectSides(cell[2], 0, 319, 26, 265);
    ExpectSides(cell[3], 0, 319, 40, 279); // floored gaps differ by one
    ExpectSides(cell[18], 0, 319, 240, 479);
    ExpectSides(cell[19], 13, 332, 0, 239);
    ExpectSides(cell[474], 320, 639, 240, 479);
}

TEST(RandomCropGenerator, AxisWithLessRoomGetsItsShareOfThePositions)
{
    const CropCell cell = DefaultGenerator(640, 480).GenerateAll()[kRow64By27][kScale04];
    ASSERT_EQ(cell.size(), 600U); // 25 columns of 24
    ExpectSides(cell[0], 0, 255, 0, 107);
    EXPECT_EQ(Columns(cell).size(), 25U);
}

TEST(RandomCropGenerator, FullHeightCropMovesSidewaysOnly)
{
    const CropCell cell = DefaultGenerator(640, 480).GenerateAll()[kRow2By3][kScale10];
    ASSERT_EQ(cell.size(), 25U);
    ExpectSides(cell[0], 0, 319, 0, 479);
    ExpectSides(cell[24], 320, 639, 0, 479);
}

TEST(RandomCropGenerator, CandidatesStartWithDefaultScores)
{
    const CInt32CropRect crop = OneCell(640, 480, 4.0 / 3.0, 1.0, 25).at(0);
    EXPECT_FALSE(crop.CoversContent);
    EXPECT_FALSE(crop.Score.Scored);
    EXPECT_EQ(crop.Score.CompositionScore, 0.0);
    EXPECT_EQ(crop.Score.RoiScore, 1.0);
}

TEST(RandomCropGenerator, StepIsNeverBelowOnePixel)
{
    const CropCell cell = OneCell(20, 10, 1.0, 1.0, 25);
    ASSERT_EQ(cell.size(), 11U); // 10 pixels of room, not 25 positions
    for (int i = 0; i < 11; ++i)
        ExpectSides(cell[static_cast<size_t>(i)], i, i + 9, 0, 9);
}

// 457 / 27 rounds up, so 457 / step falls short of 27 and truncates to 26: the last of the 28
// wanted columns is lost, and with it the far edge.
TEST(RandomCropGenerator, RoundedStepCanLoseTheLastColumn)
{
    const CropCell cell = OneCell(640, 183, 1.0, 1.0, 28);
    const std::vector<int32_t> columns = Columns(cell);
    ASSERT_EQ(columns.size(), 27U);
    EXPECT_EQ(columns.front(), 0);
    EXPECT_EQ(columns.back(), static_cast<int32_t>(std::floor(26.0 * (457.0 / 27.0))));
    EXPECT_EQ(cell.size(), 27U); // one row: no room downwards
}

// 22 * (15 / 22) rounds to just below 15, which gives 15 columns; (22 * 15) / 22 would give 16. The
// ratio of the free room on both axes is rounded first.
TEST(RandomCropGenerator, RatioOfFreeRoomIsRoundedFirst)
{
    const CropCell cell = OneCell(25, 32, 1.0, 0.4, 23); // 10 x 10
    EXPECT_EQ(Columns(cell).size(), 15U);
    EXPECT_EQ(cell.size(), 15U * 23U);
}

TEST(RandomCropGenerator, ScaleBarelyAboveOneCanStillRoundToTheWholePicture)
{
    const CropCell cell = OneCell(640, 480, 4.0 / 3.0, 1.0005, 25);
    ASSERT_EQ(cell.size(), 1U);
    ExpectSides(cell[0], 0, 639, 0, 479);
}

TEST(RandomCropGenerator, OneWantedPositionTakesBothEndsOfEachAxis)
{
    const CropCell cell = OneCell(640, 480, 4.0 / 3.0, 0.5, 1);
    ASSERT_EQ(cell.size(), 4U);
    ExpectSides(cell[0], 0, 319, 0, 239);
    ExpectSides(cell[1], 0, 319, 240, 479);
    ExpectSides(cell[2], 320, 639, 0, 239);
    ExpectSides(cell[3], 320, 639, 240, 479);
}

// By height: floor(192.4 + 0.5) = 192, 256 wide. By width it would be floor(256.53 + 0.5) = 257.
TEST(RandomCropGenerator, ThePicturesOwnRatioIsAnchoredOnTheHeight)
{
    ExpectSides(OneCell(640, 480, 640.0 / 480.0, 192.4 / 480.0, 25).at(0), 0, 255, 0, 191);
}

// A side of 0 ends at -1 in the first row or column: a huge unsigned number, so it is skipped.
TEST(RandomCropGenerator, CropWithoutRowsSurvivesBelowTheFirstRow)
{
    const CropCell cell = OneCell(640, 2, 4.0, 0.2, 3); // 0 x 0: floor(2 * 0.2 + 0.5)
    ASSERT_FALSE(cell.empty());
    for (const CInt32CropRect& crop : cell) {
        EXPECT_GT(crop.Left, 0);
        EXPECT_EQ(crop.Right, crop.Left - 1);
        EXPECT_GT(crop.Top, 0);
        EXPECT_EQ(crop.Bottom, crop.Top - 1);
    }
}

TEST(RandomCropGenerator, CropWithoutColumnsSurvivesRightOfTheFirstColumn)
{
    const CropCell cell = OneCell(1, 1, 0.1, 1.0, 25); // 0 x 1, one pixel of room sideways
    ASSERT_EQ(cell.size(), 1U);
    ExpectSides(cell[0], 1, 0, 0, 0);
}

TEST(RandomCropGenerator, CropOfOneRowOnAPictureOfOneRowKeepsItsColumns)
{
    const CropCell cell = OneCell(640, 1, 16.0 / 9.0, 1.0, 3); // 2 x 1
    ASSERT_EQ(cell.size(), 3U);
    ExpectSides(cell[0], 0, 1, 0, 0);
    ExpectSides(cell[2], 638, 639, 0, 0);
}

TEST(RandomCropGenerator, CellWithoutCandidatesIsTriedAgain)
{
    // A picture without columns: the cell gets no candidates and nothing is thrown.
    RandomCropGenerator generator = OneCellGenerator(0, 1, 0.1, 1.0, 25);
    EXPECT_TRUE(generator.GenerateAspectRow(0).at(0).empty());
    EXPECT_TRUE(generator.GenerateAspectRow(0).at(0).empty());
    EXPECT_EQ(generator.CropGrid.at(0).size(), 1U);
}

TEST(RandomCropGenerator, ScoresStayInACellThatIsRequestedAgain)
{
    RandomCropGenerator generator = DefaultGenerator(640, 480);
    generator.GenerateAll();
    generator.CropGrid[kRow4By3][kScale05][7].Score.Scored = true;

    uint32_t aspectIndex = 0;
    uint32_t scaleIndex = 0;
    EXPECT_TRUE(generator.GenerateForCropSize(320, 240, aspectIndex, scaleIndex)[7].Score.Scored);
    EXPECT_TRUE(generator.GenerateForAspectRatio(4.0 / 3.0, aspectIndex)[kScale05][7].Score.Scored);
    EXPECT_TRUE(generator.GenerateAll()[kRow4By3][kScale05][7].Score.Scored);
}

// So that scores written into the grid are seen in every result.
TEST(RandomCropGenerator, ResultsAreReferencesIntoTheGrid)
{
    RandomCropGenerator generator = DefaultGenerator(640, 480);
    const CropGridRows& grid = generator.CropGrid;
    EXPECT_EQ(&generator.GenerateAll(), &grid);
    EXPECT_EQ(&generator.GenerateAspectRow(kRow4By3), &grid[kRow4By3]);
    EXPECT_EQ(&generator.GenerateCell(kRow4By3, kScale05), &grid[kRow4By3][kScale05]);
    uint32_t aspectIndex = 99;
    uint32_t scaleIndex = 99;
    EXPECT_EQ(&generator.GenerateForAspectRatio(4.0 / 3.0, aspectIndex), &grid[kRow4By3]);
    EXPECT_EQ(&generator.GenerateForCropSize(320, 240, aspectIndex, scaleIndex),
              &grid[kRow4By3][kScale05]);
}

TEST(RandomCropGenerator, RatioRequestFillsItsRowOnly)
{
    RandomCropGenerator generator = DefaultGenerator(640, 480);
    uint32_t aspectIndex = 99;
    EXPECT_EQ(generator.GenerateForAspectRatio(3.0 / 2.0, aspectIndex).size(), 7U);
    EXPECT_EQ(aspectIndex, kRow3By2);
    ASSERT_EQ(generator.CropGrid.size(), 3U);
    EXPECT_TRUE(generator.CropGrid[0].empty());
    EXPECT_TRUE(generator.CropGrid[1].empty());
}

TEST(RandomCropGenerator, RatioWithinTheToleranceCountsAsTheTablesRow)
{
    RandomCropGenerator generator = DefaultGenerator(640, 480);
    uint32_t aspectIndex = 99;
    generator.GenerateForAspectRatio(1.5 + 0.0009 / 640.0, aspectIndex);
    EXPECT_EQ(aspectIndex, kRow3By2);
    EXPECT_EQ(generator.GetAspectRatios().size(), 6U);

    generator.GenerateForAspectRatio(1.5 + 0.0011 / 640.0, aspectIndex);
    EXPECT_EQ(aspectIndex, 6U);
    const std::vector<DoubleInfo> table = generator.GetAspectRatios();
    ASSERT_EQ(table.size(), 7U);
    EXPECT_EQ(table[6].Value, 1.5 + 0.0011 / 640.0);
    EXPECT_TRUE(table[6].Enabled);
}

TEST(RandomCropGenerator, DifferenceOfExactlyTheToleranceIsAnotherRow)
{
    // 0.001 / 1 is exactly the tolerance, and exactly the distance of 0.001 from the table's 0.
    RandomCropGenerator generator;
    generator.Initialize(1, 1, {0.0}, {1.0}, 1);
    generator.SetAspectRatioEnabled(0.001, false);
    EXPECT_EQ(generator.GetAspectRatios().size(), 2U);
    generator.SetAspectRatioEnabled(std::nextafter(-0.001, 0.0), false);
    const std::vector<DoubleInfo> table = generator.GetAspectRatios();
    ASSERT_EQ(table.size(), 2U);
    EXPECT_FALSE(table[0].Enabled);
}

TEST(RandomCropGenerator, LongerSideSetsTheTolerance)
{
    for (const bool portrait : {false, true}) {
        RandomCropGenerator generator;
        generator.Initialize(portrait ? 10 : 640, portrait ? 640 : 10, {1.5}, {1.0}, 25);
        EXPECT_FALSE(generator.GetAspectRatios().empty());
        generator.SetAspectRatioEnabled(1.5 + 0.0011 / 640.0, true);
        EXPECT_EQ(generator.GetAspectRatios().size(), 2U);
    }
}

TEST(RandomCropGenerator, FirstRowWithinTheToleranceWinsOverANearerOne)
{
    RandomCropGenerator generator;
    generator.Initialize(640, 480, {1.5 + 0.0005 / 640.0, 1.5}, {1.0}, 25);
    uint32_t aspectIndex = 99;
    generator.GenerateForAspectRatio(1.5, aspectIndex);
    EXPECT_EQ(aspectIndex, 0U);
}

TEST(RandomCropGenerator, CropSizeOffTheTableAddsAScaleAndFillsOneCell)
{
    RandomCropGenerator generator = DefaultGenerator(640, 480);
    uint32_t aspectIndex = 99;
    uint32_t scaleIndex = 99;
    const CropCell cell = generator.GenerateForCropSize(300, 200, aspectIndex, scaleIndex);

    EXPECT_EQ(aspectIndex, kRow3By2);
    EXPECT_EQ(scaleIndex, 7U);
    const std::vector<DoubleInfo> scales = generator.GetCropRectScaleRatios();
    ASSERT_EQ(scales.size(), 8U);
    EXPECT_EQ(scales[7].Value, 0.46875); // 300 / 640: the ratio overflows the width
    EXPECT_EQ(generator.GetAspectRatios().size(), 6U);
    ExpectSides(cell.at(0), 0, 299, 0, 199);
    EXPECT_EQ(CountAll(generator.CropGrid), cell.size());
}

TEST(RandomCropGenerator, CropSizeOnTheTableAddsNothing)
{
    RandomCropGenerator generator = DefaultGenerator(640, 480);
    uint32_t aspectIndex = 99;
    uint32_t scaleIndex = 99;
    EXPECT_EQ(generator.GenerateForCropSize(320, 240, aspectIndex, scaleIndex).size(), 475U);
    EXPECT_EQ(aspectIndex, kRow4By3);
    EXPECT_EQ(scaleIndex, kScale05);
    EXPECT_EQ(generator.GetAspectRatios().size(), 6U);
    EXPECT_EQ(generator.GetCropRectScaleRatios().size(), 7U);
}

TEST(RandomCropGenerator, FractionalCropSizeComesBackInWholePixels)
{
    RandomCropGenerator generator = DefaultGenerator(640, 480);
    uint32_t aspectIndex = 0;
    uint32_t scaleIndex = 0;
    const CropCell cell = generator.GenerateForCropSize(300.4, 200.4, aspectIndex, scaleIndex);
    ExpectSides(cell.at(0), 0, 299, 0, 199);
}

TEST(RandomCropGenerator, NewScaleReachesEveryRowOfALaterRequest)
{
    RandomCropGenerator generator = DefaultGenerator(640, 480);
    uint32_t aspectIndex = 0;
    uint32_t scaleIndex = 0;
    generator.GenerateForCropSize(300, 200, aspectIndex, scaleIndex);
    generator.GenerateForAspectRatio(16.0 / 9.0, aspectIndex);
    EXPECT_EQ(generator.CropGrid[kRow3By2].size(), 8U);
    EXPECT_TRUE(generator.CropGrid[kRow64By27].empty()); // no cell until one is requested
    for (const CropRow& row : generator.GenerateAll()) {
        ASSERT_EQ(row.size(), 8U);
        EXPECT_FALSE(row[7].empty());
    }
}

TEST(RandomCropGenerator, EnablingAnUnknownRatioAppendsARowAndTouchesNoCell)
{
    RandomCropGenerator generator = DefaultGenerator(640, 480);
    generator.SetAspectRatioEnabled(1.0, false);
    generator.SetCropRectScaleRatioEnabled(0.25, true);
    generator.SetCropRectScaleRatioEnabled(0.5, false);
    const std::vector<DoubleInfo> aspects = generator.GetAspectRatios();
    const std::vector<DoubleInfo> scales = generator.GetCropRectScaleRatios();
    ASSERT_EQ(aspects.size(), 7U);
    EXPECT_EQ(aspects[6].Value, 1.0);
    EXPECT_FALSE(aspects[6].Enabled);
    ASSERT_EQ(scales.size(), 8U);
    EXPECT_TRUE(scales[7].Enabled);
    EXPECT_FALSE(scales[1].Enabled);
    EXPECT_TRUE(generator.CropGrid.empty());
}

TEST(RandomCropGenerator, DisabledRowsAreEnumeratedButNotReturned)
{
    RandomCropGenerator generator = DefaultGenerator(640, 480);
    generator.SetAspectRatioEnabled(3.0 / 2.0, false);
    generator.SetCropRectScaleRatioEnabled(0.4, false);
    EXPECT_EQ(CountAll(generator.GenerateAll()), 14501U);

    const CropCells enabled = generator.GetEnabledCropRects(NoIndex);
    ASSERT_EQ(enabled.size(), 5U * 6U);
    // Pointers into the grid, where the analyzer scores the candidates.
    EXPECT_EQ(enabled[0], &generator.CropGrid[kRow64By27][kScale05]);
    EXPECT_EQ(enabled[2 * 6 + 5], &generator.CropGrid[kRow4By3][kScale10]);

    EXPECT_TRUE(generator.GetEnabledCropRects(kRow3By2).empty());
    EXPECT_EQ(generator.GetEnabledCropRects(kRow4By3).size(), 6U);
}

TEST(RandomCropGenerator, ScaleAboveOneThrowsEachTimeAndLeavesAnEmptyCell)
{
    RandomCropGenerator generator = DefaultGenerator(640, 480);
    generator.SetCropRectScaleRatioEnabled(1.5, false); // disabled rows are enumerated too
    for (int attempt = 0; attempt < 2; ++attempt) {
        EXPECT_EQ(MessageOfGenerateAll(generator), "RandomCropGenerator: error\n");
        ASSERT_EQ(generator.CropGrid.size(), 1U);
        ASSERT_EQ(generator.CropGrid[0].size(), 8U);
        EXPECT_FALSE(generator.CropGrid[0][6].empty());
        EXPECT_TRUE(generator.CropGrid[0][7].empty());
    }
    // A crop size touches its own cell and still works.
    uint32_t aspectIndex = 0;
    uint32_t scaleIndex = 0;
    EXPECT_EQ(generator.GenerateForCropSize(320, 240, aspectIndex, scaleIndex).size(), 475U);
}

// If the upper bits were lost, multiples of 2^32 pixels would come back as crops of no pixels, and
// sides a few pixels longer as crops of a few.
TEST(RandomCropGenerator, CropSideBeyondThirtyTwoBitsDoesNotFit)
{
    const double rows = 4294967296.0;
    const double infinity = std::numeric_limits<double>::infinity();
    for (const double height : {rows, rows + 3, 2 * rows, -rows, rows * rows, 1e300, infinity}) {
        SCOPED_TRACE(height);
        RandomCropGenerator generator = OneCellGenerator(640, 480, 1.0, height / 480, 25);
        EXPECT_EQ(MessageOfGenerateAll(generator), "RandomCropGenerator: error\n");
        EXPECT_TRUE(generator.CropGrid.at(0).at(0).empty());
    }
}

TEST(RandomCropGenerator, MessageIsCaughtByHandlersOfThreePointerTypes)
{
    RandomCropGenerator generator = OneCellGenerator(640, 480, 1.0, 2.0, 25);
    std::string caught;
    try {
        generator.GenerateAll();
    } catch (char* text) {
        caught = text;
    }
    EXPECT_EQ(caught, "RandomCropGenerator: error\n");
    caught.clear();
    try {
        generator.GenerateAll();
    } catch (const char* text) {
        caught = text;
    }
    EXPECT_EQ(caught, "RandomCropGenerator: error\n");
    caught.clear();
    try {
        generator.GenerateAll();
    } catch (void* text) {
        caught = static_cast<const char*>(text);
    }
    EXPECT_EQ(caught, "RandomCropGenerator: error\n");
}

TEST(RandomCropGenerator, RatioThatNeverMatchesGetsARowEachTime)
{
    RandomCropGenerator generator = DefaultGenerator(640, 480);
    uint32_t aspectIndex = 0;
    generator.GenerateForAspectRatio(std::numeric_limits<double>::infinity(), aspectIndex);
    EXPECT_EQ(aspectIndex, 6U);
    generator.GenerateForAspectRatio(std::numeric_limits<double>::infinity(), aspectIndex);
    EXPECT_EQ(aspectIndex, 7U);
}

// N - 1 wraps to 4294967295: one step across the axis with more room, and a position on every
// pixel of the other, whose share is larger than its room.
TEST(RandomCropGenerator, DensityOfZeroWrapsAndTerminates)
{
    EXPECT_EQ(OneCell(640, 480, 4.0 / 3.0, 0.5, 0).size(), 2U * 241U);
    EXPECT_EQ(OneCell(5000, 4999, 1.0, 0.4, 0).size(), 2U * 3000U);

    RandomCropGenerator generator;
    generator.Initialize(640, 480, DefaultAspects(), DefaultScales(), 0);
    const size_t count = CountAll(generator.GenerateAll());
    EXPECT_GT(count, 0U);
    EXPECT_EQ(CandidatesOf(generator.GetEnabledCropRects(NoIndex)).size(), count);
}

TEST(RandomCropGenerator, DenseCellKeepsNoUnusedMemory)
{
    // 1,000 x 750 positions are reserved, but only 65 x 49 are at least a pixel apart.
    RandomCropGenerator generator = OneCellGenerator(128, 96, 4.0 / 3.0, 0.5, 1000);
    const CropCell& cell = generator.GenerateAll()[0][0];
    EXPECT_EQ(cell.size(), 65U * 49U);
    EXPECT_LE(cell.capacity(), 2 * cell.size());
}

TEST(RandomCropGenerator, DensityBeyondTheLongestListThrowsALengthError)
{
    RandomCropGenerator generator =
        OneCellGenerator(640, 480, 4.0 / 3.0, 0.5, std::numeric_limits<uint32_t>::max());
    EXPECT_EQ(OutcomeOfGenerateAll(generator), "vector<T> too long");
    // The cell stays, empty, and is tried again.
    ASSERT_EQ(generator.CropGrid.size(), 1U);
    ASSERT_EQ(generator.CropGrid[0].size(), 1U);
    EXPECT_TRUE(generator.CropGrid[0][0].empty());
    EXPECT_EQ(OutcomeOfGenerateAll(generator), "vector<T> too long");
}

TEST(RandomCropGenerator, DensityBeyondMemoryThrowsABadAlloc)
{
    if (kSanitizedAllocator)
        GTEST_SKIP() << "the sanitizer aborts instead of throwing";
    // 3e8 * 2.25e8 records of 88 bytes: fewer than the longest list holds, but more than any
    // address space.
    RandomCropGenerator generator = OneCellGenerator(640, 480, 4.0 / 3.0, 0.5, 300000000U);
    EXPECT_EQ(OutcomeOfGenerateAll(generator), "bad_alloc");
    EXPECT_TRUE(generator.CropGrid[0][0].empty());
}

} // namespace
} // namespace vistaTrim
