#include "report/report_page.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "output/result_text.h"
#include "report/base64.h"
#include "report/report_data.h"

namespace vistaTrim::cli {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

constexpr const char* kHostileName = "/photos/</script><b>'\"&.jpg";

PhotoResult TwoCrops(const std::string& file)
{
    PhotoResult result;
    result.File = file;
    result.Found.Size = {4000, 3000};
    photo::Crop crop;
    crop.Rect = {0, 300, 4000, 1688};
    crop.Aspect = {64, 27};
    crop.Scores.Coverage = 0.25;
    crop.Explained = photo::CropExplanation{{0.5, 0.75, 1.0, 0.25, 0.125}, {true}};
    result.Found.Crops = {crop, crop};
    result.Found.Crops[1].Rect = {0, 300, 2000, 844};
    photo::Explanation explanation;
    explanation.Candidates = 900;
    explanation.Passing = 800;
    explanation.Wishes = {{photo::WishKind::MustKeep, {10, 400, 20, 30}}};
    explanation.WishRegions = {std::nullopt};
    explanation.MetBy = {800};
    result.Found.Explained = explanation;
    return result;
}

// RFC 4648, section 10.
TEST(Base64, EncodesThePublishedExamples)
{
    const std::vector<std::pair<std::string, std::string>> examples = {{"", ""},
                                                                       {"f", "Zg=="},
                                                                       {"fo", "Zm8="},
                                                                       {"foo", "Zm9v"},
                                                                       {"foob", "Zm9vYg=="},
                                                                       {"fooba", "Zm9vYmE="},
                                                                       {"foobar", "Zm9vYmFy"}};
    for (const auto& [text, encoded] : examples)
        EXPECT_EQ(Base64({text.begin(), text.end()}), encoded);
    EXPECT_EQ(Base64({0xFB, 0xFF, 0xBF}), "+/+/");
}

TEST(ReportData, HoldsTheLineOfSuggestWithoutExplanations)
{
    PhotoResult result = TwoCrops("/photos/a.jpg");
    const json data = json::parse(ReportData(result));

    result.Found.Explained.reset();
    for (photo::Crop& crop : result.Found.Crops)
        crop.Explained.reset();
    EXPECT_EQ(data.at("line"), json::parse(JsonLine(result)));
}

TEST(ReportData, HoldsWhatPeopleNeedBesidesTheLine)
{
    const json data = json::parse(ReportData(TwoCrops("/photos/a.jpg")));
    EXPECT_EQ(data.at("ratios"), (json{"21:9", "21:9"}));
    EXPECT_EQ(data.at("candidates"), 800); // of which the ranks are shares
    EXPECT_EQ(data.at("ranks").at(0).at("coverage"), 0.75);
    EXPECT_EQ(
        data.at("regions"),
        json::parse(R"([{"label": "must-keep", "x": 10, "y": 400, "width": 20, "height": 30}])"));
}

TEST(ReportData, NamesFoundRegionsAndThoseOfTheRequest)
{
    const std::string line =
        R"({"file": "a.jpg", "width": 100, "height": 80, "crops": [], "regions": [)"
        R"({"x": 1, "y": 2, "width": 3, "height": 4, "kind": "face", "label": "Ada"},)"
        R"({"x": 5, "y": 6, "width": 7, "height": 8, "kind": "animal"}],)"
        R"("explain": {"candidates": 9, "passing": 9, "note": "", "wishes": [)"
        R"({"kind": "keep", "x": 0, "y": 1, "width": 5, "height": 6, "source": "face-finder"},)"
        R"({"kind": "avoid", "x": 9, "y": 8, "width": 7, "height": 6, "source": "request"}]}})";
    const json data = json::parse(ReportDataOf(line, {}));
    EXPECT_EQ(data.at("regions"), json::parse(R"([
        {"label": "Ada", "x": 1, "y": 2, "width": 3, "height": 4},
        {"label": "animal", "x": 5, "y": 6, "width": 7, "height": 8},
        {"label": "avoid", "x": 9, "y": 8, "width": 7, "height": 6}])"));
    EXPECT_FALSE(data.at("line").contains("regions"));
}

TEST(ReportData, HasTheExpectedOverlapOfAllCropsOrOfNone)
{
    const auto line = [](const char* first, const char* second) {
        return R"({"crops": [{"scores": {}, )" + std::string(first) + R"(}, {"scores": {}, )" +
               second + "}]}";
    };
    EXPECT_THAT(ExpectedOverlaps(line("\"expectedOverlap\": 0.5", "\"expectedOverlap\": 0.25")),
                testing::ElementsAre(0.5, 0.25));
    EXPECT_THAT(ExpectedOverlaps(line("\"expectedOverlap\": 0.5", "\"x\": 1")), testing::IsEmpty());
    EXPECT_EQ(json::parse(ReportMeasures()).at(0).at("name"), "expectedOverlap");
}

TEST(ReportData, CannotEndItsBlockWhateverTheFileIsCalled)
{
    const std::string data = ReportData(TwoCrops(kHostileName));
    EXPECT_THAT(data, Not(HasSubstr("<")));
    EXPECT_EQ(json::parse(data).at("line").at("file"), kHostileName);
    EXPECT_NO_THROW(json::parse(ReportData(TwoCrops("\xff\xfe.jpg")))); // not UTF-8
}

TEST(ReportPage, EscapesNamesAndErrors)
{
    EXPECT_EQ(EscapedHtml("<a b=\"c\" d='e'>&amp;"),
              "&lt;a b=&quot;c&quot; d=&#39;e&#39;&gt;&amp;amp;");
    PhotoResult failed;
    failed.File = kHostileName;
    failed.Error = "no <b>photograph</b>";
    const std::string html = ReportFailure(failed, 6);
    EXPECT_THAT(html, HasSubstr("id=\"photo-7\""));
    EXPECT_THAT(html, Not(HasSubstr("<b>")));
    const std::string section = ReportSection(TwoCrops(kHostileName), {"data:,", {}}, 0);
    EXPECT_THAT(section, Not(HasSubstr("</script><b>'")));
    EXPECT_THAT(section, Not(HasSubstr("<b>'")));
}

TEST(ReportPage, FillsEveryPlaceholderOfItsTemplate)
{
    const std::string page =
        ReportBeginning() + ReportSection(TwoCrops("a.jpg"), {"data:,", {}}, 0) + ReportEnd(3, 1);
    EXPECT_THAT(page, Not(HasSubstr("{{")));
    EXPECT_THAT(page, HasSubstr("3 photographs, 1 not readable."));
    EXPECT_THAT(ReportEnd(1, 0), HasSubstr("1 photograph."));
}

TEST(ReportPage, PlacesFramesAndNumbers)
{
    const std::string section = ReportSection(TwoCrops("a.jpg"), {"data:,", {}}, 0);
    EXPECT_THAT(section, HasSubstr("left:0.0000%;top:10.0000%;width:100.0000%;height:56.2667%\">"
                                   "<span class=\"badge at-left at-top\">1</span>"));
    // The first number takes the corner that both crops share.
    EXPECT_THAT(section, HasSubstr("<span class=\"badge at-right at-top\">2</span>"));
    EXPECT_THAT(section,
                HasSubstr("<b>1 &middot; 21:9</b><span>4000 &times; 1688 at 0, 300</span>"));
}

} // namespace
} // namespace vistaTrim::cli
