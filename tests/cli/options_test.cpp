#include "options/options.h"

#include <gtest/gtest.h>

namespace vistaTrim::cli {
namespace {

using namespace photo;

CommandLine Parse(std::vector<const char*> words)
{
    words.insert(words.begin(), "vistatrim");
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    CommandLine line = ParseCommandLine(static_cast<int>(words.size()), words.data());
    testing::internal::GetCapturedStdout();
    testing::internal::GetCapturedStderr();
    return line;
}

std::string FaultOf(std::vector<const char*> words)
{
    words.insert(words.begin(), "vistatrim");
    testing::internal::CaptureStderr();
    const CommandLine line = ParseCommandLine(static_cast<int>(words.size()), words.data());
    const std::string fault = testing::internal::GetCapturedStderr();
    EXPECT_EQ(line.ExitStatus, kUsageFault);
    return fault;
}

TEST(Options, OfSuggestAreRead)
{
    const CommandLine line =
        Parse({"suggest",  "--json",       "--top",   "3",         "--aspect",  "3:2",   "a.jpg",
               "--aspect", "1:1",          "--scale", "0.5,0.75",  "--density", "10",    "--keep",
               "1,2,3,4",  "--must-avoid", "5,6,7,8", "--weights", "1,2,3",     "b.jpg", "-j",
               "2"});
    ASSERT_FALSE(line.ExitStatus);
    const Options& values = line.Values;
    EXPECT_EQ(values.Chosen, Command::Suggest);
    EXPECT_EQ(values.Photos, (std::vector<std::string>{"a.jpg", "b.jpg"}));
    EXPECT_EQ(values.Format, ListFormat::Json);
    EXPECT_EQ(values.Request.Top, 3);
    EXPECT_EQ(values.Request.Aspects, (std::vector<Ratio>{{3, 2}, {1, 1}}));
    EXPECT_EQ(values.Request.Scales, (std::vector<double>{0.5, 0.75}));
    EXPECT_EQ(values.Request.Density, 10U);
    ASSERT_EQ(values.Request.Wishes.size(), 2U);
    EXPECT_EQ(values.Request.Wishes[0].Kind, WishKind::Keep);
    EXPECT_EQ(values.Request.Wishes[0].Rect, (PixelRect{1, 2, 3, 4}));
    EXPECT_EQ(values.Request.Wishes[1].Kind, WishKind::MustAvoid);
    EXPECT_EQ(values.Request.Weights.Border, 3.0);
    EXPECT_EQ(values.Request.Weights.Peak, 0.0);
    EXPECT_EQ(values.Request.Ranking, RankBy::Engine) << "weights select the engine's ranking";
    EXPECT_EQ(values.Workers, 2);
}

TEST(Options, HaveTheirDefaults)
{
    const CommandLine line = Parse({"suggest", "a.jpg"});
    ASSERT_FALSE(line.ExitStatus);
    EXPECT_EQ(line.Values.Format, ListFormat::Text);
    EXPECT_EQ(line.Values.Request.Top, 5);
    EXPECT_TRUE(line.Values.Request.Aspects.empty());
    EXPECT_EQ(line.Values.Request.Ranking, RankBy::People);
    EXPECT_EQ(line.Values.Request.Model, nullptr);
    EXPECT_EQ(line.Values.Request.Weights.CentrePeak, kDefaultWeights.CentrePeak);
}

// The defaults that --help states are those of the code.
TEST(Options, GivenTheirDefaultsChangeNothing)
{
    const Options plain = Parse({"crop", "a.jpg", "-o", "out"}).Values;
    const Options given = Parse({"crop",         "a.jpg",
                                 "-o",           "out",
                                 "--top",        "5",
                                 "--rank-by",    "people",
                                 "--faces",      "all",
                                 "--scale",      "0.5,0.55,0.6,0.65,0.7,0.75",
                                 "--scale",      "0.8,0.85,0.9,0.95,1",
                                 "--density",    "8",
                                 "--background", "white",
                                 "--picture",    "p.html",
                                 "--sizes",      "100vw"})
                              .Values;
    EXPECT_EQ(given.Request.Top, plain.Request.Top);
    EXPECT_EQ(given.Request.Ranking, plain.Request.Ranking);
    EXPECT_EQ(given.RegionUse.Faces, plain.RegionUse.Faces);
    EXPECT_TRUE(plain.Request.Scales.empty());
    EXPECT_EQ(given.Request.Scales,
              std::vector<double>(std::begin(kDefaultScales), std::end(kDefaultScales)));
    EXPECT_EQ(given.Request.Density, plain.Request.Density);
    EXPECT_EQ(given.Reading.Background, plain.Reading.Background);
    EXPECT_EQ(given.CropFiles.Sizes, plain.CropFiles.Sizes);

    const Weights& weights =
        Parse({"suggest", "a.jpg", "--weights", "0.1,0.7,0,0.2,0"}).Values.Request.Weights;
    for (size_t i = 0; i < kNumWeighed; ++i)
        EXPECT_EQ(weights.*kMeasures[i].Weight, plain.Request.Weights.*kMeasures[i].Weight) << i;
    EXPECT_TRUE(Parse({"report", "a.jpg", "-o", "r.html"}).Values.ReportMaps);
    EXPECT_EQ(
        Parse({"contact-sheet", "a.jpg", "-o", "s.jpg", "--cell", "360x240"}).Values.SheetCell,
        plain.SheetCell);
}

TEST(Options, SelectTheRanking)
{
    const std::vector<std::pair<const char*, RankBy>> rankings = {
        {"people", RankBy::People},     {"composition", RankBy::Composition},
        {"coverage", RankBy::Coverage}, {"border", RankBy::Border},
        {"peak", RankBy::Peak},         {"centre-peak", RankBy::CentrePeak},
        {"engine", RankBy::Engine},     {"all", RankBy::Engine}};
    for (const auto& ranking : rankings) {
        const CommandLine line = Parse({"suggest", "a.jpg", "--rank-by", ranking.first});
        ASSERT_FALSE(line.ExitStatus) << ranking.first;
        EXPECT_EQ(line.Values.Request.Ranking, ranking.second) << ranking.first;
    }
}

TEST(Options, ThatCannotTakeEffectAreFaults)
{
    const std::vector<std::vector<const char*>> wrong = {
        {"suggest", "a.jpg", "--rank-by", "border", "--weights", "1,0,0"},
        {"suggest", "a.jpg", "--ranking", "no such file.json"}};
    for (const std::vector<const char*>& arguments : wrong)
        EXPECT_EQ(Parse(arguments).ExitStatus, kUsageFault) << arguments.back();
}

TEST(Options, OfCropAreRead)
{
    const CommandLine line =
        Parse({"crop", "-o", "out", "a.jpg", "--strip", "--resize", "800x600", "--format", "JPEG",
               "--quality", "70", "--chroma", "4:2:0", "--force"});
    ASSERT_FALSE(line.ExitStatus);
    EXPECT_EQ(line.Values.Chosen, Command::Crop);
    EXPECT_EQ(line.Values.Output, "out");
    EXPECT_TRUE(line.Values.CropFiles.Strip);
    EXPECT_EQ(line.Values.CropFiles.ResizeTo, (PixelSize{800, 600}));
    EXPECT_EQ(line.Values.CropFiles.Format, ImageFormat::Jpeg);
    EXPECT_EQ(line.Values.CropFiles.Quality, 70);
    EXPECT_EQ(line.Values.CropFiles.Chroma, ChromaSampling::Half);
}

TEST(Options, ThatAreWrongAreNamedWithTheReason)
{
    EXPECT_NE(FaultOf({"suggest", "a.jpg", "--aspect", "broad"}).find("--aspect"),
              std::string::npos);
    EXPECT_NE(FaultOf({"suggest", "a.jpg", "--aspect", "broad"}).find("'broad' is not W:H"),
              std::string::npos);
    EXPECT_NE(FaultOf({"suggest", "a.jpg", "--scale", "1.5"}).find("--scale"), std::string::npos);
    EXPECT_NE(FaultOf({"suggest", "a.jpg", "--keep", "1,2,3"}).find("--keep"), std::string::npos);
    EXPECT_NE(FaultOf({"suggest", "a.jpg", "--weights", "1,2"}).find("--weights"),
              std::string::npos);
    EXPECT_NE(FaultOf({"suggest", "a.jpg", "--top", "0"}).find("--top"), std::string::npos);
    EXPECT_EQ(FaultOf({"suggest", "a.jpg", "--rank-by", "luck"}),
              "vistatrim: --rank-by: 'luck' is not people, composition, coverage, border, "
              "peak, centre-peak or engine\n"
              "vistatrim: try --help\n");
    FaultOf({"suggest", "a.jpg", "--rank-by", "3"});
    EXPECT_EQ(FaultOf({"crop", "a.jpg", "-o", "out", "--format", "gif"}),
              "vistatrim: --format: 'gif' is not jpg, png, webp, tif, avif or heic\n"
              "vistatrim: try --help\n");
    EXPECT_NE(FaultOf({"suggest", "a.jpg", "--bright"}).find("--bright"), std::string::npos);
    EXPECT_NE(FaultOf({"suggest"}).find("PHOTO"), std::string::npos);
    EXPECT_NE(FaultOf({"crop", "a.jpg"}).find("--output"), std::string::npos);
    FaultOf({});
    EXPECT_EQ(
        FaultOf({"paint", "a.jpg"}),
        "vistatrim: no command 'paint'; there are suggest, crop, report, maps and contact-sheet\n");
    for (const char* command : {"suggest", "crop", "report", "maps"})
        EXPECT_NE(FaultOf({command, "a.jpg", "-o", ""}).find("--output"), std::string::npos);
}

TEST(Options, ThatContradictEachOtherAreRefused)
{
    FaultOf({"suggest", "a.jpg", "--json", "--csv"});
    FaultOf({"suggest", "a.jpg", "--size", "10x10", "--aspect", "1:1"});
    FaultOf({"suggest", "a.jpg", "--size", "10x10", "--scale", "0.5"});
    FaultOf({"suggest", "a.jpg", "--resume", "--json"});
    FaultOf({"suggest", "a.jpg", "--resume", "-o", "out.txt"});
    FaultOf({"suggest", "a.jpg", "--resume", "--force", "--json", "-o", "out.txt"});
}

TEST(Options, HelpAndVersionAreNotErrors)
{
    EXPECT_EQ(Parse({"--help"}).ExitStatus, 0);
    EXPECT_EQ(Parse({"crop", "--help"}).ExitStatus, 0);
    EXPECT_EQ(Parse({"--version"}).ExitStatus, 0);
}

} // namespace
} // namespace vistaTrim::cli
