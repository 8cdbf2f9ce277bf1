#include "analysis/strip_contrast.h"

#include <algorithm>
#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "analysis/saliency_driver.h"
#include "numeric/owned_stack.h"
#include "numeric/plane_stack.h"
#include "numeric/summed_area.h"

namespace vistaTrim {
namespace {

// A stack with its tables, released with its scope.
struct TabledStack {
    COwnedStack Planes;
    CPlaneStack& Stack = Planes.Handle();

    TabledStack(int32_t planes, int32_t cols, int32_t rows)
    {
        Planes.Create(planes, cols, rows);
    }

    float& At(int plane, int32_t row, int32_t col)
    {
        return Stack.Planes[size_t(plane)][row * Stack.Cols + col];
    }
    // Integers: sums and products stay exact in the float tables of a small stack.
    void FillWhole(uint32_t seed, uint32_t below)
    {
        std::mt19937 random(seed);
        for (float* plane : Stack.Planes)
            for (int32_t i = 0; i < Stack.ElementCount; ++i)
                plane[i] = static_cast<float>(random() % below);
    }
};

struct Statistics {
    COwnedStack Mean;
    COwnedStack Covariance;

    Statistics(const CPlaneStack& stack, const std::vector<CStripRect>& group)
    {
        Mean.Create(1, stack.PlaneCount, 1);
        Covariance.Create(1, stack.PlaneCount, stack.PlaneCount);
        ComputeStripStatistics(stack, Mean.Handle(), Covariance.Handle(), group);
    }

