// Options by their effect on the result, where no other test covers it.
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "photo/sample_pictures.h"
#include "run_program.h"

namespace vistaTrim::cli {
namespace {

using namespace photo;
using nlohmann::json;
using vips::VImage;

json Suggested(const std::string& path, std::vector<std::string> options)
{
    options.insert(options.begin(), {"suggest", "--json", path});
    const Outcome outcome = RunProgram(options);
    EXPECT_EQ(outcome.Status, 0) << outcome.Err;
    return json::parse(outcome.Out);
}

TEST(OptionEffects, RecursiveKeepsTheFoldersAtEveryLevel)
{
    const TempFolder folder;
    const VImage scene = Scene(300, 200, 0.3, 0.6);
    // The same name in every folder: only the folders distinguish them.
    const std::vector<std::string> inside = {"", "one/", "one/two/", "one/two/three/",
                                             "other/two/"};
    for (const std::string& where : inside) {
        std::filesystem::create_directories(folder.Path("in/" + where));
        scene.write_to_file(folder.Path("in/" + where + "a.jpg").c_str());
    }
    std::vector<std::string> expected;
    for (const std::string& where : inside)
        expected.push_back("out/" + where + "a-1.jpg");
    const Outcome outcome =
        RunProgram({"crop", "-r", "--top", "1", folder.Path("in"), "-o", folder.Path("out")});
    EXPECT_EQ(outcome.Status, 0) << outcome.Err;
    for (const std::string& file : expected)
        EXPECT_TRUE(std::filesystem::exists(folder.Path(file))) << file;
    std::filesystem::create_directories(folder.Path("maps"));
    EXPECT_EQ(RunProgram({"maps", "-r", folder.Path("in"), "-o", folder.Path("maps")}).Status, 0);
    for (const std::string& where : inside)
        EXPECT_TRUE(std::filesystem::exists(folder.Path("maps/" + where + "a-EdgeMap.png")));
    // Without the option, subfolders are skipped.
    const Outcome flat =
        RunProgram({"crop", "--top", "1", folder.Path("in"), "-o", folder.Path("flat")});
    EXPECT_EQ(flat.Out, folder.Path("flat/a-1.jpg") + "\n");
}

TEST(OptionEffects, BackgroundShowsThroughInCrops)
{
    const TempFolder folder;
    const VImage clear = (VImage::black(300, 200) + 0).cast(VIPS_FORMAT_UCHAR);
    Quarters(300, 200).bandjoin(clear).write_to_file(folder.Path("a.png").c_str());
    const std::pair<std::vector<std::string>, std::vector<double>> cases[] = {
        {{}, {255, 255, 255}},
        {{"--background", "black"}, {0, 0, 0}},
        {{"--background", "#2040c0"}, {0x20, 0x40, 0xc0}}};
    for (const auto& [option, colour] : cases) {
        std::vector<std::string> arguments = {
            "crop", folder.Path("a.png"), "-o",  folder.Path("out"), "--top",
            "1",    "--format",           "jpg", "--force"};
        arguments.insert(arguments.end(), option.begin(), option.end());
        ASSERT_EQ(RunProgram(arguments).Status, 0);
        const VImage crop = VImage::new_from_file(folder.Path("out/a-1.jpg").c_str());
        for (int band = 0; band < 3; ++band)
            EXPECT_NEAR(crop.extract_band(band).avg(), colour[static_cast<size_t>(band)], 2.0);
    }
}

TEST(OptionEffects, BackgroundIsWhatTheAnalysisSees)
{
    const TempFolder folder;
    // Opaque and dark on the left half, clear on the right.
    const VImage alpha = (VImage::xyz(640, 400).extract_band(0) < 320).cast(VIPS_FORMAT_UCHAR);
    (VImage::black(640, 400, VImage::option()->set("bands", 3)) + 16)
        .cast(VIPS_FORMAT_UCHAR)
        .bandjoin(alpha)
        .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB))
        .write_to_file(folder.Path("a.png").c_str());
    const auto edge = [&folder](const char* colour) {
        EXPECT_EQ(RunProgram({"maps", folder.Path("a.png"), "-o", folder.Path("m"), "--force",
                              "--background", colour})
                      .Status,
                  0);
        return ReadText(folder.Path("m/a-SaliencyMap.png"));
    };
    EXPECT_NE(edge("white"), edge("#101010"));
    EXPECT_EQ(edge("white"), edge("#ffffff"));
}

