// The order in which an analysis serves crops, and what it reports for each.
#include "ranking/serving.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <set>

#include <gtest/gtest.h>

#include "ranking/choice_model.h"
#include "ranking/crop_utility.h"
#include "ranking/input_grid.h"
#include "vistaTrimPhoto/analysis.h"

namespace vistaTrim::photo {
namespace {

Analysis AnalysisOf(const PixelImage& image)
{
    RegionOptions regions;
    regions.Faces = FaceSearch::Off;
    return Analysis(Photograph::FromPixels(ViewOf(image)), regions);
}

// A ramp with a bright block.
const Analysis& BlockAnalysis()
{
    static const Analysis kAnalysis = [] {
        PixelImage image{{640, 400}, 3, {}};
        for (int32_t y = 0; y < 400; ++y)
            for (int32_t x = 0; x < 640; ++x) {
                const bool block = x >= 120 && x < 220 && y >= 90 && y < 170;
                for (int32_t c = 0; c < 3; ++c)
                    image.Bytes.push_back(
                        static_cast<uint8_t>(block ? 250 - 90 * c : 40 + (x + 2 * y) % 97 / 3));
            }
        return AnalysisOf(image);
    }();
    return kAnalysis;
}

double OverlapOf(const PixelRect& a, const PixelRect& b)
{
    const double width = std::min(a.X + a.Width, b.X + b.Width) - std::max(a.X, b.X);
    const double height = std::min(a.Y + a.Height, b.Y + b.Height) - std::max(a.Y, b.Y);
    const double shared = std::max(0.0, width) * std::max(0.0, height);
    return shared / (static_cast<double>(a.Width) * a.Height +
                     static_cast<double>(b.Width) * b.Height - shared);
}

// A model whose network outputs zeros, so that only the features give a crop its utility.
std::shared_ptr<ChoiceModel> FeatureModel()
{
    auto model = std::make_shared<ChoiceModel>();
    model->InputMeans.assign(kNumInputs, 0.0F);
    model->InputScales.assign(kNumInputs, 1.0F);
    ConvolutionLayer layer;
    layer.Inputs = kNumInputs;
    layer.Outputs = kNumCropParts;
    layer.Dilation = 1;
    layer.Weights.assign(kNumCropParts * kNumInputs * 9, 0.0F);
    layer.Biases.assign(kNumCropParts, 0.0F);
    model->Layers = {layer};
    model->FeatureWeights.assign(kNumCropFeatures, 0.0);
    model->Sharpness = 1;
    model->OverlapOffset = 0;
    model->OverlapSlope = 1;
    return model;
}

constexpr size_t kFirstGeometry = 2 * kNumModelMeasures;
constexpr size_t kHeightOfCentre =
    kFirstGeometry + 2; // vertical offset from the middle, positive down
constexpr size_t kArea = kFirstGeometry + 9;

Request Squares(int32_t top)
{
    Request request;
    request.Aspects = {{1, 1}};
    request.Scales = {0.5};
    request.Top = top;
    return request;
}

TEST(Serving, RanksByTheMeasureWithNearDuplicatesLast)
{
    struct Case {
        RankBy Ranking;
        double Scores::*Value;
    };
    const Case cases[] = {{RankBy::Composition, &Scores::Composition},
                          {RankBy::Coverage, &Scores::Coverage},
                          {RankBy::Border, &Scores::Border},
                          {RankBy::Peak, &Scores::Peak},
                          {RankBy::CentrePeak, &Scores::CentrePeak}};
    for (const Case& one : cases) {
        Request request = Squares(1000);
        request.Density = 25; // steps of less than two fifths of a crop
        request.Ranking = one.Ranking;
        const std::vector<Crop> crops = BlockAnalysis().Suggest(request).Crops;
        ASSERT_GT(crops.size(), 20U);
        // First come the crops that overlap no earlier crop by more than 0.8, then the others;
        // within each part the measure falls.
        size_t unlike = 1;
        const auto isAlike = [&crops](size_t i, size_t among) {
            return std::any_of(
                crops.begin(), crops.begin() + static_cast<ptrdiff_t>(among),
                [&](const Crop& other) { return OverlapOf(crops[i].Rect, other.Rect) > 0.8; });
        };
        while (unlike < crops.size() && !isAlike(unlike, unlike))
            ++unlike;
        EXPECT_GT(unlike, 3U);
        EXPECT_LT(unlike, crops.size());
        for (size_t i = 1; i < crops.size(); ++i) {
            if (i != unlike) {
                EXPECT_LE(crops[i].Scores.*one.Value, crops[i - 1].Scores.*one.Value);
            }
            EXPECT_EQ(isAlike(i, std::min(i, unlike)), i >= unlike) << i;
        }
        // Merged is the share of the candidates that rank no higher.
        for (const Crop& crop : crops) {
            const auto notHigher = std::count_if(crops.begin(), crops.end(), [&](const Crop& c) {
                return c.Scores.*one.Value <= crop.Scores.*one.Value;
            });
            EXPECT_EQ(crop.Scores.Merged,
                      static_cast<double>(notHigher) / static_cast<double>(crops.size()));
        }
    }
}

TEST(Serving, RanksByTheModelOfTheRequest)
{
    auto model = FeatureModel();
    Request request = Squares(3);
    request.Model = model;
    for (const double weight : {400.0, -400.0}) { // far down, far up
        model->FeatureWeights[kHeightOfCentre] = weight;
        const Crop best = BlockAnalysis().Suggest(request).Crops.at(0);
        EXPECT_EQ(best.Rect.Y, weight > 0 ? 400 - best.Rect.Height : 0);
    }
    model->FeatureWeights[kHeightOfCentre] = 0;
    Request sizes = request;
    sizes.Scales = {0.5, 0.75, 1.0};
    for (const double weight : {400.0, -400.0}) {
        model->FeatureWeights[kArea] = weight;
        const int32_t width = BlockAnalysis().Suggest(sizes).Crops.at(0).Rect.Width;
        // Among many small crops, one of medium size overlaps most.
        EXPECT_EQ(width == 400, weight > 0) << width;
    }
    // A utility of NaN counts as the worst.
    model->FeatureWeights[kArea] = std::nan("");
    EXPECT_EQ(BlockAnalysis().Suggest(request).Crops.size(), 3U);
}

// A sharp model gives one crop all of the probability, so the overlap with it is known.
TEST(Serving, ExpectedOverlapFollowsTheModel)
{
    auto model = FeatureModel();
    model->FeatureWeights[kHeightOfCentre] = 400;
    model->FeatureWeights[kFirstGeometry] = -400; // horizontal distance from the middle
    Request request = Squares(400);
    request.Model = model;
    const std::vector<Crop> crops = BlockAnalysis().Suggest(request).Crops;
    // The two crops nearest the middle tie; the expected overlap of each averages over both.
    const double own = crops[0].ExpectedOverlap;
    EXPECT_GT(own, 0.4);
    for (const Crop& crop : crops) {
        EXPECT_GE(crop.ExpectedOverlap, 0.0);
        EXPECT_LE(crop.ExpectedOverlap, own + 1e-12);
    }
    model->OverlapOffset = 0.125;
    model->OverlapSlope = 0.5;
    EXPECT_NEAR(BlockAnalysis().Suggest(request).Crops[0].ExpectedOverlap, 0.125 + 0.5 * own,
                1e-12);
    model->OverlapOffset = 2;
    EXPECT_EQ(BlockAnalysis().Suggest(request).Crops[0].ExpectedOverlap, 1.0);
    model->OverlapOffset = -2;
    EXPECT_EQ(BlockAnalysis().Suggest(request).Crops[0].ExpectedOverlap, 0.0);
}

// A sharpness of 8 does the same as multiplying the utilities by 8.
TEST(Serving, SharpnessScalesTheUtilities)
{
    auto model = FeatureModel();
    model->FeatureWeights[kHeightOfCentre] = 2;
    Request request = Squares(5);
    request.Model = model;
    const std::vector<Crop> soft = BlockAnalysis().Suggest(request).Crops;
    model->Sharpness = 8;
    const std::vector<Crop> sharp = BlockAnalysis().Suggest(request).Crops;
    EXPECT_NE(soft[0].ExpectedOverlap, sharp[0].ExpectedOverlap);
    model->Sharpness = 1;
    model->FeatureWeights[kHeightOfCentre] = 16;
    const std::vector<Crop> steep = BlockAnalysis().Suggest(request).Crops;
    ASSERT_EQ(steep.size(), sharp.size());
    for (size_t i = 0; i < steep.size(); ++i) {
        EXPECT_EQ(steep[i].Rect, sharp[i].Rect);
        EXPECT_EQ(steep[i].ExpectedOverlap, sharp[i].ExpectedOverlap); // a power of 2 is exact
    }
}

TEST(Serving, GivesTheBestOfEachRatioInTurn)
{
    Request request = Squares(9);
    request.Aspects = {{1, 1}, {16, 9}, {3, 4}};
    request.Scales.clear();
    const std::vector<Crop> crops = BlockAnalysis().Suggest(request).Crops;
    ASSERT_EQ(crops.size(), 9U);
    for (size_t i = 0; i < crops.size(); ++i) {
        EXPECT_EQ(crops[i].Aspect, request.Aspects[i % 3]) << i;
        // The same crop as when its ratio is requested alone.
        Request alone = request;
        alone.Aspects = {crops[i].Aspect};
        alone.Top = 3;
        EXPECT_EQ(BlockAnalysis().Suggest(alone).Crops[i / 3].Rect, crops[i].Rect) << i;
    }
    // A ratio that runs out leaves its turn to the others. At full scale 8:5 has one crop.
    request.Aspects = {{8, 5}, {1, 1}};
    request.Scales = {1.0};
    request.Top = 5;
    std::vector<Ratio> order;
    for (const Crop& crop : BlockAnalysis().Suggest(request).Crops)
        order.push_back(crop.Aspect);
    EXPECT_EQ(order, (std::vector<Ratio>{{8, 5}, {1, 1}, {1, 1}, {1, 1}, {1, 1}}));
    // If all run out, fewer crops are served.
    request.Top = 500;
    EXPECT_EQ(BlockAnalysis().Suggest(request).Crops.size(), 9U);
}

TEST(Serving, WithinARoundCropsThatMeetMoreWishesComeFirst)
{
    Request request;
    request.Aspects = {{1, 3}, {2, 1}};
    request.Top = 2;
    EXPECT_EQ(BlockAnalysis().Suggest(request).Crops[0].Aspect, (Ratio{1, 3}));
    request.Wishes = {{WishKind::Keep, {50, 150, 300, 60}}}; // too wide for 1:3
    const std::vector<Crop> crops = BlockAnalysis().Suggest(request).Crops;
    ASSERT_EQ(crops.size(), 2U);
    EXPECT_EQ(crops[0].Aspect, (Ratio{2, 1}));
    EXPECT_TRUE(Contains(crops[0].Rect, {50, 150, 300, 60}));
    EXPECT_EQ(crops[1].Aspect, (Ratio{1, 3}));
}

TEST(Serving, PlainPictureGetsTheLargestAndMostCentralFirst)
{
    const PixelImage plain{{640, 400}, 3, std::vector<uint8_t>(640 * 400 * 3, 90)};
    Request request;
    request.Aspects = {{1, 1}};
    request.Scales = {1.0, 0.5};
    request.Density = 9; // odd, so that one crop is in the middle
    request.Top = 4;
    const std::vector<Crop> crops = AnalysisOf(plain).Suggest(request).Crops;
    ASSERT_EQ(crops.size(), 4U);
    EXPECT_EQ(crops[0].Rect, (PixelRect{120, 0, 400, 400}));
    EXPECT_EQ(crops[0].Scores.Merged, 1.0);
    for (size_t i = 1; i < crops.size(); ++i)
        EXPECT_GE(crops[i - 1].Rect.Width, crops[i].Rect.Width);
    // A plain picture can be ranked by a measure too.
    request.Ranking = RankBy::Coverage;
    EXPECT_EQ(AnalysisOf(plain).Suggest(request).Crops.size(), 4U);
    request.Ranking = RankBy::Engine;
    EXPECT_EQ(AnalysisOf(plain).Suggest(request).Crops.size(), 4U);
}

TEST(Serving, EngineRankingHasAnExpectedOverlapToo)
{
    Request request;
    request.Ranking = RankBy::Engine;
    request.Top = 20;
    const std::vector<Crop> crops = BlockAnalysis().Suggest(request).Crops;
    ASSERT_EQ(crops.size(), 20U);
    std::set<double> different;
    for (const Crop& crop : crops) {
        EXPECT_GT(crop.ExpectedOverlap, 0.0);
        EXPECT_LT(crop.ExpectedOverlap, 1.0);
        different.insert(crop.ExpectedOverlap);
    }
    EXPECT_GT(different.size(), 10U);
    // What people would choose does not depend on the ranking: a crop that both return has the same
    // expected overlap in both.
    Request all;
    all.Top = 2000;
    const std::vector<Crop> people = BlockAnalysis().Suggest(all).Crops;
    int shared = 0;
    for (const Crop& crop : crops)
        for (const Crop& other : people)
            if (other.Rect == crop.Rect && other.Aspect == crop.Aspect) {
                EXPECT_NEAR(other.ExpectedOverlap, crop.ExpectedOverlap, 1e-9);
                ++shared;
            }
    EXPECT_GT(shared, 3);
}

TEST(Serving, FoundRegionsCostWhatIsMissed)
{
    // Only its cost makes the region pull, against a model that prefers the other side.
    auto model = FeatureModel();
    model->FeatureWeights[kHeightOfCentre] = -10; // prefers up; half a picture is worth about 3
    PixelImage image{{640, 400}, 3, {}};
    for (int32_t i = 0; i < 640 * 400 * 3; ++i)
        image.Bytes.push_back(static_cast<uint8_t>(i % 251));
    RegionOptions regions;
    regions.Faces = FaceSearch::Off;
    FoundRegion found;
    found.Rect = {300, 340, 40, 40};
    found.Wish = WishKind::Keep;
    Request request = Squares(1);
    request.Model = model;
    const auto best = [&] {
        return Analysis(Photograph::FromPixels(ViewOf(image)), regions)
            .Suggest(request)
            .Crops.at(0)
            .Rect;
    };
    EXPECT_EQ(best().Y, 0);
    regions.Regions = {found};
    EXPECT_TRUE(Contains(best(), found.Rect));
    regions.Regions[0].Wish = WishKind::Avoid;
    model->FeatureWeights[kHeightOfCentre] = 10;
    EXPECT_FALSE(Overlaps(best(), found.Rect));
}

} // namespace
} // namespace vistaTrim::photo
