#include "analysis/multi_scale_edges.h"

#include <algorithm>
#include <random>

#include <gtest/gtest.h>

#include "numeric/image_kernels.h"
#include "numeric/owned_stack.h"
#include "numeric/vector_ops.h"

namespace vistaTrim {
namespace {

struct Stack {
    COwnedStack Own;
    CPlaneStack& Planes = Own.Handle();

    Stack(int32_t planes, int32_t cols, int32_t rows)
    {
        Own.Create(planes, cols, rows);
        for (float* plane : Planes.Planes)
            std::fill_n(plane, Planes.ElementCount, 0.0f);
    }

    float* Plane(size_t k)
    {
        return Planes.Planes[k];
    }
    void FillNoise(uint32_t seed)
    {
        std::mt19937 random(seed);
        for (float* plane : Planes.Planes)
            for (int32_t i = 0; i < Planes.ElementCount; ++i)
                plane[i] = static_cast<float>(random() >> 24);
    }
};

std::vector<float> Edges(Stack& source, const std::vector<float>& scales,
                         bool normaliseOutput = false, bool normaliseRows = false)
{
    Stack out(1, source.Planes.Cols, source.Planes.Rows);
    std::fill_n(out.Plane(0), out.Planes.ElementCount, 7.0f); // must be overwritten
    ComputeMultiScaleEdges(source.Planes, out.Planes, normaliseOutput, normaliseRows, scales);
    return {out.Plane(0), out.Plane(0) + out.Planes.ElementCount};
}

// One scale of w x h, step by step with the kernels themselves, up to the resize back.
std::vector<float> OneScaleBeforeSecondNormalisation(Stack& source, int32_t w, int32_t h)
{
    const int32_t cols = source.Planes.Cols;
    const int32_t rows = source.Planes.Rows;
    Stack scaled(source.Planes.PlaneCount, w, h);
    Stack sum(1, w, h);
    Stack plane(1, w, h);
    Stack smoothed(1, w, h);
    Stack full(1, cols, rows);
    ResizeStackLinear(source.Planes, scaled.Planes);
    for (size_t k = 0; k < scaled.Planes.Planes.size(); ++k) {
        GradientStrength(scaled.Plane(k), plane.Plane(0), w, h);
        VectorAdd(w * h, sum.Plane(0), plane.Plane(0), sum.Plane(0));
    }
    NormalisePlane(sum.Plane(0), w * h);
    SmoothStack(sum.Planes, smoothed.Planes, 0.5);
    ResizeStackLinear(smoothed.Planes, full.Planes);
    return {full.Plane(0), full.Plane(0) + cols * rows};
}

TEST(MultiScaleEdges, WithoutAScaleAreZero)
{
    Stack source(3, 40, 30);
    source.FillNoise(1);
    EXPECT_EQ(Edges(source, {}), std::vector<float>(40 * 30, 0.0f));
    EXPECT_EQ(Edges(source, {}, true, true), std::vector<float>(40 * 30, 0.0f));
}

// 0.04f lies below 0.04 and 0.2f above 0.2, and the product is truncated without rounding first.
TEST(MultiScaleEdges, SkipAScaleThatLeavesNoPixel)
{
    const std::vector<float> none25(25 * 200, 0.0f);
    Stack tall25(1, 25, 200);
    tall25.FillNoise(2);
    EXPECT_EQ(Edges(tall25, {0.04f}), none25);
    Stack wide25(1, 200, 25);
    wide25.FillNoise(2);
    EXPECT_EQ(Edges(wide25, {0.04f}), none25);

    Stack tall4(1, 4, 100);
    tall4.FillNoise(3);
    EXPECT_EQ(Edges(tall4, {0.2f}), std::vector<float>(400, 0.0f));
    // A skipped scale does not affect the others.
    EXPECT_EQ(Edges(tall25, {0.04f, 0.2f}), Edges(tall25, {0.2f}));
}

// A scale of no pixels that is not skipped would add the map of the previous scale again.
TEST(MultiScaleEdges, SkippedScaleAddsNothingAndPrintsNothing)
{
    for (const bool wide : {false, true}) {
        SCOPED_TRACE(wide ? "no row" : "no column");
        Stack source(1, wide ? 200 : 25, wide ? 25 : 200);
        source.FillNoise(2);
        testing::internal::CaptureStderr();
        const std::vector<float> both = Edges(source, {0.2f, 0.04f});
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
        EXPECT_EQ(both, Edges(source, {0.2f}));
    }
}

// A scale one pixel wide is not skipped: its raw gradients show in the first elements.
TEST(MultiScaleEdges, KeepAScaleThatLeavesOnePixel)
{
    Stack tall26(1, 26, 200); // 1 x 7 at 0.04f; 200 x 0.04f is 7.99..
    tall26.FillNoise(4);
    const std::vector<float> edges = Edges(tall26, {0.04f});
    EXPECT_EQ(*std::max_element(edges.begin(), edges.begin() + 7), 1.0f);

    Stack tall5(1, 5, 100); // 1 x 20 at 0.2f
    tall5.FillNoise(5);
    const std::vector<float> edges5 = Edges(tall5, {0.2f});
    EXPECT_EQ(*std::max_element(edges5.begin(), edges5.begin() + 20), 1.0f);
    EXPECT_EQ(*std::max_element(edges5.begin() + 20, edges5.end()), 0.0f);
}

TEST(MultiScaleEdges, SmallSizesOf640By480Are25By19And128By96)
{
    Stack source(3, 640, 480);
    source.FillNoise(6);
    for (const auto& [scale, w, h] : {std::tuple(0.04f, 25, 19), std::tuple(0.2f, 128, 96)}) {
        SCOPED_TRACE(scale);
        const std::vector<float> edges = Edges(source, {scale});
        const std::vector<float> expected = OneScaleBeforeSecondNormalisation(source, w, h);
        // Elements that the second normalisation does not touch match bit for bit.
        EXPECT_TRUE(std::equal(edges.begin() + w * h, edges.end(), expected.begin() + w * h));
    }
}

TEST(MultiScaleEdges, SecondNormalisationCoversOnlyTheFirstElements)
{
    Stack source(3, 100, 60);
    source.FillNoise(7);
    constexpr int32_t kCount = 20 * 12;
    std::vector<float> expected = OneScaleBeforeSecondNormalisation(source, 20, 12);
    const float lastCovered = expected[kCount - 1];
    NormalisePlane(expected.data(), kCount);
    ASSERT_NE(expected[kCount - 1], lastCovered);

    const std::vector<float> edges = Edges(source, {0.2f});

    EXPECT_EQ(edges, expected);
    EXPECT_EQ(*std::min_element(edges.begin(), edges.begin() + kCount), 0.0f);
    EXPECT_NEAR(*std::max_element(edges.begin(), edges.begin() + kCount), 1.0f, 1e-6);
    // Smoothing has lowered the peaks of the rest.
    EXPECT_LT(*std::max_element(edges.begin() + kCount, edges.end()), 1.0f);
}

TEST(MultiScaleEdges, OfTwoScalesAreTheirSum)
{
    Stack source(3, 130, 90);
    source.FillNoise(8);
    const std::vector<float> coarse = Edges(source, {0.04f});
    const std::vector<float> fine = Edges(source, {0.2f});
    std::vector<float> sum(coarse.size());
    VectorAdd(int32_t(sum.size()), coarse.data(), fine.data(), sum.data());

    const std::vector<float> both = Edges(source, {0.04f, 0.2f});

    EXPECT_EQ(both, sum);
    EXPECT_GE(*std::min_element(both.begin(), both.end()), 0.0f);
    EXPECT_LE(*std::max_element(both.begin(), both.end()), 2.0f);
}

// 40 x 0.04f leaves a width of one pixel, which the resize back rejects. The scale adds its raw
// gradients and, after them, whatever the buffer held: zeros at the first scale.
TEST(MultiScaleEdges, RejectedFirstScaleAddsGradientsAndZeros)
{
    Stack source(2, 40, 200);
    source.FillNoise(9);
    Stack scaled(2, 1, 7);
    ResizeStackLinear(source.Planes, scaled.Planes);
    std::vector<float> expected(40 * 200, 0.0f);
    std::vector<float> second(7);
    GradientStrength(scaled.Plane(0), expected.data(), 1, 7);
    GradientStrength(scaled.Plane(1), second.data(), 1, 7);
    VectorAdd(7, expected.data(), second.data(), expected.data());
    NormalisePlane(expected.data(), 7);
    NormalisePlane(expected.data(), 7);

    testing::internal::CaptureStderr();
    const std::vector<float> edges = Edges(source, {0.04f});
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "ippStsNullPtrErr: Null pointer error.\n");

