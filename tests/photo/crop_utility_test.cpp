// Checks parts of crops against sums over cells, and ranks against counting.
#include <algorithm>
#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "ranking/choice_model.h"
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
        // Differences of running sums up to 256 are off by 1e-14 each, divided by shares of 0.02.
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

// Each feature of a crop that touches only the left border, by its definition.
TEST(CropFeatures, AreTheMeasuresTheirRanksAndTheGeometryOfTheCrop)
{
    const PixelSize picture{640, 320};
    // Columns 0 to 319 and rows 64 to 223: half of the width, half of the height.
    CInt32CropRect crop(0, 319, 64, 223);
    crop.Score.CompositionScore = 0.1;
    crop.Score.CoverageScore = 0.2;
    crop.Score.BorderScore = 0.3;
    crop.Score.PeakScore = 0.4;
    crop.Score.CentrePeakScore = 0.5;
    std::vector<CInt32CropRect> reference(10);
    for (size_t i = 0; i < reference.size(); ++i) {
        const double share = static_cast<double>(i) / 10;
        reference[i].Score.CompositionScore = share; // 0.1 reaches 2 of 10
        reference[i].Score.CoverageScore = share;
        reference[i].Score.BorderScore = share / 2; // 0.3 reaches 7
        reference[i].Score.PeakScore = 1;           // none
        reference[i].Score.CentrePeakScore = 0;     // all
    }
    const std::vector<double> measures = {0.1, 0.2, 0.3, 0.4, 0.5};
    const std::vector<double> ranks = {0.2, 0.3, 0.7, 0.0, 1.0};
    const double area = std::log(0.25);
    const double shape = 0; // w / h, as shares
    const double picturesShape = std::log(2.0);
    const double x = -0.25; // centre at 0.25
    const double y = -0.05; // centre at 0.45
    std::vector<double> expected = measures;
    expected.insert(expected.end(), ranks.begin(), ranks.end());
    const double geometry[] = {0.25,
                               x * x,
                               y,
                               0.05,
                               y * y,
                               0.5,
                               0.5,
                               0.25,
                               0.25,
                               0.25,
                               area,
                               area * area,
                               shape,
                               shape,
                               shape,
                               1, // the left border
                               0,
                               0,
                               0,
                               0,
                               0,
                               0.0, // the smaller horizontal margin: the left one
                               0.2, // the smaller vertical margin: above; below is 0.3
                               shape * picturesShape,
                               area * picturesShape,
                               y * area,
                               0.25 * area,
                               y * picturesShape,
                               0.2,
                               0.3,
                               std::sqrt(0.2),
                               std::sqrt(0.3),
                               std::sqrt(0.5)};
    expected.insert(expected.end(), std::begin(geometry), std::end(geometry));
    for (const std::vector<double>& values : {measures, ranks})
        for (const double value : values)
            expected.push_back(value * area);
    const auto features = CropFeatures(crop, picture, MeasureRanks(reference));
    ASSERT_EQ(features.size(), expected.size());
    for (size_t i = 0; i < features.size(); ++i)
        EXPECT_NEAR(features[i], expected[i], 1e-12) << "feature " << i; // logarithms differ
}

