// Checks the slow analysis against numbers worked out by hand.
#include "oracle/slow_analysis.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "oracle/synthetic_images.h"

namespace slowOracle {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::FloatEq;

const std::string kNullPointerLine = "ippStsNullPtrErr: Null pointer error.";

FloatPlane Constant(int cols, int rows, float value)
{
    return FloatPlane(static_cast<size_t>(cols * rows), value);
}

float At(const FloatPlane& plane, int cols, int x, int y)
{
    return plane.at(static_cast<size_t>(y * cols + x));
}

FloatPlane NoisePlane(int cols, int rows)
{
    const Picture picture = NoisePicture(cols, rows, 11);
    return StackFromBytes(picture.Bytes.data(), 3, cols, rows).Planes[0];
}

float Smallest(const FloatPlane& plane)
{
    return *std::min_element(plane.begin(), plane.end());
}

float Largest(const FloatPlane& plane)
{
    return *std::max_element(plane.begin(), plane.end());
}

float LargestDifference(const FloatPlane& a, const FloatPlane& b)
{
    float most = 0.0F;
    for (size_t i = 0; i < a.size(); ++i)
        most = std::max(most, std::fabs(a[i] - b.at(i)));
    return most;
}

FloatPlane MirroredLeftRight(const FloatPlane& plane, int cols)
{
    FloatPlane out = plane;
    for (size_t first = 0; first < out.size(); first += static_cast<size_t>(cols))
        std::reverse(out.begin() + static_cast<std::ptrdiff_t>(first),
                     out.begin() + static_cast<std::ptrdiff_t>(first) + cols);
    return out;
}

FloatPlane MirroredTopBottom(const FloatPlane& plane, int cols)
{
    FloatPlane out = plane;
    std::reverse(out.begin(), out.end());
    return MirroredLeftRight(out, cols);
}

// ---- Vector primitives ---------------------------------------------------------------------

TEST(SlowNormalisePlane, BringsTheExtremesTo0And1)
{
    FloatPlane x = {2, 3, 4};
    NormalisePlane(x);
    EXPECT_THAT(x, ElementsAre(0.0F, 0.5F, 1.0F));
    NormalisePlane(x);
    EXPECT_THAT(x, ElementsAre(0.0F, 0.5F, 1.0F));
}

TEST(SlowNormalisePlane, FlatInputBecomesZeros)
{
    FloatPlane zeros = {0, 0, 0}, sevens = {7, 7, 7};
    NormalisePlane(zeros);
    NormalisePlane(sevens);
    EXPECT_THAT(zeros, Each(0.0F));
    EXPECT_THAT(sevens, Each(0.0F));
}

TEST(SlowNormalisePlane, SmallRangesAreDividedByTheFloor)
{
    FloatPlane x = {0.0F, 1e-06F};
    NormalisePlane(x);
    EXPECT_EQ(x[0], 0.0F);
    EXPECT_THAT(x[1], FloatEq(0.1F));
}

// The extremes are 1 and -4 by magnitude: shifted to 0 and -5, the range is under the floor.
TEST(SlowNormalisePlane, ExtremesAreByMagnitude)
{
    FloatPlane x = {-4, 1, 2};
    NormalisePlane(x);
    EXPECT_THAT(x, ElementsAre(-500000.0F, 0.0F, 100000.0F));
}

TEST(SlowVectors, FirstOfEqualMagnitudesIsFound)
{
    const float x[] = {2, -5, 5, -1, 1};
    EXPECT_EQ(IndexOfLargestMagnitude(x, 5), 1);
    EXPECT_EQ(IndexOfSmallestMagnitude(x, 5), 3);
}

TEST(SlowVectors, CubeKeeps0And1)
{
    FloatPlane x = {0.0F, 1.0F, 0.5F, 3.0F};
    CubeElements(x);
    EXPECT_THAT(x, ElementsAre(0.0F, 1.0F, 0.125F, 27.0F));
}

// ---- Image kernels -------------------------------------------------------------------------

TEST(SlowGradients, OneToNineByHand)
{
    const FloatPlane p = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    const FloatPlane down = SobelRowDifference(p, 3, 3);
    const FloatPlane across = SobelColumnDifference(p, 3, 3);
    const FloatPlane strength = GradientStrength(p, 3, 3);
    EXPECT_EQ(At(down, 3, 1, 1), 24.0F);   // (7 + 16 + 9) - (1 + 4 + 3)
    EXPECT_EQ(At(across, 3, 1, 1), -8.0F); // (1 + 8 + 7) - (3 + 12 + 9)
    EXPECT_EQ(At(strength, 3, 1, 1), 32.0F);
    EXPECT_EQ(At(down, 3, 0, 0), 12.0F);   // (4 + 8 + 5) - (1 + 2 + 2)
    EXPECT_EQ(At(across, 3, 0, 0), -4.0F); // (1 + 2 + 4) - (2 + 4 + 5)
    EXPECT_EQ(At(strength, 3, 0, 0), 16.0F);
}

TEST(SlowGradients, FlatPlanesHaveNone)
{
    EXPECT_THAT(GradientStrength(Constant(5, 4, 77.0F), 5, 4), Each(0.0F));
    EXPECT_THAT(SobelRowDifference({9.0F}, 1, 1), ElementsAre(0.0F));
}

TEST(SlowGaussian, TapsByHand)
{
    // exp(-1/2) = 0.60653066 on both sides of 1
    EXPECT_THAT(GaussianTaps(3, 1.0F),
                ElementsAre(FloatEq(0.27406862F), FloatEq(0.45186276F), FloatEq(0.27406862F)));
    // exp(-2), exp(-8), exp(-18) beside 1
    const FloatPlane taps = GaussianTaps(7, 0.5F);
    EXPECT_THAT(taps[3], FloatEq(0.78657067F));
    EXPECT_THAT(taps[2], FloatEq(0.10645077F));
    EXPECT_THAT(taps[5], FloatEq(0.00026386508F));
    EXPECT_THAT(taps[6], FloatEq(1.1979454e-08F));
    EXPECT_THROW(GaussianTaps(4, 1.0F), std::invalid_argument);
    EXPECT_THROW(GaussianTaps(1, 1.0F), std::invalid_argument);
}

TEST(SlowGaussian, OnePointSpreadsAsTheProductOfTheTaps)
{
    FloatPlane p = Constant(9, 9, 0.0F);
    p[4 * 9 + 4] = 1.0F;
    const FloatPlane smooth = GaussianSmooth(p, 9, 9, 7, 0.5F);
    EXPECT_THAT(At(smooth, 9, 4, 4), FloatEq(0.61869342F)); // 0.78657067 squared
    EXPECT_THAT(At(smooth, 9, 3, 4), FloatEq(0.083731055F));
    EXPECT_THAT(At(smooth, 9, 4, 5), FloatEq(0.083731055F));
    EXPECT_THAT(At(smooth, 9, 5, 5), FloatEq(0.011331767F));
    EXPECT_EQ(At(smooth, 9, 0, 4), 0.0F);
}

// All taps that fall outside read the corner pixel: (1 + centre tap) / 2 along each axis.
TEST(SlowGaussian, CornerReachesPastTheBorder)
{
    FloatPlane p = Constant(9, 9, 0.0F);
    p[0] = 1.0F;
    EXPECT_THAT(GaussianSmooth(p, 9, 9, 7, 0.5F)[0], FloatEq(0.79795870F)); // 0.89328533 squared
}

TEST(SlowGaussian, PicturesSmallerThanTheMaskAreAllowed)
{
    EXPECT_THAT(GaussianSmooth({200.0F}, 1, 1, 15, 2.0F), ElementsAre(FloatEq(200.0F)));

    // One column: each row's taps see the same value, so this smooths a single line.
    const FloatPlane line = GaussianSmooth({0, 0, 0, 0, 1, 0, 0, 0, 0}, 1, 9, 7, 0.5F);
    EXPECT_THAT(line[4], FloatEq(0.78657067F));
    EXPECT_THAT(line[3], FloatEq(0.10645077F));
    const FloatPlane row = GaussianSmooth({0, 0, 0, 0, 1, 0, 0, 0, 0}, 9, 1, 7, 0.5F);
    EXPECT_EQ(row, line);
}

TEST(SlowGaussian, BlurSeparatesTheThreePlanes)
{
    const Picture picture = FlatPicture(6, 5, 10, 20, 30);
    const std::vector<FloatPlane> planes = BlurInterleavedPixels(picture.Bytes.data(), 6, 5, 2.0F);
    ASSERT_EQ(planes.size(), 3U);
    EXPECT_THAT(planes[0], Each(FloatEq(10.0F)));
    EXPECT_THAT(planes[1], Each(FloatEq(20.0F)));
    EXPECT_THAT(planes[2], Each(FloatEq(30.0F)));
}

FloatPlane Resized(const FloatPlane& src, int cols, int rows, int newCols, int newRows)
{
    Messages messages;
    PlaneStack target = MakeStack(1, newCols, newRows);
    ResizeStackLinear(WrapPlane(cols, rows, src), target, messages);
    EXPECT_TRUE(messages.empty());
    return target.Planes[0];
}

TEST(SlowResize, SameSizeReproducesThePlane)
{
    const FloatPlane src = NoisePlane(7, 5);
    EXPECT_EQ(Resized(src, 7, 5, 7, 5), src);
}

TEST(SlowResize, HalvingAveragesTwoNeighbours)
{
    const FloatPlane src = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
    EXPECT_THAT(Resized(src, 10, 2, 5, 1), ElementsAre(0.5F, 2.5F, 4.5F, 6.5F, 8.5F));
    EXPECT_THAT(Resized({1, 2, 3, 4}, 2, 2, 1, 1), ElementsAre(2.5F));
}

TEST(SlowResize, EnlargingRepeatsTheEdgePixels)
{
    // positions -0.25, 0.25, 0.75, 1.25
    EXPECT_THAT(Resized({0, 4, 0, 4}, 2, 2, 4, 1), ElementsAre(0.0F, 1.0F, 3.0F, 4.0F));
    EXPECT_THAT(Resized({0, 0, 4, 4}, 2, 2, 1, 4), ElementsAre(0.0F, 1.0F, 3.0F, 4.0F));
}

TEST(SlowResize, StrongReductionReadsOnlyFourPixels)
{
    FloatPlane src = Constant(9, 9, 0.0F);
    src[4 * 9 + 4] = 5.0F; // position 4 exactly
    EXPECT_THAT(Resized(src, 9, 9, 1, 1), ElementsAre(5.0F));
}

TEST(SlowResize, OneRowIsRejectedOncePerPlane)
{
    Messages messages;
    PlaneStack target = MakeStack(3, 4, 4);
    for (FloatPlane& plane : target.Planes)
        plane.assign(16, 42.0F);
    ResizeStackLinear(MakeStack(3, 8, 1), target, messages);
    EXPECT_THAT(messages, ElementsAre(kNullPointerLine, kNullPointerLine, kNullPointerLine));
    for (const FloatPlane& plane : target.Planes)
        EXPECT_THAT(plane, Each(42.0F));
}

TEST(SlowThreshold, ValuesAtTheLevelAreKept)
{
    FloatPlane x = {0.0F, 1.0F, 2.0F, 3.0F};
    ThresholdBelow(x, 0.0F, 0.0F);
    EXPECT_THAT(x, ElementsAre(0.0F, 1.0F, 2.0F, 3.0F));
    ThresholdBelow(x, 2.0F, 0.0F);
    EXPECT_THAT(x, ElementsAre(0.0F, 0.0F, 2.0F, 3.0F));
}

TEST(SlowScaleColumns, TouchesItsColumnsOnly)
{
    FloatPlane x = {1, 2, 3, 4, 5, 6, 7, 8};
    ScaleColumns(x, 4, 2, 1, 2, 10.0F);
    EXPECT_THAT(x, ElementsAre(1, 20, 30, 4, 5, 60, 70, 8));
    ScaleColumns(x, 4, 2, 1, 0, 10.0F);
    EXPECT_THAT(x, ElementsAre(1, 20, 30, 4, 5, 60, 70, 8));
}

TEST(SlowBoxes, ErosionOf5RemovesALineOf3)
{
    FloatPlane map = Constant(12, 9, 0.0F);
    for (int y = 3; y < 6; ++y)
        for (int x = 0; x < 12; ++x)
            map[static_cast<size_t>(y * 12 + x)] = 1.0F;
    ErodeBox(map, 12, 9, 5);
    EXPECT_THAT(map, Each(0.0F));
}

TEST(SlowBoxes, ErosionIgnoresEverythingOutsideTheMap)
{
    // A bright block of three columns at the left border keeps its first column.
    FloatPlane map = {1, 1, 1, 0, 0, 0, 1, 1, 1, 0, 0, 0};
    ErodeBox(map, 6, 2, 5);
    EXPECT_THAT(map, ElementsAre(1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0));
}

TEST(SlowBoxes, DilationOf7MakesASquare)
{
    FloatPlane map = Constant(12, 10, 0.0F);
    map[5 * 12 + 1] = 2.0F;
    DilateBox(map, 12, 10, 7);
    for (int y = 0; y < 10; ++y)
        for (int x = 0; x < 12; ++x)
            EXPECT_EQ(At(map, 12, x, y), (x <= 4 && y >= 2 && y <= 8) ? 2.0F : 0.0F)
                << x << " " << y;
}

// ---- Summed-area tables --------------------------------------------------------------------

TEST(SlowTables, SumsByHand)
{
    const DoublePlane t = BuildSummedAreaTable({1, 2, 3, 4, 5, 6}, 3, 2);
    EXPECT_THAT(t, ElementsAre(1, 3, 6, 5, 12, 21));
    EXPECT_EQ(RegionSum(t, 3, 0, 0, 1, 2), 21.0);
    EXPECT_EQ(RegionSum(t, 3, 1, 1, 1, 2), 11.0);
    EXPECT_EQ(RegionSum(t, 3, 0, 1, 1, 1), 7.0);
    EXPECT_EQ(RegionSum(t, 3, 1, 0, 1, 1), 9.0);
    EXPECT_EQ(RegionSum(t, 3, 0, 1, 0, 1), 2.0);
    EXPECT_EQ(RegionMean(t, 3, 1, 1, 1, 2, 2.0), 5.5);
    EXPECT_THAT(BuildSummedAreaTable({1, 2, 3}, 3, 1), ElementsAre(1, 3, 6));
    EXPECT_THAT(BuildSummedAreaTable({1, 2, 3}, 1, 3), ElementsAre(1, 3, 6));
    EXPECT_THAT(BuildSummedAreaTable({7}, 1, 1), ElementsAre(7));
}

TEST(SlowTables, MeanOfAnEmptyRegionOverATinyAreaIs0)
{
    const DoublePlane t = BuildSummedAreaTable(Constant(4, 4, 0.0F), 4, 4);
    EXPECT_EQ(RegionMean(t, 4, 1, 1, 2, 2, 1e-10), 0.0);
}

TEST(SlowTables, PlaneTableOfOnesCountsPixels)
{
    const FloatPlane t = BuildPlaneTable(Constant(5, 3, 1.0F), 5, 3);
    for (int r = 0; r <= 3; ++r)
        for (int c = 0; c <= 5; ++c)
            EXPECT_EQ(At(t, 6, c, r), static_cast<float>(r * c));
}

// 2^24 + 1 is 2^24 in a float, but 2^24 + 2 is exact: the second row's own sum of 2 survives,
// while adding its pixels one by one would lose both.
TEST(SlowTables, PlaneTableSumsRowsFirst)
{
    const FloatPlane t = BuildPlaneTable({16777216.0F, 1.0F, 1.0F, 1.0F}, 2, 2);
    EXPECT_THAT(t, ElementsAre(0, 0, 0, 0, 16777216.0F, 16777216.0F, 0, 16777216.0F, 16777218.0F));
}

// 4097 squared is 16785409: odd and above 2^24, so no float holds it, but one more is a float.
TEST(SlowTables, PairTableRoundsTheSumAndNotTheProduct)
{
    const FloatPlane t = BuildPairTable({1.0F, 4097.0F}, {1.0F, 4097.0F}, 2, 1);
    EXPECT_THAT(t, ElementsAre(0, 0, 0, 0, 1.0F, 16785410.0F));
}

TEST(SlowTables, PairsArePackedRowByRow)
{
    PlaneStack stack = MakeStack(3, 1, 1);
    stack.Planes = {{2.0F}, {3.0F}, {5.0F}};
    BuildTables(stack);
    ASSERT_EQ(stack.PlaneTables.size(), 3U);
    ASSERT_EQ(stack.PairTables.size(), 6U);
    const float products[] = {4, 6, 10, 9, 15, 25};
    for (size_t k = 0; k < 6; ++k)
        EXPECT_EQ(stack.PairTables[k].back(), products[k]);
    for (int p = 0; p < 3; ++p) {
        const PlaneStack view = PlaneView(stack, p);
        const float value = stack.Planes[static_cast<size_t>(p)][0];
        EXPECT_EQ(view.PlaneTables.at(0).back(), value);
        EXPECT_EQ(view.PairTables.at(0).back(), value * value);
    }
}

// ---- Multi-scale edges ---------------------------------------------------------------------

TEST(SlowEdges, ScaledSidesAreTruncated)
{
    EXPECT_EQ(ScaledSide(640, 0.04F), 25);
    EXPECT_EQ(ScaledSide(480, 0.04F), 19);
    EXPECT_EQ(ScaledSide(640, 0.2F), 128);
    EXPECT_EQ(ScaledSide(480, 0.2F), 96);
    EXPECT_EQ(ScaledSide(25, 0.04F), 0);
    EXPECT_EQ(ScaledSide(26, 0.04F), 1);
    EXPECT_EQ(ScaledSide(50, 0.04F), 1);
    EXPECT_EQ(ScaledSide(51, 0.04F), 2);
    EXPECT_EQ(ScaledSide(4, 0.2F), 0);
    EXPECT_EQ(ScaledSide(5, 0.2F), 1);
}

TEST(SlowEdges, RowSumCountsOnlyValuesAboveTheThreshold)
{
    FloatPlane row = Constant(100, 1, 0.0F);
    row[10] = 1.0F;
    row[20] = 0.04F;
    NormaliseRowBySum(row.data(), 100, 1.0F, 0.05F);
    EXPECT_EQ(row[10], 0.5F);
    EXPECT_EQ(row[20], 0.02F);

    FloatPlane atThreshold = {0.05F, 1.0F};
    NormaliseRowBySum(atThreshold.data(), 2, 1.0F, 0.05F);
    EXPECT_EQ(atThreshold[1], 0.5F);

    FloatPlane zeros = Constant(4, 1, 0.0F);
    NormaliseRowBySum(zeros.data(), 4, 0.04F, 0.05F);
    EXPECT_THAT(zeros, Each(0.0F));
}

TEST(SlowEdges, RowsAreNormalisedSeparately)
{
    // Offset 0.02: 1 / 1.02, and 2 / 4.02 twice.
    FloatPlane plane = {1.0F, 0.0F, 2.0F, 2.0F};
    NormaliseRowsBySum(plane, 2, 2);
    EXPECT_THAT(
        plane, ElementsAre(FloatEq(0.98039216F), 0.0F, FloatEq(0.49751244F), FloatEq(0.49751244F)));
}

TEST(SlowEdges, ScalesWithoutPixelsAreSkipped)
{
    Messages messages;
    const PlaneStack source = WrapPlane(25, 25, NoisePlane(25, 25));
    EXPECT_THAT(ComputeMultiScaleEdges(source, false, false, {}, messages), Each(0.0F));
    EXPECT_THAT(ComputeMultiScaleEdges(source, false, false, {0.04F}, messages), Each(0.0F));
    EXPECT_TRUE(messages.empty());
}

// 76 x 26 becomes 3 x 1: columns 12.2, 37.5 and 62.8, each well inside its band.
PlaneStack ThreeBands()
{
    FloatPlane plane(76 * 26);
    for (size_t i = 0; i < plane.size(); ++i)
        plane[i] = i % 76 < 25 ? 0.0F : i % 76 < 51 ? 10.0F : 40.0F;
    return WrapPlane(76, 26, plane);
}

// The values 0, 10, 40 have gradients 40, 160, 120. Resizing them to full size is rejected.
TEST(SlowEdges, OneScaledRowStaysUnsmoothedInFront)
{
    Messages messages;
    const FloatPlane out = ComputeMultiScaleEdges(ThreeBands(), false, false, {0.04F}, messages);
    EXPECT_THAT(messages, ElementsAre(kNullPointerLine));
    EXPECT_EQ(out[0], 0.0F);
    EXPECT_EQ(out[1], 1.0F);
    EXPECT_THAT(out[2], FloatEq(2.0F / 3.0F));
    EXPECT_THAT(FloatPlane(out.begin() + 3, out.end()), Each(0.0F));
}

TEST(SlowEdges, OneScaledRowKeepsThePreviousScaleAfterIt)
{
    Messages messages;
    const FloatPlane once = ComputeMultiScaleEdges(ThreeBands(), false, false, {0.2F}, messages);
    EXPECT_TRUE(messages.empty());
    const FloatPlane both =
        ComputeMultiScaleEdges(ThreeBands(), false, false, {0.2F, 0.04F}, messages);
    EXPECT_THAT(messages, ElementsAre(kNullPointerLine));
    EXPECT_EQ(both[0], once[0]);
    EXPECT_EQ(both[1], once[1] + 1.0F);
    EXPECT_THAT(both[2], FloatEq(once[2] + 2.0F / 3.0F));
    EXPECT_GT(Largest(once), 0.5F);
    for (size_t i = 3; i < both.size(); ++i)
        EXPECT_EQ(both[i], once[i] + once[i]);
}

// 30 x 30 becomes 6 x 6: the first 36 elements span 0..1, the others keep their resized values.
TEST(SlowEdges, OnlyTheFirstElementsAreNormalisedAgain)
{
    Messages messages;
    const PlaneStack source = WrapPlane(30, 30, NoisePlane(30, 30));
    const FloatPlane out = ComputeMultiScaleEdges(source, false, false, {0.2F}, messages);
    const FloatPlane front(out.begin(), out.begin() + 36), rest(out.begin() + 36, out.end());
    EXPECT_EQ(Smallest(front), 0.0F);
    EXPECT_THAT(Largest(front), FloatEq(1.0F));
    EXPECT_GT(Smallest(rest), 0.0F); // smoothing has raised the small plane's 0
    EXPECT_LT(Largest(rest), 1.0F);  // and lowered its 1

    const FloatPlane whole = ComputeMultiScaleEdges(source, true, false, {0.2F}, messages);
    FloatPlane expected = out;
    NormalisePlane(expected);
    EXPECT_EQ(whole, expected);
    EXPECT_NE(ComputeMultiScaleEdges(source, false, true, {0.2F}, messages), out);
}

// ---- Border strips -------------------------------------------------------------------------

TEST(SlowStrips, BandIsAFractionOfTheShorterSide)
{
    EXPECT_EQ(StripBand(640, 480, 0.25F), 120);
    EXPECT_EQ(StripBand(480, 640, 0.2F), 96);
    EXPECT_EQ(StripBand(3, 50, 0.25F), 1);
    EXPECT_EQ(StripBand(1, 1, 0.25F), 1);
    EXPECT_EQ(StripBand(7, 9, 0.25F), 1);
    EXPECT_EQ(StripBand(8, 9, 0.25F), 2);
}

void ExpectStrip(const StripRect& r, int left, int top, int right, int bottom, int area)
{
    EXPECT_EQ(r.Left, left);
    EXPECT_EQ(r.Top, top);
    EXPECT_EQ(r.Right, right);
    EXPECT_EQ(r.Bottom, bottom);
    EXPECT_EQ(r.Area, area);
}

TEST(SlowStrips, StripsByHand)
{
    ExpectStrip(MakeStrip(SideTop, 100, 80, 25), 0, 0, 99, 24, 2500);
    ExpectStrip(MakeStrip(SideBottom, 100, 80, 25), 0, 55, 99, 79, 2500);
    ExpectStrip(MakeStrip(SideLeft, 100, 80, 25), 0, 0, 24, 79, 2000);
    ExpectStrip(MakeStrip(SideRight, 100, 80, 25), 75, 0, 99, 79, 2000);
    // One row: top and bottom are the whole picture, left and right one pixel each.
    ExpectStrip(MakeStrip(SideTop, 9, 1, 1), 0, 0, 8, 0, 9);
    ExpectStrip(MakeStrip(SideBottom, 9, 1, 1), 0, 0, 8, 0, 9);
    ExpectStrip(MakeStrip(SideLeft, 9, 1, 1), 0, 0, 0, 0, 1);
    ExpectStrip(MakeStrip(SideRight, 9, 1, 1), 8, 0, 8, 0, 1);
    // Wider than the picture.
    ExpectStrip(MakeStrip(SideTop, 4, 3, 5), 0, 0, 3, 2, 12);
    ExpectStrip(MakeStrip(SideRight, 4, 3, 5), 0, 0, 3, 2, 12);
}

// 4 x 4 with strips of 1: left, right and bottom have 12 pixels, the lower corners counted
// twice. Plane 0 has 12 and plane 1 has 6 in the lower left corner, plane 2 has 24 beside it.
TEST(SlowStrips, CornersCountTwice)
{
    PlaneStack stack = MakeStack(3, 4, 4);
    stack.Planes[0][12] = 12.0F;
    stack.Planes[1][12] = 6.0F;
    stack.Planes[2][13] = 24.0F;
    BuildTables(stack);
    const StripStatistics model =
        ComputeStripStatistics(stack, {MakeStrip(SideLeft, 4, 4, 1), MakeStrip(SideRight, 4, 4, 1),
                                       MakeStrip(SideBottom, 4, 4, 1)});
    EXPECT_THAT(model.Mean, ElementsAre(2, 1, 2));
    EXPECT_THAT(model.Covariance, ElementsAre(20, 10, -4, 10, 5, -2, -4, -2, 44));

    const StripStatistics one =
        ComputeStripStatistics(PlaneView(stack, 1), {MakeStrip(SideBottom, 4, 4, 1)});
    EXPECT_THAT(one.Mean, ElementsAre(1.5F));        // 6 / 4
    EXPECT_THAT(one.Covariance, ElementsAre(6.75F)); // 36 / 4 - 2.25
}

// ---- Distance maps -------------------------------------------------------------------------

class SlowInverse : public testing::TestWithParam<InversePrecision> {};
INSTANTIATE_TEST_SUITE_P(BothPrecisions, SlowInverse,
                         testing::Values(InversePrecision::kSingle, InversePrecision::kDouble));

TEST_P(SlowInverse, MatrixByHand)
{
    // 20 10 0, 10 20 0, 0 0 25 once 10 is added.
    const FloatPlane inverse =
        InvertRegularised({10, 10, 0, 10, 10, 0, 0, 0, 15}, 3, 10.0F, GetParam());
    const float expected[] = {1 / 15.0F, -1 / 30.0F, 0, -1 / 30.0F, 1 / 15.0F, 0, 0, 0, 0.04F};
    for (size_t i = 0; i < 9; ++i)
        EXPECT_NEAR(inverse[i], expected[i], 2e-8) << i; // a few units in the last place
}

TEST_P(SlowInverse, TimesTheMatrixIsTheIdentity)
{
    const FloatPlane a = {80, 30, -20, 30, 60, 25, -20, 25, 90};
    const FloatPlane inverse = InvertRegularised(a, 3, 10.0F, GetParam());
    for (size_t i = 0; i < 3; ++i)
        for (size_t j = 0; j < 3; ++j) {
            double sum = 0.0;
            for (size_t k = 0; k < 3; ++k)
                sum += static_cast<double>(a[3 * i + k] + (i == k ? 10.0F : 0.0F)) *
                       static_cast<double>(inverse[3 * k + j]);
            EXPECT_NEAR(sum, i == j ? 1.0 : 0.0, 1e-6);
        }
}

TEST_P(SlowInverse, OneElementNeedsNoFactorisation)
{
    EXPECT_THAT(InvertRegularised({6.0F}, 1, 10.0F, GetParam()), ElementsAre(0.0625F));
    EXPECT_THAT(InvertRegularised({-26.0F}, 1, 10.0F, GetParam()), ElementsAre(-0.0625F));
}

TEST_P(SlowInverse, IndefiniteMatrixFallsBackToItsFirstDiagonal)
{
    // 10 100, 100 10: the first element 10 is regularised again, 1 / 20 for all.
    EXPECT_THAT(InvertRegularised({0, 100, 0, 100, 0, 0, 0, 0, 500}, 3, 10.0F, GetParam()),
                ElementsAre(0.05F, 0, 0, 0, 0.05F, 0, 0, 0, 0.05F));
    // A pivot of exactly 0 is not positive definite either.
    EXPECT_THAT(InvertRegularised({-10, 0, 0, 5}, 2, 10.0F, GetParam()),
                ElementsAre(0.1F, 0, 0, 0.1F));
    EXPECT_THAT(InvertRegularised({5, 0, 0, -10}, 2, 10.0F, GetParam()),
                ElementsAre(0.04F, 0, 0, 0.04F));
    const float infinity = std::numeric_limits<float>::infinity();
    EXPECT_THAT(InvertRegularised({-20, 0, 0, 0, 5, 0, 0, 0, 5}, 3, 10.0F, GetParam()),
                ElementsAre(infinity, 0, 0, 0, infinity, 0, 0, 0, infinity));
}

PlaneStack OnePixelEach(const std::vector<FloatPlane>& pixels)
{
    PlaneStack stack = MakeStack(3, static_cast<int>(pixels.size()), 1);
    for (size_t i = 0; i < pixels.size(); ++i)
        for (size_t c = 0; c < 3; ++c)
            stack.Planes[c][i] = pixels[i].at(c);
    return stack;
}

TEST_P(SlowInverse, NoCovarianceGivesEuclideanDistanceOverRootOf10)
{
    const PlaneStack stack = OnePixelEach({{4, 6, 15}, {1, 2, 3}});
    const FloatPlane map =
        ComputeMahalanobisMap(stack, {{1, 2, 3}, Constant(3, 3, 0.0F)}, false, GetParam());
    EXPECT_THAT(map[0], FloatEq(4.1109610F)); // 13 / sqrt(10)
    EXPECT_EQ(map[1], 0.0F);
}

TEST_P(SlowInverse, CorrelatedPlanesByHand)
{
    const PlaneStack stack = OnePixelEach({{3, 0, 5}, {1, 1, 0}, {1, -1, 0}});
    const FloatPlane map = ComputeMahalanobisMap(
        stack, {{0, 0, 0}, {10, 10, 0, 10, 10, 0, 0, 0, 15}}, false, GetParam());
    EXPECT_THAT(map[0], FloatEq(1.2649111F));  // sqrt(9 / 15 + 25 / 25)
    EXPECT_THAT(map[1], FloatEq(0.25819889F)); // sqrt(1 / 15)
    EXPECT_THAT(map[2], FloatEq(0.44721360F)); // sqrt(3 / 15)
}

TEST(SlowScalarDistance, ByHand)
{
    const PlaneStack stack = WrapPlane(3, 1, {2.0F, 10.0F, -2.0F});
    EXPECT_THAT(ComputeScalarDistanceMap(stack, {{2.0F}, {6.0F}}, false),
                ElementsAre(0.0F, 2.0F, 1.0F)); // a quarter of the difference
    EXPECT_THAT(ComputeScalarDistanceMap(stack, {{2.0F}, {6.0F}}, true),
                ElementsAre(0.0F, 1.0F, 0.5F));
}

// Rows of 0, 8, 8 and 4 in 4 x 4, strips of 1. The top strip: mean 0, variance 0. The others:
// sum 20 + 20 + 16 = 56 and squares 144 + 144 + 64 = 352 over 12.
TEST(SlowStripContrast, TopContrastByHand)
{
    PlaneStack stack = MakeStack(1, 4, 4);
    const float rows[] = {0, 8, 8, 4};
    for (size_t i = 0; i < 16; ++i)
        stack.Planes[0][i] = rows[i / 4];
    BuildTables(stack);

    const double mean = 56.0 / 12.0;
    const double restScale = 1.0 / std::sqrt(352.0 / 12.0 - mean * mean + 10.0);
    double raw[4];
    for (size_t r = 0; r < 4; ++r) {
        const double value = static_cast<double>(rows[r]);
        raw[r] = value / std::sqrt(10.0) + std::fabs(value - mean) * restScale;
    }
    const FloatPlane map = ComputeTopContrast(stack, 0.25F, InversePrecision::kSingle);
    EXPECT_EQ(map[0], 0.0F);
    EXPECT_THAT(map[4], FloatEq(1.0F));
    EXPECT_EQ(map[8], map[4]);
    EXPECT_NEAR(map[12], (raw[3] - raw[0]) / (raw[1] - raw[0]), 1e-6); // 0.14028
}

TEST(SlowStripContrast, MirroringTopAndBottomSwapsTheAnchors)
{
    // Sums of bytes are exact in a picture this small, so only the order of the strips differs.
    const Picture picture = BlobsOnGradient(40, 28, 5);
    const Picture turned = MirrorTopBottom(picture);
    PlaneStack stack = StackFromBytes(picture.Bytes.data(), 3, 40, 28);
    PlaneStack turnedStack = StackFromBytes(turned.Bytes.data(), 3, 40, 28);
    BuildTables(stack);
    BuildTables(turnedStack);
    const InversePrecision single = InversePrecision::kSingle;
    const FloatPlane top = ComputeTopContrast(stack, 0.25F, single);
    EXPECT_EQ(MirroredTopBottom(ComputeBottomContrast(turnedStack, 0.25F, single), 40), top);
    EXPECT_GT(LargestDifference(top, ComputeBottomContrast(stack, 0.25F, single)), 0.05F);
}

TEST(SlowStripContrast, SidesAreTopBottomLeftRight)
{
    // All four sides of the picture differ, and each side map is lowest at its own.
    Picture picture = FlatPicture(20, 20, 100, 100, 100);
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 20; ++x) {
            uint8_t* pixel = picture.Bytes.data() + 3 * (y * 20 + x);
            pixel[0] = static_cast<uint8_t>(10 * x);
            pixel[1] = static_cast<uint8_t>(10 * y);
        }
    PlaneStack stack = StackFromBytes(picture.Bytes.data(), 3, 20, 20);
    BuildTables(stack);
    const std::vector<FloatPlane> maps =
        ComputeSideContrasts(stack, 0.2F, InversePrecision::kSingle);
    ASSERT_EQ(maps.size(), 4U);
    const int corners[4][2] = {{10, 1}, {10, 18}, {1, 10}, {18, 10}};
    for (size_t side = 0; side < 4; ++side)
        for (size_t other = 0; other < 4; ++other) {
            const float here = At(maps[side], 20, corners[side][0], corners[side][1]);
            const float there = At(maps[side], 20, corners[other][0], corners[other][1]);
            if (other != side) {
                EXPECT_LT(here, there) << side << " " << other;
            }
        }
}

