#include "vistaTrimPhoto/presets.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "vistaTrimPhoto/photo_error.h"

namespace vistaTrim::photo {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

TEST(Presets, BuiltInOnesHaveRatioAndSize)
{
    const Presets presets;
    const std::optional<Shape> og = presets.Find("og-image");
    ASSERT_TRUE(og);
    EXPECT_EQ(og->Name, "og-image");
    EXPECT_EQ(og->Aspect, (Ratio{40, 21}));
    EXPECT_EQ(og->RatioText, "40x21");
    EXPECT_EQ(og->Fill, (PixelSize{1200, 630}));

    const std::optional<Shape> cinema = presets.Find("cinema");
    ASSERT_TRUE(cinema);
    EXPECT_EQ(cinema->Aspect, (Ratio{7, 3}));
    EXPECT_EQ(cinema->RatioText, "21x9"); // as it was written
    EXPECT_FALSE(cinema->Fill);

    EXPECT_FALSE(presets.Find("Square"));
    EXPECT_FALSE(presets.Find(""));
}

TEST(Presets, AreNamedInTheOrderOfTheTable)
{
    EXPECT_THAT(Presets().Names(), StartsWith("square, portrait, landscape, "));
    EXPECT_THAT(Presets().Names(), HasSubstr(" and passport"));
}

TEST(Presets, ATableAddsNamesAndReplacesShapes)
{
    Presets presets;
    presets.AddTable("# mine\n\nposter\t2:3\r\nsquare\t-\t64x64\tsmall\n", "mine.tsv");
    EXPECT_EQ(presets.Find("poster")->Aspect, (Ratio{2, 3}));
    EXPECT_FALSE(presets.Find("poster")->Fill);
    EXPECT_EQ(presets.Find("square")->Fill, (PixelSize{64, 64}));
    EXPECT_THAT(presets.Names(), StartsWith("square, portrait")); // keeps its place
    EXPECT_THAT(presets.Names(), HasSubstr(" and poster"));
}

std::string FaultOf(const std::string& table)
{
    try {
        Presets().AddTable(table, "t");
    } catch (const PhotoError& error) {
        EXPECT_EQ(error.GetKind(), PhotoError::Kind::InvalidRequest);
        return error.what();
    }
    return "";
}

TEST(Presets, AnInvalidRowIsNamed)
{
    EXPECT_THAT(FaultOf("# one\nname\n"), StartsWith("t:2: a row has a name"));
    EXPECT_THAT(FaultOf("a\t1:1\t-\tb\tc\n"), StartsWith("t:1: a row has a name"));
    EXPECT_THAT(FaultOf("a b\t1:1\n"), HasSubstr("'a b' is not a name"));
    EXPECT_THAT(FaultOf("16x9\t1:1\n"), HasSubstr("reads as a ratio"));
    EXPECT_THAT(FaultOf("a\tone\n"), StartsWith("t:1: 'one' is not W:H"));
    EXPECT_THAT(FaultOf("a\t-\n"), StartsWith("t:1: '-' is not W:H"));
    EXPECT_THAT(FaultOf("a\t1:1\t9\n"), StartsWith("t:1: '9' is not WxH"));
    EXPECT_THAT(FaultOf("a\t1:1\t9x8\n"), HasSubstr("the size 9x8 is not of the ratio 1:1"));
}

// Name, ratio, ratio as text and size of every built-in preset.
TEST(Presets, BuiltInTableIsComplete)
{
    struct Expected {
        const char* Name;
        Ratio Aspect;
        const char* RatioText;
        std::optional<PixelSize> Fill;
    };
    const Expected table[] = {{"square", {1, 1}, "1x1", {}},
                              {"portrait", {4, 5}, "4x5", {}},
                              {"landscape", {3, 2}, "3x2", {}},
                              {"classic", {4, 3}, "4x3", {}},
                              {"wide", {16, 9}, "16x9", {}},
                              {"cinema", {7, 3}, "21x9", {}},
                              {"vertical", {9, 16}, "9x16", {}},
                              {"banner", {3, 1}, "3x1", {}},
                              {"panorama", {2, 1}, "2x1", {}},
                              {"story", {9, 16}, "9x16", PixelSize{1080, 1920}},
                              {"post", {1, 1}, "1x1", PixelSize{1080, 1080}},
                              {"og-image", {40, 21}, "40x21", PixelSize{1200, 630}},
                              {"thumbnail", {4, 3}, "4x3", PixelSize{400, 300}},
                              {"avatar", {1, 1}, "1x1", PixelSize{400, 400}},
                              {"hd", {16, 9}, "16x9", PixelSize{1920, 1080}},
                              {"uhd", {16, 9}, "16x9", PixelSize{3840, 2160}},
                              {"print-10x15", {3, 2}, "3x2", {}},
                              {"print-13x18", {18, 13}, "18x13", {}},
                              {"print-a4", {99, 70}, "297x210", {}},
                              {"passport", {7, 9}, "35x45", {}}};
    const Presets presets;
    std::string names;
    for (const Expected& expected : table) {
        SCOPED_TRACE(expected.Name);
        const std::optional<Shape> shape = presets.Find(expected.Name);
        ASSERT_TRUE(shape);
        EXPECT_EQ(shape->Name, expected.Name);
        EXPECT_EQ(shape->Aspect, expected.Aspect);
        EXPECT_EQ(shape->RatioText, expected.RatioText);
        EXPECT_EQ(shape->Fill, expected.Fill);
        const bool last = expected.Name == std::string("passport");
        names += (names.empty() ? "" : last ? " and " : ", ") + std::string(expected.Name);
    }
    EXPECT_EQ(presets.Names(), names);
    EXPECT_FALSE(presets.Find("Square"));
    EXPECT_FALSE(presets.Find(""));
}

TEST(Presets, ANameIsNeitherAPathNorARatio)
{
    for (const char* name : {"-poster", "../a", "", "a/b", "2x3", "1.5"})
        EXPECT_THAT(FaultOf(std::string(name) + "\t2:3\n"), HasSubstr("is not a name")) << name;
    EXPECT_EQ(FaultOf("Poster_2-z\t2:3\t200x300\n"), "");
    EXPECT_THAT(FaultOf("poster\t-\t-\n"), HasSubstr("'-' is not W:H"));
    EXPECT_THAT(FaultOf("poster\t2:3\t200x301\n"), HasSubstr("is not of the ratio 2:3"));
}

TEST(Shape, KeepsTheRatioAsWritten)
{
    const std::optional<Shape> shape = ShapeOfRatio("21/9");
    ASSERT_TRUE(shape);
    EXPECT_EQ(shape->Name, "21x9");
    EXPECT_EQ(shape->RatioText, "21x9");
    EXPECT_EQ(shape->Aspect, (Ratio{7, 3}));
    EXPECT_FALSE(shape->Fill);
    EXPECT_FALSE(ShapeOfRatio("broad"));
    const Shape ofSize = ShapeOfSize({1200, 630});
    EXPECT_EQ(ofSize.Name, "1200x630");
    EXPECT_EQ(ofSize.RatioText, "40x21");
    EXPECT_EQ(ofSize.Aspect, (Ratio{40, 21}));
    EXPECT_EQ(ofSize.Fill, (PixelSize{1200, 630}));
}

// Scales whose crops would be scaled up are left out; if all are, the largest of them stays.
TEST(Shape, AFillLeavesOutScalesThatAreTooSmallForIt)
{
    const auto scalesFor = [](PixelSize fill, const std::vector<double>& given, PixelSize photo) {
        Request request;
        request.Scales = given;
        request.Aspects = {{7, 5}};
        const Request made = RequestFor(ShapeOfSize(fill), request, photo);
        EXPECT_EQ(made.Aspects, (std::vector<Ratio>{Reduced(fill.Width, fill.Height)}));
        return made.Scales;
    };
    using Scales = std::vector<double>;
    const PixelSize photo{1800, 1200}; // its largest square is 1200 wide, its largest 3:1 crop 1800
    EXPECT_EQ(scalesFor({900, 300}, {0.4, 0.5, 0.75}, photo), (Scales{0.5, 0.75}));
    EXPECT_EQ(scalesFor({600, 600}, {0.4, 0.5, 0.75}, photo), (Scales{0.5, 0.75}));
    EXPECT_EQ(scalesFor({600, 600}, {0.4, 0.5, 0.75}, {1200, 1800}), (Scales{0.5, 0.75}));
    EXPECT_EQ(scalesFor({1000, 1000}, {0.4, 0.7, 0.5}, photo), (Scales{0.7}));
    EXPECT_EQ(scalesFor({1140, 1140}, {}, photo), (Scales{0.95, 1.0}));
    EXPECT_EQ(scalesFor({5000, 5000}, {}, photo), (Scales{1.0}));

    Request request;
    request.Scales = {0.1, 0.2};
    EXPECT_EQ(RequestFor(*ShapeOfRatio("1:1"), request, photo).Scales, (Scales{0.1, 0.2}));
}

} // namespace
} // namespace vistaTrim::photo
