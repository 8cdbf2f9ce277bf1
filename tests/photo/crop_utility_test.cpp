// Checks parts of crops against sums over cells, and ranks against counting.
#include <algorithm>
#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "ranking/crop_utility.h"
#include "ranking/input_grid.h"

namespace vistaTrim::photo {
namespace {

constexpr PixelSize kPicture = {640, 427};

std::vector<float> NoisePlanes()
{
    std::vector<float> planes;
    std::mt19937 random(8);
    for (int i = 0; i < kNumCropParts * kGridCells; ++i)
        planes.push_back(static_cast<float>(random()) / 2147483648.0F - 1.0F);
    return planes;
}

CInt32CropRect RandomCrop(std::mt19937& random)
{
    const auto below = [&random](int limit) {
        return static_cast<int>(random() % static_cast<unsigned>(limit));
    };
    CInt32CropRect crop;
    crop.Left = below(300);
    crop.Top = below(200);
    crop.Right = std::min(kPicture.Width - 1, crop.Left + 200 + below(300));
    crop.Bottom = std::min(kPicture.Height - 1, crop.Top + 130 + below(200));
    crop.Score.Scored = true;
    crop.Score.CompositionScore = below(100) / 100.0;
    crop.Score.CoverageScore = below(100) / 100.0;
    crop.Score.BorderScore = below(100) / 100.0;
    crop.Score.PeakScore = below(100) / 100.0;
    crop.Score.CentrePeakScore = below(100) / 100.0;
    return crop;
}

double Covered(double low, double high, int cell)
{
    return std::max(0.0, std::min(high * kGridSide, cell + 1.0) -
                             std::max(low * kGridSide, static_cast<double>(cell)));
}

double SlowPart(const std::vector<float>& planes, int plane, double x0, double y0, double x1,
                double y1)
{
    double sum = 0;
    for (int r = 0; r < kGridSide; ++r)
        for (int c = 0; c < kGridSide; ++c)
            sum += static_cast<double>(
                       planes[static_cast<size_t>(plane * kGridCells + r * kGridSide + c)]) *
                   Covered(x0, x1, c) * Covered(y0, y1, r);
    return sum / kGridCells;
}

TEST(PartSums, MatchSlowSumsOverCells)
{
    const std::vector<float> planes = NoisePlanes();
    const PartSums parts(planes);
    std::mt19937 random(9);
    for (int i = 0; i < 200; ++i) {
        CInt32CropRect crop = RandomCrop(random);
        if (i == 0)
            crop = CInt32CropRect(0, kPicture.Width - 1, 0, kPicture.Height - 1);
        const double x0 = static_cast<double>(crop.Left) / kPicture.Width;
        const double x1 = (crop.Right + 1.0) / kPicture.Width;
        const double y0 = static_cast<double>(crop.Top) / kPicture.Height;
        const double y1 = (crop.Bottom + 1.0) / kPicture.Height;
        const double w = x1 - x0;
        const double h = y1 - y0;
        const double o = 0.0625;
        double expected = SlowPart(planes, 0, x0, y0, x1, y1) / 0.3;
        expected += SlowPart(planes, 1, x0, y0, x1, y1) / (w * h);
        expected += SlowPart(planes, 2, x0, y0, x0 + w / 8, y1) / (w / 8 * h);
        expected += SlowPart(planes, 3, x1 - w / 8, y0, x1, y1) / (w / 8 * h);
        expected += SlowPart(planes, 4, x0, y0, x1, y0 + h / 8) / (w * h / 8);
        expected += SlowPart(planes, 5, x0, y1 - h / 8, x1, y1) / (w * h / 8);
        expected +=
            SlowPart(planes, 6, x0 + w / 4, y0 + h / 4, x1 - w / 4, y1 - h / 4) / (w * h / 4);
        expected += SlowPart(planes, 7, std::max(0.0, x0 - o), y0, x0, y1) / (o * h);
        expected += SlowPart(planes, 8, x1, y0, std::min(1.0, x1 + o), y1) / (o * h);
        expected += SlowPart(planes, 9, x0, std::max(0.0, y0 - o), x1, y0) / (o * w);
        expected += SlowPart(planes, 10, x0, y1, x1, std::min(1.0, y1 + o)) / (o * w);
        // Differences of running sums up to 256 carry 1e-14 each, divided by shares of 0.02.
        EXPECT_NEAR(parts.Sum(crop, kPicture), expected, 1e-11);
    }
}

TEST(MeasureRanks, CountWhatAValueReachesOrBeats)
{
    std::vector<CInt32CropRect> reference(4);
    for (size_t i = 0; i < reference.size(); ++i)
        reference[i].Score.CoverageScore = i < 2 ? 0.25 : 0.75;
    const MeasureRanks ranks(reference);
    EXPECT_EQ(ranks.Rank(1, 0.2), 0.0);
    EXPECT_EQ(ranks.Rank(1, 0.25), 0.5);
    EXPECT_EQ(ranks.Rank(1, 0.5), 0.5);
    EXPECT_EQ(ranks.Rank(1, 0.75), 1.0);
    EXPECT_EQ(MeasureRanks({}).Rank(1, 0.5), 1.0);
}

TEST(ReferenceCrops, LieInsideThePictureAndHoldPixels)
{
    EXPECT_EQ(ReferenceCrops(kPicture).size(), 225U);
    for (const PixelSize size : {kPicture, PixelSize{640, 3}, PixelSize{1, 640}})
        for (const CInt32CropRect& crop : ReferenceCrops(size)) {
            EXPECT_GE(crop.Left, 0);
            EXPECT_LE(crop.Left, crop.Right);
            EXPECT_LT(crop.Right, size.Width);
            EXPECT_GE(crop.Top, 0);
            EXPECT_LE(crop.Top, crop.Bottom);
            EXPECT_LT(crop.Bottom, size.Height);
        }
}

TEST(CropFeatures, AMirroredCropWithTheSameMeasuresHasTheSameFeatures)
{
    const MeasureRanks ranks(ReferenceCrops(kPicture));
    std::mt19937 random(10);
    for (int i = 0; i < 100; ++i) {
        const CInt32CropRect crop = RandomCrop(random);
        CInt32CropRect mirrored = crop;
        mirrored.Left = kPicture.Width - 1 - crop.Right;
        mirrored.Right = kPicture.Width - 1 - crop.Left;
        const auto features = CropFeatures(crop, kPicture, ranks);
        const auto others = CropFeatures(mirrored, kPicture, ranks);
        for (size_t k = 0; k < features.size(); ++k)
            EXPECT_NEAR(features[k], others[k], 1e-12) << "feature " << k; // 1 - x is rounded
    }
}

} // namespace
} // namespace vistaTrim::photo