// ---- Saliency ------------------------------------------------------------------------------

// With T and B for the anchored contrasts, J for the planes together and p for one plane:
// colour contrast = min(T(J), B(J)), contrast = norm(min(norm(T(J) + sum of T(p) / 3),
// norm(B(J) + sum of B(p) / 3))), saliency = norm(edges x contrast).
TEST(SlowSaliency, FollowsItsFormula)
{
    const int cols = 90, rows = 70;
    const InversePrecision single = InversePrecision::kSingle;
    const Picture picture = PseudoPhotograph(cols, rows, 8);
    Messages messages;
    const SaliencyStages s =
        ComputeSaliencyMaps(picture.Bytes.data(), cols, rows, single, messages);
    EXPECT_TRUE(messages.empty());

    const PlaneStack sharp = StackFromBytes(picture.Bytes.data(), 3, cols, rows);
    PlaneStack blurred = MakeStack(3, cols, rows);
    for (size_t k = 0; k < 3; ++k)
        blurred.Planes[k] = GaussianSmooth(sharp.Planes[k], cols, rows, 7, 0.7F);
    BuildTables(blurred);

    FloatPlane top = ComputeTopContrast(blurred, 0.25F, single);
    FloatPlane bottom = ComputeBottomContrast(blurred, 0.25F, single);
    for (size_t i = 0; i < top.size(); ++i)
        ASSERT_EQ(s.ColorContrastMap[i], std::min(top[i], bottom[i]));
    for (int p = 0; p < 3; ++p) {
        const FloatPlane planeTop = ComputeTopContrast(PlaneView(blurred, p), 0.25F, single);
        const FloatPlane planeBottom = ComputeBottomContrast(PlaneView(blurred, p), 0.25F, single);
        for (size_t i = 0; i < top.size(); ++i) {
            top[i] += planeTop[i] / 3.0F;
            bottom[i] += planeBottom[i] / 3.0F;
        }
    }
    NormalisePlane(top);
    NormalisePlane(bottom);
    FloatPlane contrast(top.size());
    for (size_t i = 0; i < top.size(); ++i)
        contrast[i] = std::min(top[i], bottom[i]);
    NormalisePlane(contrast);
    // The thirds are rounded differently here; the difference is a few roundings of values up to 2.
    EXPECT_LT(LargestDifference(s.ContrastMap, contrast), 1e-6F);

    FloatPlane saliency = ComputeMultiScaleEdges(sharp, false, false, {0.04F, 0.2F}, messages);
    for (size_t i = 0; i < saliency.size(); ++i)
        saliency[i] *= s.ContrastMap[i];
    NormalisePlane(saliency);
    EXPECT_EQ(s.SaliencyMap, saliency);

    const std::vector<FloatPlane> sides = ComputeSideContrasts(blurred, 0.2F, single);
    for (size_t side = 0; side < 4; ++side)
        EXPECT_EQ(s.SideMaps[side], sides[side]);
}

