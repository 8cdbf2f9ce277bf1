// Options that change the figures of a run: the ranking, the face search, the number of workers and
// what the report contains.
#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
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
using Words = std::vector<std::string>;

json Crops(const std::string& path, Words options)
{
    options.insert(options.begin(), {"suggest", "--json", path});
    const Outcome outcome = RunProgram(options);
    EXPECT_EQ(outcome.Status, 0) << outcome.Err;
    return outcome.Status == 0 ? json::parse(outcome.Out)["crops"] : json::array();
}

// A ranking file whose network outputs zeros and whose only feature is how far the centre of a crop
// lies below the middle of the picture.
std::string RankingByHeight(double weight)
{
    constexpr size_t kInputs = 14;
    constexpr size_t kParts = 11;
    constexpr size_t kFeatures = 53;
    std::vector<double> features(kFeatures, 0.0);
    features[12] = weight;
    const json model = {
        {"format", "vistatrim-ranking"},
        {"version", 1},
        {"grid", 16},
        {"inputMeans", std::vector<double>(kInputs, 0.0)},
        {"inputScales", std::vector<double>(kInputs, 1.0)},
        {"layers", json::array({{{"outputs", kParts},
                                 {"dilation", 1},
                                 {"weights", std::vector<double>(kParts * kInputs * 9, 0.0)},
                                 {"biases", std::vector<double>(kParts, 0.0)}}})},
        {"featureWeights", features},
        {"sharpness", 1.0},
        {"overlapOffset", 0.0},
        {"overlapSlope", 1.0}};
    return model.dump();
}

TEST(OptionFigures, RankingFileRanks)
{
    const TempFolder folder;
    Scene(900, 600, 0.5, 0.5).write_to_file(folder.Path("a.jpg").c_str());
    const Words shape = {"--aspect", "1:1", "--scale", "0.5", "-n", "1"};
    const auto topOfBest = [&](const Words& more) {
        Words words = shape;
        words.insert(words.end(), more.begin(), more.end());
        return Crops(folder.Path("a.jpg"), words).at(0).at("y").get<int>();
    };
    // A crop is 301 pixels high: the working picture, 427 high, rounds its half up.
    WriteText(folder.Path("down.json"), RankingByHeight(400));
    WriteText(folder.Path("up.json"), RankingByHeight(-400));
    EXPECT_EQ(topOfBest({"--ranking", folder.Path("down.json")}), 299);
    EXPECT_EQ(topOfBest({"--ranking", folder.Path("up.json")}), 0);
    const int own = topOfBest({}); // the disc is in the middle
    EXPECT_GT(own, 0);
    EXPECT_LT(own, 300);
}

TEST(OptionFigures, WeightsRankByTheirMeasure)
{
    const TempFolder folder;
    Scene(900, 600, 0.3, 0.6).write_to_file(folder.Path("a.jpg").c_str());
    const std::pair<const char*, const char*> cases[] = {
        {"1,0,0", "composition"},     {"0,1,0", "coverage"}, {"0,0,1", "border"},
        {"1,0,0,0,0", "composition"}, {"0,0,0,1,0", "peak"}, {"0,0,0,0,1", "centrePeak"}};
    for (const auto& [weights, measure] : cases) {
        SCOPED_TRACE(weights);
        const json best = Crops(folder.Path("a.jpg"), {"--weights", weights, "--explain"}).at(0);
        // The engine puts crops that cover the content first; among these, hardly any is better by
        // the one measure that counts. The engine breaks ties, the explanation does not.
        const double rank = best.at("explain").at("ranks").at(measure);
        EXPECT_GT(rank, 0.99);
        EXPECT_NEAR(best.at("scores").at("merged").get<double>(), rank, 0.01);
    }
    // Weights select the engine's ranking, which by default uses its own.
    EXPECT_EQ(Crops(folder.Path("a.jpg"), {"--rank-by", "engine"}),
              Crops(folder.Path("a.jpg"), {"--weights", "0.1,0.7,0,0.2,0"}));
    EXPECT_EQ(Crops(folder.Path("a.jpg"), {"--rank-by", "people"}),
              Crops(folder.Path("a.jpg"), {}));
    EXPECT_NE(Crops(folder.Path("a.jpg"), {"--rank-by", "engine"}),
              Crops(folder.Path("a.jpg"), {}));
}

