// The program's `suggest` on good and on broken photographs.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <thread>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "photo/sample_pictures.h"
#include "run_program.h"
#include "vistaTrimPhoto/geometry.h"

namespace vistaTrim::cli {
namespace {

using namespace photo;

using nlohmann::json;
using vips::VImage;

std::vector<std::string> LinesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

std::vector<json> JsonLinesOf(const std::string& text)
{
    std::vector<json> lines;
    for (const std::string& line : LinesOf(text))
        lines.push_back(json::parse(line));
    return lines;
}

json SuggestOne(const std::string& path, std::vector<std::string> options = {})
{
    options.insert(options.begin(), {"suggest", "--json", path});
    const Outcome outcome = RunProgram(options);
    EXPECT_EQ(outcome.Status, 0) << outcome.Err;
    const auto lines = JsonLinesOf(outcome.Out);
    EXPECT_EQ(lines.size(), 1U);
    return lines.empty() ? json{} : lines[0];
}

PixelRect RectOf(const json& crop)
{
    return {crop["x"], crop["y"], crop["width"], crop["height"]};
}

void ExpectSoundCrops(const json& result)
{
    ASSERT_TRUE(result.contains("crops")) << result;
    const PixelRect photo{0, 0, result["width"], result["height"]};
    for (const json& crop : result["crops"]) {
        const PixelRect rect = RectOf(crop);
        EXPECT_GE(rect.Width, 1) << crop;
        EXPECT_GE(rect.Height, 1) << crop;
        EXPECT_TRUE(Contains(photo, rect)) << crop;
        for (const char* name : {"composition", "coverage", "border", "peak", "centrePeak", "roi"})
            EXPECT_TRUE(crop["scores"][name] >= 0.0 && crop["scores"][name] <= 1.001)
                << name << " " << crop;
        EXPECT_TRUE(crop["scores"]["merged"].is_number());
    }
}

// Crops that must contain the disc are ranked by coverage, so that the test does not depend on the
// default weights.
const std::vector<std::string> kByContent = {"--weights", "0,0.5,0,0.5,0"};

std::vector<std::string> ByContent(std::vector<std::string> options)
{
    options.insert(options.end(), kByContent.begin(), kByContent.end());
    return options;
}

TEST(Suggest, FindsTheDisc)
{
    const TempFolder folder;
    Scene(1800, 1200, 0.3, 0.6).write_to_file(folder.Path("a.jpg").c_str());
    const json result = SuggestOne(folder.Path("a.jpg"), ByContent({"--top", "3"}));
    ExpectSoundCrops(result);
    EXPECT_EQ(result["width"], 1800);
    EXPECT_EQ(result["height"], 1200);
    ASSERT_EQ(result["crops"].size(), 3U);
    const json& best = result["crops"][0];
    EXPECT_TRUE(Contains(RectOf(best), {540 - 100, 720 - 100, 200, 200})) << best;
    EXPECT_EQ(best["coversContent"], true);
}

// At full scale there are 25 positions of each ratio, and all 50 are returned when more are
// requested.
TEST(Suggest, KeepsTheRequestedRatiosExactly)
{
    const TempFolder folder;
    Scene(3000, 2000, 0.3, 0.6).write_to_file(folder.Path("a.jpg").c_str());
    const json result =
        SuggestOne(folder.Path("a.jpg"), {"--aspect", "16:9", "--aspect", "1:1", "--scale", "1",
                                          "--density", "25", "--top", "100"});
    int wide = 0;
    int square = 0;
    for (const json& crop : result["crops"]) {
        const PixelRect rect = RectOf(crop);
        wide += rect.Width * 9 == rect.Height * 16 ? 1 : 0;
        square += rect.Width == rect.Height ? 1 : 0;
    }
    EXPECT_EQ(wide, 25);
    EXPECT_EQ(square, 25);
    EXPECT_EQ(result["crops"].size(), 50U);
}

double OverlapOf(const PixelRect& a, const PixelRect& b)
{
    const double width = std::min(a.X + a.Width, b.X + b.Width) - std::max(a.X, b.X);
    const double height = std::min(a.Y + a.Height, b.Y + b.Height) - std::max(a.Y, b.Y);
    const double shared = std::max(0.0, width) * std::max(0.0, height);
    return shared / (static_cast<double>(a.Width) * a.Height +
                     static_cast<double>(b.Width) * b.Height - shared);
}

TEST(Suggest, GivesDifferentCropsWithTheirExpectedOverlap)
{
    const TempFolder folder;
    Scene(1800, 1200, 0.3, 0.6).write_to_file(folder.Path("a.jpg").c_str());
    const json crops = SuggestOne(folder.Path("a.jpg"))["crops"];
    ASSERT_EQ(crops.size(), 5U);
    for (size_t i = 0; i < crops.size(); ++i) {
        EXPECT_GT(crops[i]["expectedOverlap"], 0.3);
        EXPECT_LT(crops[i]["expectedOverlap"], 1.0);
        EXPECT_LE(crops[i]["expectedOverlap"], crops[0]["expectedOverlap"]);
        for (size_t k = 0; k < i; ++k)
            EXPECT_LT(OverlapOf(RectOf(crops[i]), RectOf(crops[k])), 0.98) << i << " " << k;
    }
}

TEST(Suggest, GivesTheBestOfEachRatioBeforeSecondOnes)
{
    const TempFolder folder;
    Scene(1800, 1200, 0.3, 0.6).write_to_file(folder.Path("a.jpg").c_str());
    const json crops = SuggestOne(folder.Path("a.jpg"), {"--aspect", "1:1", "--aspect", "16:9",
                                                         "--top", "5", "--explain"})["crops"];
    ASSERT_EQ(crops.size(), 5U);
    for (size_t i = 0; i < crops.size(); ++i)
        EXPECT_EQ(crops[i]["explain"]["aspect"], i % 2 == 0 ? "1:1" : "16:9") << i;
}

TEST(Suggest, GivesTheLargestCentredCropOfAnEmptyPicture)
{
    const TempFolder folder;
    (VImage::black(1200, 900, VImage::option()->set("bands", 3)) + 120)
        .cast(VIPS_FORMAT_UCHAR)
        .write_to_file(folder.Path("flat.png").c_str());
    const json flat = SuggestOne(folder.Path("flat.png"))["crops"];
    EXPECT_EQ(RectOf(flat[0]), (PixelRect{0, 0, 1200, 900}));
    const json square = SuggestOne(folder.Path("flat.png"), {"--aspect", "1:1"})["crops"];
    EXPECT_EQ(RectOf(square[0]), (PixelRect{150, 0, 900, 900}));
    Scene(1200, 900, 0.3, 0.6).write_to_file(folder.Path("scene.png").c_str());
    EXPECT_LT(flat[0]["expectedOverlap"],
              SuggestOne(folder.Path("scene.png"))["crops"][0]["expectedOverlap"]);
}

// The engine's own list stops grouping similar crops when more are requested than it has.
TEST(Suggest, FewCropsAreAPrefixOfMany)
{
    const TempFolder folder;
    Scene(1800, 1200, 0.3, 0.6).write_to_file(folder.Path("a.jpg").c_str());
    const json many = SuggestOne(folder.Path("a.jpg"), {"--top", "300"})["crops"];
    ASSERT_EQ(many.size(), 300U);
    for (const size_t top : {1U, 5U, 70U, 200U}) {
        const json few = SuggestOne(folder.Path("a.jpg"), {"--top", std::to_string(top)})["crops"];
        ASSERT_EQ(few.size(), top);
        for (size_t i = 0; i < top; ++i)
            EXPECT_EQ(few[i], many[i]) << top << " " << i;
    }
}

TEST(Suggest, GivesRequestedSizesToThePixel)
{
    const TempFolder folder;
    Scene(1801, 1203, 0.3, 0.6).write_to_file(folder.Path("a.jpg").c_str());
    const json result = SuggestOne(folder.Path("a.jpg"), {"--size", "777x333"});
    ASSERT_EQ(result["crops"].size(), 5U);
    for (const json& crop : result["crops"]) {
        EXPECT_EQ(crop["width"], 777);
        EXPECT_EQ(crop["height"], 333);
    }
    const Outcome tooLarge =
        RunProgram({"suggest", "--json", "--size", "1802x100", folder.Path("a.jpg")});
    EXPECT_EQ(tooLarge.Status, 1);
    EXPECT_NE(tooLarge.Err.find("a.jpg: a crop of 1802 x 100 does not fit"), std::string::npos);
    EXPECT_TRUE(JsonLinesOf(tooLarge.Out).at(0).contains("error"));
}

TEST(Suggest, GivesOnlyTheRequestedScales)
{
    const TempFolder folder;
    Scene(1800, 1200, 0.3, 0.6).write_to_file(folder.Path("a.jpg").c_str());
    const json result =
        SuggestOne(folder.Path("a.jpg"), {"--aspect", "3:2", "--scale", "0.5", "--top", "50"});
    for (const json& crop : result["crops"])
        EXPECT_NEAR(crop["width"].get<double>(), 900.0, 6.0);
}

TEST(Suggest, HonoursHardWishesToThePixel)
{
    const TempFolder folder;
    Scene(2999, 2001, 0.3, 0.6).write_to_file(folder.Path("a.jpg").c_str());
    const PixelRect keep{1503, 101, 617, 911};
    const PixelRect avoid{2701, 1501, 97, 203};
    const json result =
        SuggestOne(folder.Path("a.jpg"), {"--must-keep", "1503,101,617,911", "--must-avoid",
                                          "2701,1501,97,203", "--top", "200"});
    EXPECT_GT(result["crops"].size(), 20U);
    for (const json& crop : result["crops"]) {
        EXPECT_TRUE(Contains(RectOf(crop), keep)) << crop;
        EXPECT_FALSE(Overlaps(RectOf(crop), avoid)) << crop;
    }
}

// With fewer candidates than requested, all of them are listed in plain order: first every crop
// that meets the wish.
TEST(Suggest, PutsCropsThatMeetSoftWishesFirst)
{
    const TempFolder folder;
    Scene(1800, 1200, 0.3, 0.6).write_to_file(folder.Path("a.jpg").c_str());
    const std::vector<std::string> few = {"--aspect",  "3:2", "--scale", "0.5",
                                          "--density", "12",  "--top",   "1000"};
    const auto with = [&few](std::vector<std::string> wish) {
        wish.insert(wish.end(), few.begin(), few.end());
        return wish;
    };
    const auto firstMissing = [](const json& result,
                                 const std::function<bool(const PixelRect&)>& meets) {
        const json& crops = result["crops"];
        size_t first = 0;
        while (first < crops.size() && meets(RectOf(crops[first])))
            ++first;
        for (size_t i = 0; i < crops.size(); ++i) {
            EXPECT_EQ(meets(RectOf(crops[i])), i < first) << i << " " << crops[i];
            EXPECT_EQ(crops[i]["scores"]["roi"] == 1.0, i < first) << i << " " << crops[i];
            EXPECT_EQ(crops[i]["explain"]["wishesMet"], json::array({i < first}));
        }
        EXPECT_GT(first, 2U);
        EXPECT_LT(first, crops.size());
    };
    firstMissing(SuggestOne(folder.Path("a.jpg"), with({"--keep", "1300,50,200,200", "--explain"})),
                 [](const PixelRect& rect) {
                     return Contains(rect, {1300, 50, 200, 200});
                 });
    firstMissing(
        SuggestOne(folder.Path("a.jpg"), with({"--avoid", "440,620,200,200", "--explain"})),
        [](const PixelRect& rect) {
            return !Overlaps(rect, {440, 620, 200, 200});
        });
}

TEST(Suggest, ExplainsWhyThereIsNoCrop)
{
    const TempFolder folder;
    Scene(1800, 1200, 0.3, 0.6).write_to_file(folder.Path("a.jpg").c_str());
    const std::vector<std::string> impossible = {"--must-avoid", "0,0,1800,1200", "--explain"};
    const json result = SuggestOne(folder.Path("a.jpg"), impossible);
    EXPECT_TRUE(result["crops"].empty());
    EXPECT_GT(result["explain"]["candidates"], 1000);
    EXPECT_EQ(result["explain"]["passing"], 0);
    EXPECT_EQ(result["explain"]["note"],
              "no candidate meets --must-avoid; try more ratios or scales");
}

TEST(Suggest, SaysWhyThereAreFewerCropsThanRequested)
{
    const TempFolder folder;
    Scene(1800, 1200, 0.3, 0.6).write_to_file(folder.Path("a.jpg").c_str());
    const json thin = SuggestOne(folder.Path("a.jpg"), {"--aspect", "1:100000", "--explain"});
    EXPECT_TRUE(thin["crops"].empty());
    EXPECT_EQ(
        thin["explain"]["note"],
        "--aspect is too extreme: a crop would be less than a pixel wide or high in the reduced "
        "picture that is searched");
    const json scaled = SuggestOne(folder.Path("a.jpg"), {"--scale", "0.0001,0.0002", "--explain"});
    EXPECT_EQ(scaled["explain"]["note"],
              "--scale is too small: a crop would be less than a pixel of the reduced picture "
              "that is searched");
    const json one =
        SuggestOne(folder.Path("a.jpg"), {"--aspect", "3:2", "--scale", "1", "--explain"});
    EXPECT_EQ(one["crops"].size(), 1U);
    EXPECT_EQ(one["explain"]["note"], "only one candidate is left");
    // One pixel of this photograph is about forty of the working picture's.
    Scene(16, 11, 0.3, 0.6).write_to_file(folder.Path("b.png").c_str());
    const json small =
        SuggestOne(folder.Path("b.png"), {"--aspect", "1:1", "--top", "50", "--explain"});
    ASSERT_LT(small["crops"].size(), 50U);
    EXPECT_EQ(small["explain"]["note"],
              "of " + std::to_string(small["explain"]["passing"].get<int>()) +
                  " candidates, the others rank too low or are much like these");
}

TEST(Suggest, RanksByTheRequestedMeasure)
{
    const TempFolder folder;
    Scene(1800, 1200, 0.3, 0.6).write_to_file(folder.Path("a.jpg").c_str());
    const std::vector<std::pair<std::string, std::string>> measures = {
        {"composition", "composition"},
        {"coverage", "coverage"},
        {"border", "border"},
        {"peak", "peak"},
        {"centre-peak", "centrePeak"}};
    for (const auto& measure : measures) {
        const json crops =
            SuggestOne(folder.Path("a.jpg"), {"--explain", "--rank-by", measure.first})["crops"];
        EXPECT_EQ(crops[0]["explain"]["ranks"][measure.second], 1.0) << measure.first;
        for (size_t i = 1; i < crops.size(); ++i)
            EXPECT_LE(crops[i]["scores"][measure.second], crops[i - 1]["scores"][measure.second])
                << measure.first << " " << i;
    }
    const json byCoverage = SuggestOne(folder.Path("a.jpg"), {"--weights", "0,1,0"});
    const json byComposition = SuggestOne(folder.Path("a.jpg"), {"--weights", "1,0,0"});
    EXPECT_NE(byCoverage["crops"], byComposition["crops"]);
}

TEST(Suggest, TheFirstCropMeetsAllWishesIfAnyCandidateDoes)
{
    const TempFolder folder;
    Scene(1800, 1200, 0.3, 0.6).write_to_file(folder.Path("a.jpg").c_str());
    for (int i = 0; i < 12; ++i) {
        const std::string keep =
            std::to_string(100 + 130 * i) + "," + std::to_string(1000 - 80 * i) + ",60,60";
        const json result = SuggestOne(folder.Path("a.jpg"), {"--explain", "--keep", keep});
        ASSERT_GT(result["explain"]["wishes"][0]["metByCandidates"], 0) << keep;
        EXPECT_EQ(result["crops"][0]["explain"]["wishesMet"], json::array({true})) << keep;
    }
}

TEST(Suggest, SaysWhatIsWrongWithARankingFile)
{
    const TempFolder folder;
    Scene(600, 400, 0.3, 0.6).write_to_file(folder.Path("a.jpg").c_str());
    std::ofstream(folder.Path("r.json")) << R"({"format": "vistatrim-ranking", "version": 2})";
    const Outcome wrong =
        RunProgram({"suggest", "--ranking", folder.Path("r.json"), folder.Path("a.jpg")});
    EXPECT_EQ(wrong.Status, 2);
    EXPECT_NE(wrong.Err.find("r.json: 'version' must be 1"), std::string::npos) << wrong.Err;
}

TEST(Suggest, TreatsAllEightOrientationsAlike)
{
    const TempFolder folder;
    const VImage upright = Scene(1200, 800, 0.3, 0.6);
    json first;
    for (int orientation = 1; orientation <= 8; ++orientation) {
        const std::string path = folder.Path("o.tif");
        StoredWithOrientation(upright, orientation).write_to_file(path.c_str());
        const json result = SuggestOne(path, ByContent({"--top", "1"}));
        EXPECT_EQ(result["width"], 1200);
        EXPECT_EQ(result["height"], 800);
        EXPECT_TRUE(Contains(RectOf(result["crops"][0]), {360 - 60, 480 - 60, 120, 120}))
            << orientation << " " << result["crops"][0];
        if (orientation == 1)
            first = result;
        // libvips shrinks before it rotates, which changes a few pixels by one level.
        const PixelRect a = RectOf(first["crops"][0]);
        const PixelRect b = RectOf(result["crops"][0]);
        EXPECT_LE(std::abs(a.X - b.X) + std::abs(a.Y - b.Y) + std::abs(a.Width - b.Width), 60)
            << orientation;
    }
}

TEST(Suggest, TakesEveryKindOfPixels)
{
    const TempFolder folder;
    const VImage scene = Scene(900, 600, 0.3, 0.6);
    const VImage alpha = (VImage::xyz(900, 600).extract_band(0) < 700).cast(VIPS_FORMAT_UCHAR);
    scene.colourspace(VIPS_INTERPRETATION_B_W)
        .bandjoin(alpha)
        .write_to_file(folder.Path("1 grey and alpha.png").c_str());
    (scene.cast(VIPS_FORMAT_USHORT) * 257)
        .cast(VIPS_FORMAT_USHORT)
        .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_RGB16))
        .write_to_file(folder.Path("2 sixteen bit.png").c_str());
    const VImage ink = scene.icc_transform("cmyk", VImage::option()->set("input_profile", "srgb"));
    ink.write_to_file(folder.Path("3 cmyk.jpg").c_str());
    scene.pngsave(folder.Path("4 palette.png").c_str(), VImage::option()->set("palette", true));
    scene.icc_transform("p3", VImage::option()->set("input_profile", "srgb"))
        .write_to_file(folder.Path("5 wide gamut.jpg").c_str());
    const Outcome outcome =
        RunProgram(ByContent({"suggest", "--json", "-j", "1", folder.Path("")}));
    EXPECT_EQ(outcome.Status, 0) << outcome.Err;
    EXPECT_EQ(outcome.Err, "");
    const auto lines = JsonLinesOf(outcome.Out);
    ASSERT_EQ(lines.size(), 5U);
    for (const json& result : lines) {
        ExpectSoundCrops(result);
        EXPECT_EQ(result["crops"].size(), 5U);
        // In the first, the edge of the transparent area scores higher than a grey disc.
        if (result["file"] != folder.Path("1 grey and alpha.png")) {
            EXPECT_TRUE(Contains(RectOf(result["crops"][0]), {270 - 50, 360 - 50, 100, 100}))
                << result;
        }
    }
}

