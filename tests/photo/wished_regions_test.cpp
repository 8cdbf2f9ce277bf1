// What the regions that a crop misses cost it, counted pixel by pixel.
#include "ranking/wished_regions.h"

#include <random>

#include <gtest/gtest.h>

namespace vistaTrim::photo {
namespace {

// The share of the region's pixels that the crop misses.
double SlowMissedShare(const CInt32CropRect& crop, const WishedRegion& region)
{
    int missed = 0;
    int all = 0;
    for (int y = region.Rect.Top; y <= region.Rect.Bottom; ++y)
        for (int x = region.Rect.Left; x <= region.Rect.Right; ++x, ++all) {
            const bool inside =
                x >= crop.Left && x <= crop.Right && y >= crop.Top && y <= crop.Bottom;
            missed += inside != region.Inside ? 1 : 0;
        }
    return static_cast<double>(missed) / all;
}

CInt32Rect RandomRect(std::mt19937& random)
{
    const auto below = [&random](int limit) {
        return static_cast<int>(random() % static_cast<unsigned>(limit));
    };
    const int left = below(20);
    const int top = below(20);
    return {left, left + below(12), top, top + below(12)};
}

TEST(WishedRegions, CostByTheShareOfMissedPixels)
{
    std::mt19937 random(4);
    int met = 0;
    for (int round = 0; round < 2000; ++round) {
        const CInt32Rect rect = RandomRect(random);
        const CInt32CropRect crop(rect.Left, rect.Right + 6, rect.Top, rect.Bottom + 6);
        std::vector<WishedRegion> regions;
        for (int i = 0; i < 3; ++i) {
            WishedRegion region;
            region.Rect = RandomRect(random);
            region.Inside = random() % 2 == 0;
            region.Hard = random() % 2 == 0;
            region.First = random() % 2 == 0;
            region.Cost = static_cast<double>(random() % 5);
            region.CutCost = static_cast<double>(random() % 3);
            regions.push_back(region);
        }
        double cost = 0;
        size_t first = 0;
        bool meetsHard = true;
        for (const WishedRegion& region : regions) {
            const double missed = SlowMissedShare(crop, region);
            cost += region.Cost * missed + (missed > 0 ? region.CutCost : 0);
            first += region.First && missed == 0 ? 1 : 0;
            meetsHard = meetsHard && !(region.Hard && missed > 0);
            met += missed == 0 ? 1 : 0;
        }
        ASSERT_NEAR(CostOfMissing(crop, regions), cost, 1e-12); // sums of three quotients
        ASSERT_EQ(RegionsMet(crop, regions), first);
        ASSERT_EQ(MeetsHardRegions(crop, regions), meetsHard);
    }
    EXPECT_GT(met, 500); // both outcomes occurred
    EXPECT_LT(met, 5500);
}

TEST(WishedRegions, AreMetToThePixel)
{
    const CInt32CropRect crop(10, 19, 30, 39);
    const auto meets = [&crop](const CInt32Rect& rect, bool inside) {
        return MeetsHardRegions(crop, {{rect, inside, true, false, 0}});
    };
    EXPECT_TRUE(meets({10, 19, 30, 39}, true));
    for (const CInt32Rect& rect : {CInt32Rect(9, 19, 30, 39), CInt32Rect(10, 20, 30, 39),
                                   CInt32Rect(10, 19, 29, 39), CInt32Rect(10, 19, 30, 40)})
        EXPECT_FALSE(meets(rect, true));
    EXPECT_TRUE(meets({0, 9, 30, 39}, false));
    EXPECT_TRUE(meets({20, 29, 30, 39}, false));
    EXPECT_TRUE(meets({10, 19, 40, 49}, false));
    EXPECT_FALSE(meets({19, 29, 39, 49}, false));
    EXPECT_EQ(CostOfMissing(crop, {}), 0.0);
    EXPECT_EQ(RegionsMet(crop, {}), 0U);
    EXPECT_TRUE(MeetsHardRegions(crop, {}));
}

TEST(WishedRegions, TheCostOfACutIsDueAtTheFirstPixel)
{
    WishedRegion region;
    region.Rect = {10, 19, 40, 49};
    region.Cost = 8;
    region.CutCost = 4;
    EXPECT_EQ(CostOfMissing(CInt32CropRect(10, 19, 40, 49), {region}), 0);
    EXPECT_DOUBLE_EQ(CostOfMissing(CInt32CropRect(10, 19, 41, 49), {region}), 8 * 0.1 + 4);
    EXPECT_EQ(CostOfMissing(CInt32CropRect(50, 99, 0, 99), {region}), 12);
}

} // namespace
} // namespace vistaTrim::photo
