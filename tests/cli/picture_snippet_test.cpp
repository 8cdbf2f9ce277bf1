// What is written beside the crops: <picture> elements and the manifest.
#include "output/picture_snippet.h"

#include <algorithm>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "options/program_error.h"
#include "output/manifest.h"
#include "photo/sample_pictures.h"

namespace vistaTrim::cli {
namespace {

using namespace photo;

using nlohmann::json;

Crop CropOfRatio(const Ratio& ratio)
{
    Crop crop;
    crop.Rect = {1, 2, 300, 200};
    crop.Aspect = ratio;
    return crop;
}

TEST(PictureSnippet, OfOneRatioIsASingleImage)
{
    PhotoResult result;
    result.Found.Crops = {CropOfRatio({3, 2})};
    result.Crops = {{"/w/out/b.jpg", 0, {600, 400}}, {"/w/out/a.jpg", 0, {300, 200}}};
    EXPECT_EQ(PictureSnippet(result, "/w/p.html", "100vw"),
              "<picture>\n"
              "  <img src=\"out/b.jpg\" srcset=\"out/a.jpg 300w, out/b.jpg 600w\" sizes=\"100vw\" "
              "width=\"600\" height=\"400\" alt=\"\">\n"
              "</picture>\n");
}

TEST(PictureSnippet, OfSeveralRatiosOffersTheWidestFirst)
{
    PhotoResult result;
    // The second 1:1 is not offered; the 3:1 has no file.
    result.Found.Crops = {CropOfRatio({1, 2}), CropOfRatio({1, 1}), CropOfRatio({1, 1}),
                          CropOfRatio({3, 1}), CropOfRatio({2, 1})};
    result.Crops = {{"/w/tall.jpg", 0, {100, 200}},
                    {"/w/square.jpg", 1, {100, 100}},
                    {"/w/other.jpg", 2, {100, 100}},
                    {"/w/wide.jpg", 4, {200, 100}}};
    // The window switches between 2 and 1 at the square root of 2, and between 1 and 1/2 at the
    // square root of 1/2.
    EXPECT_EQ(PictureSnippet(result, "/w/p.html", "50vw"),
              "<picture>\n"
              "  <source media=\"(min-aspect-ratio: 1414/1000)\" srcset=\"wide.jpg 200w\" "
              "sizes=\"50vw\" width=\"200\" height=\"100\">\n"
              "  <source media=\"(min-aspect-ratio: 707/1000)\" srcset=\"square.jpg 100w\" "
              "sizes=\"50vw\" width=\"100\" height=\"100\">\n"
              "  <img src=\"tall.jpg\" srcset=\"tall.jpg 100w\" sizes=\"50vw\" width=\"100\" "
              "height=\"200\" alt=\"\">\n"
              "</picture>\n");
}

TEST(PictureSnippet, IsEmptyWithoutFiles)
{
    PhotoResult result;
    EXPECT_EQ(PictureSnippet(result, "/w/p.html", "100vw"), "");
    result.Found.Crops = {CropOfRatio({3, 2})};
    EXPECT_EQ(PictureSnippet(result, "/w/p.html", "100vw"), "");
}

TEST(PictureSnippet, EscapesAddressesAndSizes)
{
    PhotoResult result;
    result.Found.Crops = {CropOfRatio({3, 2})};
    result.Crops = {{"/w/out/caf\xc3\xa9 1,2%&<\">~-_.Z9.jpg", 0, {3, 2}}};
    const std::string html = PictureSnippet(result, "/w/sub/p.html", "a<b>&\"c\"'");
    EXPECT_NE(html.find("src=\"../out/caf%C3%A9%201%2C2%25%26%3C%22%3E~-_.Z9.jpg\""),
              std::string::npos)
        << html;
    EXPECT_NE(html.find("sizes=\"a&lt;b&gt;&amp;&quot;c&quot;'\""), std::string::npos) << html;
}

TEST(Manifest, ListsEachCropWithItsFiles)
{
    const TempFolder folder;
    PhotoResult whole;
    whole.File = "a.jpg";
    whole.Found.Size = {900, 600};
    whole.Found.Crops = {CropOfRatio({3, 2}), CropOfRatio({1, 1})};
    whole.Labels = {{"", "3x2", 1, {}}, {"", "1x1", 2, {}}};
    whole.Crops = {{"o/1", 1, {30, 20}}, {"o/2", 0, {300, 200}}, {"o/3", 1, {60, 40}}};
    PhotoResult partly = whole; // some shapes have crops, another failed
    partly.File = "b.jpg";
    partly.Error = "no crop of tall";
    PhotoResult failed;
    failed.File = "c.jpg";
    failed.Error = "broken";
    Manifest manifest(folder.Path("m.json"), false);
    for (const PhotoResult& result : {whole, partly, failed})
        manifest.Add(result);
    EXPECT_TRUE(folder.Files().empty()); // it appears when it is complete
    manifest.Finish();
    const std::string text = ReadText(folder.Path("m.json"));
    const json list = json::parse(text);
    ASSERT_EQ(list.size(), 3U);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 5); // one line per photograph
    EXPECT_EQ(list[0]["file"], "a.jpg");
    EXPECT_EQ(list[0]["crops"][0]["files"],
              json::parse(R"([{"file": "o/2", "width": 300, "height": 200}])"));
    EXPECT_EQ(list[0]["crops"][1]["files"],
              json::parse(R"([{"file": "o/1", "width": 30, "height": 20},
                              {"file": "o/3", "width": 60, "height": 40}])"));
    EXPECT_FALSE(list[0].contains("error"));
    EXPECT_EQ(list[1]["crops"].size(), 2U);
    EXPECT_EQ(list[1]["error"], "no crop of tall");
    EXPECT_EQ(list[2], json::parse(R"({"file": "c.jpg", "error": "broken"})"));
}

TEST(Manifest, OfNothingIsAnEmptyListAndReplacesOnlyIfAllowed)
{
    const TempFolder folder;
    Manifest(folder.Path("m.json"), false).Finish();
    EXPECT_EQ(json::parse(ReadText(folder.Path("m.json"))), json::array());
    EXPECT_THROW(Manifest(folder.Path("m.json"), false), ProgramError);
    EXPECT_NO_THROW(Manifest(folder.Path("m.json"), true).Finish());
}

} // namespace
} // namespace vistaTrim::cli