TEST(Suggest, TakesAwkwardSizes)
{
    const TempFolder folder;
    const VImage scene = Scene(4000, 40, 0.3, 0.5).replicate(5, 1).copy_memory();
    scene.extract_area(5, 5, 1, 1).write_to_file(folder.Path("1.png").c_str());
    scene.rot90().extract_area(3, 0, 1, 5000).write_to_file(folder.Path("2.png").c_str());
    scene.extract_area(0, 10, 20000, 10).write_to_file(folder.Path("3.png").c_str());
    scene.extract_area(0, 0, 16, 11).write_to_file(folder.Path("4.png").c_str());
    const Outcome outcome = RunProgram({"suggest", "--json", folder.Path("")});
    EXPECT_EQ(outcome.Status, 0) << outcome.Err;
    const auto lines = JsonLinesOf(outcome.Out);
    ASSERT_EQ(lines.size(), 4U);
    for (const json& result : lines) {
        ExpectSoundCrops(result);
        EXPECT_GE(result["crops"].size(), 1U) << result;
    }
    EXPECT_EQ(RectOf(lines[0]["crops"][0]), (PixelRect{0, 0, 1, 1}));
    EXPECT_EQ(lines[0]["crops"].size(), 1U); // there is only one crop of one pixel
}

TEST(Suggest, TakesAHundredMegapixels)
{
    const TempFolder folder;
    Scene(1250, 800, 0.3, 0.6)
        .resize(10.0, VImage::option()->set("kernel", VIPS_KERNEL_NEAREST))
        .write_to_file(folder.Path("a.jpg").c_str());
    const json result = SuggestOne(folder.Path("a.jpg"), kByContent);
    ExpectSoundCrops(result);
    EXPECT_EQ(result["width"], 12500);
    EXPECT_EQ(result["height"], 8000);
    EXPECT_TRUE(Contains(RectOf(result["crops"][0]), {3750 - 600, 4800 - 600, 1200, 1200}));
}

