// Candidates added to those of the lattice.
#include "ranking/moved_crops.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vistaTrim::photo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::vector<int>> SidesOf(const CropList& crops)
{
    std::vector<std::vector<int>> sides;
    for (const CInt32CropRect& crop : crops)
        sides.push_back({crop.Left, crop.Right, crop.Top, crop.Bottom});
    return sides;
}

WishedRegion Moving(const CInt32Rect& rect, double cutCost)
{
    WishedRegion region;
    region.Rect = rect;
    region.CutCost = cutCost;
    region.Moves = true;
    return region;
}

std::vector<int> Sides(int left, int right, int top, int bottom)
{
    return {left, right, top, bottom};
}

TEST(MovedToHold, MovesAsLittleAsItTakesOnBothAxes)
{
    const std::vector<WishedRegion> regions = {Moving({45, 54, 20, 29}, 0)};
    const CropList crops = {{0, 49, 0, 49}, {50, 99, 25, 74}};
    EXPECT_THAT(SidesOf(MovedToHold(crops, regions)),
                ElementsAre(Sides(5, 54, 0, 49), Sides(45, 94, 20, 69)));
}

TEST(MovedToHold, LeavesCropsThatHoldAllOrAreTooSmall)
{
    const std::vector<WishedRegion> regions = {Moving({45, 54, 20, 29}, 0)};
    EXPECT_THAT(MovedToHold({{40, 89, 0, 49}, {0, 8, 0, 49}, {0, 49, 0, 8}}, regions), IsEmpty());
    // Exactly as large as the region is large enough.
    EXPECT_THAT(SidesOf(MovedToHold({{0, 9, 0, 9}}, regions)), ElementsAre(Sides(45, 54, 20, 29)));
}

TEST(MovedToHold, HoldsAllRegionsAtOnceOrElseThoseNotToBeCut)
{
    const std::vector<WishedRegion> regions = {
        Moving({30, 49, 0, 19}, 0), Moving({35, 44, 5, 14}, 1), Moving({70, 89, 0, 19}, 0),
        Moving({75, 84, 5, 14}, 1)};
    // 60 columns hold 30..89; 50 columns hold just 35..84.
    EXPECT_THAT(SidesOf(MovedToHold({{0, 59, 0, 19}}, regions)),
                ElementsAre(Sides(30, 89, 0, 19), Sides(25, 84, 0, 19)));
    EXPECT_THAT(SidesOf(MovedToHold({{0, 49, 0, 19}}, regions)), ElementsAre(Sides(35, 84, 0, 19)));
}

TEST(MovedToHold, AddsEachPlaceOnceAndSkipsExistingOnes)
{
    const std::vector<WishedRegion> regions = {Moving({45, 54, 0, 9}, 0)};
    const CropList crops = {{0, 49, 0, 9}, {1, 50, 0, 9}, {90, 139, 0, 9}, {45, 94, 0, 9}};
    EXPECT_THAT(SidesOf(MovedToHold(crops, regions)), ElementsAre(Sides(5, 54, 0, 9)));
}

TEST(MovedToHold, OtherRegionsMoveNothing)
{
    WishedRegion region = Moving({45, 54, 0, 9}, 1);
    region.Moves = false;
    EXPECT_THAT(MovedToHold({{0, 49, 0, 9}}, {region}), IsEmpty());
}

TEST(CentredLargest, CentresTheLargestOnly)
{
    const CropList crops = {{0, 479, 0, 479}, {91, 570, 0, 479}, {0, 299, 0, 299}};
    EXPECT_THAT(SidesOf(CentredLargest(crops, {640, 480})), ElementsAre(Sides(80, 559, 0, 479)));
    EXPECT_THAT(CentredLargest({{80, 559, 0, 479}}, {640, 480}), IsEmpty());
}

} // namespace
} // namespace vistaTrim::photo
