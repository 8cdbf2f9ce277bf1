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

TEST(Presets, ARowThatIsNotUnderstoodIsNamed)
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

TEST(Presets, AFileThatIsNotThereIsNamed)
{
    Presets presets;
    try {
        presets.AddFile("no/such/table.tsv");
        FAIL();
    } catch (const PhotoError& error) {
        EXPECT_EQ(error.GetKind(), PhotoError::Kind::Unreadable);
        EXPECT_THAT(error.what(), StartsWith("cannot read no/such/table.tsv: "));
    }
}

} // namespace
} // namespace vistaTrim::photo