    EXPECT_EQ(edges, expected);
}

TEST(MultiScaleEdges, RejectedSecondScaleAddsTheFirstAgain)
{
    Stack source(1, 40, 200);
    source.FillNoise(10);
    const std::vector<float> first = Edges(source, {0.2f}); // 8 x 40
    testing::internal::CaptureStderr();
    const std::vector<float> both = Edges(source, {0.2f, 0.04f}); // then 1 x 7
    testing::internal::GetCapturedStderr();

    std::vector<float> expected(first.size());
    VectorAdd(int32_t(first.size()), first.data(), first.data(), expected.data());
    EXPECT_TRUE(std::equal(expected.begin() + 7, expected.end(), both.begin() + 7));
}

TEST(MultiScaleEdges, GiveTheSameBitsEveryTime)
{
    for (const auto& [cols, rows] : {std::pair(26, 640), std::pair(640, 26), std::pair(7, 100)}) {
        Stack source(3, cols, rows);
        source.FillNoise(11);
        testing::internal::CaptureStderr();
        const std::vector<float> first = Edges(source, {0.04f, 0.2f});
        std::vector<std::unique_ptr<Stack>> dirt; // memory that the next run may reuse
        for (int i = 0; i < 4; ++i) {
            dirt.push_back(std::make_unique<Stack>(1, cols, rows));
            std::fill_n(dirt.back()->Plane(0), cols * rows, 5.0f + float(i));
        }
        dirt.clear();
        EXPECT_EQ(Edges(source, {0.04f, 0.2f}), first) << cols << " x " << rows;
        testing::internal::GetCapturedStderr();
    }
}

TEST(MultiScaleEdges, NormaliseTheOutputOnRequestOnly)
{
    Stack source(3, 100, 80);
    source.FillNoise(12);
    std::vector<float> expected = Edges(source, {0.04f, 0.2f});
    ASSERT_NE(*std::max_element(expected.begin(), expected.end()), 1.0f);
    NormalisePlane(expected.data(), int32_t(expected.size()));
    EXPECT_EQ(Edges(source, {0.04f, 0.2f}, true), expected);
}

TEST(MultiScaleEdges, DampRowsAtTheSmallSizeOnRequest)
{
    // At 1 x 7 the resize back is rejected, so the damped rows show unchanged: each row is a single
    // element x, x / (x + 0.01) if it is above 0.05.
    Stack source(1, 40, 200);
    source.FillNoise(13);
    testing::internal::CaptureStderr();
    const std::vector<float> plain = Edges(source, {0.04f});
    const std::vector<float> damped = Edges(source, {0.04f}, false, true);
    testing::internal::GetCapturedStderr();

    std::vector<float> expected(plain.begin(), plain.begin() + 7);
    CPlaneStack rows;
    rows.WrapPlaneOnly(1, 7, expected.data());
    NormaliseRowsBySum(rows);
    NormalisePlane(expected.data(), 7);
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), damped.begin()));
    EXPECT_NE(damped, plain);
}