// Broken ones among good ones: each error names file and reason, the good ones are processed, and
// the order is that of the input, whatever the number of workers.
TEST(Suggest, ContinuesAfterBrokenPhotographs)
{
    const TempFolder folder;
    Scene(900, 600, 0.3, 0.6).write_to_file(folder.Path("good.jpg").c_str());
    Scene(900, 600, 0.7, 0.4).write_to_file(folder.Path("good2.png").c_str());
    CutShort(folder.Path("good.jpg"), folder.Path("cut.jpg"), 0.5);
    WriteText(folder.Path("empty.jpg"), "");
    WriteText(folder.Path("notes.jpg"), "Dear diary.\n");
    WriteText(folder.Path("secret.jpg"), ReadText(folder.Path("good.jpg")));
    std::filesystem::permissions(folder.Path("secret.jpg"), std::filesystem::perms::none);
    std::filesystem::create_directory(folder.Path("folder.jpg"));
    std::filesystem::permissions(folder.Path("folder.jpg"), std::filesystem::perms(0755));

    const std::vector<std::pair<std::string, std::string>> expected = {
        {"good.jpg", ""},
        {"cut.jpg", "the file is cut short"},
        {"empty.jpg", "the file is empty"},
        {"notes.jpg", "not a picture"},
        {"folder.jpg", "no photograph in this folder"},
        {"secret.jpg", "Permission denied"},
        {"missing.jpg", "No such file"},
        {"good2.png", ""}};
    std::vector<std::string> paths;
    for (const auto& [name, reason] : expected)
        paths.push_back(folder.Path(name));
    std::string before;
    for (const char* workers : {"1", "3"}) {
        std::vector<std::string> arguments = {"suggest", "--json", "-j", workers};
        arguments.insert(arguments.end(), paths.begin(), paths.end());
        RunOptions options;
        options.AsNobody = true;
        const Outcome outcome = RunProgram(arguments, options);
        EXPECT_EQ(outcome.Status, 1);
        const auto lines = JsonLinesOf(outcome.Out);
        ASSERT_EQ(lines.size(), expected.size()) << outcome.Err;
        for (size_t i = 0; i < expected.size(); ++i) {
            const auto& [name, reason] = expected[i];
            EXPECT_EQ(lines[i]["file"], folder.Path(name));
            if (reason.empty()) {
                ExpectSoundCrops(lines[i]);
                continue;
            }
            EXPECT_EQ(lines[i].size(), 2U);
            EXPECT_NE(lines[i]["error"].get<std::string>().find(reason), std::string::npos)
                << lines[i];
            EXPECT_NE(outcome.Err.find("vistatrim: " + folder.Path(name) + ": " + reason),
                      std::string::npos)
                << outcome.Err;
        }
        EXPECT_EQ(LinesOf(outcome.Err).size(), 6U) << outcome.Err;
        if (!before.empty()) {
            EXPECT_EQ(outcome.Out, before);
        }
        before = outcome.Out;
    }
}