TEST(CropFeatures, KnowWhichBordersOfThePictureTheCropTouches)
{
    constexpr size_t kBorders = 2 * kNumModelMeasures + 15; // after size and shape
    const MeasureRanks ranks({});
    const auto borders = [&ranks](int left, int right, int top, int bottom) {
        const auto all = CropFeatures(CInt32CropRect(left, right, top, bottom), {640, 320}, ranks);
        return std::vector<double>(all.begin() + kBorders, all.begin() + kBorders + 6);
    };
    using Doubles = std::vector<double>;
    // Left or right, both, top, bottom, both, corners.
    EXPECT_EQ(borders(1, 638, 1, 318), (Doubles{0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(borders(0, 638, 1, 318), (Doubles{1, 0, 0, 0, 0, 0}));
    EXPECT_EQ(borders(1, 639, 1, 318), (Doubles{1, 0, 0, 0, 0, 0}));
    EXPECT_EQ(borders(0, 639, 1, 318), (Doubles{2, 1, 0, 0, 0, 0}));
    EXPECT_EQ(borders(1, 638, 0, 318), (Doubles{0, 0, 1, 0, 0, 0}));
    EXPECT_EQ(borders(1, 638, 1, 319), (Doubles{0, 0, 0, 1, 0, 0}));
    EXPECT_EQ(borders(1, 639, 0, 318), (Doubles{1, 0, 1, 0, 0, 1}));
    EXPECT_EQ(borders(0, 639, 0, 319), (Doubles{2, 1, 1, 1, 1, 4}));
}

TEST(CropFeatures, ReflectTheShapeOfWideAndTallCrops)
{
    const MeasureRanks ranks({});
    constexpr size_t kShape = 2 * kNumModelMeasures + 12;
    const auto wide = CropFeatures(CInt32CropRect(0, 639, 80, 239), {640, 320}, ranks);
    EXPECT_NEAR(wide[kShape], std::log(2.0), 1e-12);
    EXPECT_NEAR(wide[kShape + 1], std::log(2.0), 1e-12);
    EXPECT_NEAR(wide[kShape + 2], std::log(2.0) * std::log(2.0), 1e-12);
    const auto tall = CropFeatures(CInt32CropRect(160, 479, 0, 319), {640, 320}, ranks);
    EXPECT_NEAR(tall[kShape], -std::log(2.0), 1e-12);
    EXPECT_NEAR(tall[kShape + 1], std::log(2.0), 1e-12);
    EXPECT_NEAR(tall[kShape + 11], -std::log(2.0) * std::log(2.0), 1e-12); // times the picture's
}

TEST(ReferenceCrops, AreAllGridRectanglesOfAtLeastHalfASide)
{
    const std::vector<CInt32CropRect> crops = ReferenceCrops({80, 40});
    size_t next = 0;
    for (int left = 0; left < 8; ++left)
        for (int right = left + 4; right <= 8; ++right)
            for (int top = 0; top < 8; ++top)
                for (int bottom = top + 4; bottom <= 8; ++bottom, ++next) {
                    ASSERT_LT(next, crops.size());
                    EXPECT_EQ(crops[next].Left, 10 * left);
                    EXPECT_EQ(crops[next].Right, 10 * right - 1);
                    EXPECT_EQ(crops[next].Top, 5 * top);
                    EXPECT_EQ(crops[next].Bottom, 5 * bottom - 1);
                }
    EXPECT_EQ(next, crops.size());
}

TEST(Utilities, AddThePartsAndTheWeightedFeatures)
{
    const std::vector<float> planes = NoisePlanes();
    const PartSums parts(planes);
    const MeasureRanks ranks(ReferenceCrops(kPicture));
    ChoiceModel model;
    for (int i = 0; i < kNumCropFeatures; ++i)
        model.FeatureWeights.push_back(0.01 * (i + 1));
    std::mt19937 random(11);
    const std::vector<CInt32CropRect> crops = {RandomCrop(random), RandomCrop(random)};
    const std::vector<double> utilities = Utilities(model, crops, kPicture, ranks, parts);
    ASSERT_EQ(utilities.size(), 2U);
    for (size_t i = 0; i < 2; ++i) {
        double expected = parts.Sum(crops[i], kPicture);
        const auto features = CropFeatures(crops[i], kPicture, ranks);
        for (size_t k = 0; k < features.size(); ++k)
            expected += 0.01 * (static_cast<double>(k) + 1) * features[k];
        EXPECT_NEAR(utilities[i], expected, 1e-12);
    }
}

} // namespace
} // namespace vistaTrim::photo