TEST(OptionFigures, MapsAreInTheReportUnlessTurnedOff)
{
    const TempFolder folder;
    Scene(900, 600, 0.3, 0.6).write_to_file(folder.Path("a.jpg").c_str());
    const auto page = [&folder](const Words& more) {
        Words words = {"report", folder.Path("a.jpg"), "-o", folder.Path("r.html"), "--force"};
        words.insert(words.end(), more.begin(), more.end());
        EXPECT_EQ(RunProgram(words).Status, 0);
        return ReadText(folder.Path("r.html"));
    };
    const auto pictures = [](const std::string& text) {
        size_t count = 0;
        for (size_t at = text.find("data:image/webp"); at != std::string::npos;
             at = text.find("data:image/webp", at + 1))
            ++count;
        return count;
    };
    const std::string whole = page({});
    EXPECT_EQ(pictures(whole), 11U); // the photograph and its ten maps
    EXPECT_EQ(pictures(page({"--maps", "yes"})), 11U);
    const std::string bare = page({"--maps", "no"});
    EXPECT_EQ(pictures(bare), 1U);
    EXPECT_NE(whole.find("\"EdgeMap\""), std::string::npos);
    EXPECT_EQ(bare.find("\"EdgeMap\""), std::string::npos);
    EXPECT_EQ(
        RunProgram({"report", folder.Path("a.jpg"), "-o", folder.Path("x.html"), "--maps", "maybe"})
            .Status,
        2);
}

// The portrait at two sizes: both searches find a large face, only `all` finds a small one.
TEST(OptionFigures, FacesAreFoundAtTheRequestedSize)
{
    const std::string portrait = "/usr/lib/python3/dist-packages/skimage/data/astronaut.png";
    if (!std::filesystem::exists(portrait))
        GTEST_SKIP() << "python3-skimage is not installed";
    const TempFolder folder;
    const VImage face = VImage::new_from_file(portrait.c_str());
    face.resize(0.5)
        .embed(0, 0, 640, 640,
               VImage::option()
                   ->set("extend", VIPS_EXTEND_BACKGROUND)
                   ->set("background", std::vector<double>{128, 128, 128}))
        .write_to_file(folder.Path("small.png").c_str());
    const auto faces = [](const std::string& path, const Words& more) {
        Words words = {"suggest", "--json", path};
        words.insert(words.end(), more.begin(), more.end());
        const Outcome outcome = RunProgram(words);
        if (outcome.Status == 2)
            return -1; // built without dlib
        const json line = json::parse(outcome.Out);
        return line.contains("regions") ? static_cast<int>(line["regions"].size()) : 0;
    };
    if (faces(portrait, {"--faces", "all"}) < 0)
        GTEST_SKIP() << "built without dlib";
    EXPECT_GE(faces(portrait, {"--faces", "large"}), 1);
    EXPECT_EQ(faces(portrait, {"--faces", "all"}), faces(portrait, {})); // the default
    EXPECT_EQ(faces(portrait, {"--faces", "off"}), 0);
    EXPECT_GE(faces(folder.Path("small.png"), {"--faces", "all"}), 1);
    EXPECT_EQ(faces(folder.Path("small.png"), {"--faces", "large"}), 0);
}

// The most threads that the process has at a time. Each worker has one; a run with one worker has
// no other lasting threads.
size_t MostThreads(const Words& arguments)
{
    const pid_t process = BeginProgram(arguments);
    const std::string tasks = "/proc/" + std::to_string(process) + "/task";
    size_t most = 0;
    for (bool running = true; running;) {
        std::error_code gone;
        size_t now = 0;
        for (std::filesystem::directory_iterator it(tasks, gone);
             !gone && it != std::filesystem::directory_iterator(); it.increment(gone))
            ++now;
        most = std::max(most, now);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        // A process that has ended shows no memory until it is waited for.
        running = !ReadText("/proc/" + std::to_string(process) + "/statm").empty() &&
                  ReadText("/proc/" + std::to_string(process) + "/statm").substr(0, 2) != "0 ";
    }
    EXPECT_EQ(WaitFor(process), 0);
    return most;
}

TEST(OptionFigures, JobsIsTheNumberOfWorkers)
{
    const TempFolder folder;
    std::filesystem::create_directory(folder.Path("in"));
    Scene(900, 600, 0.3, 0.6).write_to_file(folder.Path("in/0.jpg").c_str());
    for (int i = 1; i < 16; ++i)
        std::filesystem::copy_file(folder.Path("in/0.jpg"),
                                   folder.Path("in/" + std::to_string(i) + ".jpg"));
    const auto threads = [&folder](const std::string& jobs) {
        return MostThreads({"suggest", "--faces", "off", "--jobs", jobs, folder.Path("in")});
    };
    // libvips has threads of its own while it reads: one or two for each worker.
    EXPECT_LT(threads("1"), 8U);
    EXPECT_GE(threads("8"), 8U);
}

} // namespace
} // namespace vistaTrim::cli
