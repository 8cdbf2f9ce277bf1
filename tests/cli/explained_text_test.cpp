// The output of --explain, in JSON and for people, to the last character.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "output/result_text.h"

namespace vistaTrim::cli {
namespace {

using namespace photo;

using nlohmann::json;

// Every figure differs from all others, so that a mix-up shows.
PhotoResult Explained()
{
    PhotoResult result;
    result.File = "a.jpg";
    result.Found.Size = {4000, 3000};
    Crop crop;
    crop.Rect = {11, 22, 1600, 900};
    crop.Aspect = {16, 9};
    crop.CoversContent = true;
    crop.ExpectedOverlap = 0.75;
    crop.Scores = {0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7};
    crop.Explained = CropExplanation{{0.11, 0.22, 0.33, 0.44, 0.55}, {true, false}};
    result.Found.Crops = {crop, crop};
    result.Found.Crops[1].CoversContent = false;
    result.Found.Crops[1].Explained->WishesMet = {false, true};
    FoundRegion face{{31, 32, 33, 34}, RegionKind::Face, RegionSource::Metadata, 0.875, "Ada",
                     WishKind::Keep};
    FoundRegion shown{{41, 42, 43, 44}, RegionKind::Other, RegionSource::File, 0.5, "", {}};
    result.Found.Regions = {shown, face};
    Explanation explanation;
    explanation.Candidates = 900;
    explanation.Passing = 800;
    explanation.Wishes = {{WishKind::MustAvoid, {51, 52, 53, 54}},
                          {WishKind::Keep, {61, 62, 63, 64}}};
    explanation.WishRegions = {std::nullopt, 1};
    explanation.MetBy = {700, 600};
    explanation.Why = Shortfall::OthersRankTooLow;
    result.Found.Explained = explanation;
    result.Labels = {{"wide", "16x9", 1, PixelSize{320, 180}}, {"", "16x9", 2, {}}};
    return result;
}

const char* const kNote = "of 800 candidates, the others rank too low or are much like these";

TEST(ExplainedText, InJsonHasEachFigureUnderItsName)
{
    const json line = json::parse(JsonLine(Explained()));
    EXPECT_EQ(line["regions"], json::parse(R"([
        {"x": 41, "y": 42, "width": 43, "height": 44, "kind": "other", "source": "file",
         "confidence": 0.5, "wish": "none"},
        {"x": 31, "y": 32, "width": 33, "height": 34, "kind": "face", "source": "metadata",
         "confidence": 0.875, "label": "Ada", "wish": "keep"}])"));
    EXPECT_EQ(line["crops"][0], json::parse(R"(
        {"x": 11, "y": 22, "width": 1600, "height": 900, "aspect": "16:9", "shape": "wide",
         "rank": 1, "fill": {"width": 320, "height": 180}, "coversContent": true,
         "expectedOverlap": 0.75,
         "scores": {"composition": 0.1, "coverage": 0.2, "border": 0.3, "peak": 0.4,
                    "centrePeak": 0.5, "roi": 0.6, "merged": 0.7},
         "explain": {"aspect": "16:9",
                     "ranks": {"composition": 0.11, "coverage": 0.22, "border": 0.33,
                               "peak": 0.44, "centrePeak": 0.55},
                     "wishesMet": [true, false]}})"));
    EXPECT_FALSE(line["crops"][1].contains("shape"));
    EXPECT_FALSE(line["crops"][1].contains("rank"));
    json expected = json::parse(R"(
        {"candidates": 900, "passing": 800, "wishes": [
            {"kind": "must-avoid", "x": 51, "y": 52, "width": 53, "height": 54,
             "source": "request", "metByCandidates": 700},
            {"kind": "keep", "x": 61, "y": 62, "width": 63, "height": 64,
             "source": "metadata", "metByCandidates": 600}]})");
    expected["note"] = kNote;
    EXPECT_EQ(line["explain"], expected);
}

TEST(ExplainedText, ForPeopleHasEachFigureInItsPlace)
{
    const std::string crop =
        "    16:9     11     22    1600     900  0.7500  0.7000  0.1000  0.2000  0.3000  0.4000  "
        "0.5000  0.6000";
    const std::string ranks = "       composition  0.1000, at or above 11.0 % of the candidates\n"
                              "       coverage     0.2000, at or above 22.0 % of the candidates\n"
                              "       border       0.3000, at or above 33.0 % of the candidates\n"
                              "       peak         0.4000, at or above 44.0 % of the candidates\n"
                              "       centrePeak   0.5000, at or above 55.0 % of the candidates\n";
    EXPECT_EQ(PeopleText(Explained()),
              "a.jpg: 4000 x 3000\n"
              "    #   ratio      x      y   width  height  expect  merged    comp   cover  border"
              "    peak  centre     roi  content\n"
              "    1" +
                  crop + "  covered\n" + ranks +
                  "       covers the content\n"
                  "       --must-avoid 51,52,53,54 met\n"
                  "       face, keep 61,62,63,64 missed\n"
                  "    2" +
                  crop + "  -\n" + ranks +
                  "       does not cover the content\n"
                  "       --must-avoid 51,52,53,54 missed\n"
                  "       face, keep 61,62,63,64 met\n"
                  "  900 candidates, 800 of them pass the hard wishes\n"
                  "  --must-avoid 51,52,53,54: met by 700 candidates\n"
                  "  face, keep 61,62,63,64: met by 600 candidates\n"
                  "  other 41,42,43,44, from file, confidence 0.50\n"
                  "  face 31,32,33,34, from metadata, confidence 0.88\n"
                  "  " +
                  kNote + "\n");
}

TEST(ExplainedText, ForPeopleIsShortWithoutAnExplanation)
{
    PhotoResult result = Explained();
    result.Found.Explained.reset();
    const std::string text = PeopleText(result);
    EXPECT_EQ(text.find("candidates"), std::string::npos);
    EXPECT_EQ(text.find("at or above"), std::string::npos);
    result.Found.Crops.clear();
    result.WhyNone = "too small";
    EXPECT_EQ(PeopleText(result), "a.jpg: 4000 x 3000\n  no crop: too small\n");
    result = Explained();
    result.Found.Crops.clear();
    EXPECT_EQ(PeopleText(result).find("no crop"), std::string::npos); // the note says why
    result.Error = "broken";
    EXPECT_EQ(PeopleText(result), ""); // on standard error alone
}

TEST(ExplainedText, OfEveryShortfallIsASentence)
{
    Explanation explanation;
    explanation.Passing = 7;
    const std::pair<Shortfall, const char*> notes[] = {
        {Shortfall::None, ""},
        {Shortfall::PhotographTooSmall, "the photograph is too small for any crop"},
        {Shortfall::HardWishesTogether,
         "no candidate meets all of --must-keep and --must-avoid at once"},
        {Shortfall::SizeMissesWishes,
         "no crop of exactly the requested size meets the wishes at full resolution"},
        {Shortfall::FewCandidates, "only 7 candidates are left to choose from"},
        {Shortfall::OthersRankTooLow,
         "of 7 candidates, the others rank too low or are much like these"}};
    for (const auto& [why, note] : notes) {
        explanation.Why = why;
        EXPECT_EQ(NoteOf(explanation, "--"), note);
    }
    explanation.Passing = 1;
    explanation.Why = Shortfall::FewCandidates;
    EXPECT_EQ(NoteOf(explanation), "only one candidate is left");
    explanation.Why = Shortfall::WishMetByNone;
    explanation.UnmetWish = WishKind::MustAvoid;
    EXPECT_EQ(NoteOf(explanation), "no candidate meets must-avoid; try more ratios or scales");
}

} // namespace
} // namespace vistaTrim::cli
