#include "output/result_text.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "batch/resume.h"
#include "output/shown_ratio.h"

namespace vistaTrim::cli {
namespace {

PhotoResult SampleResult(const std::string& file, int crops)
{
    PhotoResult result;
    result.File = file;
    result.Found.Size = {4000, 3000};
    for (int i = 0; i < crops; ++i) {
        photo::Crop crop;
        crop.Rect = {10 * i, 20, 1600, 900};
        crop.Aspect = {16, 9};
        crop.CoversContent = i == 0;
        crop.ExpectedOverlap = 0.75;
        crop.Scores.Composition = static_cast<double>(0.1F);
        crop.Scores.Coverage = 0.2;
        crop.Scores.Border = 0.3;
        crop.Scores.Peak = 0.4;
        crop.Scores.CentrePeak = 0.5;
        crop.Scores.Roi = 1.0;
        crop.Scores.Merged = 0.7;
        result.Found.Crops.push_back(crop);
    }
    return result;
}

PhotoResult FailedResult(const std::string& file)
{
    PhotoResult result;
    result.File = file;
    result.Error = "the file is \"empty\", sorry";
    return result;
}

PhotoResult OfRatio(const photo::Ratio& aspect, const std::string& requested, photo::PixelSize crop)
{
    PhotoResult result = SampleResult("a.jpg", 1);
    result.Found.Crops[0].Aspect = aspect;
    result.Found.Crops[0].Rect = {0, 0, crop.Width, crop.Height};
    if (!requested.empty())
        result.Labels = {{"", requested, 1, {}}};
    return result;
}

TEST(ShownRatio, ACropFarFromItsRatioShowsItsOwn)
{
    EXPECT_EQ(ShownRatioOf(OfRatio({1, 1}, "1x1", {10249, 10000}), 0), "1:1");
    EXPECT_EQ(ShownRatioOf(OfRatio({1, 1}, "1x1", {10252, 10000}), 0), "1.03:1");
    EXPECT_EQ(ShownRatioOf(OfRatio({1, 1}, "1x1", {9751, 10000}), 0), "1:1");
    EXPECT_EQ(ShownRatioOf(OfRatio({1, 1}, "1x1", {9748, 10000}), 0), "1:1.03");
}

TEST(ShownRatio, IsTheRequestedOneOrItsUsualName)
{
    EXPECT_EQ(ShownRatioOf(OfRatio({7, 3}, "21x9", {2100, 900}), 0), "21:9");
    EXPECT_EQ(ShownRatioOf(OfRatio({8, 5}, "16x10", {1600, 1000}), 0), "16:10");
    EXPECT_EQ(ShownRatioOf(OfRatio({3, 2}, "1.5", {1500, 1000}), 0), "1.5");
    EXPECT_EQ(ShownRatioOf(OfRatio({64, 27}, "64x27", {640, 270}), 0), "64:27");
    EXPECT_EQ(ShownRatioOf(OfRatio({64, 27}, "", {640, 270}), 0), "21:9");
    EXPECT_NE(PeopleText(OfRatio({7, 3}, "21x9", {2100, 900})).find(" 21:9 "), std::string::npos);
}

TEST(ShownRatio, OfATinyCropIsItsActualOne)
{
    EXPECT_EQ(ShownRatioOf(OfRatio({4, 3}, "4x3", {3, 2}), 0), "3:2");
    EXPECT_EQ(ShownRatioOf(OfRatio({4, 3}, "", {1, 1}), 0), "1:1");
    EXPECT_EQ(ShownRatioOf(OfRatio({64, 27}, "", {7, 3}), 0), "21:9"); // as near as pixels allow
}

TEST(JsonLine, HasTheRequestedRatioWhereThatIsNotItsUsualName)
{
    const auto crop = [](const PhotoResult& result) {
        return nlohmann::json::parse(JsonLine(result))["crops"][0];
    };
    EXPECT_EQ(crop(OfRatio({7, 3}, "21x9", {2100, 900}))["aspect"], "7:3");
    EXPECT_EQ(crop(OfRatio({7, 3}, "21x9", {2100, 900}))["ratio"], "21:9");
    EXPECT_FALSE(crop(OfRatio({16, 9}, "16x9", {1600, 900})).contains("ratio"));
    EXPECT_FALSE(crop(OfRatio({16, 9}, "", {1600, 900})).contains("ratio"));
}

TEST(JsonLine, HoldsTheCropsOfAPhotograph)
{
    const std::string line = JsonLine(SampleResult("a \"b\".jpg", 2));
    EXPECT_EQ(line.find('\n'), line.size() - 1);
    const nlohmann::json json = nlohmann::json::parse(line);
    EXPECT_EQ(json["file"], "a \"b\".jpg");
    EXPECT_EQ(json["width"], 4000);
    EXPECT_EQ(json["height"], 3000);
    ASSERT_EQ(json["crops"].size(), 2U);
    const nlohmann::json crop = json["crops"][1];
    EXPECT_EQ(crop["x"], 10);
    EXPECT_EQ(crop["y"], 20);
    EXPECT_EQ(crop["width"], 1600);
    EXPECT_EQ(crop["height"], 900);
    EXPECT_EQ(crop["coversContent"], false);
    EXPECT_EQ(crop["expectedOverlap"], 0.75);
    EXPECT_EQ(crop["scores"]["composition"].get<double>(), static_cast<double>(0.1F));
    EXPECT_EQ(crop["scores"]["coverage"], 0.2);
    EXPECT_EQ(crop["scores"]["border"], 0.3);
    EXPECT_EQ(crop["scores"]["peak"], 0.4);
    EXPECT_EQ(crop["scores"]["centrePeak"], 0.5);
    EXPECT_EQ(crop["scores"]["roi"], 1.0);
    EXPECT_EQ(crop["scores"]["merged"], 0.7);
    EXPECT_EQ(crop["aspect"], "16:9");
    EXPECT_EQ(crop.size(), 8U);
    EXPECT_EQ(crop["scores"].size(), 7U);
}

TEST(JsonLine, OfAFailureHasOnlyFileAndError)
{
    const nlohmann::json json = nlohmann::json::parse(JsonLine(FailedResult("x.jpg")));
    EXPECT_EQ(json, (nlohmann::json{{"file", "x.jpg"}, {"error", "the file is \"empty\", sorry"}}));
}

TEST(JsonLine, StaysJsonForANameThatIsNotUtf8)
{
    const nlohmann::json json = nlohmann::json::parse(JsonLine(SampleResult("caf\xe9.jpg", 1)));
    EXPECT_EQ(json["file"], JsonFileKey("caf\xe9.jpg"));
}

TEST(CsvLines, QuoteWhatNeedsIt)
{
    const std::string lines = CsvLines(SampleResult("a,\"b\".jpg", 1));
    EXPECT_EQ(lines, "\"a,\"\"b\"\".jpg\",4000,3000,1,1,0,20,1600,900,true,0.10000000149011612,"
                     "0.2,0.3,0.4,0.5,1,0.7,0.75,\n");
    EXPECT_EQ(CsvLines(FailedResult("x.jpg")),
              "x.jpg,,,,,,,,,,,,,,,,,,\"the file is \"\"empty\"\", sorry\"\n");
}

TEST(CsvLines, HaveAsManyFieldsAsTheHeader)
{
    const auto commas = [](const std::string& line) {
        return std::count(line.begin(), line.end(), ',');
    };
    EXPECT_EQ(commas(CsvLines(SampleResult("x.jpg", 1))), commas(CsvHeader()));
    EXPECT_EQ(commas(CsvLines(SampleResult("x.jpg", 0))), commas(CsvHeader()));
}

TEST(PeopleText, SaysWhenThereIsNoCrop)
{
    EXPECT_NE(PeopleText(SampleResult("x.jpg", 0)).find("no crop"), std::string::npos);
    EXPECT_NE(PeopleText(SampleResult("x.jpg", 1)).find("1600"), std::string::npos);
}

TEST(Resume, SkipsPhotographsCompleteInJson)
{
    const std::string whole = JsonLine(SampleResult("a.jpg", 2)) + JsonLine(FailedResult("b.jpg")) +
                              JsonLine(SampleResult("c.jpg", 0));
    const std::string cut = JsonLine(SampleResult("d.jpg", 1)).substr(0, 40);
    const EarlierOutput held = HeldByJson(whole + cut);
    EXPECT_EQ(held.Files, (std::set<std::string>{"a.jpg", "c.jpg"}));
    EXPECT_EQ(held.Kept, JsonLine(SampleResult("a.jpg", 2)) + JsonLine(SampleResult("c.jpg", 0)));
}

TEST(Resume, SkipsPhotographsCompleteInCsv)
{
    const std::string a = CsvLines(SampleResult("a\n,.jpg", 2));
    const std::string c = CsvLines(SampleResult("c.jpg", 0));
    const std::string d = CsvLines(SampleResult("d.jpg", 3));
    const std::string twoOfThree = d.substr(0, d.find('\n', d.find('\n') + 1) + 1);
    const EarlierOutput held =
        HeldByCsv(CsvHeader() + a + CsvLines(FailedResult("b.jpg")) + c + twoOfThree, CsvHeader());
    EXPECT_EQ(held.Files, (std::set<std::string>{"a\n,.jpg", "c.jpg"}));
    EXPECT_EQ(held.Kept, CsvHeader() + a + c);
}

TEST(Resume, RejectsAFileThatIsNotOurs)
{
    EXPECT_ANY_THROW(HeldByJson("dear diary\n"));
    EXPECT_ANY_THROW(HeldByCsv("dear diary\n", CsvHeader()));
    EXPECT_TRUE(HeldByJson("").Files.empty());
    EXPECT_TRUE(HeldByCsv("", CsvHeader()).Files.empty());
}

} // namespace
} // namespace vistaTrim::cli
