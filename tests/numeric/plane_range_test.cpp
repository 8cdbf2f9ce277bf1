#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "numeric/isa_variants.h"
#include "numeric/vector_ops.h"

namespace vistaTrim {
namespace {

std::vector<float> Noise(size_t count, float low, float high)
{
    std::mt19937 random(3);
    std::uniform_real_distribution<float> value(low, high);
    std::vector<float> x(count);
    for (float& v : x)
        v = value(random);
    return x;
}

TEST(PlaneRange, OfPiecesEqualsTheRangeOfTheWhole)
{
    for (size_t count : {1u, 15u, 16u, 33u, 1000u}) {
        SCOPED_TRACE(count);
        const std::vector<float> x = Noise(count, 0.5f, 300.0f);
        std::vector<float> expected = x;
        NormalisePlane(expected.data(), int32_t(count));

        std::vector<float> pieces = x;
        CPlaneRange seen;
        for (size_t i = 0; i < count; i += 7)
            seen.Include(&pieces[i], int32_t(std::min<size_t>(7, count - i)));
        ASSERT_TRUE(seen.IsOrdinary());
        CNormalisation(seen).Apply(pieces.data(), int32_t(count));

        EXPECT_EQ(pieces, expected);
    }
}

TEST(PlaneRange, IsTheSameInEveryVariant)
{
    const IsaVariant before = ActiveIsaVariant();
    const std::vector<float> x = Noise(333, 0.0f, 5.0f);
    SelectIsaVariant(IsaVariantPlain);
    CPlaneRange plain;
    plain.Include(x.data(), 333);
    for (int variant = 0; variant < IsaVariantCount; ++variant) {
        if (!IsaVariantAvailable(static_cast<IsaVariant>(variant)))
            continue;
        SelectIsaVariant(static_cast<IsaVariant>(variant));
        CPlaneRange range;
        range.Include(x.data(), 333);
        EXPECT_EQ(range.Lowest, plain.Lowest) << variant;
        EXPECT_EQ(range.Highest, plain.Highest) << variant;
    }
    SelectIsaVariant(before);
}

// The extremes of a plane after a threshold, without reading it again.
TEST(PlaneRange, ClearBelowGivesTheRangeOfTheClearedPlane)
{
    const std::vector<float> x = Noise(333, 0.5f, 5.0f);
    for (const float level : {0.0f, 0.4f, 0.6f, 4.9f}) {
        CPlaneRange range;
        range.Include(x.data(), 333);
        range.ClearBelow(level);
        std::vector<float> cleared = x;
        for (float& v : cleared)
            v = v >= level ? v : 0.0f;
        CPlaneRange expected;
        expected.Include(cleared.data(), 333);
        EXPECT_EQ(range.Lowest, expected.Lowest) << level;
        EXPECT_EQ(range.Highest, expected.Highest) << level;
        EXPECT_EQ(range.Largest(), LargestElement(cleared.data(), 333));
    }
}

TEST(Normalisation, AppliedPieceByPieceEqualsNormalisePlane)
{
    std::vector<float> pieces = Noise(333, 0.5f, 300.0f);
    std::vector<float> whole = pieces;
    CPlaneRange range;
    range.Include(pieces.data(), 333);
    const CNormalisation normalisation(range);
    for (int32_t i = 0; i < 333; i += 20)
        normalisation.Apply(&pieces[size_t(i)], std::min(20, 333 - i));
    NormalisePlane(whole.data(), 333);
    EXPECT_EQ(pieces, whole);
    EXPECT_EQ(normalisation.Largest, LargestElement(whole.data(), 333));

    CNormalisation().Apply(pieces.data(), 333);
    EXPECT_EQ(pieces, whole);
}

std::vector<uint32_t> BitsOf(const std::vector<float>& x)
{
    std::vector<uint32_t> bits(x.size());
    std::memcpy(bits.data(), x.data(), x.size() * sizeof(float));
    return bits;
}

// In one pass, from one array to another or in place. A normalisation that changes nothing also
// keeps the sign of zero.
TEST(Normalisation, AppliedWithAThresholdEqualsBothInTurnInEveryIsaVariant)
{
    const IsaVariant before = ActiveIsaVariant();
    std::vector<float> x = Noise(333, 0.5f, 300.0f);
    x[7] = std::numeric_limits<float>::quiet_NaN();
    for (size_t i = 40; i < 80; ++i)
        x[i] = -0.0f;
    const struct {
        float Shift, Scale, Level;
    } cases[] = {{-20.7f, 0.013f, 1.0f}, {0.0f, 0.013f, 1.0f}, {-20.7f, 1.0f, 1.0f},
                 {0.0f, 1.0f, x[50]},    {0.0f, 1.0f, x[100]}, {0.0f, 0.013f, 0.0f}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.Shift << ", " << c.Scale << ", " << c.Level);
        CNormalisation normalisation;
        normalisation.Shift = c.Shift;
        normalisation.Scale = c.Scale;
        std::vector<float> expected = x;
        normalisation.Apply(expected.data(), 333);
        for (float& v : expected)
            v = v >= c.Level ? v : 0.0f; // a value on the level stays
        for (int variant = 0; variant < IsaVariantCount; ++variant) {
            if (!IsaVariantAvailable(static_cast<IsaVariant>(variant)))
                continue;
            SelectIsaVariant(static_cast<IsaVariant>(variant));
            std::vector<float> copy(334, -7.0f);
            normalisation.ApplyAndClear(x.data(), 333, c.Level, copy.data());
            EXPECT_EQ(copy.back(), -7.0f) << variant;
            copy.pop_back();
            EXPECT_EQ(BitsOf(copy), BitsOf(expected)) << variant;
            copy = x;
            normalisation.ApplyAndClear(copy.data(), 333, c.Level, copy.data());
            EXPECT_EQ(BitsOf(copy), BitsOf(expected)) << variant;
        }
    }
    SelectIsaVariant(before);
}

// The extremes are by absolute value, and the element keeps its sign.
TEST(LargestElement, IsTheFirstOfLargestMagnitude)
{
    const float positive[] = {1.0f, 7.0f, 3.0f};
    EXPECT_EQ(LargestElement(positive, 3), 7.0f);
    const float mixed[] = {1.0f, -7.0f, 3.0f};
    EXPECT_EQ(LargestElement(mixed, 3), -7.0f);
    const float tied[] = {-7.0f, 7.0f};
    EXPECT_EQ(LargestElement(tied, 2), -7.0f);
    const float zero[] = {-0.0f};
    EXPECT_EQ(LargestElement(zero, 1), 0.0f);
    const float huge[] = {2.0f, std::numeric_limits<float>::infinity()};
    EXPECT_EQ(LargestElement(huge, 2), std::numeric_limits<float>::infinity());
}

TEST(NormalisePlane, OfMixedSignTakesItsExtremesByMagnitude)
{
    // Smallest magnitude 1, largest -4: the range is -5, below the floor.
    float x[] = {-4.0f, 1.0f, 2.0f};
    NormalisePlane(x, 3);
    const float scale = static_cast<float>(1.0 / double(1e-05f));
    EXPECT_EQ(x[0], -5.0f * scale);
    EXPECT_EQ(x[1], 0.0f);
    EXPECT_EQ(x[2], 1.0f * scale);
}

// An infinite range makes the scale 0, which clears the plane.
TEST(NormalisePlane, OfInfinityIsZero)
{
    const float infinity = std::numeric_limits<float>::infinity();
    std::vector<float> plane = {1.0f, infinity, 3.0f, 0.5f};
    NormalisePlane(plane.data(), 4);
    EXPECT_EQ(plane, std::vector<float>(4, 0.0f));
}

TEST(NormalisePlane, RoundsTheShiftBeforeTheScale)
{
    // 0.3f - 0.1f in float, then multiplied by a scale that is not a power of two.
    float x[] = {0.1f, 0.3f, 0.8f};
    const float shift = -0.1f;
    const float middle = 0.3f + shift;
    const float range = 0.8f + shift;
    NormalisePlane(x, 3);
    EXPECT_EQ(x[1], middle * static_cast<float>(1.0 / double(range)));
}

} // namespace
} // namespace vistaTrim