TEST(Suggest, ReadsListsAndFolders)
{
    const TempFolder folder;
    std::filesystem::create_directories(folder.Path("tree/below"));
    const VImage scene = Scene(300, 200, 0.3, 0.6);
    scene.write_to_file(folder.Path("tree/b.jpg").c_str());
    scene.write_to_file(folder.Path("tree/a.PNG.png").c_str());
    scene.write_to_file(folder.Path("tree/below/c.jpg").c_str());
    scene.write_to_file(folder.Path("new\nline.jpg").c_str());
    WriteText(folder.Path("tree/readme.txt"), "not a photograph\n");
    WriteText(folder.Path("tree/.hidden.jpg"), "not a photograph\n");
    const auto files = [](const Outcome& outcome) {
        std::vector<std::string> names;
        for (const json& line : JsonLinesOf(outcome.Out))
            names.push_back(line["file"]);
        return names;
    };
    EXPECT_EQ(files(RunProgram({"suggest", "--json", folder.Path("tree")})),
              (std::vector<std::string>{folder.Path("tree/a.PNG.png"), folder.Path("tree/b.jpg")}));
    EXPECT_EQ(files(RunProgram({"suggest", "--json", "-r", folder.Path("tree")})),
              (std::vector<std::string>{folder.Path("tree/a.PNG.png"), folder.Path("tree/b.jpg"),
                                        folder.Path("tree/below/c.jpg")}));
    RunOptions lines;
    lines.Input = folder.Path("tree/b.jpg") + "\n" + folder.Path("tree/below/c.jpg");
    EXPECT_EQ(
        files(RunProgram({"suggest", "--json", "--files-from", "-"}, lines)),
        (std::vector<std::string>{folder.Path("tree/b.jpg"), folder.Path("tree/below/c.jpg")}));
    RunOptions nulls;
    nulls.Input = folder.Path("new\nline.jpg") + std::string(1, '\0');
    EXPECT_EQ(files(RunProgram({"suggest", "--json", "-0", "--files-from", "-"}, nulls)),
              (std::vector<std::string>{folder.Path("new\nline.jpg")}));
}

