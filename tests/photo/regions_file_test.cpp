// Regions that another detector found, from JSON lines.
#include "vistaTrimPhoto/regions_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "vistaTrimPhoto/photo_error.h"

namespace vistaTrim::photo {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

RegionsFile Read(const std::string& text)
{
    return {text, "r.jsonl"};
}

std::string FaultOf(const std::string& text)
{
    try {
        Read(text);
    } catch (const PhotoError& error) {
        EXPECT_EQ(error.GetKind(), PhotoError::Kind::InvalidRequest);
        return error.what();
    }
    return "";
}

TEST(RegionsFile, ReadsEveryMember)
{
    const RegionsFile file =
        Read("{\"file\": \"a.jpg\", \"regions\": [{\"x\": 10.5, \"y\": 20, \"width\": 30, "
             "\"height\": 40.25, \"kind\": \"face\", \"label\": \"Ada\", \"confidence\": 0.5, "
             "\"wish\": \"must-keep\", \"model\": 7}]}\n");

    ASSERT_THAT(file.RegionsOf("a.jpg"), SizeIs(1));
    const FoundRegion& region = file.RegionsOf("a.jpg")[0];
    EXPECT_EQ(region.Rect, (PixelRect{10, 20, 31, 41})); // rounded outward to whole pixels
    EXPECT_EQ(region.Kind, RegionKind::Face);
    EXPECT_EQ(region.Source, RegionSource::File);
    EXPECT_EQ(region.Label, "Ada");
    EXPECT_EQ(region.Confidence, 0.5);
    EXPECT_EQ(region.Wish, WishKind::MustKeep);
}

TEST(RegionsFile, ShortNamesAndDefaults)
{
    const RegionsFile file =
        Read("{\"file\":\"a.jpg\",\"regions\":[{\"x\":1,\"y\":2,\"w\":3,\"h\":4},"
             "{\"x\":1,\"y\":2,\"w\":3,\"h\":4,\"wish\":\"none\"}]}");

    ASSERT_THAT(file.RegionsOf("a.jpg"), SizeIs(2));
    const FoundRegion& region = file.RegionsOf("a.jpg")[0];
    EXPECT_EQ(region.Rect, (PixelRect{1, 2, 3, 4}));
    EXPECT_EQ(region.Kind, RegionKind::Other);
    EXPECT_EQ(region.Confidence, 1.0);
    EXPECT_EQ(region.Wish, WishKind::Keep);
    EXPECT_FALSE(file.RegionsOf("a.jpg")[1].Wish.has_value());
}

TEST(RegionsFile, ARegionTooSmallToMeasureIsOnePixel)
{
    const RegionsFile file =
        Read("{\"file\":\"a\",\"regions\":[{\"x\":7,\"y\":-5,\"w\":1e-30,\"h\":1e-30}]}");
    EXPECT_EQ(file.RegionsOf("a")[0].Rect, (PixelRect{7, -5, 1, 1}));
}

TEST(RegionsFile, ANameWithoutFolderMatchesAnyFolder)
{
    const RegionsFile file = Read("{\"file\":\"a.jpg\",\"regions\":[{\"x\":1,\"y\":1,\"w\":1,"
                                  "\"h\":1}]}\n"
                                  "{\"file\":\"x/a.jpg\",\"regions\":[]}\r\n\n");

    EXPECT_THAT(file.RegionsOf("elsewhere/a.jpg"), SizeIs(1));
    EXPECT_THAT(file.RegionsOf("x/a.jpg"), IsEmpty()); // the exact name comes first
    EXPECT_TRUE(file.Names("x/a.jpg"));
    EXPECT_FALSE(file.Names("b.jpg"));
    EXPECT_THAT(file.RegionsOf("b.jpg"), IsEmpty());
}

TEST(RegionsFile, LinesOfOnePhotographAddUp)
{
    const std::string line = "{\"file\":\"a\",\"regions\":[{\"x\":1,\"y\":1,\"w\":1,\"h\":1}]}\n";

    EXPECT_THAT(Read(line + line).RegionsOf("a"), SizeIs(2));
}

TEST(RegionsFile, AnErrorNamesTextAndLine)
{
    const std::string good = "{\"file\":\"a\",\"regions\":[]}\n\n";
    const std::pair<const char*, const char*> faults[] = {
        {"{\"file\":\"a\",", "is not JSON"},
        {"[1]", "is not a JSON object"},
        {"{\"regions\":[]}", "has no \"file\""},
        {"{\"file\":7,\"regions\":[]}", "\"file\" is not a string"},
        {"{\"file\":\"a\"}", "has no list of \"regions\""},
        {"{\"file\":\"a\",\"regions\":[3]}", "a region is not an object"},
        {"{\"file\":\"a\",\"regions\":[{\"y\":1,\"w\":1,\"h\":1}]}", "a region has no \"x\""},
        {"{\"file\":\"a\",\"regions\":[{\"x\":1,\"y\":1,\"w\":1}]}", "a region has no \"height\""},
        {"{\"file\":\"a\",\"regions\":[{\"x\":1,\"y\":1,\"w\":0,\"h\":1}]}",
         "\"w\" is not above 0"},
        {"{\"file\":\"a\",\"regions\":[{\"x\":1,\"y\":\"1\",\"w\":1,\"h\":1}]}",
         "\"y\" is not a number"},
        {"{\"file\":\"a\",\"regions\":[{\"x\":1e30,\"y\":1,\"w\":1,\"h\":1}]}",
         "a region extends beyond the size of any photograph"},
        {"{\"file\":\"a\",\"regions\":[{\"x\":1,\"y\":1,\"w\":1,\"h\":1,\"kind\":\"cat\"}]}",
         "\"kind\" is not one of"},
        {"{\"file\":\"a\",\"regions\":[{\"x\":1,\"y\":1,\"w\":1,\"h\":1,\"wish\":\"hold\"}]}",
         "\"wish\" is not one of"},
        {"{\"file\":\"a\",\"regions\":[{\"x\":1,\"y\":1,\"w\":1,\"h\":1,\"confidence\":2}]}",
         "\"confidence\" is not between 0 and 1"}};
    for (const auto& [line, fault] : faults) {
        SCOPED_TRACE(line);
        EXPECT_THAT(FaultOf(good + line + "\n"), StartsWith("r.jsonl:3: "));
        EXPECT_THAT(FaultOf(good + line + "\n"), HasSubstr(fault));
    }
}

TEST(RegionsFile, AnEmptyTextNamesNothing)
{
    EXPECT_FALSE(Read("").Names("a"));
}

} // namespace
} // namespace vistaTrim::photo
