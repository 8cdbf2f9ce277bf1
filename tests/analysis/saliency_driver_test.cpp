#include "analysis/saliency_driver.h"

#include <algorithm>
#include <cmath>
#include <thread>

#include <gtest/gtest.h>

#include "analysis/multi_scale_edges.h"
#include "analysis/strip_contrast.h"
#include "numeric/image_kernels.h"
#include "numeric/owned_stack.h"
#include "numeric/summed_area.h"
#include "numeric/vector_ops.h"
#include "test_pictures.h"

namespace vistaTrim {
namespace {

using namespace testPictures;

// The seven maps, each filled with a guard value before the call and one element longer.
struct Maps {
    std::vector<float> Planes[7];
    int32_t Cols, Rows;

    Maps(const Picture& picture) : Cols(picture.Cols), Rows(picture.Rows)
    {
        const size_t count = size_t(Cols) * size_t(Rows);
        for (std::vector<float>& plane : Planes)
            plane.assign(count + 1, -77.0f);
        SaliencyMapBuffers buffers = {
            Planes[0].data(),
            Planes[1].data(),
            Planes[2].data(),
            {Planes[3].data(), Planes[4].data(), Planes[5].data(), Planes[6].data()}};
        ComputeSaliencyMaps(picture.Bytes.data(), Cols, Rows, buffers);
        for (std::vector<float>& plane : Planes) {
            EXPECT_EQ(plane.back(), -77.0f);
            plane.pop_back();
        }
    }
    const std::vector<float>& Contrast() const
    {
        return Planes[0];
    }
    const std::vector<float>& Saliency() const
    {
        return Planes[1];
    }
    const std::vector<float>& ColorContrast() const
    {
        return Planes[2];
    }
    const std::vector<float>& Side(int k) const
    {
        return Planes[3 + k];
    }
};

float Largest(const std::vector<float>& map)
{
    return *std::max_element(map.begin(), map.end());
}

float Smallest(const std::vector<float>& map)
{
    return *std::min_element(map.begin(), map.end());
}

double LargestDifference(const std::vector<float>& a, const std::vector<float>& b)
{
    double largest = 0;
    for (size_t i = 0; i < a.size(); ++i)
        largest = std::max(largest, std::abs(double(a[i]) - b[i]));
    return largest;
}

std::vector<float> Mirrored(const std::vector<float>& map, int32_t cols)
{
    std::vector<float> mirrored = map;
    for (size_t row = 0; row < map.size(); row += size_t(cols))
        std::reverse(mirrored.begin() + long(row), mirrored.begin() + long(row) + cols);
    return mirrored;
}

std::vector<float> TurnedUpsideDown(const std::vector<float>& map, int32_t cols)
{
    return Mirrored({map.rbegin(), map.rend()}, cols);
}

TEST(SaliencyDriver, WritesEveryMapInFullAtAnySize)
{
    for (const auto& [cols, rows] : {std::pair(1, 1), std::pair(640, 1), std::pair(1, 640),
                                     std::pair(3, 2), std::pair(26, 33), std::pair(97, 51)}) {
        SCOPED_TRACE(testing::Message() << cols << " x " << rows);
        testing::internal::CaptureStderr(); // resizing to a width of one pixel prints an error
        const Maps maps(Noise(cols, rows, 1));
        testing::internal::GetCapturedStderr();
        for (const std::vector<float>& plane : maps.Planes) {
            EXPECT_GE(Smallest(plane), 0.0f);
            EXPECT_LE(Largest(plane), 1.0f + 1e-6f);
        }
    }
}

TEST(SaliencyDriver, NormalisesAllExceptTheColourContrast)
{
    const Maps maps(Blobs(160, 120, 3));
    for (int k : {0, 1, 3, 4, 5, 6}) {
        EXPECT_EQ(Smallest(maps.Planes[k]), 0.0f) << k;
        EXPECT_NEAR(Largest(maps.Planes[k]), 1.0f, 1e-6) << k;
    }
    EXPECT_GE(Smallest(maps.ColorContrast()), 0.0f);
    EXPECT_LE(Largest(maps.ColorContrast()), 1.0f);

    // Top dark, bottom light: each anchor contrasts with the other half, so the minimum is low.
    Picture split = Flat(120, 120, 20, 20, 20);
    for (int32_t r = 60; r < 120; ++r)
        for (int32_t c = 0; c < 120; ++c)
            split.Set(r, c, 220, 220, 220);
    const Maps ofSplit(split);
    EXPECT_LT(Largest(ofSplit.ColorContrast()), 0.9f);
    EXPECT_NEAR(Largest(ofSplit.Contrast()), 1.0f, 1e-6);
}

// The stages repeated in the stated order, each map from its own formula: min(T, B) of the joint
// contrasts alone; the enriched minimum; edges of the unsmoothed planes times contrast.
TEST(SaliencyDriver, FusesTheStagesInOrder)
{
    const Picture picture = Blobs(131, 97, 4);
    const int32_t cols = picture.Cols;
    const int32_t rows = picture.Rows;
    const int32_t n = cols * rows;
    const Maps maps(picture);

    COwnedStack ownPixels, ownBlurred, ownScratch;
    CPlaneStack& pixels = ownPixels.Handle();
    CPlaneStack& blurred = ownBlurred.Handle();
    CPlaneStack& scratch = ownScratch.Handle();
    pixels.Create(3, cols, rows);
    blurred.Create(3, cols, rows);
    scratch.Create(1, cols, rows);
    pixels.FillFromBytes(picture.Bytes.data());
    SmoothStack(pixels, blurred, double(0.7f));
    BuildTables(blurred);

    const auto contrast = [&](const CPlaneStack& stack, bool top) {
        if (top)
            ComputeTopContrast(stack, scratch, 0.25f);
        else
            ComputeBottomContrast(stack, scratch, 0.25f);
        return std::vector<float>(scratch.Planes[0], scratch.Planes[0] + n);
    };
    std::vector<float> top = contrast(blurred, true);
    std::vector<float> bottom = contrast(blurred, false);
    std::vector<float> color(static_cast<size_t>(n));
    std::vector<float> enriched(static_cast<size_t>(n));
    for (size_t i = 0; i < color.size(); ++i)
        color[i] = std::min(top[i], bottom[i]);
    for (const CPlaneStack& view : SplitPlaneViews(blurred)) {
        const std::vector<float> planeTop = contrast(view, true);
        const std::vector<float> planeBottom = contrast(view, false);
        CPlaneStack a, b;
        a.WrapPlaneOnly(cols, rows, top.data());
        b.WrapPlaneOnly(cols, rows, const_cast<float*>(planeTop.data()));
        AddPlanes(a, b, 0.33333334f);
        a.WrapPlaneOnly(cols, rows, bottom.data());
        b.WrapPlaneOnly(cols, rows, const_cast<float*>(planeBottom.data()));
        AddPlanes(a, b, 0.33333334f);
    }
    NormalisePlane(top.data(), n);
    NormalisePlane(bottom.data(), n);
    for (size_t i = 0; i < enriched.size(); ++i)
        enriched[i] = std::min(top[i], bottom[i]);
    NormalisePlane(enriched.data(), n);
    ComputeMultiScaleEdges(pixels, scratch, false, false, {0.04f, 0.2f});
    std::vector<float> saliency(static_cast<size_t>(n));
    VectorMul(n, scratch.Planes[0], enriched.data(), saliency.data());
    NormalisePlane(saliency.data(), n);

    EXPECT_EQ(maps.ColorContrast(), color);
    EXPECT_EQ(maps.Contrast(), enriched);
    EXPECT_EQ(maps.Saliency(), saliency);
}

TEST(SaliencyDriver, SideStripsAreAFifthOfTheShorterSide)
{
    // A light strip of 28 of 120 rows. A top strip of 24 rows holds only light pixels, even after
    // smoothing; one of 30 rows would hold dark ones too.
    Picture picture = Flat(160, 120, 60, 60, 60);
    for (int32_t r = 0; r < 28; ++r)
        for (int32_t c = 0; c < 160; ++c)
            picture.Set(r, c, 180, 180, 180);
    const Maps maps(picture);
    EXPECT_EQ(maps.Side(0)[80], 0.0f);            // its own strip
    EXPECT_EQ(maps.Side(0)[60 * 160 + 80], 1.0f); // the rest
    EXPECT_EQ(maps.Side(1)[60 * 160 + 80], 0.0f); // the bottom strip's colour
    EXPECT_EQ(maps.Side(1)[80], 1.0f);
}

TEST(SaliencyDriver, FlatPictureLeavesAllMapsNearZero)
{
    for (int value : {0, 16, 100, 255}) {
        SCOPED_TRACE(value);
        const Maps maps(Flat(160, 120, value, value / 2, 255 - value));
        for (const std::vector<float>& plane : maps.Planes)
            EXPECT_LE(Largest(plane), 1e-3f);
    }
}

TEST(SaliencyDriver, NarrowPictureHasEverythingExceptEdges)
{
    const Maps maps(Noise(4, 90, 2)); // both scales leave no pixel
    EXPECT_EQ(Largest(maps.Saliency()), 0.0f);
    EXPECT_NEAR(Largest(maps.Contrast()), 1.0f, 1e-6);
    for (int k = 0; k < 4; ++k)
        EXPECT_NEAR(Largest(maps.Side(k)), 1.0f, 1e-6);
}

// The statistics are differences of float table entries, which grow from the top left corner: a
// strip at the far sides loses more digits than its mirror image near the corner. Over sizes from
// 64 x 48 to 640 x 480, five seeds, blobs and noise, the contrasts of mirrored pictures differed by
// at most 1.2e-4, their colour contrasts by 2.3e-4, the side maps by 1.7e-3.
constexpr double kMirrorContrast = 6e-4;
constexpr double kMirrorSide = 5e-3;

// Left and right play the same role in the contrasts. The edges are left out: their second
// normalisation covers the first elements in memory order, so its last, partial row begins at the
// left in the picture and at the right in the mirrored one.
TEST(SaliencyDriver, MirroredPictureMirrorsContrastAndSwapsLeftAndRight)
{
    const Picture picture = Blobs(160, 120, 5);
    const Maps maps(picture);
    const Maps mirrored(MirroredLeftRight(picture));

    EXPECT_LE(LargestDifference(maps.Contrast(), Mirrored(mirrored.Contrast(), 160)),
              kMirrorContrast);
    EXPECT_LE(LargestDifference(maps.ColorContrast(), Mirrored(mirrored.ColorContrast(), 160)),
              kMirrorContrast);
    EXPECT_LE(LargestDifference(maps.Side(0), Mirrored(mirrored.Side(0), 160)), kMirrorSide);
    EXPECT_LE(LargestDifference(maps.Side(1), Mirrored(mirrored.Side(1), 160)), kMirrorSide);
    EXPECT_LE(LargestDifference(maps.Side(2), Mirrored(mirrored.Side(3), 160)), kMirrorSide);
    EXPECT_LE(LargestDifference(maps.Side(3), Mirrored(mirrored.Side(2), 160)), kMirrorSide);
    // The check is not vacuous: the picture does not mirror itself.
    EXPECT_GT(LargestDifference(maps.Contrast(), mirrored.Contrast()), 0.1);
    EXPECT_GT(LargestDifference(maps.Side(2), mirrored.Side(2)), 0.1);
}

TEST(SaliencyDriver, UpsideDownPictureSwapsTopAndBottom)
{
    const Picture picture = Blobs(160, 120, 6);
    const Maps maps(picture);
    const Maps turned(UpsideDown(picture));

    EXPECT_LE(LargestDifference(maps.Contrast(), TurnedUpsideDown(turned.Contrast(), 160)),
              kMirrorContrast);
    EXPECT_LE(LargestDifference(maps.Side(0), TurnedUpsideDown(turned.Side(1), 160)), kMirrorSide);
    EXPECT_LE(LargestDifference(maps.Side(1), TurnedUpsideDown(turned.Side(0), 160)), kMirrorSide);
    EXPECT_LE(LargestDifference(maps.Side(2), TurnedUpsideDown(turned.Side(2), 160)), kMirrorSide);
    EXPECT_GT(LargestDifference(maps.Side(0), turned.Side(0)), 0.1);
}

// No plane is weighted and no colour transform is applied: the order of the bytes affects only
// rounding.
TEST(SaliencyDriver, SwappedBytesChangeNothingButRounding)
{
    const Picture picture = Blobs(160, 120, 7);
    const Maps maps(picture);
    for (const auto& [a, b] : {std::pair(0, 1), std::pair(0, 2), std::pair(1, 2)}) {
        const Maps swapped(SwappedBytes(picture, a, b));
        for (int k = 0; k < 7; ++k)
            EXPECT_LE(LargestDifference(maps.Planes[k], swapped.Planes[k]), 2e-5) << k;
    }
}

TEST(SaliencyDriver, TwoThreadsGiveTheSameBitsAsOne)
{
    const Picture first = Blobs(320, 240, 8);
    const Picture second = Noise(240, 320, 9);
    const Maps aloneFirst(first);
    const Maps aloneSecond(second);

    std::unique_ptr<Maps> threadFirst, threadSecond;
    std::thread a([&] { threadFirst = std::make_unique<Maps>(first); });
    std::thread b([&] { threadSecond = std::make_unique<Maps>(second); });
    a.join();
    b.join();

    for (int k = 0; k < 7; ++k) {
        EXPECT_EQ(threadFirst->Planes[k], aloneFirst.Planes[k]) << k;
        EXPECT_EQ(threadSecond->Planes[k], aloneSecond.Planes[k]) << k;
    }
}

TEST(PlaneViews, ShareThePlanesAndTablesOfTheirStack)
{
    CPlaneStack stack;
    stack.Create(3, 6, 5);
    for (float* plane : stack.Planes)
        std::fill_n(plane, 30, 2.0f);
    BuildTables(stack);

    const std::vector<CPlaneStack> views = SplitPlaneViews(stack);

    ASSERT_EQ(views.size(), 3u);
    const size_t ownPairs[3] = {0, 3, 5};
    for (size_t p = 0; p < 3; ++p) {
        EXPECT_EQ(views[p].Planes, std::vector<float*>{stack.Planes[p]});
        EXPECT_EQ(views[p].PlaneTables, std::vector<float*>{stack.PlaneTables[p]});
        EXPECT_EQ(views[p].PairTables, std::vector<float*>{stack.PairTables[ownPairs[p]]});
        EXPECT_EQ(views[p].Cols, 6);
        EXPECT_EQ(views[p].Rows, 5);
        EXPECT_EQ(views[p].PlaneCount, 1);
        EXPECT_EQ(views[p].ElementCount, 30);
        EXPECT_TRUE(views[p].TablesBuilt);
    }
    stack.Release();
}

} // namespace
} // namespace vistaTrim