TEST(OptionEffects, QualityShrinksFiles)
{
    const TempFolder folder;
    Scene(900, 600, 0.3, 0.6).write_to_file(folder.Path("a.png").c_str());
    const auto sizeAt = [&folder](const std::string& format, const std::string& quality) {
        EXPECT_EQ(RunProgram({"crop", folder.Path("a.png"), "-o", folder.Path("out"), "--force",
                              "--top", "1", "--format", format, "--quality", quality})
                      .Status,
                  0);
        return std::filesystem::file_size(folder.Path("out/a-1." + format));
    };
    for (const char* format : {"jpg", "webp"})
        EXPECT_LT(2 * sizeAt(format, "20"), sizeAt(format, "95")) << format;
    EXPECT_EQ(RunProgram({"crop", folder.Path("a.png"), "-o", folder.Path("out"), "--force",
                          "--top", "1", "--format", "jpg"})
                  .Status,
              0);
    const auto standard = std::filesystem::file_size(folder.Path("out/a-1.jpg"));
    EXPECT_EQ(standard, sizeAt("jpg", "90"));
}

TEST(OptionEffects, ChromaShrinksFiles)
{
    const TempFolder folder;
    Quarters(900, 600).write_to_file(folder.Path("a.png").c_str());
    const auto sampling = [&folder](const std::vector<std::string>& more) {
        std::vector<std::string> words = {
            "crop", folder.Path("a.png"), "-o", folder.Path("out"), "--force", "--top",
            "1",    "--format",           "jpg"};
        words.insert(words.end(), more.begin(), more.end());
        EXPECT_EQ(RunProgram(words).Status, 0);
        return std::string(vips::VImage::new_from_file(folder.Path("out/a-1.jpg").c_str())
                               .get_string("jpeg-chroma-subsample"));
    };
    EXPECT_EQ(sampling({}), "4:4:4");
    EXPECT_EQ(sampling({"--chroma", "4:2:0"}), "4:2:0");
    EXPECT_EQ(sampling({"--quality", "80"}), "4:2:0");
    EXPECT_EQ(sampling({"--quality", "80", "--chroma", "4:4:4"}), "4:4:4");
}

TEST(OptionEffects, DensityAndScaleAndAspectSetTheCandidates)
{
    const TempFolder folder;
    Scene(900, 600, 0.3, 0.6).write_to_file(folder.Path("a.jpg").c_str());
    const auto candidates = [&folder](std::vector<std::string> options) {
        options.emplace_back("--explain");
        return Suggested(folder.Path("a.jpg"), options)["explain"]["candidates"].get<int>();
    };
    // A crop as high as the photograph can move along one axis only.
    EXPECT_EQ(candidates({"--aspect", "1:1", "--scale", "1", "--density", "9"}), 9);
    EXPECT_EQ(candidates({"--aspect", "1:1", "--scale", "1", "--density", "30"}), 30);
    EXPECT_EQ(candidates({"--aspect", "1:1", "--scale", "1"}), 8);
    EXPECT_EQ(candidates({"--aspect", "1:1", "--aspect", "3:2", "--scale", "1"}), 9);
    EXPECT_GT(candidates({"--aspect", "1:1", "--scale", "0.5,1"}), 16);
}

TEST(OptionEffects, TopSetsTheNumberOfCropsAndKeepsTheirOrder)
{
    const TempFolder folder;
    Scene(900, 600, 0.3, 0.6).write_to_file(folder.Path("a.jpg").c_str());
    const json seven = Suggested(folder.Path("a.jpg"), {"--top", "7"})["crops"];
    EXPECT_EQ(seven.size(), 7U);
    EXPECT_EQ(Suggested(folder.Path("a.jpg"), {})["crops"].size(), 5U);
    EXPECT_EQ(Suggested(folder.Path("a.jpg"), {"-n", "1"})["crops"][0], seven[0]);
}