    float MeanOf(int plane) const
    {
        return Mean.Planes[0][plane];
    }
    float CovarianceOf(int a, int b) const
    {
        return Covariance.Planes[0][a * Mean.Cols + b];
    }
};

void ExpectStrip(const CStripRect& strip, int32_t left, int32_t top, int32_t right, int32_t bottom)
{
    EXPECT_EQ(strip.Left, left);
    EXPECT_EQ(strip.Top, top);
    EXPECT_EQ(strip.Right, right);
    EXPECT_EQ(strip.Bottom, bottom);
    EXPECT_EQ(strip.Area, (right - left + 1) * (bottom - top + 1));
}

TEST(BorderStrips, TakeTheFractionOfTheShorterSide)
{
    const BorderStrips quarter = MakeBorderStrips(640, 480, 0.25f);
    ExpectStrip(quarter.Top, 0, 0, 639, 119);
    ExpectStrip(quarter.Bottom, 0, 360, 639, 479);
    ExpectStrip(quarter.Left, 0, 0, 119, 479);
    ExpectStrip(quarter.Right, 520, 0, 639, 479);

    const BorderStrips fifth = MakeBorderStrips(480, 640, 0.2f);
    EXPECT_EQ(fifth.Top.Area, 480 * 96);
    EXPECT_EQ(fifth.Left.Area, 640 * 96);
}

TEST(BorderStrips, AreAtLeastOnePixelWide)
{
    for (int32_t side : {1, 2, 3, 4, 7}) {
        SCOPED_TRACE(side);
        const BorderStrips strips = MakeBorderStrips(640, side, 0.25f);
        EXPECT_EQ(strips.Top.Area, 640);
        EXPECT_EQ(strips.Bottom.Top, side - 1);
        EXPECT_EQ(strips.Left.Area, side);
    }
    EXPECT_EQ(MakeBorderStrips(640, 8, 0.25f).Top.Bottom, 1);
}

TEST(BorderStrips, WidthIsRoundedToFloatBeforeTruncation)
{
    // 0.29f lies below 0.29, so in double the product falls short of 29.
    ASSERT_LT(100.0 * double(0.29f), 29.0);
    ASSERT_EQ(100.0f * 0.29f, 29.0f);
    EXPECT_EQ(MakeBorderStrips(100, 100, 0.29f).Top.Bottom, 28);
}

TEST(BorderStrips, OfOneRowAreTheImageAndItsEndPixels)
{
    const BorderStrips strips = MakeBorderStrips(640, 1, 0.25f);
    ExpectStrip(strips.Top, 0, 0, 639, 0);
    ExpectStrip(strips.Bottom, 0, 0, 639, 0);
    ExpectStrip(strips.Left, 0, 0, 0, 0);
    ExpectStrip(strips.Right, 639, 0, 639, 0);
}

TEST(BorderStrips, OfOnePixelAreThatPixel)
{
    const BorderStrips strips = MakeBorderStrips(1, 1, 0.25f);
    for (const CStripRect& strip : {strips.Top, strips.Bottom, strips.Left, strips.Right})
        ExpectStrip(strip, 0, 0, 0, 0);
}

TEST(BorderStrips, AreClippedToTheImage)
{
    const BorderStrips strips = MakeBorderStrips(5, 3, 2.0f);
    ExpectStrip(strips.Top, 0, 0, 4, 2);
    ExpectStrip(strips.Bottom, 0, 0, 4, 2);
    ExpectStrip(strips.Left, 0, 0, 4, 2);
    ExpectStrip(strips.Right, 0, 0, 4, 2);
}

TEST(BorderStrips, CountBottomCornersTwice)
{
    const BorderStrips strips = MakeBorderStrips(100, 100, 0.25f);
    EXPECT_EQ(strips.Left.Area + strips.Right.Area + strips.Bottom.Area, 7500);

    std::vector<int> hits(100 * 100, 0);
    for (const CStripRect& s : {strips.Left, strips.Right, strips.Bottom})
        for (int32_t r = s.Top; r <= s.Bottom; ++r)
            for (int32_t c = s.Left; c <= s.Right; ++c)
                ++hits[size_t(r * 100 + c)];
    EXPECT_EQ(std::count_if(hits.begin(), hits.end(), [](int n) { return n > 0; }), 6250);
    EXPECT_EQ(std::count(hits.begin(), hits.end(), 2), 2 * 625);
}

// Sums below 2^24 are exact in the tables, so the slow sums below match them to the bit.
TEST(StripStatistics, AreMeanAndCovarianceWithCornersCountedTwice)
{
    TabledStack planes(3, 17, 11);
    planes.FillWhole(5, 64);
    BuildTables(planes.Stack);
    const BorderStrips strips = MakeBorderStrips(17, 11, 0.25f);
    const std::vector<CStripRect> group = {strips.Left, strips.Right, strips.Bottom};

    const Statistics statistics(planes.Stack, group);

    double area = 0;
    double sums[3] = {0, 0, 0};
    double products[3][3] = {};
    for (const CStripRect& s : group)
        for (int32_t r = s.Top; r <= s.Bottom; ++r)
            for (int32_t c = s.Left; c <= s.Right; ++c) {
                ++area;
                for (int a = 0; a < 3; ++a) {
                    sums[a] += planes.At(a, r, c);
                    for (int b = 0; b < 3; ++b)
                        products[a][b] += double(planes.At(a, r, c)) * planes.At(b, r, c);
                }
            }
    ASSERT_EQ(area, 2 * 2 * 11 + 2 * 17);
    for (int a = 0; a < 3; ++a) {
        EXPECT_EQ(statistics.MeanOf(a), static_cast<float>(sums[a] / area));
        for (int b = 0; b < 3; ++b) {
            const double meanA = static_cast<float>(sums[a] / area);
            const double meanB = static_cast<float>(sums[b] / area);
            EXPECT_EQ(statistics.CovarianceOf(a, b),
                      static_cast<float>(products[a][b] / area - meanA * meanB))
                << a << ", " << b;
        }
    }
}

TEST(StripStatistics, OfAViewAreTheDiagonalOfTheStack)
{
    TabledStack planes(3, 9, 8);
    planes.FillWhole(6, 200);
    BuildTables(planes.Stack);
    const BorderStrips strips = MakeBorderStrips(9, 8, 0.25f);
    const Statistics joint(planes.Stack, {strips.Top});

    const std::vector<CPlaneStack> views = SplitPlaneViews(planes.Stack);

    for (int plane = 0; plane < 3; ++plane) {
        const Statistics single(views[size_t(plane)], {strips.Top});
        EXPECT_EQ(single.MeanOf(0), joint.MeanOf(plane));
        EXPECT_EQ(single.CovarianceOf(0, 0), joint.CovarianceOf(plane, plane));
    }
}

TEST(StripStatistics, TotalIsAFloatThatRoundsAtEveryStrip)
{
    // One row of 2^24, 1 and 1: a float sum loses each 1.
    TabledStack planes(1, 3, 1);
    planes.At(0, 0, 0) = 16777216.0f;
    planes.At(0, 0, 1) = 1.0f;
    planes.At(0, 0, 2) = 1.0f;
    BuildTables(planes.Stack);
    // Set by hand, because the float table itself has lost the ones.
    planes.Stack.PlaneTables[0][4 + 2] = 16777216.0f;
    planes.Stack.PlaneTables[0][4 + 3] = 16777218.0f;
    const CStripRect big = {0, 0, 0, 0, 1};
    const CStripRect two = {2, 0, 2, 0, 1};

    const float bigFirst = Statistics(planes.Stack, {big, two, big}).MeanOf(0);
    EXPECT_EQ(bigFirst, (16777216.0f + 2.0f + 16777216.0f) / 3.0f);

    planes.Stack.PlaneTables[0][4 + 3] = 16777216.0f;
    planes.Stack.PlaneTables[0][4 + 2] = 16777215.0f;
    const CStripRect one = {2, 0, 2, 0, 1}; // 2^24 - (2^24 - 1)
    EXPECT_EQ(Statistics(planes.Stack, {big, one, one}).MeanOf(0), 16777216.0f / 3.0f);
    EXPECT_EQ(Statistics(planes.Stack, {one, one, big}).MeanOf(0), 16777218.0f / 3.0f);
}

TEST(StripStatistics, CornersAreCombinedInDouble)
{
    TabledStack planes(1, 2, 2);
    planes.FillWhole(1, 9);
    BuildTables(planes.Stack);
    // In float, the sum of the opposite corners, 2^24 + 1, would round to an even number.
    float* const table = planes.Stack.PlaneTables[0];
    table[2 * 3 + 2] = 16777216.0f;
    table[1 * 3 + 1] = 1.0f;
    table[1 * 3 + 2] = 16777210.0f;
    table[2 * 3 + 1] = 3.0f;
    const CStripRect pixel = {1, 1, 1, 1, 1};
    EXPECT_EQ(Statistics(planes.Stack, {pixel}).MeanOf(0), 4.0f);
}

TEST(StripStatistics, NegativeVarianceIsNotClamped)
{
    TabledStack planes(1, 4, 4);
    planes.FillWhole(1, 2);
    BuildTables(planes.Stack);
    planes.Stack.PlaneTables[0][5 * 4 + 4] = 16.0f; // mean 1
    planes.Stack.PairTables[0][5 * 4 + 4] = 8.0f;   // mean square 0.5
    const CStripRect all = {0, 0, 3, 3, 16};
    EXPECT_EQ(Statistics(planes.Stack, {all}).CovarianceOf(0, 0), -0.5f);
}

// The scalar distance has a closed form, and so does the whole contrast of one plane.
TEST(AnchoredContrast, OfOnePlaneIsAnchorDistancePlusRestDistance)
{
    constexpr int32_t kCols = 23;
    constexpr int32_t kRows = 14;
    TabledStack planes(1, kCols, kRows);
    planes.FillWhole(9, 256);
    BuildTables(planes.Stack);
    TabledStack out(1, kCols, kRows);
    const BorderStrips s = MakeBorderStrips(kCols, kRows, 0.25f);

    for (bool top : {true, false}) {
        SCOPED_TRACE(top ? "top" : "bottom");
        if (top)
            ComputeTopContrast(planes.Stack, out.Stack, 0.25f);
        else
            ComputeBottomContrast(planes.Stack, out.Stack, 0.25f);

        const Statistics anchor(planes.Stack, {top ? s.Top : s.Bottom});
        const Statistics rest(planes.Stack, {s.Left, s.Right, top ? s.Bottom : s.Top});
        std::vector<double> expected;
        for (int32_t i = 0; i < kCols * kRows; ++i) {
            const double x = planes.Stack.Planes[0][i];
            expected.push_back(
                std::abs(x - anchor.MeanOf(0)) / std::sqrt(anchor.CovarianceOf(0, 0) + 10.0) +
                std::abs(x - rest.MeanOf(0)) / std::sqrt(rest.CovarianceOf(0, 0) + 10.0));
        }
        const auto [low, high] = std::minmax_element(expected.begin(), expected.end());
        // A handful of float roundings of values up to about 4 over a range of about 4.
        for (int32_t i = 0; i < kCols * kRows; ++i)
            ASSERT_NEAR(out.Stack.Planes[0][i], (expected[size_t(i)] - *low) / (*high - *low), 1e-6)
                << i;
    }
}

TEST(AnchoredContrast, SpansZeroToOne)
{
    TabledStack planes(3, 31, 19);
    planes.FillWhole(2, 256);
    BuildTables(planes.Stack);
    TabledStack out(1, 31, 19);
    float* const map = out.Stack.Planes[0];

    ComputeTopContrast(planes.Stack, out.Stack, 0.25f);
    EXPECT_EQ(*std::min_element(map, map + 31 * 19), 0.0f);
    EXPECT_NEAR(*std::max_element(map, map + 31 * 19), 1.0f, 1e-6);

    ComputeBottomContrast(planes.Stack, out.Stack, 0.25f);
    EXPECT_EQ(*std::min_element(map, map + 31 * 19), 0.0f);
    EXPECT_NEAR(*std::max_element(map, map + 31 * 19), 1.0f, 1e-6);
}

TEST(AnchoredContrast, OfAFlatStackIsZero)
{
    TabledStack planes(3, 40, 30);
    for (float* plane : planes.Stack.Planes)
        std::fill_n(plane, 40 * 30, 16.0f);
    BuildTables(planes.Stack);
    TabledStack out(1, 40, 30);

    ComputeTopContrast(planes.Stack, out.Stack, 0.25f);
    for (int32_t i = 0; i < 40 * 30; ++i)
        ASSERT_EQ(out.Stack.Planes[0][i], 0.0f);
}

// One faint pixel away from all strips: both models are 0, and its distance from each is its value
// over the root of the regulariser. The map's floor of 1e-5 separates the two.
TEST(AnchoredContrast, ReachesOneOnlyIfItsRangeReachesTheFloor)
{
    const float perUnit = 1.0f / std::sqrt(10.0f);
    for (const double range : {0.99e-5, 1.01e-5}) {
        SCOPED_TRACE(range);
        TabledStack planes(1, 40, 30);
        std::fill_n(planes.Stack.Planes[0], 40 * 30, 0.0f);
        const float faint = static_cast<float>(range / 2) / perUnit;
        planes.At(0, 15, 20) = faint;
        BuildTables(planes.Stack);
        TabledStack out(1, 40, 30);
        const float sum = faint * perUnit + faint * perUnit;
        const float scale = range < 1e-5 ? 100000.0f : static_cast<float>(1.0 / double(sum));
        for (const bool top : {true, false}) {
            if (top)
                ComputeTopContrast(planes.Stack, out.Stack, 0.25f);
            else
                ComputeBottomContrast(planes.Stack, out.Stack, 0.25f);
            EXPECT_EQ(out.At(0, 15, 20), sum * scale);
            EXPECT_NEAR(out.At(0, 15, 20), range < 1e-5 ? 0.99 : 1.0, 1e-6);
            EXPECT_EQ(out.At(0, 0, 0), 0.0f);
        }
    }
}

TEST(AnchoredContrast, OfAnUpsideDownStackSwapsTopAndBottom)
{
    constexpr int32_t kCols = 33;
    constexpr int32_t kRows = 24;
    TabledStack planes(3, kCols, kRows);
    TabledStack turned(3, kCols, kRows);
    planes.FillWhole(3, 256);
    for (int p = 0; p < 3; ++p)
        for (int32_t r = 0; r < kRows; ++r)
            for (int32_t c = 0; c < kCols; ++c)
                turned.At(p, r, c) = planes.At(p, kRows - 1 - r, c);
    BuildTables(planes.Stack);
    BuildTables(turned.Stack);
    TabledStack top(1, kCols, kRows);
    TabledStack bottom(1, kCols, kRows);

    ComputeTopContrast(planes.Stack, top.Stack, 0.25f);
    ComputeBottomContrast(turned.Stack, bottom.Stack, 0.25f);

    // Sums of this size are exact both ways; only the last bit or two can differ.
    for (int32_t r = 0; r < kRows; ++r)
        for (int32_t c = 0; c < kCols; ++c)
            ASSERT_NEAR(top.At(0, r, c), bottom.At(0, kRows - 1 - r, c), 5e-7);
}

// One strip is dark: only the map of its side finds the centre different.
TEST(SideContrasts, AreInTheOrderTopBottomLeftRight)
{
    constexpr int32_t kSide = 50;
    for (int side = 0; side < 4; ++side) {
        SCOPED_TRACE(side);
        TabledStack planes(3, kSide, kSide);
        // The strip is 10 pixels wide.
        for (int p = 0; p < 3; ++p)
            for (int32_t r = 0; r < kSide; ++r)
                for (int32_t c = 0; c < kSide; ++c) {
                    const bool dark = side == 0   ? r < 10
                                      : side == 1 ? r >= 40
                                      : side == 2 ? c < 10
                                                  : c >= 40;
                    planes.At(p, r, c) = dark ? 8.0f : 200.0f;
                }
        BuildTables(planes.Stack);
        TabledStack maps(4, kSide, kSide);
        CPlaneStack outs[4];
        for (size_t k = 0; k < 4; ++k)
            outs[k].WrapPlane(kSide, kSide, maps.Stack.Planes[k]);

        ComputeSideContrasts(planes.Stack, outs, 0.2f);

        for (int k = 0; k < 4; ++k) {
            const float centre = maps.At(k, 25, 25);
            if (k == side)
                EXPECT_NEAR(centre, 1.0f, 1e-6) << k;
            else
                EXPECT_EQ(centre, 0.0f) << k;
        }
    }
}

TEST(SideContrasts, OfOnePlaneUseTheScalarDistance)
{
    TabledStack planes(1, 30, 20);
    planes.FillWhole(8, 256);
    BuildTables(planes.Stack);
    TabledStack maps(4, 30, 20);
    CPlaneStack outs[4];
    for (size_t k = 0; k < 4; ++k)
        outs[k].WrapPlane(30, 20, maps.Stack.Planes[k]);

    ComputeSideContrasts(planes.Stack, outs, 0.2f);

    const Statistics left(planes.Stack, {MakeBorderStrips(30, 20, 0.2f).Left});
    std::vector<double> distance;
    for (int32_t i = 0; i < 600; ++i)
        distance.push_back(std::abs(double(planes.Stack.Planes[0][i]) - left.MeanOf(0)));
    const auto [low, high] = std::minmax_element(distance.begin(), distance.end());
    for (int32_t i = 0; i < 600; ++i)
        ASSERT_NEAR(maps.Stack.Planes[2][i], (distance[size_t(i)] - *low) / (*high - *low), 1e-6);
}

} // namespace
} // namespace vistaTrim
