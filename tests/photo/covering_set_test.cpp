// The set of crops against a slow search.
#include <algorithm>
#include <cmath>
#include <random>
#include <set>

#include <gtest/gtest.h>

#include "ranking/covering_set.h"

namespace vistaTrim::photo {
namespace {

std::vector<CInt32CropRect> RandomCrops(size_t count)
{
    std::mt19937 random(12);
    std::vector<CInt32CropRect> crops;
    for (size_t i = 0; i < count; ++i) {
        const int left = static_cast<int>(random() % 300);
        const int top = static_cast<int>(random() % 200);
        crops.emplace_back(left, left + 100 + static_cast<int>(random() % 200), top,
                           top + 80 + static_cast<int>(random() % 150));
    }
    return crops;
}

std::vector<size_t> ServeAll(CoveringSet& set, size_t count)
{
    std::vector<size_t> order;
    CoveringSet::Served served{};
    while (order.size() < count && set.Next(served))
        order.push_back(served.Crop);
    return order;
}

TEST(CoveringSet, EachCropRaisesTheExpectedBestOverlapMost)
{
    const std::vector<CInt32CropRect> crops = RandomCrops(60);
    std::vector<double> utilities;
    for (size_t i = 0; i < crops.size(); ++i)
        utilities.push_back(std::sin(static_cast<double>(i)));
    double total = 0;
    for (const double utility : utilities)
        total += std::exp(utility);

    CoveringSet set(crops, utilities, std::vector<size_t>(crops.size(), 0));
    std::vector<size_t> given;
    const auto expectedBest = [&](size_t another) {
        double sum = 0;
        for (size_t k = 0; k < crops.size(); ++k) {
            double best = OverlapOf(crops[another], crops[k]);
            for (const size_t crop : given)
                best = std::max(best, OverlapOf(crops[crop], crops[k]));
            sum += std::exp(utilities[k]) / total * best;
        }
        return sum;
    };
    for (int place = 0; place < 8; ++place) {
        CoveringSet::Served served{};
        ASSERT_TRUE(set.Next(served));
        double most = 0;
        for (size_t i = 0; i < crops.size(); ++i)
            most = std::max(most, expectedBest(i));
        EXPECT_NEAR(expectedBest(served.Crop), most, 1e-12) << "place " << place;
        double alone = 0;
        for (size_t k = 0; k < crops.size(); ++k)
            alone += std::exp(utilities[k]) / total * OverlapOf(crops[served.Crop], crops[k]);
        EXPECT_NEAR(served.ExpectedOverlap, alone, 1e-12);
        given.push_back(served.Crop);
    }
}

TEST(CoveringSet, ReturnsEveryCropOnceWithHigherTiersFirst)
{
    const std::vector<CInt32CropRect> crops = RandomCrops(700);
    std::vector<double> utilities;
    std::vector<size_t> tiers;
    for (size_t i = 0; i < crops.size(); ++i) {
        utilities.push_back(static_cast<double>(i % 97) / 20);
        tiers.push_back(i % 3);
    }
    CoveringSet set(crops, utilities, tiers);
    const std::vector<size_t> order = ServeAll(set, crops.size());
    EXPECT_EQ(std::set<size_t>(order.begin(), order.end()).size(), crops.size());
    for (size_t i = 1; i < order.size(); ++i)
        EXPECT_GE(tiers[order[i - 1]], tiers[order[i]]);
    CoveringSet::Served served{};
    EXPECT_FALSE(set.Next(served));
}

TEST(CoveringSet, TheFirstCropsDoNotDependOnHowManyAreRequested)
{
    const std::vector<CInt32CropRect> crops = RandomCrops(300);
    const std::vector<double> utilities(crops.size(), 0.0);
    const std::vector<size_t> tiers(crops.size(), 0);
    CoveringSet few(crops, utilities, tiers);
    CoveringSet many(crops, utilities, tiers);
    const std::vector<size_t> first = ServeAll(few, 5);
    std::vector<size_t> all = ServeAll(many, 50);
    all.resize(5);
    EXPECT_EQ(first, all);
}

TEST(CoveringSet, OfNoCropsIsEmpty)
{
    const std::vector<CInt32CropRect> crops;
    const std::vector<double> utilities;
    const std::vector<size_t> tiers;
    CoveringSet set(crops, utilities, tiers);
    CoveringSet::Served served{};
    EXPECT_FALSE(set.Next(served));
}

TEST(CoveringSet, OverlapIsIntersectionOverUnionOfPixels)
{
    const CInt32CropRect a(0, 9, 0, 9);
    EXPECT_EQ(OverlapOf(a, a), 1.0);
    EXPECT_EQ(OverlapOf(a, CInt32CropRect(5, 14, 0, 9)), 50.0 / 150.0);
    EXPECT_EQ(OverlapOf(a, CInt32CropRect(10, 19, 0, 9)), 0.0);
}

// Only the first 250 of the list count as what people would choose. Another crop behind 250 copies
// of one is not among them.
TEST(CoveringSet, ChoicesAreTheMostProbable250)
{
    const CInt32CropRect one(0, 9, 0, 9);
    const CInt32CropRect other(100, 109, 0, 9);
    const auto expectedOfOther = [&](size_t copies) {
        std::vector<CInt32CropRect> crops(copies, one);
        crops.push_back(other);
        const CoveringSet set(crops, std::vector<double>(crops.size(), 0.0),
                              std::vector<size_t>(crops.size(), 0));
        return set.ExpectedOverlap(other);
    };
    EXPECT_NEAR(expectedOfOther(249), 1.0 / 250, 1e-12); // sums of 250 quotients
    EXPECT_EQ(expectedOfOther(250), 0.0);
}

} // namespace
} // namespace vistaTrim::photo
