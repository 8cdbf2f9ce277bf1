#include <algorithm>
#include <cmath>

#include "numeric/image_kernels.h"
#include "numeric/kernel_test_support.h"

namespace vistaTrim {
namespace {

const char kNullLine[] = "ippStsNullPtrErr: Null pointer error.\n";
const char kSizeLine[] = "ippStsSizeErr: Incorrect value for data size.\n";
const char kNothingLine[] = "ippStsNoOperation: No operation has been executed.\n";

struct Sample {
    int32_t First;
    int32_t Second;
    float Fraction;
};

Sample SampleOf(int32_t k, int32_t sourceLength, int32_t targetLength)
{
    const double u = (k + 0.5) * (static_cast<double>(sourceLength) / targetLength) - 0.5;
    const double i = std::floor(u);
    return {static_cast<int32_t>(i), static_cast<int32_t>(i) + 1, static_cast<float>(u - i)};
}

float Lerp(float a, float b, float fraction)
{
    return a + (b - a) * fraction;
}

GuardedPlane SlowResize(const GuardedPlane& src, int32_t cols, int32_t rows)
{
    return GuardedPlane::FromFunction(cols, rows, [&](int32_t x, int32_t y) {
        const Sample h = SampleOf(x, src.Cols, cols);
        const Sample v = SampleOf(y, src.Rows, rows);
        const float above =
            Lerp(src.Replicated(h.First, v.First), src.Replicated(h.Second, v.First), h.Fraction);
        const float below =
            Lerp(src.Replicated(h.First, v.Second), src.Replicated(h.Second, v.Second), h.Fraction);
        return Lerp(above, below, v.Fraction);
    });
}

CPlaneStack StackOf(int32_t cols, int32_t rows, const std::vector<float*>& planes)
{
    CPlaneStack stack;
    stack.Cols = cols;
    stack.Rows = rows;
    stack.PlaneCount = static_cast<int32_t>(planes.size());
    stack.ElementCount = cols * rows;
    stack.Planes = planes;
    return stack;
}

CPlaneStack StackOf(GuardedPlane& plane)
{
    return StackOf(plane.Cols, plane.Rows, {plane.Data()});
}

class ResizeKernels : public KernelTest {};

// The definition says where each step is rounded, so the check compares bits.
TEST_F(ResizeKernels, MatchTheDefinitionToTheBitInEveryVariant)
{
    const VariantScope scope;
    const PlaneSize pairs[][2] = {
        {{2, 2}, {1, 1}},        {{2, 2}, {33, 17}},     {{3, 2}, {7, 9}},
        {{17, 33}, {8, 15}},     {{33, 31}, {31, 33}},   {{16, 16}, {15, 17}},
        {{640, 427}, {128, 85}}, {{640, 427}, {25, 17}}, {{25, 17}, {640, 427}},
        {{128, 85}, {640, 427}}, {{10, 10}, {5, 5}},     {{9, 640}, {65, 3}},
        {{640, 9}, {3, 65}},     {{7, 7}, {7, 7}},       {{5, 40}, {1, 1}},
    };
    for (const auto& pair : pairs) {
        GuardedPlane src = GuardedPlane::Fractions(pair[0].Cols, pair[0].Rows, 31);
        const GuardedPlane expected = SlowResize(src, pair[1].Cols, pair[1].Rows);
        for (IsaVariant variant : AvailableVariants()) {
            SCOPED_TRACE(testing::Message()
                         << "variant " << variant << ", " << pair[0].Cols << " x " << pair[0].Rows
                         << " to " << pair[1].Cols << " x " << pair[1].Rows);
            SelectIsaVariant(variant);
            GuardedPlane dst(pair[1].Cols, pair[1].Rows, -7.0f);
            ResizeStackLinear(StackOf(src), StackOf(dst));
            ASSERT_EQ(dst.Bits(), expected.Bits());
            ASSERT_TRUE(dst.GuardsIntact());
        }
    }
}

TEST_F(ResizeKernels, ConstantPlaneKeepsItsValueToTheBit)
{
    const VariantScope scope;
    for (IsaVariant variant : AvailableVariants())
        for (const PlaneSize& size : AwkwardSizes())
            for (float value : {1.0f / 3.0f, 0.1f, 77.7f, 255.0f, 1e-30f, 1e30f}) {
                SelectIsaVariant(variant);
                GuardedPlane src(23, 14, value);
                GuardedPlane dst(size.Cols, size.Rows, -7.0f);
                ResizeStackLinear(StackOf(src), StackOf(dst));
                ASSERT_EQ(dst.Bits(), GuardedPlane(size.Cols, size.Rows, value).Bits());
            }
}

TEST_F(ResizeKernels, SameSizeReproducesThePlanes)
{
    for (const PlaneSize& size : AwkwardSizes()) {
        if (size.Cols < 2 || size.Rows < 2)
            continue;
        GuardedPlane first = GuardedPlane::Fractions(size.Cols, size.Rows, 32);
        GuardedPlane second = GuardedPlane::Fractions(size.Cols, size.Rows, 33);
        GuardedPlane firstOut(size.Cols, size.Rows);
        GuardedPlane secondOut(size.Cols, size.Rows);
        ResizeStackLinear(StackOf(size.Cols, size.Rows, {first.Data(), second.Data()}),
                          StackOf(size.Cols, size.Rows, {firstOut.Data(), secondOut.Data()}));
        ASSERT_EQ(firstOut.Bits(), first.Bits());
        ASSERT_EQ(secondOut.Bits(), second.Bits());
    }
}

// Positions 0.5, 2.5, 4.5, 6.5, 8.5: each has two neighbours, and no other pixel counts.
TEST_F(ResizeKernels, HalvingTakesTheMeanOfTwoNeighbours)
{
    GuardedPlane src = GuardedPlane::FromFunction(
        10, 2, [](int32_t x, int32_t) { return static_cast<float>(x * x); });
    GuardedPlane dst(5, 2);
    ResizeStackLinear(StackOf(src), StackOf(dst));
    for (int32_t x = 0; x < 5; ++x)
        EXPECT_EQ(dst.At(x, 0), (src.At(2 * x, 0) + src.At(2 * x + 1, 0)) / 2.0f);
}

// A reduction by 20 reads two of every 20 pixels: the others are not averaged in.
TEST_F(ResizeKernels, StrongReductionSeesOnlyTheFourNeighbours)
{
    GuardedPlane src(40, 40, 1.0f);
    for (int32_t x : {9, 10, 29, 30})
        for (int32_t y : {9, 10, 29, 30})
            src.Data()[y * 40 + x] = 0.0f;
    GuardedPlane dst(2, 2, -7.0f);
    ResizeStackLinear(StackOf(src), StackOf(dst));
    EXPECT_EQ(dst.Pixels(), GuardedPlane(2, 2, 0.0f).Pixels());
}

TEST_F(ResizeKernels, EnlargementRepeatsTheEdgePastTheOutermostCentres)
{
    GuardedPlane src = GuardedPlane::FromFunction(
        2, 2, [](int32_t x, int32_t y) { return static_cast<float>(4 * x + y); });
    GuardedPlane dst(8, 2);
    ResizeStackLinear(StackOf(src), StackOf(dst));
    EXPECT_EQ(dst.Pixels(), (std::vector<float>{0, 0, 0.5, 1.5, 2.5, 3.5, 4, 4, //
                                                1, 1, 1.5, 2.5, 3.5, 4.5, 5, 5}));
}

TEST_F(ResizeKernels, SourceUnderTwoPixelsIsRejectedWithOneLinePerPlane)
{
    for (const PlaneSize& size : {PlaneSize{9, 1}, {1, 9}, {1, 1}}) {
        GuardedPlane src(size.Cols, size.Rows, 1.0f);
        GuardedPlane dst(4, 5, 3.0f);
        AllocationFaults tally({});
        ResizeStackLinear(StackOf(size.Cols, size.Rows, {src.Data(), src.Data(), src.Data()}),
                          StackOf(4, 5, {dst.Data(), dst.Data(), dst.Data()}));
        EXPECT_EQ(TakeErrors(), std::string(kNullLine) + kNullLine + kNullLine);
        EXPECT_EQ(dst.Pixels(), GuardedPlane(4, 5, 3.0f).Pixels());
        EXPECT_EQ(tally.Requests, 0);
    }
}

TEST_F(ResizeKernels, EmptySizesAreReportedOnceAndByEachPlane)
{
    GuardedPlane src(4, 5, 1.0f);
    GuardedPlane dst(4, 5, 3.0f);
    for (const PlaneSize& size : {PlaneSize{0, 5}, {4, 0}, {0, 0}, {0, -1}}) {
        ResizeStackLinear(StackOf(size.Cols, size.Rows, {src.Data(), src.Data()}),
                          StackOf(4, 5, {dst.Data(), dst.Data()}));
        EXPECT_EQ(TakeErrors(), std::string(kNothingLine) + kNullLine + kNullLine);
        ResizeStackLinear(StackOf(4, 5, {src.Data(), src.Data()}),
                          StackOf(size.Cols, size.Rows, {dst.Data(), dst.Data()}));
        EXPECT_EQ(TakeErrors(), std::string(kNothingLine) + kNullLine + kNullLine);
    }
    for (const PlaneSize& size : {PlaneSize{-1, 5}, {4, -1}}) {
        ResizeStackLinear(StackOf(size.Cols, size.Rows, {src.Data()}), StackOf(4, 5, {dst.Data()}));
        EXPECT_EQ(TakeErrors(), std::string(kSizeLine) + kNullLine);
        ResizeStackLinear(StackOf(4, 5, {src.Data()}), StackOf(size.Cols, size.Rows, {dst.Data()}));
        EXPECT_EQ(TakeErrors(), std::string(kSizeLine) + kNullLine);
    }
    EXPECT_EQ(dst.Pixels(), GuardedPlane(4, 5, 3.0f).Pixels());
}

// Allocations in order: the tables, the working memory.
TEST_F(ResizeKernels, EachPlaneReportsFailedAllocation)
{
    GuardedPlane src = GuardedPlane::Fractions(6, 5, 34);
    for (int denied : {0, 1}) {
        GuardedPlane dst(4, 4, 3.0f);
        AllocationFaults faults({denied});
        ResizeStackLinear(StackOf(6, 5, {src.Data(), src.Data()}),
                          StackOf(4, 4, {dst.Data(), dst.Data()}));
        EXPECT_EQ(TakeErrors(), std::string(kNullLine) + kNullLine);
        EXPECT_EQ(dst.Pixels(), GuardedPlane(4, 4, 3.0f).Pixels());
        EXPECT_EQ(faults.Requests, denied + 1);
        EXPECT_EQ(faults.Live, 0);
    }
}

TEST_F(ResizeKernels, NullPlaneIsReportedAndTheOthersAreResized)
{
    GuardedPlane src = GuardedPlane::Fractions(6, 5, 35);
    GuardedPlane dst(4, 4, 3.0f);
    ResizeStackLinear(StackOf(6, 5, {nullptr, src.Data(), src.Data()}),
                      StackOf(4, 4, {dst.Data(), nullptr, dst.Data()}));
    EXPECT_EQ(TakeErrors(), std::string(kNullLine) + kNullLine);
    EXPECT_EQ(dst.Bits(), SlowResize(src, 4, 4).Bits());
}

TEST_F(ResizeKernels, SourceSetsTheNumberOfPlanes)
{
    GuardedPlane src = GuardedPlane::Fractions(6, 5, 36);
    GuardedPlane done(4, 4, 3.0f);
    GuardedPlane spare(4, 4, 3.0f);
    ResizeStackLinear(StackOf(src), StackOf(4, 4, {done.Data(), spare.Data()}));
    EXPECT_EQ(done.Bits(), SlowResize(src, 4, 4).Bits());
    EXPECT_EQ(spare.Pixels(), GuardedPlane(4, 4, 3.0f).Pixels());
}

} // namespace
} // namespace vistaTrim