TEST(MultiScaleEdges, LeaveTheirSourceUnchanged)
{
    Stack source(3, 64, 48);
    source.FillNoise(14);
    const std::vector<float> before(source.Plane(1), source.Plane(1) + 64 * 48);
    Edges(source, {0.04f, 0.2f});
    EXPECT_TRUE(std::equal(before.begin(), before.end(), source.Plane(1)));
}

TEST(NormaliseRow, OfZerosStaysZero)
{
    std::vector<float> row(100, 0.0f);
    NormaliseRowBySum(row.data(), 100, 6.4f, 0.05f);
    EXPECT_EQ(row, std::vector<float>(100, 0.0f));
}

TEST(NormaliseRow, DividesFaintElementsToo)
{
    std::vector<float> row(100, 0.0f);
    row[10] = 1.0f;
    row[70] = 0.04f;
    NormaliseRowBySum(row.data(), 100, 1.0f, 0.05f);
    EXPECT_EQ(row[10], 0.5f);
    EXPECT_EQ(row[70], 0.02f);
}

TEST(NormaliseRow, ElementAtTheThresholdIsNotSummed)
{
    float row[2] = {0.5f, 1.0f};
    NormaliseRowBySum(row, 2, 1.0f, 0.5f);
    EXPECT_EQ(row[0], 0.25f);
    EXPECT_EQ(row[1], 0.5f);
}