// At 640 x 26 the smaller scale is one row. Run second, it would leave the other scale's result
// after its own; the analysis runs it first, so only zeros follow.
TEST(SlowSaliency, SmallerScaleComesFirst)
{
    const Picture picture = PseudoPhotograph(640, 26, 8);
    Messages messages;
    const SaliencyStages s =
        ComputeSaliencyMaps(picture.Bytes.data(), 640, 26, InversePrecision::kSingle, messages);
    const FloatPlane larger = ComputeMultiScaleEdges(s.PixelStack, false, false, {0.2F}, messages);
    EXPECT_NE(s.Edges[1], larger[1]);
    for (size_t i = 25; i < larger.size(); ++i)
        ASSERT_EQ(s.Edges[i], larger[i]);
}

// 60 x 60 becomes 12 x 12. After the first 144 elements the result is simply the gradients of the
// small plane, normalised, smoothed with sigma 0.5 and 7 taps, and enlarged.
TEST(SlowSaliency, EdgesAfterTheFirstElementsAreTheSmoothedGradients)
{
    const FloatPlane plane = NoisePlane(60, 60);
    Messages messages;
    const FloatPlane out =
        ComputeMultiScaleEdges(WrapPlane(60, 60, plane), false, false, {0.2F}, messages);
    FloatPlane edges = GradientStrength(Resized(plane, 60, 60, 12, 12), 12, 12);
    NormalisePlane(edges);
    const FloatPlane expected = Resized(GaussianSmooth(edges, 12, 12, 7, 0.5F), 12, 12, 60, 60);
    for (size_t i = 144; i < out.size(); ++i)
        ASSERT_EQ(out[i], expected[i]);
}

