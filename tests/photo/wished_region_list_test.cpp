// What each wish becomes for the ranking: its place, its kind and its costs.
#include "suggest/wished_region_list.h"

#include <gtest/gtest.h>

namespace vistaTrim::photo {
namespace {

constexpr PixelSize kPhoto{2000, 1000};
constexpr PixelSize kWorking{1000, 500};

const PixelRect kRect{200, 100, 80, 60};
const PixelRect kCore{210, 110, 40, 20};

void ExpectRect(const WishedRegion& region, int left, int right, int top, int bottom)
{
    EXPECT_EQ(region.Rect.Left, left);
    EXPECT_EQ(region.Rect.Right, right);
    EXPECT_EQ(region.Rect.Top, top);
    EXPECT_EQ(region.Rect.Bottom, bottom);
}

// kRect and kCore in the working picture.
void ExpectAtRect(const WishedRegion& region)
{
    ExpectRect(region, 100, 139, 50, 79);
}

void ExpectAtCore(const WishedRegion& region)
{
    ExpectRect(region, 105, 124, 55, 64);
}

std::vector<WishedRegion> OfNamed(WishKind kind)
{
    return ListWishedRegions({{kind, kRect}}, {}, {}, kPhoto, kWorking);
}

FoundRegion Found(RegionSource source, double confidence)
{
    FoundRegion region;
    region.Source = source;
    region.Confidence = confidence;
    return region;
}

// The place of the found region itself does not count, only that of its wish.
std::vector<WishedRegion> OfFound(WishKind kind, const FoundRegion& from,
                                  const std::optional<PixelRect>& core = std::nullopt)
{
    return ListWishedRegions({}, {{{kind, kRect}, 0, core}}, {from}, kPhoto, kWorking);
}

TEST(WishedRegionList, NamedSoftWishesGoFirstAndCost)
{
    for (const WishKind kind : {WishKind::Keep, WishKind::Avoid}) {
        SCOPED_TRACE(NameOf(kind));
        const std::vector<WishedRegion> list = OfNamed(kind);
        ASSERT_EQ(list.size(), 1u);
        ExpectAtRect(list[0]);
        EXPECT_EQ(list[0].Inside, kind == WishKind::Keep);
        EXPECT_FALSE(list[0].Hard);
        EXPECT_TRUE(list[0].First);
        EXPECT_EQ(list[0].Cost, kNamedWishCost);
        EXPECT_EQ(list[0].CutCost, 0);
        EXPECT_FALSE(list[0].Moves);
    }
}

TEST(WishedRegionList, NamedHardWishesCostNothing)
{
    for (const WishKind kind : {WishKind::MustKeep, WishKind::MustAvoid}) {
        SCOPED_TRACE(NameOf(kind));
        const std::vector<WishedRegion> list = OfNamed(kind);
        ASSERT_EQ(list.size(), 1u);
        ExpectAtRect(list[0]);
        EXPECT_EQ(list[0].Inside, kind == WishKind::MustKeep);
        EXPECT_TRUE(list[0].Hard);
        EXPECT_FALSE(list[0].First);
        EXPECT_EQ(list[0].Cost, 0);
        EXPECT_EQ(list[0].CutCost, 0);
        EXPECT_FALSE(list[0].Moves);
    }
}

// Crops move to hold a region, not to avoid one.
TEST(WishedRegionList, FoundSoftWishesCostAndOnlyThoseToKeepMove)
{
    for (const WishKind kind : {WishKind::Keep, WishKind::Avoid}) {
        SCOPED_TRACE(NameOf(kind));
        const std::vector<WishedRegion> list = OfFound(kind, Found(RegionSource::File, 1.0));
        ASSERT_EQ(list.size(), 1u);
        ExpectAtRect(list[0]);
        EXPECT_EQ(list[0].Inside, kind == WishKind::Keep);
        EXPECT_FALSE(list[0].Hard);
        EXPECT_FALSE(list[0].First);
        EXPECT_EQ(list[0].Cost, kFoundRegionCost);
        EXPECT_EQ(list[0].CutCost, 0);
        EXPECT_EQ(list[0].Moves, kind == WishKind::Keep);
    }
}

TEST(WishedRegionList, FoundHardWishesCostNothingAndHaveNoCore)
{
    for (const WishKind kind : {WishKind::MustKeep, WishKind::MustAvoid})
        for (const bool hasCore : {false, true}) {
            SCOPED_TRACE(testing::Message() << NameOf(kind) << ", core " << hasCore);
            const std::vector<WishedRegion> list =
                OfFound(kind, Found(RegionSource::File, 1.0),
                        hasCore ? std::optional<PixelRect>(kCore) : std::nullopt);
            ASSERT_EQ(list.size(), 1u);
            ExpectAtRect(list[0]);
            EXPECT_EQ(list[0].Inside, kind == WishKind::MustKeep);
            EXPECT_TRUE(list[0].Hard);
            EXPECT_FALSE(list[0].First);
            EXPECT_EQ(list[0].Cost, 0);
            EXPECT_EQ(list[0].CutCost, 0);
            EXPECT_FALSE(list[0].Moves);
        }
}

TEST(WishedRegionList, AFaceToKeepBecomesItsHeadAndItsCore)
{
    const std::vector<WishedRegion> list =
        OfFound(WishKind::Keep, Found(RegionSource::Metadata, 1.0), kCore);

    ASSERT_EQ(list.size(), 2u);
    ExpectAtRect(list[0]);
    EXPECT_EQ(list[0].Cost, kHeadCost);
    EXPECT_EQ(list[0].CutCost, 0);
    ExpectAtCore(list[1]);
    EXPECT_EQ(list[1].Cost, kFaceCost);
    EXPECT_EQ(list[1].CutCost, kCutFaceCost);
    for (const WishedRegion& region : list) {
        EXPECT_TRUE(region.Inside);
        EXPECT_FALSE(region.Hard);
        EXPECT_FALSE(region.First);
        EXPECT_TRUE(region.Moves);
    }
}

TEST(WishedRegionList, OnlyTheFaceFindersConfidenceLowersTheCosts)
{
    constexpr double kUnsure = 0.25; // a power of two keeps the products exact
    for (const RegionSource source :
         {RegionSource::FaceFinder, RegionSource::Metadata, RegionSource::File}) {
        SCOPED_TRACE(NameOf(source));
        const double sureness = source == RegionSource::FaceFinder ? kUnsure : 1.0;
        const std::vector<WishedRegion> face =
            OfFound(WishKind::Keep, Found(source, kUnsure), kCore);
        ASSERT_EQ(face.size(), 2u);
        EXPECT_EQ(face[0].Cost, sureness * kHeadCost);
        EXPECT_EQ(face[0].CutCost, 0);
        EXPECT_EQ(face[1].Cost, sureness * kFaceCost);
        EXPECT_EQ(face[1].CutCost, sureness * kCutFaceCost);

        const std::vector<WishedRegion> avoided = OfFound(WishKind::Avoid, Found(source, kUnsure));
        ASSERT_EQ(avoided.size(), 1u);
        EXPECT_EQ(avoided[0].Cost, sureness * kFoundRegionCost);
    }
}

// The second wish's region is the first of the list.
TEST(WishedRegionList, NamedWishesPrecedeFoundOnesAndIndicesAreThoseOfTheRegions)
{
    const std::vector<FoundRegion> regions = {Found(RegionSource::FaceFinder, 0.5),
                                              Found(RegionSource::File, 1.0)};
    const std::vector<RegionWish> found = {{{WishKind::Avoid, kRect}, 1, std::nullopt},
                                           {{WishKind::Keep, kCore}, 0, std::nullopt}};
    const std::vector<WishedRegion> list = ListWishedRegions(
        {{WishKind::MustKeep, kCore}, {WishKind::Avoid, kRect}}, found, regions, kPhoto, kWorking);

    ASSERT_EQ(list.size(), 4u);
    ExpectAtCore(list[0]);
    EXPECT_TRUE(list[0].Hard);
    ExpectAtRect(list[1]);
    EXPECT_EQ(list[1].Cost, kNamedWishCost);
    ExpectAtRect(list[2]);
    EXPECT_EQ(list[2].Cost, kFoundRegionCost);
    ExpectAtCore(list[3]);
    EXPECT_EQ(list[3].Cost, 0.5 * kFoundRegionCost);
}

TEST(WishedRegionList, RoundsPlacesOutward)
{
    const std::vector<WishedRegion> list = ListWishedRegions(
        {{WishKind::Keep, {201, 101, 2, 2}}}, {{{WishKind::Keep, {1, 3, 2, 1}}, 0, std::nullopt}},
        {Found(RegionSource::File, 1.0)}, kPhoto, kWorking);

    ASSERT_EQ(list.size(), 2u);
    ExpectRect(list[0], 100, 101, 50, 51);
    ExpectRect(list[1], 0, 1, 1, 1);
}

TEST(WishedRegionList, NoWishesMakeNoRegions)
{
    EXPECT_TRUE(ListWishedRegions({}, {}, {Found(RegionSource::FaceFinder, 1.0)}, kPhoto, kWorking)
                    .empty());
}

} // namespace
} // namespace vistaTrim::photo