TEST(NormaliseRow, SumIsAFloatRoundedAtEachAddition)
{
    // From 2^24 on, adding 1 to a float changes nothing.
    float row[5] = {16777216.0f, 1.0f, 1.0f, 1.0f, 1.0f};
    NormaliseRowBySum(row, 5, 0.0f, 0.05f);
    EXPECT_EQ(row[0], 1.0f);
    float ascending[5] = {1.0f, 1.0f, 1.0f, 1.0f, 16777216.0f};
    NormaliseRowBySum(ascending, 5, 0.0f, 0.05f);
    EXPECT_EQ(ascending[4], static_cast<float>(16777216.0 / 16777220.0));
}

TEST(NormaliseRow, DivisorIsNotRoundedToFloat)
{
    // 1 + 2^-24 would round to 1 in float; as a double it changes the last bit of the quotient.
    float row[1] = {1.0f};
    NormaliseRowBySum(row, 1, 0x1p-24f, 0.05f);
    EXPECT_EQ(row[0], 1.0f - 0x1p-24f);
}

// Rows are summed side by side; each must match a single row bit for bit.
TEST(NormaliseRows, MatchASingleRowBitForBit)
{
    for (int rows : {1, 7, 8, 9, 19}) {
        SCOPED_TRACE(rows);
        std::mt19937 random(uint32_t(15 + rows));
        std::vector<float> map(size_t(rows) * 37);
        for (float& x : map)
            x = float(random() % 1000) / 5000.0f; // a quarter at or below the threshold
        std::vector<float> expected = map;
        for (int r = 0; r < rows; ++r)
            NormaliseRowBySum(&expected[size_t(r) * 37], 37, 37 * 0.01f, 0.05f);

        CPlaneStack stack;
        stack.WrapPlaneOnly(37, rows, map.data());
        NormaliseRowsBySum(stack);

        EXPECT_EQ(map, expected);
    }
}

TEST(NormaliseRows, OffsetIsAHundredthOfTheWidth)
{
    std::vector<float> map(3 * 200, 0.0f);
    map[0] = 1.0f;
    map[200] = 0.5f;
    map[201] = 0.5f;
    map[402] = 0.03f; // below the threshold: the divisor is the offset alone
    CPlaneStack stack;
    stack.WrapPlaneOnly(200, 3, map.data());
    NormaliseRowsBySum(stack);
    EXPECT_EQ(map[0], static_cast<float>(1.0 / (1.0 + double(200 * 0.01f))));
    EXPECT_EQ(map[201], static_cast<float>(0.5 / (1.0 + double(200 * 0.01f))));
    EXPECT_EQ(map[402], static_cast<float>(double(0.03f) / double(200 * 0.01f)));
}

} // namespace
} // namespace vistaTrim
