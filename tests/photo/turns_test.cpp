#include "ranking/turns.h"

#include <gtest/gtest.h>

namespace vistaTrim::photo {
namespace {

// Columns first..last of a picture of ten rows; every pixel column is ten pixels.
CInt32CropRect Columns(int first, int last, double roi = 1.0)
{
    CInt32CropRect crop(first, last, 0, 9);
    crop.Score.RoiScore = roi;
    return crop;
}

std::vector<std::pair<int, int>> ColumnsOf(const CropList& crops)
{
    std::vector<std::pair<int, int>> columns;
    for (const CInt32CropRect& crop : crops)
        columns.emplace_back(crop.Left, crop.Right);
    return columns;
}
using Expected = std::vector<std::pair<int, int>>;

TEST(OverlapOf, IsTheShareOfWhatBothCover)
{
    EXPECT_EQ(OverlapOf(Columns(0, 9), Columns(0, 9)), 1.0);
    EXPECT_EQ(OverlapOf(Columns(0, 7), Columns(0, 9)), 0.8);
    EXPECT_EQ(OverlapOf(Columns(0, 9), Columns(9, 18)), 1.0 / 19.0);
    EXPECT_EQ(OverlapOf(Columns(0, 9), Columns(10, 19)), 0.0);
    EXPECT_EQ(OverlapOf(Columns(0, 9), Columns(50, 59)), 0.0);
}

TEST(TakeTurns, GoesRoundTheListsInTheGivenOrder)
{
    const CropList all = {Columns(0, 9), Columns(100, 109), Columns(200, 209)};
    const CropList wide = {Columns(300, 309)};
    const CropList wider = {Columns(400, 409), Columns(500, 509)};
    EXPECT_EQ(ColumnsOf(TakeTurns({all, wide, wider}, {0, 2, 0, 1}, 6)),
              (Expected{{0, 9}, {400, 409}, {100, 109}, {300, 309}, {200, 209}, {500, 509}}));
}

TEST(TakeTurns, WithoutAnOrderServesTheFirstList)
{
    EXPECT_EQ(ColumnsOf(TakeTurns({{Columns(0, 9), Columns(20, 29)}}, {}, 2)),
              (Expected{{0, 9}, {20, 29}}));
}

TEST(TakeTurns, PassesOverWhatOverlapsAnEarlierCropByMoreThanTheLimit)
{
    // 81 of 100 columns are too much, 80 of 100 are not.
    const CropList all = {Columns(0, 99), Columns(0, 80), Columns(0, 79)};
    EXPECT_EQ(ColumnsOf(TakeTurns({all}, {}, 2)), (Expected{{0, 99}, {0, 79}}));
}

TEST(TakeTurns, RaisesTheLimitWhenNothingElseIsLeft)
{
    const CropList all = {Columns(0, 99), Columns(0, 94), Columns(0, 84)};
    EXPECT_EQ(ColumnsOf(TakeTurns({all}, {}, 3)), (Expected{{0, 99}, {0, 84}, {0, 94}}));
}

TEST(TakeTurns, NeverGivesARectangleTwice)
{
    const CropList all = {Columns(0, 9), Columns(20, 29)};
    EXPECT_EQ(ColumnsOf(TakeTurns({all, all}, {0, 1}, 10)), (Expected{{0, 9}, {20, 29}}));
}

TEST(TakeTurns, GoesToTheGeneralListWhereItsOwnHasNothing)
{
    const CropList all = {Columns(0, 9), Columns(20, 29)};
    EXPECT_EQ(ColumnsOf(TakeTurns({all, {}}, {1, 0}, 5)), (Expected{{0, 9}, {20, 29}}));
}

TEST(TakeTurns, GoesToAnyListBeforeItRaisesTheLimit)
{
    const CropList all = {Columns(0, 99), Columns(0, 89)};
    const CropList wide = {Columns(200, 299)};
    EXPECT_EQ(ColumnsOf(TakeTurns({all, wide}, {0}, 3)), (Expected{{0, 99}, {200, 299}, {0, 89}}));
}

// The wishes go before the choice of shapes.
TEST(TakeTurns, LetsACropThatMeetsTheWishesGoFirst)
{
    const CropList all = {Columns(0, 9, 1.0), Columns(20, 29, 1.0), Columns(40, 49, 0.5)};
    const CropList wide = {Columns(60, 69, 0.5)};
    EXPECT_EQ(ColumnsOf(TakeTurns({all, wide}, {0, 1}, 4)),
              (Expected{{0, 9}, {20, 29}, {40, 49}, {60, 69}}));
}

TEST(TakeTurns, OfNothingGivesNothing)
{
    EXPECT_TRUE(TakeTurns({{}}, {}, 5).empty());
    EXPECT_TRUE(TakeTurns({{Columns(0, 9)}}, {}, 0).empty());
}

} // namespace
} // namespace vistaTrim::photo
