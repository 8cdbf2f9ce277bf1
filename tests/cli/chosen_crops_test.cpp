#include "batch/chosen_crops.h"

#include <array>

#include <gtest/gtest.h>

#include "options/program_error.h"
#include "output/result_text.h"

namespace vistaTrim::cli {
namespace {

using namespace photo;

std::string FaultOf(const std::string& text)
{
    try {
        ReadChosenCrops(text, "c.json");
    } catch (const ProgramError& error) {
        return error.what();
    }
    return "none";
}

TEST(ChosenCrops, ReadWhatSuggestWrites)
{
    PhotoResult result;
    result.File = "caf\xc3\xa9 {1}.jpg";
    result.Found.Size = {1800, 1200};
    Crop crop;
    crop.Rect = {1, 2, 1600, 900};
    crop.Aspect = {16, 9};
    crop.CoversContent = true;
    crop.Scores.Peak = 0.1;
    result.Found.Crops = {crop, crop};
    result.Labels = {{"wide", "16x9", 1, PixelSize{320, 180}}, {"", "16x9", 2, {}}};
    PhotoResult failed;
    failed.File = "b.jpg";
    failed.Error = "broken";

    const ChosenCrops chosen =
        ReadChosenCrops(JsonLine(result) + JsonLine(failed) + JsonLine(result), "c.json");
    ASSERT_EQ(chosen.Photos.size(), 2U);
    EXPECT_EQ(chosen.WithoutCrops, 1U);
    EXPECT_EQ(chosen.Photos[0].File, result.File);
    EXPECT_EQ(chosen.Photos[0].Size, (PixelSize{1800, 1200}));
    EXPECT_EQ(chosen.Photos[1].Source, "c.json:3");
    ASSERT_EQ(chosen.Photos[0].Crops.size(), 2U);
    EXPECT_EQ(chosen.Photos[0].Crops[0].Rect, crop.Rect);
    EXPECT_EQ(chosen.Photos[0].Crops[0].Aspect, crop.Aspect);
    EXPECT_EQ(chosen.Photos[0].Crops[0].Scores.Peak, 0.1);
    EXPECT_TRUE(chosen.Photos[0].Crops[0].CoversContent);
    EXPECT_EQ(chosen.Photos[0].Labels[0].Shape, "wide");
    EXPECT_EQ(chosen.Photos[0].Labels[0].Fill, (PixelSize{320, 180}));
    EXPECT_EQ(chosen.Photos[0].Labels[1].Rank, 2);
}

// Otherwise the files of --from would not get the names that crop gives them.
TEST(ChosenCrops, HaveTheRatioAsRequested)
{
    for (const auto& [aspect, requested, read] :
         {std::array<const char*, 3>{"7:3", "21x9", "21x9"},
          std::array<const char*, 3>{"64:27", "21x9", "21x9"}, // its usual name
          std::array<const char*, 3>{"64:27", "64x27", "64x27"},
          std::array<const char*, 3>{"3:2", "1.5", "1.5"}}) {
        SCOPED_TRACE(std::string(aspect) + " " + requested);
        PhotoResult result;
        result.File = "a.jpg";
        result.Found.Size = {4000, 3000};
        result.Found.Crops.resize(1);
        result.Found.Crops[0].Aspect = *ParseRatio(aspect);
        result.Found.Crops[0].Rect = {0, 0, 1600, 900};
        result.Labels = {{"", requested, 1, {}}};
        EXPECT_EQ(ReadChosenCrops(JsonLine(result), "c.json").Photos[0].Labels[0].Ratio, read);
    }
}

TEST(ChosenCrops, ReadArraysInAnyLayout)
{
    const ChosenCrops chosen = ReadChosenCrops(
        "[\r\n{\"file\": \"a }\\\" {.jpg\",\n \"crops\": [\n  {\"x\": 0, \"y\": 0,\n"
        "   \"width\": 30, \"height\": 20}]},\n\n{\"file\":\"b\",\"crops\":[]}]\n",
        "c.json");
    ASSERT_EQ(chosen.Photos.size(), 1U);
    EXPECT_EQ(chosen.Photos[0].File, "a }\" {.jpg");
    EXPECT_EQ(chosen.Photos[0].Source, "c.json:2");
    EXPECT_EQ(chosen.Photos[0].Crops[0].Aspect, (Ratio{3, 2}));
    EXPECT_EQ(chosen.Photos[0].Labels[0].Ratio, "3x2");
    EXPECT_EQ(chosen.WithoutCrops, 1U);
}

TEST(ChosenCrops, ThatAreWrongAreNamedWithFileAndLine)
{
    const auto crop = [](const std::string& members) {
        return "{\"file\":\"a\",\"crops\":[]}\n{\"file\":\"a\",\"width\":100,\"height\":50,"
               "\"crops\":[{" +
               members + "}]}\n";
    };
    EXPECT_EQ(FaultOf(crop("\"x\":0,\"y\":0,\"width\":10,\"height\":10")), "none");
    EXPECT_EQ(FaultOf(crop("\"x\":91,\"y\":0,\"width\":10,\"height\":10")),
              "c.json:2: crop 1: leaves the photograph, which is 100 x 50");
    EXPECT_EQ(FaultOf(crop("\"x\":-1,\"y\":0,\"width\":10,\"height\":10")),
              "c.json:2: crop 1: x must be an integer of at least 0, not -1");
    EXPECT_EQ(FaultOf(crop("\"x\":1.5,\"y\":0,\"width\":10,\"height\":10")),
              "c.json:2: crop 1: x must be an integer of at least 0, not 1.5");
    EXPECT_EQ(FaultOf(crop("\"x\":0,\"y\":0,\"width\":0,\"height\":10")),
              "c.json:2: crop 1: width must be an integer of at least 1, not 0");
    EXPECT_EQ(FaultOf(crop("\"x\":0,\"y\":0,\"width\":99999999999999999999,\"height\":10")),
              "c.json:2: crop 1: width must be an integer of at least 1, not 1e+20");
    EXPECT_EQ(FaultOf(crop("\"x\":0,\"y\":0,\"width\":10")), "c.json:2: crop 1: has no height");
    EXPECT_EQ(FaultOf(crop("\"x\":0,\"y\":0,\"width\":10,\"height\":10,\"aspect\":\"wide\"")),
              "c.json:2: crop 1: aspect 'wide' is not W:H");
    EXPECT_EQ(FaultOf(crop(R"("x":0,"y":0,"width":9,"height":9,"ratio":"../up")")),
              "c.json:2: crop 1: ratio '../up' is not W:H");
    EXPECT_EQ(FaultOf(crop("\"x\":0,\"y\":0,\"width\":10,\"height\":10,\"shape\":\"../b\"")),
              "c.json:2: crop 1: shape must not contain a slash");
    EXPECT_EQ(FaultOf(crop("\"x\":0,\"y\":0,\"width\":60,\"height\":40,"
                           "\"fill\":{\"width\":100,\"height\":100}")),
              "c.json:2: crop 1: the crop does not have the ratio of its fill; "
              "change or remove fill");
    EXPECT_EQ(FaultOf("\n{\"crops\":[]}"), "c.json:2: has no file");
    EXPECT_EQ(FaultOf("\n\n{\"file\":\"a\",\n\"crops\":[1 2]}"), "c.json:4: is not JSON");
    EXPECT_EQ(FaultOf("{\"file\":\"a\"}\n{\"file\":"), "c.json:2: this object is never closed");
    EXPECT_EQ(FaultOf("{\"file\":\"a\"}\n{\"file\":\"a\",\n\"width\":1e999}"),
              "c.json:2: holds a number that is too large");
    EXPECT_EQ(FaultOf("file,x,y\n"), "c.json:1: is not the JSON of suggest or of a manifest");
    EXPECT_EQ(FaultOf("{\"file\":\"a\",\"crops\":{}}"), "c.json:1: crops must be an array");
}

TEST(ChosenCrops, AFaultIsOneShortLineWhateverIsWrong)
{
    const auto photo = [](const std::string& members) {
        return "{\"file\":\"a\",\"crops\":[{\"x\":0,\"y\":0,\"width\":9,\"height\":9," + members +
               "}]}";
    };
    EXPECT_EQ(FaultOf(photo(R"("ratio":"1\n:1")")), "c.json:1: crop 1: ratio '1\\n:1' is not W:H");
    EXPECT_EQ(FaultOf(photo(R"("aspect":"1\n:1")")),
              "c.json:1: crop 1: aspect '1\\n:1' is not W:H");
    // Shown in full, a list this deep would need more stack than there is.
    const std::string deep = std::string(300000, '[') + std::string(300000, ']');
    EXPECT_EQ(FaultOf(photo("\"rank\":" + deep)),
              "c.json:1: crop 1: rank must be an integer of at least 1, not an array");
    EXPECT_EQ(FaultOf(photo("\"shape\":" + deep)),
              "c.json:1: crop 1: shape must be a string, not an array");
    EXPECT_EQ(FaultOf(photo("\"shape\":{}")),
              "c.json:1: crop 1: shape must be a string, not an object");
}

// By two hundredths of the ratio and a pixel of the shorter side.
TEST(ChosenCrops, MayMissTheRatioOfTheirFillSlightly)
{
    const auto fault = [](const char* crop, const char* fill) {
        return FaultOf(std::string("{\"file\":\"a\",\"crops\":[{\"x\":0,\"y\":0,") + crop +
                       ",\"fill\":{" + fill + "}}]}\n");
    };
    const char* const square = "\"width\":1000,\"height\":1000";
    EXPECT_EQ(fault(square, "\"width\":10209,\"height\":10000"), "none");
    EXPECT_NE(fault(square, "\"width\":10212,\"height\":10000"), "none");
    EXPECT_EQ(fault(square, "\"width\":9791,\"height\":10000"), "none");
    EXPECT_NE(fault(square, "\"width\":9788,\"height\":10000"), "none");
    const char* const thin = "\"width\":100,\"height\":10"; // a pixel of ten is a tenth
    EXPECT_EQ(fault(thin, "\"width\":1119,\"height\":100"), "none");
    EXPECT_NE(fault(thin, "\"width\":1121,\"height\":100"), "none");
}

} // namespace
} // namespace vistaTrim::cli