// ---- The edge map --------------------------------------------------------------------------

TEST(SlowCentreWeights, WeightsByHand)
{
    const float expected[] = {0.2F, 0.44721360F, 1.0F, 0.44721360F, 0.2F};
    for (int i = 0; i < 5; ++i)
        EXPECT_THAT(CentreWeight(i), FloatEq(expected[i]));
}

FloatPlane WeightedRow(int cols)
{
    FloatPlane row = Constant(cols, 1, 1.0F);
    CentreWeightColumns(row, cols, 1);
    return row;
}

TEST(SlowCentreWeights, StripsOfUnevenWidths)
{
    const float w0 = CentreWeight(0), w1 = CentreWeight(1);
    EXPECT_THAT(WeightedRow(5), ElementsAre(w0, w1, 1.0F, w1, w0));
    EXPECT_THAT(WeightedRow(7), ElementsAre(w0, w1, 1.0F, 1.0F, w1, w0, w0));
    EXPECT_THAT(WeightedRow(10), ElementsAre(w0, w0, w1, w1, 1.0F, 1.0F, w1, w1, w0, w0));
    const FloatPlane full = WeightedRow(640);
    EXPECT_EQ(full[127], w0);
    EXPECT_EQ(full[128], w1);
    EXPECT_EQ(full[255], w1);
    EXPECT_EQ(full[256], 1.0F);
    EXPECT_EQ(full[383], 1.0F);
    EXPECT_EQ(full[384], w1);
    EXPECT_EQ(full[512], w0);
}