TEST(Suggest, NeverReplacesAFileWithoutForce)
{
    const TempFolder folder;
    Scene(300, 200, 0.3, 0.6).write_to_file(folder.Path("a.jpg").c_str());
    const std::string photo = ReadText(folder.Path("a.jpg"));
    const Outcome outcome =
        RunProgram({"suggest", folder.Path("a.jpg"), "-o", folder.Path("a.jpg")});
    EXPECT_EQ(outcome.Status, 1);
    EXPECT_NE(outcome.Err.find("exists already"), std::string::npos);
    EXPECT_EQ(ReadText(folder.Path("a.jpg")), photo);
    const Outcome resumed = RunProgram(
        {"suggest", "--json", folder.Path("a.jpg"), "-o", folder.Path("a.jpg"), "--resume"});
    EXPECT_EQ(resumed.Status, 1);
    EXPECT_EQ(ReadText(folder.Path("a.jpg")), photo);
}

TEST(Suggest, SaysWhenItCannotWrite)
{
    const TempFolder folder;
    Scene(300, 200, 0.3, 0.6).write_to_file(folder.Path("a.jpg").c_str());
    RunOptions full;
    full.OutTo = "/dev/full";
    const Outcome outcome = RunProgram({"suggest", folder.Path("a.jpg")}, full);
    EXPECT_EQ(outcome.Status, 1);
    EXPECT_NE(outcome.Err.find("cannot write standard output"), std::string::npos) << outcome.Err;
}

