// The wishes that found regions add.
#include "regions/region_wishes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "regions/same_region.h"

namespace vistaTrim::photo {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

constexpr PixelSize kPhoto{1000, 800};

FoundRegion Region(const PixelRect& rect, RegionKind kind)
{
    return {rect, kind, RegionSource::File, 1.0, "", WishKind::Keep};
}

TEST(RegionWishes, AFaceKeepsRoomForItsHead)
{
    const auto wishes = WishesOf({Region({400, 300, 100, 100}, RegionKind::Face)}, kPhoto);

    ASSERT_THAT(wishes, SizeIs(1));
    EXPECT_EQ(wishes[0].Wish.Kind, WishKind::Keep);
    EXPECT_EQ(wishes[0].Wish.Rect, (PixelRect{380, 260, 140, 160}));
    EXPECT_EQ(wishes[0].Core, (PixelRect{390, 290, 120, 120}));
}

TEST(RegionWishes, AHeadIsClippedToThePhotograph)
{
    EXPECT_EQ(HeadOf({0, 10, 100, 100}, kPhoto), (PixelRect{0, 0, 120, 130}));
    EXPECT_EQ(HeadOf({900, 700, 100, 100}, kPhoto), (PixelRect{880, 660, 120, 140}));
}

TEST(RegionWishes, OtherRegionsAndFacesToAvoidAreTakenAsTheyAre)
{
    FoundRegion avoided = Region({400, 300, 100, 100}, RegionKind::Face);
    avoided.Wish = WishKind::Avoid;
    const auto wishes = WishesOf({Region({10, 20, 30, 40}, RegionKind::Animal), avoided}, kPhoto);

    ASSERT_THAT(wishes, SizeIs(2));
    EXPECT_EQ(wishes[0].Wish.Rect, (PixelRect{10, 20, 30, 40}));
    EXPECT_FALSE(wishes[0].Core);
    EXPECT_FALSE(wishes[1].Core);
    EXPECT_EQ(wishes[1].Region, 1u);
    EXPECT_EQ(wishes[1].Wish.Kind, WishKind::Avoid);
    EXPECT_EQ(wishes[1].Wish.Rect, (PixelRect{400, 300, 100, 100}));
}

TEST(RegionWishes, ARegionWithoutWishOrPlaceAddsNoWish)
{
    FoundRegion shown = Region({10, 20, 30, 40}, RegionKind::Other);
    shown.Wish.reset();
    EXPECT_THAT(WishesOf({shown, Region({2000, 20, 30, 40}, RegionKind::Subject)}, kPhoto),
                IsEmpty());
}

TEST(RegionWishes, ARegionBesideThePhotographAddsNoWishHoweverNear)
{
    for (const PixelRect& rect : {PixelRect{1000, 20, 30, 40}, PixelRect{-30, 20, 30, 40},
                                  PixelRect{10, 800, 30, 40}, PixelRect{10, -40, 30, 40}})
        for (const WishKind wish : {WishKind::MustKeep, WishKind::Avoid}) {
            FoundRegion region = Region(rect, RegionKind::Subject);
            region.Wish = wish;
            EXPECT_THAT(WishesOf({region}, kPhoto), IsEmpty()) << rect.X << " " << rect.Y;
        }
}

TEST(RegionWishes, ASoftWishForTheWholePhotographIsDropped)
{
    FoundRegion whole = Region({0, 0, 1000, 800}, RegionKind::Subject);
    EXPECT_THAT(WishesOf({whole}, kPhoto), IsEmpty());
    whole.Wish = WishKind::MustKeep; // a hard wish is kept
    EXPECT_THAT(WishesOf({whole}, kPhoto), SizeIs(1));
}

TEST(SameRegion, MoreThanHalfInCommonIsTheSameRegion)
{
    const FoundRegion face = Region({0, 0, 100, 100}, RegionKind::Face);
    EXPECT_TRUE(AreTheSame(face, Region({32, 0, 100, 100}, RegionKind::Face)));  // 68 of 132
    EXPECT_FALSE(AreTheSame(face, Region({34, 0, 100, 100}, RegionKind::Face))); // 66 of 134
    EXPECT_FALSE(AreTheSame(face, Region({0, 0, 100, 100}, RegionKind::Animal)));

    std::vector<FoundRegion> regions = {face};
    AddUnlessKnown(Region({10, 0, 100, 100}, RegionKind::Face), regions);
    AddUnlessKnown(Region({200, 0, 100, 100}, RegionKind::Face), regions);
    EXPECT_THAT(regions, SizeIs(2));
}

TEST(SameRegion, HalfOfTheSmallerRegionIsEnoughToCover)
{
    const std::vector<FoundRegion> known = {Region({0, 0, 100, 100}, RegionKind::Face)};
    EXPECT_TRUE(IsCovered(Region({79, 0, 40, 40}, RegionKind::Face), known));
    EXPECT_FALSE(IsCovered(Region({81, 0, 40, 40}, RegionKind::Face), known));
    EXPECT_TRUE(IsCovered(Region({-100, -100, 300, 300}, RegionKind::Face), known));
    EXPECT_FALSE(IsCovered(Region({0, 0, 100, 100}, RegionKind::Face), {}));
}

// Lines of one pixel, for which every pixel counts.
TEST(SameRegion, ThinRegionsThatTouchOrLieApartHaveNothingInCommon)
{
    const FoundRegion across = Region({100, 100, 60, 1}, RegionKind::Face);
    const FoundRegion down = Region({100, 100, 1, 60}, RegionKind::Face);
    EXPECT_TRUE(AreTheSame(across, across));
    EXPECT_TRUE(AreTheSame(down, down));
    for (const int shift : {-50, -2, -1, 1, 2, 50}) {
        SCOPED_TRACE(shift);
        const FoundRegion aboveOrBelow = Region({100, 100 + shift, 60, 1}, RegionKind::Face);
        EXPECT_FALSE(AreTheSame(across, aboveOrBelow));
        EXPECT_FALSE(IsCovered(across, {aboveOrBelow}));
        const FoundRegion beside = Region({100 + shift, 100, 1, 60}, RegionKind::Face);
        EXPECT_FALSE(AreTheSame(down, beside));
        EXPECT_FALSE(IsCovered(down, {beside}));
    }
}

TEST(RegionWishes, TheRoomOfALargeFaceIsExactToThePixel)
{
    EXPECT_EQ(HeadOf({4000, 3000, 2000, 1000}, {10000, 8000}), (PixelRect{3600, 2600, 2800, 1600}));
    FoundRegion wide = Region({0, 0, 1000, 719}, RegionKind::Subject); // of 1000 x 800
    EXPECT_THAT(WishesOf({wide}, kPhoto), SizeIs(1));
    wide.Rect.Height = 720; // nine tenths
    EXPECT_THAT(WishesOf({wide}, kPhoto), IsEmpty());
}

TEST(RegionWishes, TheMarginOfAFaceFollowsItsOwnSides)
{
    EXPECT_EQ(CoreOf({400, 300, 200, 100}, kPhoto), (PixelRect{380, 290, 240, 120}));
    EXPECT_EQ(CoreOf({5, 300, 100, 200}, kPhoto), (PixelRect{0, 280, 115, 240}));
}

} // namespace
} // namespace vistaTrim::photo