// With 3 columns, strips 0 and 1 are both column 0 and strip 2 is empty. With 1 column all
// five strips are column 0, because -0.8 and -0.4 truncate to 0.
TEST(SlowCentreWeights, NarrowMapsAreWeightedMoreThanOnce)
{
    const float w0 = CentreWeight(0), w1 = CentreWeight(1);
    EXPECT_THAT(WeightedRow(3), ElementsAre(w0 * w1, w1, w0));
    EXPECT_THAT(WeightedRow(1), ElementsAre(w0 * w1 * 1.0F * w1 * w0));
}

TEST(SlowEdgeMap, FlatPictureHasNoEdges)
{
    // A flat plane stays flat to the bit when smoothed, since every pixel gets the same sums.
    const Picture picture = FlatPicture(30, 20, 90, 140, 33);
    EXPECT_THAT(ComputeEdgeStages(picture.Bytes.data(), 30, 20).EdgeMap, Each(0.0F));
}

TEST(SlowEdgeMap, EachStageFollowsFromTheOneBefore)
{
    const Picture picture = PseudoPhotograph(96, 64, 4);
    const EdgeStages e = ComputeEdgeStages(picture.Bytes.data(), 96, 64);

    float sum = 0.0F;
    for (size_t k = 0; k < 3; ++k)
        sum = sum + At(GradientStrength(e.Smoothed[k], 96, 64), 96, 50, 30);
    EXPECT_EQ(At(e.Summed, 96, 50, 30), sum);

    EXPECT_EQ(e.FirstLevel, Largest(e.Summed) * 0.1F);
    for (size_t i = 0; i < e.Summed.size(); ++i)
        EXPECT_EQ(e.Normalised[i] == 0.0F, e.Summed[i] < e.FirstLevel);
    EXPECT_THAT(Largest(e.Normalised), FloatEq(1.0F));

    EXPECT_EQ(e.SecondLevel, Largest(e.RowNormalised) * 0.3F);
    FloatPlane cleaned = e.RowNormalised;
    ThresholdBelow(cleaned, e.SecondLevel, 0.0F);
    ErodeBox(cleaned, 96, 64, 5);
    DilateBox(cleaned, 96, 64, 7);
    EXPECT_EQ(e.Cleaned, cleaned);
    EXPECT_EQ(Smallest(e.EdgeMap), 0.0F);
    EXPECT_THAT(Largest(e.EdgeMap), FloatEq(1.0F));
    for (size_t i = 0; i < e.EdgeMap.size(); ++i)
        EXPECT_EQ(e.EdgeMap[i] > 0.0F, e.Cleaned[i] > 0.0F);
}