// A folder of copies, for runs that take a while.
std::vector<std::string> ManyPhotographs(const TempFolder& folder, int count)
{
    std::filesystem::create_directory(folder.Path("in"));
    Scene(640, 300, 0.3, 0.6).write_to_file(folder.Path("in/000.jpg").c_str());
    std::vector<std::string> names;
    for (int i = 0; i < count; ++i) {
        std::ostringstream name;
        name << "in/" << i / 100 << i / 10 % 10 << i % 10 << ".jpg";
        if (i > 0)
            std::filesystem::copy_file(folder.Path("in/000.jpg"), folder.Path(name.str()));
        names.push_back(folder.Path(name.str()));
    }
    return names;
}

void WaitForLines(const std::string& path, size_t lines)
{
    for (int i = 0; i < 2000 && LinesOf(ReadText(path)).size() < lines; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
}

TEST(Suggest, InterruptedLosesNothingAndResumes)
{
    const TempFolder folder;
    const auto names = ManyPhotographs(folder, 16);
    for (const char* format : {"--json", "--csv"}) {
        SCOPED_TRACE(format);
        const std::string whole = folder.Path("whole");
        const std::string parts = folder.Path("parts");
        const std::vector<std::string> options = {"suggest", format, "--top",           "2",
                                                  "-j",      "2",    folder.Path("in"), "-o"};
        const auto with = [&options](std::vector<std::string> more) {
            more.insert(more.begin(), options.begin(), options.end());
            return more;
        };
        ASSERT_EQ(RunProgram(with({whole, "--force"})).Status, 0);
        int status = 0;
        // On a busy machine the run may end before the signal comes.
        for (int attempt = 0; attempt < 10 && status == 0; ++attempt) {
            std::filesystem::remove(parts);
            const pid_t process = BeginProgram(with({parts}));
            WaitForLines(parts, 3);
            kill(process, SIGINT);
            status = WaitFor(process);
        }
        EXPECT_EQ(status, 128 + SIGINT);
        const std::string interrupted = ReadText(parts);
        ASSERT_GT(interrupted.size(), 0U);
        ASSERT_LT(interrupted.size(), ReadText(whole).size());
        EXPECT_EQ(ReadText(whole).substr(0, interrupted.size()), interrupted);
        EXPECT_EQ(interrupted.back(), '\n');

        // Even a line cut short by a power failure is repaired.
        WriteText(parts, interrupted + "{\"file\":\"");
        EXPECT_EQ(RunProgram(with({parts, "--resume"})).Status, 0);
        EXPECT_EQ(ReadText(parts), ReadText(whole));
    }
}

TEST(Suggest, GivesTheSameForAnyNumberOfWorkers)
{
    const TempFolder folder;
    ManyPhotographs(folder, 6);
    const std::string one = RunProgram({"suggest", "--csv", "-j", "1", folder.Path("in")}).Out;
    EXPECT_EQ(LinesOf(one).size(), 1 + 6 * 5U);
    EXPECT_EQ(RunProgram({"suggest", "--csv", "-j", "4", folder.Path("in")}).Out, one);
}

// A photograph from a Debian package, where that is installed.
TEST(Suggest, TakesRealPhotographs)
{
    const char* const real = "/usr/share/backgrounds/Dragonfly_by_Bolly.jpg";
    if (!std::filesystem::exists(real))
        GTEST_SKIP() << "lomiri-wallpapers-16.04 is not installed";
    const json result = SuggestOne(real);
    ExpectSoundCrops(result);
    EXPECT_EQ(result["width"], 4224);
    EXPECT_EQ(result["crops"].size(), 5U);
    const Outcome text = RunProgram({"suggest", "--explain", real});
    EXPECT_EQ(text.Status, 0);
    EXPECT_NE(text.Out.find("4224 x 3168"), std::string::npos);
    EXPECT_NE(text.Out.find("at or above"), std::string::npos);
}

} // namespace
} // namespace vistaTrim::cli
