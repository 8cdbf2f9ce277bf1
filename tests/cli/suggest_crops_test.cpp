// The crops of each shape, requested from an analysis as the commands do.
#include "commands/suggest_crops.h"

#include <algorithm>
#include <cstdint>

#include <gtest/gtest.h>

namespace vistaTrim::cli {
namespace {

using namespace photo;

// 1200 x 800, with a bright block.
const Analysis& BlockAnalysis()
{
    static const Analysis kAnalysis = [] {
        WorkingPicture picture;
        picture.Photo = {1200, 800};
        picture.Pixels.Size = WorkingSize(picture.Photo);
        for (int32_t y = 0; y < picture.Pixels.Size.Height; ++y)
            for (int32_t x = 0; x < picture.Pixels.Size.Width; ++x) {
                const bool block = x >= 120 && x < 220 && y >= 90 && y < 170;
                for (int32_t c = 0; c < 3; ++c)
                    picture.Pixels.Bytes.push_back(
                        static_cast<uint8_t>(block ? 250 - 90 * c : 40 + (x + 2 * y) % 97 / 3));
            }
        RegionOptions regions;
        regions.Faces = FaceSearch::Off;
        return Analysis(picture, regions);
    }();
    return kAnalysis;
}

Options WithShapes(const std::vector<Shape>& shapes, bool each)
{
    Options options;
    options.Shapes = shapes;
    options.EachShape = each;
    for (const Shape& shape : shapes)
        options.Request.Aspects.push_back(shape.Aspect);
    return options;
}

Shape Named(const char* name, const char* ratio, std::optional<PixelSize> fill = {})
{
    Shape shape = *ShapeOfRatio(ratio);
    shape.Name = name;
    shape.Fill = fill;
    return shape;
}

TEST(SuggestCrops, OfAllShapesTogetherAreNumberedConsecutively)
{
    Options options = WithShapes({Named("cinema", "21:9"), Named("square", "1:1")}, false);
    options.Request.Top = 4;
    PhotoResult result;
    EXPECT_TRUE(SuggestCrops(BlockAnalysis(), options, result).empty());
    ASSERT_EQ(result.Found.Crops.size(), 4U);
    ASSERT_EQ(result.Labels.size(), 4U);
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(result.Labels[i].Shape, "");
        EXPECT_EQ(result.Labels[i].Rank, static_cast<int32_t>(i) + 1);
        EXPECT_FALSE(result.Labels[i].Fill);
        // As it was written, not reduced.
        EXPECT_EQ(result.Labels[i].Ratio, i % 2 == 0 ? "21x9" : "1x1");
    }
    Options free;
    PhotoResult own;
    SuggestCrops(BlockAnalysis(), free, own);
    for (size_t i = 0; i < own.Labels.size(); ++i)
        EXPECT_EQ(own.Labels[i].Ratio, FileSafeRatio(own.Found.Crops[i].Aspect.CommonName()));
}

TEST(SuggestCrops, OfEachShapeAreThoseOfARequestForItAlone)
{
    Options options = WithShapes({Named("wide", "16:9"), Named("tall", "2:3")}, true);
    options.Request.Top = 2;
    PhotoResult result;
    EXPECT_TRUE(SuggestCrops(BlockAnalysis(), options, result).empty());
    ASSERT_EQ(result.Found.Crops.size(), 4U);
    EXPECT_EQ(result.Found.Size, (PixelSize{1200, 800}));
    EXPECT_GT(result.Found.Times.Score, 0.0);
    EXPECT_EQ(result.Found.Times.Analyse, BlockAnalysis().Milliseconds());
    for (size_t shape = 0; shape < 2; ++shape) {
        Request alone;
        alone.Top = 2;
        alone.Aspects = {options.Shapes[shape].Aspect};
        const Suggestions expected = BlockAnalysis().Suggest(alone);
        for (size_t rank = 0; rank < 2; ++rank) {
            const size_t i = 2 * shape + rank;
            EXPECT_EQ(result.Found.Crops[i].Rect, expected.Crops[rank].Rect);
            EXPECT_EQ(result.Labels[i].Shape, options.Shapes[shape].Name);
            EXPECT_EQ(result.Labels[i].Ratio, options.Shapes[shape].RatioText);
            EXPECT_EQ(result.Labels[i].Rank, static_cast<int32_t>(rank) + 1);
        }
    }
}

TEST(SuggestCrops, NameTheShapesWithoutACrop)
{
    Options options = WithShapes({Named("a", "1:3"), Named("b", "3:1"), Named("c", "1:4")}, true);
    options.Request.Top = 1;
    options.Request.Wishes = {{WishKind::MustKeep, {0, 350, 1200, 60}}};
    PhotoResult result;
    EXPECT_EQ(SuggestCrops(BlockAnalysis(), options, result), (std::vector<std::string>{"a", "c"}));
    ASSERT_EQ(result.Labels.size(), 1U);
    EXPECT_EQ(result.Labels[0].Shape, "b");
}

// Crops with fewer pixels than the file they fill would be scaled up.
TEST(SuggestCrops, ToFillASizeAreLargeEnoughWhereThePhotographIs)
{
    for (const PixelSize fill :
         {PixelSize{900, 600}, PixelSize{600, 600}, PixelSize{1190, 400}, PixelSize{400, 790}}) {
        const Shape shape = ShapeOfSize(fill);
        Options options = WithShapes({shape}, true);
        options.Request.Top = 6;
        PhotoResult result;
        SuggestCrops(BlockAnalysis(), options, result);
        ASSERT_FALSE(result.Found.Crops.empty());
        for (size_t i = 0; i < result.Found.Crops.size(); ++i) {
            // To within the working pixel that the way back to the photograph rounds by.
            EXPECT_GE(result.Found.Crops[i].Rect.Width, fill.Width - 2) << fill.Width;
            EXPECT_EQ(result.Labels[i].Fill, fill);
        }
    }
    // A small size leaves room for crops that are not the largest.
    Options small = WithShapes({ShapeOfSize({300, 200})}, true);
    small.Request.Top = 2000;
    PhotoResult result;
    SuggestCrops(BlockAnalysis(), small, result);
    const auto& crops = result.Found.Crops;
    EXPECT_TRUE(std::any_of(crops.begin(), crops.end(),
                            [](const Crop& crop) { return crop.Rect.Width < 700; }));
    // A crop of exactly the size is large enough: 0.5 of 1200 is 600.
    Options exact = WithShapes({ShapeOfSize({600, 400})}, true);
    exact.Request.Top = 2000;
    PhotoResult fitting;
    SuggestCrops(BlockAnalysis(), exact, fitting);
    EXPECT_TRUE(std::any_of(fitting.Found.Crops.begin(), fitting.Found.Crops.end(),
                            [](const Crop& crop) { return crop.Rect.Width < 610; }));
    // For a size larger than the photograph, only the largest crop is tried.
    Options large = WithShapes({ShapeOfSize({3000, 2000})}, true);
    large.Request.Top = 30;
    PhotoResult whole;
    SuggestCrops(BlockAnalysis(), large, whole);
    ASSERT_EQ(whole.Found.Crops.size(), 1U);
    EXPECT_EQ(whole.Found.Crops[0].Rect, (PixelRect{0, 0, 1200, 800}));
    // The scales of the request remain the limit: here the larger of the two.
    large.Request.Scales = {0.5, 0.6};
    PhotoResult scaled;
    SuggestCrops(BlockAnalysis(), large, scaled);
    ASSERT_FALSE(scaled.Found.Crops.empty());
    for (const Crop& crop : scaled.Found.Crops)
        EXPECT_NEAR(crop.Rect.Width, 720, 4);
}

TEST(SuggestCrops, OfSeveralShapesAreExplainedTogether)
{
    const std::vector<Shape> shapes = {Named("tall", "1:3"), Named("square", "1:1"),
                                       Named("wide", "3:1")};
    Options options = WithShapes(shapes, true);
    options.Request.Top = 1;
    options.Request.Explain = true;
    options.Request.Wishes = {{WishKind::MustKeep, {0, 350, 1200, 60}},
                              {WishKind::Avoid, {0, 0, 40, 40}}};
    PhotoResult result;
    EXPECT_EQ(SuggestCrops(BlockAnalysis(), options, result),
              (std::vector<std::string>{"tall", "square"}));
    Explanation sum;
    sum.MetBy = {0, 0};
    for (const Shape& shape : shapes) {
        Request alone = options.Request;
        alone.Aspects = {shape.Aspect};
        const Explanation one = *BlockAnalysis().Suggest(alone).Explained;
        sum.Candidates += one.Candidates;
        sum.Passing += one.Passing;
        for (size_t i = 0; i < 2; ++i)
            sum.MetBy[i] += one.MetBy[i];
    }
    ASSERT_TRUE(result.Found.Explained);
    EXPECT_EQ(result.Found.Explained->Candidates, sum.Candidates);
    EXPECT_EQ(result.Found.Explained->Passing, sum.Passing);
    EXPECT_EQ(result.Found.Explained->MetBy, sum.MetBy);
    EXPECT_EQ(result.Found.Explained->Wishes.size(), 2U);
    // Why the first shape got none.
    EXPECT_EQ(result.Found.Explained->Why, Shortfall::WishMetByNone);
    EXPECT_EQ(result.Found.Explained->UnmetWish, WishKind::MustKeep);

    // The same if a shape with a crop comes first.
    std::reverse(options.Shapes.begin(), options.Shapes.end());
    PhotoResult turned;
    SuggestCrops(BlockAnalysis(), options, turned);
    EXPECT_EQ(turned.Found.Explained->Why, Shortfall::WishMetByNone);
    EXPECT_EQ(turned.Found.Explained->Candidates, sum.Candidates);
}

} // namespace
} // namespace vistaTrim::cli