// ---- The whole analysis --------------------------------------------------------------------

TEST(SlowWorkingSize, FollowsTheLongerSide)
{
    const WorkingSize usual = ComputeWorkingSize(640, 480);
    EXPECT_EQ(usual.ScaleFactor, 1.0F);
    EXPECT_EQ(usual.WorkCols, 640);
    EXPECT_EQ(usual.WorkRows, 480);
    const WorkingSize narrow = ComputeWorkingSize(1, 1280);
    EXPECT_EQ(narrow.ScaleFactor, 0.5F);
    EXPECT_EQ(narrow.WorkCols, 1);
    EXPECT_EQ(narrow.WorkRows, 640);
    EXPECT_EQ(ComputeWorkingSize(1, 1281).WorkCols, 0);
    EXPECT_EQ(ComputeWorkingSize(1281, 1).WorkRows, 0);
}

TEST(SlowBorderBand, IsAFractionOfTheShorterSide)
{
    EXPECT_EQ(ComputeBorderBand(640, 480), 72);
    EXPECT_EQ(ComputeBorderBand(6, 640), 1);
    EXPECT_EQ(ComputeBorderBand(640, 7), 1);
    EXPECT_EQ(ComputeBorderBand(13, 640), 1);
    EXPECT_EQ(ComputeBorderBand(640, 14), 2);
    EXPECT_EQ(ComputeBorderBand(1, 1), 1);
}

