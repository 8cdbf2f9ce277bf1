#include "scoring/crop_analyzer.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <thread>

#include <gtest/gtest.h>

#include "analysis/multi_scale_edges.h"
#include "analysis/saliency_driver.h"
#include "numeric/image_kernels.h"
#include "numeric/summed_area.h"
#include "numeric/vector_ops.h"
#include "test_pictures.h"

namespace vistaTrim {
namespace {

using namespace testPictures;

float Largest(const CFloatMatrix& map)
{
    return *std::max_element(map.Data, map.Data + map.Count);
}

double Total(const CFloatMatrix& map)
{
    double sum = 0;
    for (uint32_t i = 0; i < map.Count; ++i)
        sum += map.Data[i];
    return sum;
}

bool SameBits(const CFloatMatrix& a, const CFloatMatrix& b)
{
    return a.Rows == b.Rows && a.Cols == b.Cols && std::equal(a.Data, a.Data + a.Count, b.Data);
}

bool SameBits(const CDoubleMatrix& a, const CDoubleMatrix& b)
{
    return a.Rows == b.Rows && a.Cols == b.Cols && std::equal(a.Data, a.Data + a.Count, b.Data);
}

void TablesInMapOrder(const CCropAnalyzer& a, const CDoubleMatrix* out[10])
{
    out[0] = &a.ContrastTable;
    out[1] = &a.SaliencyTable;
    out[2] = &a.ContrastMaskTable;
    out[3] = &a.ColorContrastTable;
    out[4] = &a.PeakTable;
    out[5] = &a.EdgeTable;
    for (int side = 0; side < 4; ++side)
        out[6 + side] = &a.SideTables[side];
}

TEST(CropAnalyzer, A640By480PictureKeepsItsSize)
{
    const auto analyzer = Analyse(Blobs(640, 480, 1));
    EXPECT_EQ(analyzer->ScaleFactor, 1.0f);
    EXPECT_EQ(analyzer->WorkCols, 640);
    EXPECT_EQ(analyzer->WorkRows, 480);
    EXPECT_EQ(analyzer->SourceCols, 640);
    EXPECT_EQ(analyzer->SourceRows, 480);
    EXPECT_EQ(analyzer->BorderBand, 72);
    EXPECT_TRUE(analyzer->RectsOfInterest.empty());
    EXPECT_TRUE(analyzer->SelectedCrops.empty());
}

TEST(CropAnalyzer, GivesEveryMapAndTableTheWorkingSize)
{
    const struct {
        int32_t Cols, Rows, Band;
    } cases[] = {{640, 480, 72}, {480, 640, 72}, {640, 640, 96}, {640, 427, 64},
                 {640, 64, 9},   {640, 26, 3},   {640, 14, 2},   {640, 7, 1},
                 {640, 6, 1},    {640, 2, 1},    {640, 1, 1},    {1, 640, 1}};
    for (const auto& [cols, rows, band] : cases) {
        SCOPED_TRACE(testing::Message() << cols << " x " << rows);
        testing::internal::CaptureStderr(); // resizing to a width of one pixel prints an error
        const auto analyzer = Analyse(Blobs(cols, rows, 2));
        testing::internal::GetCapturedStderr();

        EXPECT_EQ(analyzer->WorkCols, cols);
        EXPECT_EQ(analyzer->WorkRows, rows);
        EXPECT_EQ(analyzer->BorderBand, band);
        const CDoubleMatrix* tables[10];
        TablesInMapOrder(*analyzer, tables);
        const std::vector<NamedFloats> maps = AllMaps(*analyzer);
        for (size_t k = 0; k < maps.size(); ++k) {
            SCOPED_TRACE(maps[k].Name);
            const CFloatMatrix& map = *maps[k].Map;
            ASSERT_EQ(map.Rows, uint32_t(rows));
            ASSERT_EQ(map.Cols, uint32_t(cols));
            for (uint32_t i = 0; i < map.Count; ++i)
                ASSERT_TRUE(map.Data[i] >= 0.0f && map.Data[i] <= 1.0f + 1e-6f) << i;

            CDoubleMatrix expected;
            expected.Resize(map.Rows, map.Cols);
            BuildSummedAreaTable(map, expected);
            EXPECT_TRUE(SameBits(*tables[k], expected));
        }
        for (float gain : analyzer->SideGain)
            EXPECT_TRUE(gain > 0.9f && gain <= 100.001f) << gain;
    }
}

// Half the width is half a pixel, which rounds to one. The analyzer reads 1 x 640 pixels of
// the 1 x 1280 that the image holds.
TEST(CropAnalyzer, OneBy1280IsReadAsOneBy640)
{
    Picture picture = Noise(1, 1280, 3);
    testing::internal::CaptureStderr();
    const auto analyzer = Analyse(picture);
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(analyzer->ScaleFactor, 0.5f);
    EXPECT_EQ(analyzer->WorkCols, 1);
    EXPECT_EQ(analyzer->WorkRows, 640);
    EXPECT_EQ(analyzer->ContrastMap.Count, 640u);

    std::fill(picture.Bytes.begin() + 640 * 3, picture.Bytes.end(), uint8_t(0));
    testing::internal::CaptureStderr();
    const auto firstHalf = Analyse(picture);
    testing::internal::GetCapturedStderr();
    EXPECT_TRUE(SameBits(analyzer->ContrastMap, firstHalf->ContrastMap));
}

TEST(CropAnalyzer, OneBy1281IsRejectedWithAMessage)
{
    for (const auto& [cols, rows] : {std::pair(1, 1281), std::pair(1281, 1)}) {
        SCOPED_TRACE(testing::Message() << cols << " x " << rows);
        testing::internal::CaptureStderr();
        const auto analyzer = Analyse(Noise(cols, rows, 4));
        EXPECT_EQ(testing::internal::GetCapturedStderr(),
                  "Image aspect ratio is larger than 1:640! \n");

        EXPECT_EQ(std::min(analyzer->WorkCols, analyzer->WorkRows), 0);
        EXPECT_EQ(std::max(analyzer->WorkCols, analyzer->WorkRows), 640);
        EXPECT_EQ(analyzer->SourceCols, cols);
        EXPECT_EQ(analyzer->SourceRows, rows);
        for (const NamedFloats& map : AllMaps(*analyzer)) {
            EXPECT_EQ(map.Map->Count, 0u) << map.Name;
            EXPECT_EQ(map.Map->Data, nullptr) << map.Name;
        }
        EXPECT_EQ(analyzer->EdgeTable.Count, 0u);
        EXPECT_EQ(analyzer->BorderBand, 0);
        EXPECT_EQ(analyzer->ContrastMaskTotal, 0.0f);
        EXPECT_EQ(analyzer->ColorContrastTotal, 0.0f);
        EXPECT_EQ(analyzer->EdgeTotal, 0.0f);
        EXPECT_EQ(analyzer->PeakTotal, 0.0f);
        for (float gain : analyzer->SideGain)
            EXPECT_EQ(gain, 0.0f);
    }
}

// Nothing is resampled: of a larger picture, the first 640 x 480 pixels in the buffer are read as
// rows of 640, so every map is that of the sheared beginning.
TEST(CropAnalyzer, LargerPictureIsReadWithTheWrongRowLength)
{
    const Picture large = Blobs(800, 600, 5);
    Picture sheared(640, 480);
    std::copy_n(large.Bytes.begin(), sheared.Bytes.size(), sheared.Bytes.begin());

    const auto ofLarge = Analyse(large);
    const auto ofSheared = Analyse(sheared);

    EXPECT_EQ(ofLarge->ScaleFactor, 0.8f);
    EXPECT_EQ(ofLarge->SourceCols, 800);
    EXPECT_EQ(ofLarge->WorkCols, 640);
    const std::vector<NamedFloats> a = AllMaps(*ofLarge);
    const std::vector<NamedFloats> b = AllMaps(*ofSheared);
    for (size_t k = 0; k < a.size(); ++k)
        EXPECT_TRUE(SameBits(*a[k].Map, *b[k].Map)) << a[k].Name;
}

// Three bytes per pixel are read whatever the image's channel count, so an image of four bytes per
// pixel gives the maps of the first three quarters of its bytes, sheared.
TEST(CropAnalyzer, ReadsThreeBytesPerPixelWhateverTheChannelCount)
{
    const Picture bytes = Blobs(640, 40, 6); // the bytes of 640 x 30 pixels of four
    const int32_t offsets[4] = {0, 1, 2, 3};
    const ImageHolder fourChannels(CreateImageObj(30, 640, 4, offsets, bytes.Bytes.data()));
    const CCropAnalyzer analyzer(fourChannels.get());

    Picture read(640, 30);
    std::copy_n(bytes.Bytes.begin(), read.Bytes.size(), read.Bytes.begin());
    const auto expected = Analyse(read);
    EXPECT_EQ(analyzer.WorkRows, 30);
    const std::vector<NamedFloats> maps = AllMaps(analyzer);
    const std::vector<NamedFloats> expectedMaps = AllMaps(*expected);
    for (size_t k = 0; k < maps.size(); ++k) {
        ASSERT_EQ(maps[k].Map->Count, 640u * 30u) << maps[k].Name;
        EXPECT_TRUE(
            std::equal(maps[k].Map->Data, maps[k].Map->Data + 640 * 30, expectedMaps[k].Map->Data))
            << maps[k].Name;
    }
    for (int side = 0; side < 4; ++side)
        EXPECT_EQ(analyzer.SideGain[side], expected->SideGain[side]);
    EXPECT_EQ(analyzer.PeakTotal, expected->PeakTotal);
}

TEST(CropAnalyzer, WorkingLengthRoundsToTheNearest)
{
    EXPECT_EQ(Analyse(Noise(1280, 855, 6))->WorkRows, 428); // 427.5
    EXPECT_EQ(Analyse(Noise(1280, 854, 6))->WorkRows, 427);
    EXPECT_EQ(Analyse(Noise(1280, 853, 6))->WorkRows, 427); // 426.5
}

// Kept values are those at or above the level; the maximum always is.
void ExpectThresholded(const CFloatMatrix& map, double fraction)
{
    const float level = static_cast<float>(double(Largest(map)) * fraction);
    bool cleared = false;
    for (uint32_t i = 0; i < map.Count; ++i) {
        ASSERT_TRUE(map.Data[i] == 0.0f || map.Data[i] >= level) << i;
        cleared = cleared || map.Data[i] == 0.0f;
    }
    EXPECT_TRUE(cleared);
}

TEST(CropAnalyzer, ClearsTheWeakValuesOfEachMapAtItsFraction)
{
    const auto analyzer = Analyse(Blobs(640, 360, 7));
    ExpectThresholded(analyzer->ContrastMask, 0.1f);
    ExpectThresholded(analyzer->ColorContrastMap, 0.2f);
    ExpectThresholded(analyzer->PeakMap, std::pow(double(0.5f), 3.0) * (1 - 1e-6));
    for (int side = 0; side < 4; ++side)
        ExpectThresholded(analyzer->SideMaps[side], 0.01f);

    // The contrast and the saliency are not thresholded.
    const CFloatMatrix& contrast = analyzer->ContrastMap;
    EXPECT_TRUE(std::any_of(contrast.Data, contrast.Data + contrast.Count,
                            [](float v) { return v > 0.0f && v < 0.1f; }));
    const CFloatMatrix& saliency = analyzer->SaliencyMap;
    EXPECT_TRUE(std::any_of(saliency.Data, saliency.Data + saliency.Count,
                            [](float v) { return v > 0.0f && v < 0.01f; }));
}

// Compares every value with the maps that the saliency stages produce.
TEST(CropAnalyzer, KeepsEveryValueAtOrAboveItsLevel)
{
    const Picture picture = Blobs(640, 360, 16);
    const auto analyzer = Analyse(picture);
    CFloatMatrix raw[7];
    for (CFloatMatrix& map : raw)
        map.Resize(360, 640);
    SaliencyMapBuffers buffers = {raw[0].Data,
                                  raw[1].Data,
                                  raw[2].Data,
                                  {raw[3].Data, raw[4].Data, raw[5].Data, raw[6].Data}};
    ComputeSaliencyMaps(picture.Bytes.data(), 640, 360, buffers);

    const auto expectCleared = [](const CFloatMatrix& map, const CFloatMatrix& before,
                                  float fraction) {
        const float level = static_cast<float>(double(Largest(before)) * double(fraction));
        for (uint32_t i = 0; i < map.Count; ++i)
            ASSERT_EQ(map.Data[i], before.Data[i] < level ? 0.0f : before.Data[i]) << i;
    };
    EXPECT_TRUE(SameBits(analyzer->ContrastMap, raw[0]));
    EXPECT_TRUE(SameBits(analyzer->SaliencyMap, raw[1]));
    expectCleared(analyzer->ColorContrastMap, raw[2], 0.2f);
    for (int side = 0; side < 4; ++side)
        expectCleared(analyzer->SideMaps[side], raw[3 + side], 0.01f);
}

TEST(CropAnalyzer, MaskIsTheContrastWithoutItsWeakValues)
{
    const auto analyzer = Analyse(Blobs(640, 360, 8));
    const float level = static_cast<float>(double(Largest(analyzer->ContrastMap)) * double(0.1f));
    for (uint32_t i = 0; i < analyzer->ContrastMap.Count; ++i) {
        const float v = analyzer->ContrastMap.Data[i];
        ASSERT_EQ(analyzer->ContrastMask.Data[i], v < level ? 0.0f : v) << i;
    }
}

TEST(CropAnalyzer, PeaksAreTheCubeOfTheStrongestColourContrast)
{
    const auto analyzer = Analyse(Blobs(640, 360, 9));
    const float level =
        static_cast<float>(double(Largest(analyzer->ColorContrastMap)) * double(0.5f));
    for (uint32_t i = 0; i < analyzer->PeakMap.Count; ++i) {
        const double v = analyzer->ColorContrastMap.Data[i];
        const double cube = v < level ? 0.0 : v * v * v;
        // One unit in the last place of the power.
        ASSERT_NEAR(analyzer->PeakMap.Data[i], cube, cube * 1.2e-7) << i;
    }
}

TEST(CropAnalyzer, EdgesAreWeightedByColumnsInSteps)
{
    // Five fifths of 128 columns, each with the same bright block in its middle.
    Picture picture = Flat(640, 480, 60, 60, 60);
    for (int32_t fifth = 0; fifth < 5; ++fifth)
        for (int32_t r = 190; r < 290; ++r)
            for (int32_t c = 44; c < 84; ++c)
                picture.Set(r, fifth * 128 + c, 200, 200, 200);
    const auto analyzer = Analyse(picture);

    float peaks[5] = {};
    for (uint32_t r = 0; r < 480; ++r)
        for (uint32_t c = 0; c < 640; ++c)
            peaks[c / 128] = std::max(peaks[c / 128], analyzer->EdgeMap.Data[r * 640 + c]);

    // The blocks are equal up to the last bits of the normalisation.
    const double weights[5] = {0.2, std::sqrt(0.2), 1.0, std::sqrt(0.2), 0.2};
    for (int k = 0; k < 5; ++k)
        EXPECT_NEAR(peaks[k], weights[k], 1e-6) << k;
}

// Repeats the cleaning with the kernels themselves.
TEST(CropAnalyzer, CleansItsEdgesInOrder)
{
    for (const auto& [cols, rows] : {std::pair(640, 360), std::pair(200, 640), std::pair(3, 640)}) {
        SCOPED_TRACE(testing::Message() << cols << " x " << rows);
        const Picture picture = Noise(cols, rows, 17);
        const int32_t count = cols * rows;
        CFloatMatrix planes[3];
        CFloatMatrix gradient;
        CFloatMatrix edges;
        for (CFloatMatrix& plane : planes)
            plane.Resize(uint32_t(rows), uint32_t(cols));
        gradient.Resize(uint32_t(rows), uint32_t(cols));
        edges.ResizeZeroed(uint32_t(rows), uint32_t(cols));
        float* const smoothed[3] = {planes[0].Data, planes[1].Data, planes[2].Data};
        BlurInterleavedPixels(picture.Bytes.data(), cols, rows, 2.0f, smoothed);
        for (const CFloatMatrix& plane : planes) {
            GradientStrength(plane.Data, gradient.Data, cols, rows);
            VectorAdd(count, edges.Data, gradient.Data, edges.Data);
        }
        ThresholdBelow(edges, static_cast<float>(double(Largest(edges)) * double(0.1f)), 0.0f);
        NormalisePlane(edges.Data, count);
        CPlaneStack stack;
        stack.WrapPlane(cols, rows, edges.Data);
        NormaliseRowsBySum(stack);
        ThresholdBelow(edges, static_cast<float>(double(Largest(edges)) * double(0.3f)), 0.0f);
        ErodeBox(edges, 5);
        DilateBox(edges, 7);
        const float outer = static_cast<float>(double(std::sqrt(0.2f)) * double(std::sqrt(0.2f)));
        const float weights[5] = {outer, std::sqrt(0.2f), 1.0f, std::sqrt(0.2f), outer};
        for (int32_t i = 0; i < 5; ++i) {
            const int32_t first = int32_t(i * double(cols) / 5.0);
            const int32_t last = int32_t((i + 1) * double(cols) / 5.0 - 1.0);
            ScaleColumns(edges, first, last - first + 1, weights[i]);
        }
        NormalisePlane(edges.Data, count);

        testing::internal::CaptureStderr();
        const auto analyzer = Analyse(picture);
        testing::internal::GetCapturedStderr();
        EXPECT_TRUE(SameBits(analyzer->EdgeMap, edges));
        EXPECT_GT(Total(edges), 0.0);
    }
}

TEST(CropAnalyzer, LoneEdgeBeatsTheSameEdgeAmongMany)
{
    // One block above, a comb of blocks below, all inside the middle fifth or all outside it.
    Picture picture = Flat(640, 480, 60, 60, 60);
    for (int32_t r = 60; r < 160; ++r)
        for (int32_t c = 300; c < 340; ++c)
            picture.Set(r, c, 200, 200, 200);
    for (int32_t r = 300; r < 400; ++r)
        for (int32_t c = 20; c < 620; ++c)
            if (c / 40 % 2 == 1)
                picture.Set(r, c, 200, 200, 200);
    const auto analyzer = Analyse(picture);

    const auto strongest = [&](uint32_t firstRow, uint32_t lastRow) {
        return *std::max_element(analyzer->EdgeMap.Data + firstRow * 640,
                                 analyzer->EdgeMap.Data + lastRow * 640);
    };
    EXPECT_GT(strongest(90, 130), 2 * strongest(330, 370));
}

TEST(CropAnalyzer, FlatPictureHasEmptyMapsAndFlooredTotals)
{
    // Black stays exactly zero through every stage.
    const auto analyzer = Analyse(Flat(640, 360, 0, 0, 0));
    for (const NamedFloats& map : AllMaps(*analyzer))
        EXPECT_EQ(Largest(*map.Map), 0.0f) << map.Name;
    EXPECT_EQ(analyzer->ContrastMaskTotal, 1e-10f);
    EXPECT_EQ(analyzer->ColorContrastTotal, 1e-10f);
    EXPECT_EQ(analyzer->EdgeTotal, 1e-10f);
    EXPECT_EQ(analyzer->PeakTotal, 1e-10f);
    for (float gain : analyzer->SideGain)
        EXPECT_EQ(gain, static_cast<float>(1.0 / double(0.01f)));
}

TEST(CropAnalyzer, FlatPictureOfAnyColourLeavesAllMapsNearZero)
{
    for (const auto& [a, b, c] :
         {std::tuple(255, 255, 255), std::tuple(100, 50, 201), std::tuple(16, 128, 77)}) {
        const auto analyzer = Analyse(Flat(640, 480, a, b, c));
        for (const NamedFloats& map : AllMaps(*analyzer))
            EXPECT_LE(Largest(*map.Map), 1e-3f) << map.Name << " of " << a;
        for (float gain : analyzer->SideGain)
            EXPECT_GE(gain, 90.0f);
    }
}

TEST(CropAnalyzer, TotalsAreTheSumsOfTheMaps)
{
    const auto analyzer = Analyse(Blobs(640, 360, 10));
    // Double additions in another order: some 1e5 roundings of 1e-16 each.
    EXPECT_NEAR(analyzer->ContrastMaskTotal / Total(analyzer->ContrastMask), 1, 1e-7);
    EXPECT_NEAR(analyzer->ColorContrastTotal / Total(analyzer->ColorContrastMap), 1, 1e-7);
    EXPECT_NEAR(analyzer->EdgeTotal / Total(analyzer->EdgeMap), 1, 1e-7);
    EXPECT_NEAR(analyzer->PeakTotal / Total(analyzer->PeakMap), 1, 1e-7);
}

TEST(CropAnalyzer, GainsAreTheReciprocalMeanOfTheSidesOwnBand)
{
    for (const auto& [cols, rows] : {std::pair(640, 480), std::pair(200, 640), std::pair(640, 1),
                                     std::pair(1, 640), std::pair(640, 7)}) {
        SCOPED_TRACE(testing::Message() << cols << " x " << rows);
        testing::internal::CaptureStderr();
        const auto analyzer = Analyse(Blobs(cols, rows, 11));
        testing::internal::GetCapturedStderr();
        const int32_t b = analyzer->BorderBand;
        const int32_t r1 = analyzer->WorkRows;
        const int32_t c1 = analyzer->WorkCols;
        const int32_t bands[4][4] = {// first row, first column, rows, columns
                                     {0, 0, b, c1},
                                     {r1 - b, 0, b, c1},
                                     {0, 0, r1, b},
                                     {0, c1 - b, r1, b}};
        for (int side = 0; side < 4; ++side) {
            const auto& [firstRow, firstCol, bandRows, bandCols] = bands[side];
            double sum = 0;
            for (int32_t r = firstRow; r < firstRow + bandRows; ++r)
                for (int32_t c = firstCol; c < firstCol + bandCols; ++c)
                    sum += analyzer->SideMaps[side].Data[r * c1 + c];
            const double mean = sum / (double(bandRows) * bandCols);
            EXPECT_NEAR(analyzer->SideGain[side] * (mean + double(0.01f)), 1.0, 2e-6) << side;
        }
    }
}

// To the bit: optimisers have dropped the rounding of the mean.
TEST(CropAnalyzer, GainsRoundTheMeanToFloatBeforeTheOffset)
{
    for (const Picture& picture : {Blobs(640, 480, 1), Blobs(480, 640, 2), Blobs(640, 640, 3),
                                   Noise(640, 427, 5), Noise(640, 480, 6)}) {
        const auto analyzer = Analyse(picture);
        const int32_t depth = analyzer->BorderBand;
        const int32_t lastRow = analyzer->WorkRows - 1;
        const int32_t lastCol = analyzer->WorkCols - 1;
        const int32_t bands[4][4] = {{0, 0, depth - 1, lastCol},
                                     {lastRow - depth + 1, 0, lastRow, lastCol},
                                     {0, 0, lastRow, depth - 1},
                                     {0, lastCol - depth + 1, lastRow, lastCol}};
        for (int side = 0; side < 4; ++side) {
            const int32_t* const band = bands[side];
            const double pixels =
                static_cast<double>(depth) * (side < 2 ? lastCol + 1 : lastRow + 1);
            const volatile float mean = static_cast<float>(
                RegionMean(analyzer->SideTables[side], band[0], band[1], band[2], band[3], pixels));
            EXPECT_EQ(
                analyzer->SideGain[side],
                static_cast<float>(1.0 / (static_cast<double>(mean) + static_cast<double>(0.01f))))
                << picture.Cols << " x " << picture.Rows << ", side " << side;
        }
    }
}

TEST(CropAnalyzer, MirroredPictureSwapsLeftAndRight)
{
    const Picture picture = Blobs(640, 400, 12);
    const auto plain = Analyse(picture);
    const auto mirrored = Analyse(MirroredLeftRight(picture));
    // Statistics read far from the corner where the float tables begin lose more digits: over sizes
    // and seeds mirrored contrasts differed by up to 2.3e-4 and side maps by 1.7e-3. A value at its
    // threshold may fall on either side of it.
    const auto expectMirrored = [](const CFloatMatrix& a, const CFloatMatrix& b, double tolerance) {
        int flips = 0;
        for (uint32_t r = 0; r < a.Rows; ++r)
            for (uint32_t c = 0; c < a.Cols; ++c) {
                const float x = a.Data[r * a.Cols + c];
                const float y = b.Data[r * a.Cols + a.Cols - 1 - c];
                if ((x == 0.0f) != (y == 0.0f))
                    ++flips;
                else
                    ASSERT_NEAR(x, y, tolerance) << r << ", " << c;
            }
        EXPECT_LE(flips, 20); // 4 of 256,000 in the worst map here
    };
    expectMirrored(plain->ContrastMap, mirrored->ContrastMap, 6e-4);
    expectMirrored(plain->ColorContrastMap, mirrored->ColorContrastMap, 6e-4);
    expectMirrored(plain->SideMaps[0], mirrored->SideMaps[0], 5e-3);
    expectMirrored(plain->SideMaps[2], mirrored->SideMaps[3], 5e-3);
    expectMirrored(plain->SideMaps[3], mirrored->SideMaps[2], 5e-3);
    EXPECT_NEAR(plain->SideGain[2] / mirrored->SideGain[3], 1, 5e-3);
    EXPECT_NEAR(plain->SideGain[3] / mirrored->SideGain[2], 1, 5e-3);
}

TEST(CropAnalyzer, TwoThreadsGiveTheSameBitsAsOne)
{
    const Picture first = Blobs(640, 480, 13);
    const Picture second = Noise(480, 640, 14);
    const auto aloneFirst = Analyse(first);
    const auto aloneSecond = Analyse(second);

    std::unique_ptr<CCropAnalyzer> threadFirst, threadSecond;
    std::thread a([&] { threadFirst = Analyse(first); });
    std::thread b([&] { threadSecond = Analyse(second); });
    a.join();
    b.join();

    const auto expectSame = [](const CCropAnalyzer& x, const CCropAnalyzer& y) {
        const std::vector<NamedFloats> mapsX = AllMaps(x);
        const std::vector<NamedFloats> mapsY = AllMaps(y);
        const CDoubleMatrix* tablesX[10];
        const CDoubleMatrix* tablesY[10];
        TablesInMapOrder(x, tablesX);
        TablesInMapOrder(y, tablesY);
        for (size_t k = 0; k < 10; ++k) {
            EXPECT_TRUE(SameBits(*mapsX[k].Map, *mapsY[k].Map)) << mapsX[k].Name;
            EXPECT_TRUE(SameBits(*tablesX[k], *tablesY[k])) << mapsX[k].Name;
        }
        EXPECT_TRUE(std::equal(x.SideGain, x.SideGain + 4, y.SideGain));
    };
    expectSame(*threadFirst, *aloneFirst);
    expectSame(*threadSecond, *aloneSecond);
}

// The analysis is complete when the constructor returns: the image may be destroyed.
TEST(CropAnalyzer, KeepsNoReferenceToTheImage)
{
    ImageHolder image = MakeImage(Blobs(640, 480, 15));
    const CCropAnalyzer analyzer(image.get());
    const float before = analyzer.ContrastMap.Data[1000];
    image.reset();
    EXPECT_EQ(analyzer.ContrastMap.Data[1000], before);
    EXPECT_GT(Total(analyzer.ContrastMap), 0.0);
}

} // namespace
} // namespace vistaTrim