TEST(OptionEffects, EachListFormatHoldsTheSameNumbers)
{
    const TempFolder folder;
    Scene(900, 600, 0.3, 0.6).write_to_file(folder.Path("a.jpg").c_str());
    const json result = Suggested(folder.Path("a.jpg"), {});
    std::istringstream csv(RunProgram({"suggest", "--csv", folder.Path("a.jpg")}).Out);
    std::istringstream text(RunProgram({"suggest", folder.Path("a.jpg")}).Out);
    std::string line;
    std::getline(csv, line);
    std::vector<std::string> names;
    std::istringstream header(line);
    for (std::string name; std::getline(header, name, ',');)
        names.push_back(name);
    std::getline(text, line);
    EXPECT_EQ(line, folder.Path("a.jpg") + ": 900 x 600");
    std::getline(text, line);
    std::istringstream columns(line);
    std::vector<std::string> headings;
    for (std::string heading; columns >> heading;)
        headings.push_back(heading);
    for (const json& crop : result["crops"]) {
        std::getline(csv, line);
        std::istringstream fields(line);
        for (const std::string& name : names) {
            std::string field;
            std::getline(fields, field, ',');
            if (crop.contains(name) && crop[name].is_number()) {
                EXPECT_EQ(std::stoi(field), crop[name].get<int>()) << name;
            } else if (crop["scores"].contains(name)) {
                EXPECT_EQ(std::stod(field), crop["scores"][name].get<double>()) << name;
            }
        }
        std::getline(text, line);
        std::istringstream cells(line);
        for (const std::string& heading : headings) {
            std::string cell;
            cells >> cell;
            for (const char* name : {"x", "y", "width", "height"})
                if (heading == name) {
                    EXPECT_EQ(std::stoi(cell), crop[name].get<int>()) << heading;
                }
            const std::pair<const char*, const char*> measures[] = {
                {"comp", "composition"}, {"cover", "coverage"},    {"border", "border"},
                {"peak", "peak"},        {"centre", "centrePeak"}, {"roi", "roi"},
                {"merged", "merged"}};
            for (const auto& [column, name] : measures)
                if (heading == column) {
                    EXPECT_NEAR(std::stod(cell), crop["scores"][name].get<double>(), 0.00005001)
                        << heading;
                }
        }
    }
}

// For a photograph that is larger than its picture in the page.
TEST(OptionEffects, ReportShowsThePhotographAndItsFramesInPlace)
{
    const TempFolder folder;
    Quarters(3000, 2000).write_to_file(folder.Path("a.png").c_str());
    const json crops = Suggested(folder.Path("a.png"), {"--top", "4"})["crops"];
    ASSERT_EQ(
        RunProgram({"report", "--top", "4", folder.Path("a.png"), "-o", folder.Path("r.html")})
            .Status,
        0);
    const std::string page = ReadText(folder.Path("r.html"));
    const std::regex frame("left:([0-9.]+)%;top:([0-9.]+)%;width:([0-9.]+)%;height:([0-9.]+)%");
    std::vector<std::smatch> frames;
    for (std::sregex_iterator it(page.begin(), page.end(), frame), end; it != end; ++it)
        frames.push_back(*it);
    ASSERT_GE(frames.size(), crops.size());
    for (size_t i = 0; i < crops.size(); ++i) {
        EXPECT_NEAR(std::stod(frames[i][1]), 100.0 * crops[i]["x"].get<int>() / 3000, 0.001);
        EXPECT_NEAR(std::stod(frames[i][2]), 100.0 * crops[i]["y"].get<int>() / 2000, 0.001);
        EXPECT_NEAR(std::stod(frames[i][3]), 100.0 * crops[i]["width"].get<int>() / 3000, 0.001);
        EXPECT_NEAR(std::stod(frames[i][4]), 100.0 * crops[i]["height"].get<int>() / 2000, 0.001);
    }
    // The first picture is the photograph, whole and upright.
    const std::string start = "data:image/webp;base64,";
    const size_t at = page.find(start) + start.size();
    ASSERT_GT(at, start.size());
    const std::string text = page.substr(at, page.find_first_of("\"'", at) - at);
    gsize count = 0;
    guchar* bytes = g_base64_decode(text.c_str(), &count);
    const VImage picture = VImage::new_from_buffer(bytes, count, "").copy_memory();
    g_free(bytes);
    EXPECT_NEAR(static_cast<double>(picture.width()) / picture.height(), 1.5, 0.01);
    const auto means = QuarterMeans(picture);
    for (size_t quarter = 0; quarter < 4; ++quarter)
        for (size_t band = 0; band < 3; ++band)
            EXPECT_NEAR(means[quarter][band], kQuarterColours[quarter][band], 6.0); // lossy
}

} // namespace
} // namespace vistaTrim::cli