TEST(SlowBandGain, SideWithoutContrastHasAGainOf100)
{
    EXPECT_THAT(BandGain(0.0F), FloatEq(100.0F));
    EXPECT_THAT(BandGain(0.99F), FloatEq(1.0F));
}

TEST(SlowBandMean, BandsByHand)
{
    // 1 2 3
    // 4 5 6
    // 7 8 9, a band of 2
    const DoublePlane t = BuildSummedAreaTable({1, 2, 3, 4, 5, 6, 7, 8, 9}, 3, 3);
    EXPECT_EQ(BandMean(SideTop, t, 3, 3, 2), 3.5F);
    EXPECT_EQ(BandMean(SideBottom, t, 3, 3, 2), 6.5F);
    EXPECT_EQ(BandMean(SideLeft, t, 3, 3, 2), 4.5F);
    EXPECT_EQ(BandMean(SideRight, t, 3, 3, 2), 5.5F);
}

TEST(SlowBandMean, OneRowOrColumnIsTheWholeBand)
{
    const DoublePlane t = BuildSummedAreaTable({1, 2, 6}, 3, 1);
    EXPECT_EQ(BandMean(SideTop, t, 3, 1, 1), 3.0F);
    EXPECT_EQ(BandMean(SideBottom, t, 3, 1, 1), 3.0F);
    EXPECT_EQ(BandMean(SideLeft, t, 3, 1, 1), 1.0F);
    EXPECT_EQ(BandMean(SideRight, t, 3, 1, 1), 6.0F);
    EXPECT_EQ(BandMean(SideRight, t, 1, 3, 1), 3.0F);
}

TEST(SlowAnalysis, TooNarrowPicturesGiveAMessage)
{
    const Analysis a = AnalyseBytes({}, 1, 1281);
    EXPECT_FALSE(a.Built);
    EXPECT_THAT(a.ErrorLines, ElementsAre("Image aspect ratio is larger than 1:640! "));
    EXPECT_EQ(a.WorkCols, 0);
    EXPECT_EQ(a.WorkRows, 640);
    EXPECT_TRUE(a.ContrastMap.empty());
}

TEST(SlowAnalysis, ShortBuffersAreRejected)
{
    const Picture picture = NoisePicture(100, 100, 1);
    EXPECT_THROW(AnalysePicture(picture), std::invalid_argument);
}

