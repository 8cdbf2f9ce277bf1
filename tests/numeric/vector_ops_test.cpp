#include "numeric/vector_ops.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <vector>

#include "numeric/kernel_test_support.h"

namespace vistaTrim {
namespace {

// Zero, counts around every vector width, and more than one picture row.
std::vector<int32_t> AwkwardCounts()
{
    std::vector<int32_t> counts;
    for (int32_t n = 0; n <= 70; ++n)
        counts.push_back(n);
    counts.push_back(1283);
    return counts;
}

// A row of both signs, with -0, a denormal and an infinity.
GuardedPlane SignedNumbers(int32_t count, uint32_t seed)
{
    GuardedPlane row = GuardedPlane::Fractions(count, 1, seed);
    for (int32_t i = 0; i < count; ++i)
        if (i % 3 == 1)
            row.Data()[i] = -row.Data()[i];
    if (count > 4) {
        row.Data()[2] = -0.0f;
        row.Data()[3] = std::numeric_limits<float>::denorm_min();
        row.Data()[4] = -std::numeric_limits<float>::infinity();
    }
    return row;
}

// Runs the operation in every variant, at every count, into a separate array and in place, and
// compares bits with one(i).
void ExpectElementWise(const std::function<void(int32_t, const float*, const float*, float*)>& run,
                       const std::function<float(float, float)>& one, bool nonNegative = false)
{
    const VariantScope scope;
    for (IsaVariant variant : AvailableVariants())
        for (int32_t n : AwkwardCounts()) {
            SCOPED_TRACE(testing::Message() << "variant " << variant << ", count " << n);
            SelectIsaVariant(variant);
            // The sources continue past the count: with guards there, one step too many would write
            // the guard value after the destination and go unnoticed.
            GuardedPlane a =
                nonNegative ? GuardedPlane::Fractions(n + 16, 1, 1) : SignedNumbers(n + 16, 1);
            GuardedPlane b = SignedNumbers(n + 16, 2);
            // Of another magnitude, so that sums round.
            for (int32_t i = 0; i < n + 16; ++i)
                b.Data()[i] *= 0.01f;
            GuardedPlane expected(n, 1);
            for (int32_t i = 0; i < n; ++i)
                expected.Data()[i] = one(a.Data()[i], b.Data()[i]);

            GuardedPlane separate(n, 1, 3.0f);
            run(n, a.Data(), b.Data(), separate.Data());
            EXPECT_EQ(separate.Bits(), expected.Bits());
            EXPECT_TRUE(separate.GuardsIntact());

            GuardedPlane inPlace =
                GuardedPlane::FromFunction(n, 1, [&](int32_t x, int32_t) { return a.Data()[x]; });
            run(n, inPlace.Data(), b.Data(), inPlace.Data());
            EXPECT_EQ(inPlace.Bits(), expected.Bits());
            EXPECT_TRUE(inPlace.GuardsIntact());
        }
}

TEST(VectorOps, AbsDropsTheSign)
{
    ExpectElementWise([](int32_t n, const float* a, const float*, float* y) { VectorAbs(n, a, y); },
                      [](float a, float) { return std::fabs(a); });
}

TEST(VectorOps, AddRoundsOnce)
{
    ExpectElementWise(VectorAdd, [](float a, float b) { return a + b; });
}

TEST(VectorOps, SubRoundsOnce)
{
    ExpectElementWise(VectorSub, [](float a, float b) { return a - b; });
}

TEST(VectorOps, MulRoundsOnce)
{
    ExpectElementWise(VectorMul, [](float a, float b) { return a * b; });
}

TEST(VectorOps, TheSecondSourceMayBeTheDestination)
{
    const VariantScope scope;
    for (IsaVariant variant : AvailableVariants()) {
        SelectIsaVariant(variant);
        const GuardedPlane a = SignedNumbers(67, 3);
        GuardedPlane b = GuardedPlane::Fractions(67, 1, 4);
        const GuardedPlane before = b;
        VectorSub(67, a.Data(), b.Data(), b.Data());
        for (int32_t i = 0; i < 67; ++i)
            EXPECT_EQ(b.Data()[i], a.Data()[i] - before.Data()[i]);
        EXPECT_TRUE(b.GuardsIntact());
    }
}

TEST(VectorOps, SqrtIsExactlyRounded)
{
    ExpectElementWise(
        [](int32_t n, const float* a, const float*, float* y) { VectorSqrt(n, a, y); },
        [](float a, float) { return static_cast<float>(std::sqrt(static_cast<long double>(a))); },
        true);
}

TEST(VectorOps, RootOfANegativeIsNaNInEveryVariant)
{
    const VariantScope scope;
    for (IsaVariant variant : AvailableVariants()) {
        SelectIsaVariant(variant);
        std::vector<float> x(67, -1.0f);
        VectorSqrt(67, x.data(), x.data());
        for (float value : x)
            EXPECT_TRUE(std::isnan(value));
    }
}

TEST(VectorOps, CubeHasTheSameBitsInEveryVariant)
{
    ExpectElementWise(
        [](int32_t n, const float* a, const float*, float* y) { VectorPowScalar(n, a, 3.0f, y); },
        [](float a, float) {
            const double value = a;
            return static_cast<float>(value * value * value);
        });
}

TEST(VectorOps, PowerIsWithinOneUlp)
{
    const GuardedPlane a = GuardedPlane::Fractions(640, 427, 5);
    const int32_t n = 640 * 427;
    for (float exponent : {3.0f, 2.0f, 0.5f, 2.5f, -1.5f}) {
        std::vector<float> y(static_cast<size_t>(n));
        VectorPowScalar(n, a.Data(), exponent, y.data());
        for (int32_t i = 0; i < n; ++i) {
            const float value = y[static_cast<size_t>(i)];
            const long double exact =
                std::pow(static_cast<long double>(a.Data()[i]), static_cast<long double>(exponent));
            const float unit =
                std::nextafter(value, std::numeric_limits<float>::infinity()) - value;
            ASSERT_LE(std::fabs(static_cast<long double>(value) - exact),
                      static_cast<long double>(unit))
                << a.Data()[i] << " to the power " << exponent;
        }
    }
}

TEST(VectorOps, CubeKeepsZeroAndOne)
{
    float x[] = {0.0f, 1.0f, 2.0f};
    VectorPowScalar(3, x, 3.0f, x);
    EXPECT_EQ(x[0], 0.0f);
    EXPECT_FALSE(std::signbit(x[0]));
    EXPECT_EQ(x[1], 1.0f);
    EXPECT_EQ(x[2], 8.0f);
}

TEST(VectorOps, NegativeCountsAndNullArraysAreIgnored)
{
    float x[] = {-4.0f, 9.0f};
    const float before[] = {-4.0f, 9.0f};
    VectorAbs(-1, x, x);
    VectorAdd(-1, x, x, x);
    VectorSub(-1, x, x, x);
    VectorMul(-1, x, x, x);
    VectorSqrt(-1, x, x);
    VectorPowScalar(-1, x, 3.0f, x);
    VectorPowScalar(-1, x, 2.0f, x);
    VectorAbs(2, nullptr, x);
    VectorAdd(2, x, nullptr, x);
    VectorSub(2, nullptr, x, x);
    VectorMul(2, x, x, nullptr);
    VectorSqrt(2, nullptr, x);
    VectorPowScalar(2, x, 3.0f, nullptr);
    EXPECT_EQ(std::memcmp(x, before, sizeof x), 0);
}

TEST(VectorOps, OffsetRoundsOnce)
{
    ExpectElementWise(
        [](int32_t n, const float* a, const float*, float* y) { OffsetPlane(a, y, n, -127.3f); },
        [](float a, float) { return a + -127.3f; });
}

TEST(VectorOps, AddConstantWorksInPlace)
{
    const VariantScope scope;
    for (IsaVariant variant : AvailableVariants())
        for (int32_t n : AwkwardCounts()) {
            SelectIsaVariant(variant);
            GuardedPlane x = SignedNumbers(n, 6);
            GuardedPlane expected = x;
            for (int32_t i = 0; i < n; ++i)
                expected.Data()[i] += 0.1f;
            AddConstant(x.Data(), n, 0.1f);
            EXPECT_EQ(x.Bits(), expected.Bits()) << n;
            EXPECT_TRUE(x.GuardsIntact());
        }
}

TEST(NormalisePlane, MovesTheExtremesToZeroAndOne)
{
    float x[] = {2.0f, 3.0f, 4.0f};
    NormalisePlane(x, 3);
    EXPECT_EQ(x[0], 0.0f);
    EXPECT_EQ(x[1], 0.5f);
    EXPECT_EQ(x[2], 1.0f);
}

TEST(NormalisePlane, LeavesZerosZero)
{
    for (int32_t n : {1, 3, 64, 1000}) {
        std::vector<float> x(static_cast<size_t>(n), 0.0f);
        NormalisePlane(x.data(), n);
        EXPECT_EQ(x, std::vector<float>(x.size(), 0.0f));
    }
}

TEST(NormalisePlane, MakesAConstantZero)
{
    std::vector<float> x(1000, 7.0f);
    NormalisePlane(x.data(), 1000);
    EXPECT_EQ(x, std::vector<float>(1000, 0.0f));
}

// 1 / 1e-05f is 100000 in float; without the floor the top would come out as 1.
TEST(NormalisePlane, DoesNotStretchARangeBelowItsFloor)
{
    float x[] = {0.0f, 1e-06f, 5e-07f};
    NormalisePlane(x, 3);
    EXPECT_EQ(x[0], 0.0f);
    EXPECT_EQ(x[1], 1e-06f * 100000.0f);
    EXPECT_EQ(x[2], 5e-07f * 100000.0f);
}

TEST(NormalisePlane, DividesByARangeEqualToTheFloor)
{
    float x[] = {0.0f, 1e-05f};
    NormalisePlane(x, 2);
    EXPECT_EQ(x[1], 1e-05f * 100000.0f);
    float above[] = {0.0f, 2e-05f};
    NormalisePlane(above, 2);
    EXPECT_EQ(above[1], 2e-05f * static_cast<float>(1.0 / static_cast<double>(2e-05f)));
}

// Below the floor the range has no effect; above the floor, the floor has none.
TEST(NormalisePlane, RangesJustUnderAndJustOverTheFloorDiffer)
{
    for (const float under : {std::nextafter(1e-05f, 0.0f), 0.99e-05f}) {
        float x[] = {0.0f, under, under / 2};
        NormalisePlane(x, 3);
        EXPECT_EQ(x[1], under * 100000.0f);
        EXPECT_LT(x[1], 1.0f);
    }
    for (const float over : {std::nextafter(1e-05f, 1.0f), 1.01e-05f}) {
        float x[] = {0.0f, over, over / 2};
        NormalisePlane(x, 3);
        EXPECT_EQ(x[1], over * static_cast<float>(1.0 / static_cast<double>(over)));
        EXPECT_LE(x[1], std::nextafter(1.0f, 2.0f));
    }
}

// One multiplication for each element, so the bits are known even though a library computes it.
TEST(NormalisePlane, ScalesByTheRoundedReciprocal)
{
    const VariantScope scope;
    for (IsaVariant variant : AvailableVariants())
        for (const PlaneSize& size : AwkwardSizes()) {
            SelectIsaVariant(variant);
            GuardedPlane x = GuardedPlane::Fractions(size.Cols, size.Rows, 7);
            const std::vector<float> before = x.Pixels();
            const float low = *std::min_element(before.begin(), before.end());
            const float high = *std::max_element(before.begin(), before.end());
            float range = high + -low;
            if (range < 1e-05f)
                range = 1e-05f;
            const float scale = static_cast<float>(1.0 / static_cast<double>(range));
            std::vector<float> expected;
            for (float value : before)
                expected.push_back((value + -low) * scale);

            NormalisePlane(x.Data(), size.Cols * size.Rows);

            EXPECT_EQ(x.Pixels(), expected) << size.Cols << " x " << size.Rows;
            EXPECT_TRUE(x.GuardsIntact());
        }
}

TEST(NormalisePlane, ASecondRunChangesNothingButRounding)
{
    GuardedPlane x = GuardedPlane::Fractions(64, 48, 8);
    NormalisePlane(x.Data(), 64 * 48);
    const std::vector<float> once = x.Pixels();
    NormalisePlane(x.Data(), 64 * 48);
    // The largest may miss 1 by one unit, 6e-8, and nothing else rounds.
    for (size_t i = 0; i < once.size(); ++i)
        EXPECT_NEAR(x.Pixels()[i], once[i], 1.2e-7f);
}

// The extremes are taken by absolute value: -5 counts as the largest, the range comes out
// negative and the floor takes over.
TEST(NormalisePlane, MixedSignsAreNotMappedToZeroAndOne)
{
    float x[] = {-5.0f, 1.0f, 2.0f};
    NormalisePlane(x, 3);
    EXPECT_EQ(x[0], -600000.0f);
    EXPECT_EQ(x[1], 0.0f);
    EXPECT_EQ(x[2], 100000.0f);
}

// -1 is the smallest by absolute value, and here by value too.
TEST(NormalisePlane, ANegativeElementMayBeTheSmallestByAbsoluteValue)
{
    float x[] = {-1.0f, 4.0f, 2.0f};
    NormalisePlane(x, 3);
    EXPECT_EQ(x[0], 0.0f);
    EXPECT_EQ(x[1], 1.0f);
    EXPECT_EQ(x[2], 3.0f * static_cast<float>(1.0 / 5.0));
}

// The first of equals is both extremes at once, so the range is 0.
TEST(NormalisePlane, OppositeNumbersAreEquallyLarge)
{
    float x[] = {-2.0f, 2.0f};
    NormalisePlane(x, 2);
    EXPECT_EQ(x[0], 0.0f);
    EXPECT_EQ(x[1], 400000.0f);
}

TEST(NormalisePlane, NegativeZerosAreZero)
{
    float x[] = {-0.0f, 2.0f, 0.0f};
    NormalisePlane(x, 3);
    EXPECT_EQ(x[0], 0.0f);
    EXPECT_EQ(x[1], 1.0f);
    EXPECT_EQ(x[2], 0.0f);
}

TEST(PlaneArithmetic, AddPlanesTakesItsLengthFromTheSource)
{
    float target[] = {1.0f, 2.0f, 3.0f, 4.0f};
    float source[] = {10.0f, 20.0f, 30.0f, 40.0f};
    CPlaneStack targetStack;
    targetStack.WrapPlane(4, 1, target);
    CPlaneStack sourceStack;
    sourceStack.WrapPlane(3, 1, source);

    AddPlanes(targetStack, sourceStack, 0.5f);

    EXPECT_EQ(std::vector<float>(target, target + 4), (std::vector<float>{6, 12, 18, 4}));
    EXPECT_EQ(std::vector<float>(source, source + 4), (std::vector<float>{10, 20, 30, 40}));
}

TEST(PlaneArithmetic, MultiplyPlanesTakesItsLengthFromTheTarget)
{
    float target[] = {1.0f, 2.0f, 3.0f, 4.0f};
    float other[] = {10.0f, 20.0f, 30.0f, 40.0f};
    CPlaneStack targetStack;
    targetStack.WrapPlane(3, 1, target);
    CPlaneStack otherStack;
    otherStack.WrapPlane(4, 1, other);

    MultiplyPlanes(targetStack, targetStack, otherStack);

    EXPECT_EQ(std::vector<float>(target, target + 4), (std::vector<float>{10, 40, 90, 4}));
}

} // namespace
} // namespace vistaTrim