// Only the first 640 of the 1280 pixels are read.
TEST(SlowAnalysis, LargerSourcesAreReadAtWorkingSize)
{
    const Picture source = NoisePicture(1, 1280, 3);
    const Analysis a = AnalyseBytes(source.Bytes, 1, 1280);
    const std::vector<uint8_t> front(source.Bytes.begin(), source.Bytes.begin() + 3 * 640);
    const Analysis b = AnalyseBytes(front, 1, 640);
    ASSERT_TRUE(a.Built);
    EXPECT_EQ(a.ScaleFactor, 0.5F);
    EXPECT_EQ(a.ContrastMap, b.ContrastMap);
    EXPECT_EQ(a.EdgeMap, b.EdgeMap);
    EXPECT_EQ(a.SideMaps[2], b.SideMaps[2]);
}

TEST(SlowAnalysis, FlatPicturesHaveEmptyMaps)
{
    for (const std::string name : {"black", "flat:128", "flat:255"}) {
        SCOPED_TRACE(name);
        const Analysis a = AnalysePicture(MakePicture(name, 640, 40));
        EXPECT_THAT(a.ContrastMap, Each(0.0F));
        EXPECT_THAT(a.SaliencyMap, Each(0.0F));
        EXPECT_THAT(a.ColorContrastMap, Each(0.0F));
        EXPECT_THAT(a.PeakMap, Each(0.0F));
        EXPECT_THAT(a.EdgeMap, Each(0.0F));
        for (int side = 0; side < 4; ++side) {
            EXPECT_THAT(a.SideMaps[side], Each(0.0F));
            EXPECT_THAT(a.SideGain[side], FloatEq(100.0F));
        }
        EXPECT_EQ(a.ContrastMaskTotal, 1e-10F);
        EXPECT_EQ(a.ColorContrastTotal, 1e-10F);
        EXPECT_EQ(a.EdgeTotal, 1e-10F);
        EXPECT_EQ(a.PeakTotal, 1e-10F);
    }
}

TEST(SlowAnalysis, ThinPicturesFillEveryMap)
{
    const int sizes[][2] = {{640, 1}, {1, 640}, {640, 2}, {4, 640}, {640, 26}};
    for (const auto& size : sizes)
        for (const std::string& name : PictureNames()) {
            SCOPED_TRACE(testing::Message() << name << " " << size[0] << " x " << size[1]);
            const Analysis a = AnalysePicture(MakePicture(name, size[0], size[1]));
            for (const FloatPlane* map :
                 {&a.ContrastMap, &a.SaliencyMap, &a.ContrastMask, &a.ColorContrastMap, &a.PeakMap,
                  &a.EdgeMap, &a.SideMaps[0], &a.SideMaps[1], &a.SideMaps[2], &a.SideMaps[3]}) {
                ASSERT_EQ(map->size(), static_cast<size_t>(size[0] * size[1]));
                for (const float v : *map)
                    ASSERT_TRUE(v >= 0.0F && v <= 1.000001F) << v;
            }
        }
}

// A side under 5 has no edges at either scale; 5 to 9 give one scaled row, and so does a side
// of 26 to 50 at the smaller scale.
TEST(SlowAnalysis, ThinPicturesLoseTheirEdges)
{
    const Analysis four = AnalysePicture(PseudoPhotograph(640, 4, 1));
    EXPECT_TRUE(four.ErrorLines.empty());
    EXPECT_THAT(four.SaliencyMap, Each(0.0F));
    EXPECT_THAT(Largest(four.ContrastMap), FloatEq(1.0F));

    const Analysis five = AnalysePicture(PseudoPhotograph(640, 5, 1));
    EXPECT_THAT(five.ErrorLines, ElementsAre(kNullPointerLine));
    EXPECT_GT(five.Saliency.Edges[100], 0.0F);
    EXPECT_THAT(FloatPlane(five.Saliency.Edges.begin() + 128, five.Saliency.Edges.end()),
                Each(0.0F));

    EXPECT_TRUE(AnalysePicture(PseudoPhotograph(640, 10, 1)).ErrorLines.empty());
    EXPECT_EQ(AnalysePicture(PseudoPhotograph(640, 26, 1)).ErrorLines.size(), 1U);
    EXPECT_TRUE(AnalysePicture(PseudoPhotograph(640, 51, 1)).ErrorLines.empty());
}

TEST(SlowAnalysis, PhotographMapsAreConsistent)
{
    const Analysis a = AnalysePicture(PseudoPhotograph(640, 300, 2));
    const size_t count = 640 * 300;
    EXPECT_EQ(a.BorderBand, 45);
    EXPECT_THAT(Largest(a.ContrastMap), FloatEq(1.0F));
    EXPECT_THAT(Largest(a.SaliencyMap), FloatEq(1.0F));

    const SaliencyStages& s = a.Saliency;
    for (size_t i = 0; i < count; ++i) {
        ASSERT_EQ(s.ColorContrastMap[i], std::min(s.TopJoint[i], s.BottomJoint[i]));
        ASSERT_EQ(a.ColorContrastMap[i],
                  s.ColorContrastMap[i] < a.ColorContrastLevel ? 0.0F : s.ColorContrastMap[i]);
        ASSERT_EQ(a.ContrastMask[i],
                  a.ContrastMap[i] < a.ContrastMaskLevel ? 0.0F : a.ContrastMap[i]);
        const float peak = a.ColorContrastMap[i] < a.PeakLevel ? 0.0F : a.ColorContrastMap[i];
        ASSERT_THAT(a.PeakMap[i], FloatEq(peak * peak * peak));
        for (int side = 0; side < 4; ++side)
            ASSERT_EQ(a.SideMaps[side][i],
                      s.SideMaps[side][i] < a.SideLevels[side] ? 0.0F : s.SideMaps[side][i]);
    }
    EXPECT_EQ(a.ColorContrastLevel, Largest(s.ColorContrastMap) * 0.2F);
    EXPECT_EQ(a.ContrastMaskLevel, Largest(a.ContrastMap) * 0.1F);
    EXPECT_EQ(a.PeakLevel, Largest(a.ColorContrastMap) * 0.5F);

    const std::pair<float, const FloatPlane*> totals[] = {
        {a.ContrastMaskTotal, &a.ContrastMask},
        {a.ColorContrastTotal, &a.ColorContrastMap},
        {a.EdgeTotal, &a.EdgeMap},
        {a.PeakTotal, &a.PeakMap}};
    for (const auto& total : totals) {
        double sum = 0.0;
        for (const float v : *total.second)
            sum += static_cast<double>(v);
        EXPECT_GT(sum, 1.0);
        EXPECT_NEAR(static_cast<double>(total.first) / sum, 1.0, 1e-6);
    }

    double bandSum = 0.0; // the lowest 45 rows of the bottom side's map
    for (size_t i = 640 * 255; i < count; ++i)
        bandSum += static_cast<double>(a.SideMaps[SideBottom][i]);
    EXPECT_NEAR(static_cast<double>(a.SideGain[SideBottom]), 1.0 / (bandSum / (640 * 45) + 0.01),
                1e-4);
}

} // namespace
} // namespace slowOracle
