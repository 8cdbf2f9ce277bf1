// Shapes, sizes and names: how `crop` and `suggest` apply them.
#include <algorithm>
#include <filesystem>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "photo/sample_pictures.h"
#include "run_program.h"
#include "vistaTrimPhoto/geometry.h"

namespace vistaTrim::cli {
namespace {

using namespace photo;

using vips::VImage;
using Words = std::vector<std::string>;

VImage Open(const std::string& path)
{
    return VImage::new_from_file(path.c_str());
}

// `crop PHOTO -o out` in a folder that holds a scene of 1800 x 1200, with more options.
class Shapes : public testing::Test {
protected:
    Shapes()
    {
        Scene(1800, 1200, 0.3, 0.6).write_to_file(Folder.Path("a.jpg").c_str());
    }

    Outcome Crop(const Words& more, const Words& photos = {"a.jpg"}) const
    {
        Words words = {"crop", "-o", Folder.Path("out")};
        for (const std::string& photo : photos)
            words.push_back(Folder.Path(photo));
        words.insert(words.end(), more.begin(), more.end());
        return RunProgram(words);
    }

    // The names of the files in the output folder.
    Words Written(const std::string& folder = "out") const
    {
        Words names;
        if (!std::filesystem::exists(Folder.Path(folder)))
            return names;
        for (const auto& entry : std::filesystem::directory_iterator(Folder.Path(folder)))
            if (entry.path().filename().string()[0] != '.')
                names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

    PixelSize SizeOf(const std::string& name) const
    {
        const VImage image = Open(Folder.Path(name));
        return {image.width(), image.height()};
    }

    TempFolder Folder;
};

TEST_F(Shapes, EachRatioGivesTheBestCropOfEachWithTheRatioInItsName)
{
    const Outcome outcome =
        Crop({"--each-ratio", "--aspect", "16:9", "--aspect", "1:1", "--aspect", "9/16"});
    EXPECT_EQ(outcome.Status, 0) << outcome.Err;
    EXPECT_EQ(Written(), (Words{"a-16x9.jpg", "a-1x1.jpg", "a-9x16.jpg"}));
    for (const char* ratio : {"16x9", "1x1", "9x16"}) {
        const auto alone = nlohmann::json::parse(
            RunProgram({"suggest", "--json", "-n", "1", "--aspect", ratio, Folder.Path("a.jpg")})
                .Out);
        EXPECT_EQ(SizeOf("out/a-" + std::string(ratio) + ".jpg"),
                  (PixelSize{alone["crops"][0]["width"], alone["crops"][0]["height"]}))
            << ratio;
    }
    const Outcome two = Crop({"--each-ratio", "--aspect", "1:1", "-n", "2", "--force"});
    EXPECT_EQ(two.Out, Folder.Path("out/a-1x1.jpg") + "\n" + Folder.Path("out/a-1x1-2.jpg") + "\n");
}

TEST_F(Shapes, EachRatioOfSuggestListsShapeAndRank)
{
    const auto line =
        nlohmann::json::parse(RunProgram({"suggest", "--json", "--each-ratio", "--aspect", "21:9",
                                          "--aspect", "square", "-n", "2", Folder.Path("a.jpg")})
                                  .Out);
    ASSERT_EQ(line["crops"].size(), 4U);
    EXPECT_EQ(line["crops"][0]["shape"], "21x9");
    EXPECT_EQ(line["crops"][0]["aspect"], "7:3");
    EXPECT_EQ(line["crops"][1]["rank"], 2);
    EXPECT_EQ(line["crops"][2]["shape"], "square");
    EXPECT_EQ(line["crops"][2]["width"], line["crops"][2]["height"]);
}

TEST_F(Shapes, ARatioWithoutACropIsNamedAndTheOthersAreWritten)
{
    // A must-keep as wide as the photograph leaves no crop of 1:3.
    const Outcome outcome =
        Crop({"--each-ratio", "--aspect", "3:1", "--aspect", "1:3", "--must-keep", "0,500,1800,100",
              "--manifest", Folder.Path("m.json")});
    EXPECT_EQ(outcome.Status, 1);
    EXPECT_NE(outcome.Err.find("no crop of 1:3 meets the request"), std::string::npos)
        << outcome.Err;
    EXPECT_EQ(Written(), (Words{"a-3x1.jpg"}));
    const auto manifest = nlohmann::json::parse(ReadText(Folder.Path("m.json")));
    EXPECT_EQ(manifest[0]["crops"][0]["files"].size(), 1U);
    EXPECT_NE(manifest[0]["error"].get<std::string>().find("1:3"), std::string::npos);
}

TEST_F(Shapes, FillIsExactlyTheRequestedSize)
{
    // Odd sizes, small and large, also beyond the photograph's own pixels.
    const Words sizes = {"1200x630", "333x777", "1x1", "97x13", "1999x1001", "640x641"};
    Words options;
    for (const std::string& size : sizes)
        options.insert(options.end(), {"--fill", size});
    const Outcome outcome = Crop(options);
    ASSERT_EQ(outcome.Status, 0) << outcome.Err;
    for (const std::string& size : sizes) {
        const size_t x = size.find('x');
        EXPECT_EQ(SizeOf("out/a-" + size + ".jpg"),
                  (PixelSize{std::stoi(size.substr(0, x)), std::stoi(size.substr(x + 1))}));
    }
}

// The crop has the ratio before it is scaled, so that nothing is squeezed.
TEST_F(Shapes, FillCutsAtTheRatioAndScalesUpOnlyWhenItMust)
{
    const Outcome outcome =
        Crop({"--fill", "1500x500", "--manifest", Folder.Path("m.json"), "-n", "3"});
    ASSERT_EQ(outcome.Status, 0) << outcome.Err;
    const auto manifest = nlohmann::json::parse(ReadText(Folder.Path("m.json")));
    ASSERT_GE(manifest[0]["crops"].size(), 1U);
    for (const auto& crop : manifest[0]["crops"]) {
        EXPECT_EQ(crop["aspect"], "3:1");
        EXPECT_EQ(crop["width"].get<int>(), 3 * crop["height"].get<int>());
        EXPECT_GE(crop["width"].get<int>(), 1500);
        EXPECT_EQ(crop["files"][0]["width"], 1500);
        EXPECT_EQ(crop["files"][0]["height"], 500);
    }
}

TEST_F(Shapes, PresetsHaveNameRatioAndSize)
{
    const Outcome outcome =
        Crop({"--preset", "og-image", "--preset", "portrait", "--preset", "avatar"});
    ASSERT_EQ(outcome.Status, 0) << outcome.Err;
    EXPECT_EQ(Written(), (Words{"a-avatar.jpg", "a-og-image.jpg", "a-portrait.jpg"}));
    EXPECT_EQ(SizeOf("out/a-og-image.jpg"), (PixelSize{1200, 630}));
    EXPECT_EQ(SizeOf("out/a-avatar.jpg"), (PixelSize{400, 400}));
    const PixelSize portrait = SizeOf("out/a-portrait.jpg");
    EXPECT_EQ(portrait.Width * 5, portrait.Height * 4);
}

// --aspect uses only the ratio of a preset; --preset also scales to its size.
TEST_F(Shapes, APresetNamedAsARatioDoesNotResizeTheCrop)
{
    const Words story = {"--aspect", "story", "--aspect", "thumbnail", "--each-ratio"};
    const Outcome outcome = Crop(story);
    ASSERT_EQ(outcome.Status, 0) << outcome.Err;
    Words words = {"suggest", "--json", Folder.Path("a.jpg")};
    words.insert(words.end(), story.begin(), story.end());
    const auto line = nlohmann::json::parse(RunProgram(words).Out);
    ASSERT_EQ(line["crops"].size(), 2U);
    for (const auto& crop : line["crops"]) {
        EXPECT_FALSE(crop.contains("fill"));
        EXPECT_EQ(SizeOf("out/a-" + crop["shape"].get<std::string>() + ".jpg"),
                  (PixelSize{crop["width"], crop["height"]}));
    }
}

TEST_F(Shapes, AUsersFileAddsAndReplacesPresets)
{
    WriteText(Folder.Path("mine.tsv"),
              "# name\tratio\tsize\r\n\nposter\t2:3\t-\tthe wall\r\navatar\t-\t64x64\n");
    // The file counts wherever it is on the command line.
    const Outcome outcome =
        Crop({"--preset", "poster", "--preset", "avatar", "--presets", Folder.Path("mine.tsv")});
    ASSERT_EQ(outcome.Status, 0) << outcome.Err;
    EXPECT_EQ(SizeOf("out/a-avatar.jpg"), (PixelSize{64, 64}));
    const PixelSize poster = SizeOf("out/a-poster.jpg");
    EXPECT_EQ(poster.Width * 3, poster.Height * 2);

    WriteText(Folder.Path("bad.tsv"), "ok\t1:1\nposter\t2:3\t100x100\n");
    const Outcome bad = Crop({"--presets", Folder.Path("bad.tsv"), "--force"});
    EXPECT_EQ(bad.Status, 2);
    EXPECT_NE(bad.Err.find("bad.tsv:2: the size 100x100 is not of the ratio 2:3"),
              std::string::npos)
        << bad.Err;
    EXPECT_EQ(Crop({"--presets", Folder.Path("none.tsv"), "--force"}).Status, 2);
}

TEST_F(Shapes, LargestSpansOneSideOfThePhotograph)
{
    for (const char* aspect : {"1:1", "21:9", "3:2", "4:5"}) {
        const auto line = nlohmann::json::parse(
            RunProgram({"suggest", "--json", "--largest", "--aspect", aspect, Folder.Path("a.jpg")})
                .Out);
        ASSERT_GE(line["crops"].size(), 1U);
        for (const auto& crop : line["crops"])
            EXPECT_TRUE(crop["width"].get<int>() >= 1795 || crop["height"].get<int>() >= 1195)
                << aspect << " " << crop;
    }
}

TEST_F(Shapes, WidthsGiveEachCropAtEachWidthAndNoneIsScaledUp)
{
    const Outcome outcome =
        Crop({"--widths", "300,600,5000", "--aspect", "3:2", "--scale", "1", "-n", "1"});
    ASSERT_EQ(outcome.Status, 0) << outcome.Err;
    EXPECT_EQ(Written(), (Words{"a-1-1800.jpg", "a-1-300.jpg", "a-1-600.jpg"}));
    EXPECT_EQ(SizeOf("out/a-1-300.jpg"), (PixelSize{300, 200}));
    EXPECT_EQ(SizeOf("out/a-1-1800.jpg"), (PixelSize{1800, 1200}));
    const Outcome up = Crop(
        {"--widths", "2400", "--upscale", "--aspect", "3:2", "--scale", "1", "-n", "1", "--force"});
    ASSERT_EQ(up.Status, 0) << up.Err;
    EXPECT_EQ(SizeOf("out/a-1-2400.jpg"), (PixelSize{2400, 1600}));
}

TEST_F(Shapes, NamesFollowTheTemplate)
{
    const Outcome outcome = Crop({"--name", "{ratio}/{{{stem}}}_{rank}_{width}x{height}_{shape}",
                                  "--preset", "avatar", "--preset", "cinema", "--widths", "100"});
    ASSERT_EQ(outcome.Status, 0) << outcome.Err;
    EXPECT_EQ(Written("out/1x1"), (Words{"{a}_1_100x100_avatar.jpg"}));
    EXPECT_EQ(Written("out/21x9"), (Words{"{a}_1_100x43_cinema.jpg"}));
}

TEST_F(Shapes, WrongNamesAreRejected)
{
    for (const char* name : {"{stem}-{colour}", "{stem", "stem}", "", "/tmp/{stem}", "../{stem}",
                             "{stem}/", "a/../{stem}"}) {
        const Outcome outcome = Crop({"--name", name});
        EXPECT_EQ(outcome.Status, 2) << name;
        EXPECT_NE(outcome.Err.find("--name"), std::string::npos) << outcome.Err;
    }
    EXPECT_NE(Crop({"--name", "{colour}"}).Err.find("there is no field {colour}; there are {stem}"),
              std::string::npos);
    EXPECT_TRUE(Written().empty());
}

TEST_F(Shapes, NamesThatCollideAreRejectedBeforeAnythingIsWritten)
{
    Quarters(900, 600).write_to_file(Folder.Path("b.jpg").c_str());
    // Within a photograph.
    const Outcome within = Crop({"--name", "{stem}"});
    EXPECT_EQ(within.Status, 1);
    EXPECT_NE(within.Err.find("two of its crops would have the same name a; {rank}"),
              std::string::npos)
        << within.Err;
    EXPECT_EQ(Crop({"--name", "{stem}-{rank}", "--widths", "100,200"}).Status, 1);
    EXPECT_EQ(Crop({"--name", "{stem}", "--fill", "10x10", "--fill", "20x10"}).Status, 1);
    EXPECT_EQ(Crop({"--name", "{stem}-{width}x{height}"}).Status, 1);
    // Between photographs.
    const Outcome between = Crop({"--name", "crop-{rank}"}, {"a.jpg", "b.jpg"});
    EXPECT_EQ(between.Status, 1);
    EXPECT_NE(between.Err.find("b.jpg: its files would have the same names as those of " +
                               Folder.Path("a.jpg")),
              std::string::npos)
        << between.Err;
    // One photograph in two formats, as phones store them.
    Quarters(900, 600).write_to_file(Folder.Path("a.png").c_str());
    const Outcome formats = Crop({}, {"a.jpg", "a.png"});
    EXPECT_EQ(formats.Status, 1);
    EXPECT_NE(formats.Err.find("--name gives other names, such as {stem}-{extension}-{rank}"),
              std::string::npos)
        << formats.Err;
    // With an input photograph.
    const Outcome input = RunProgram({"crop", Folder.Path("a.jpg"), Folder.Path("b.jpg"), "-o",
                                      Folder.Path(""), "--name", "{stem}", "-n", "1", "--force"});
    EXPECT_EQ(input.Status, 1);
    EXPECT_NE(input.Err.find("would replace one of the photographs"), std::string::npos);
    EXPECT_TRUE(Written().empty());
    EXPECT_EQ(SizeOf("a.jpg"), (PixelSize{1800, 1200}));
    // Names that differ by known sizes, or by the photograph's extension, are accepted.
    EXPECT_EQ(
        Crop({"--name", "{stem}-{width}x{height}", "--fill", "10x10", "--fill", "20x10"}).Status,
        0);
    EXPECT_EQ(Crop({"--name", "{stem}-{extension}-{rank}", "-n", "1"}, {"a.jpg", "a.png"}).Status,
              0);
    EXPECT_GT(SizeOf("out/a-jpg-1.jpg").Width, SizeOf("out/a-png-1.png").Width);
}

TEST_F(Shapes, ManifestListsEveryFileWithItsSizeAndScores)
{
    WriteText(Folder.Path("broken.jpg"), "no picture");
    const Outcome outcome = Crop({"--preset", "wide", "--preset", "square", "--widths", "200,100",
                                  "--manifest", Folder.Path("m.json")},
                                 {"a.jpg", "broken.jpg"});
    EXPECT_EQ(outcome.Status, 1);
    const auto manifest = nlohmann::json::parse(ReadText(Folder.Path("m.json")));
    ASSERT_EQ(manifest.size(), 2U);
    EXPECT_EQ(manifest[0]["file"], Folder.Path("a.jpg"));
    EXPECT_EQ(manifest[0]["width"], 1800);
    ASSERT_EQ(manifest[0]["crops"].size(), 2U);
    for (const auto& crop : manifest[0]["crops"]) {
        ASSERT_EQ(crop["files"].size(), 2U);
        EXPECT_TRUE(crop["scores"]["composition"].is_number());
        for (const auto& file : crop["files"]) {
            const VImage image = Open(file["file"]);
            EXPECT_EQ(file["width"], image.width());
            EXPECT_EQ(file["height"], image.height());
        }
    }
    EXPECT_TRUE(manifest[1].contains("error"));

    // It is not replaced, and nothing is written before that is detected.
    std::filesystem::remove_all(Folder.Path("out"));
    EXPECT_EQ(Crop({"--manifest", Folder.Path("m.json")}).Status, 1);
    EXPECT_TRUE(Written().empty());
}

TEST_F(Shapes, PictureElementOffersEveryFileAndEscapesNames)
{
    Scene(1800, 1200, 0.3, 0.6).write_to_file(Folder.Path("b, \"c\" &d.jpg").c_str());
    const Outcome outcome =
        Crop({"--each-ratio", "--aspect", "1:1", "--aspect", "16:9", "--widths", "400,200",
              "--picture", Folder.Path("p.html"), "--sizes", "(min-width: 60em) 50vw, \"100vw\""},
             {"b, \"c\" &d.jpg"});
    ASSERT_EQ(outcome.Status, 0) << outcome.Err;
    const std::string stem = "out/b%2C%20%22c%22%20%26d-";
    // From 4:3 on, the geometric mean of 16:9 and 1:1, the window's ratio is nearer to 16:9.
    EXPECT_EQ(ReadText(Folder.Path("p.html")),
              "<picture>\n"
              "  <source media=\"(min-aspect-ratio: 1333/1000)\" srcset=\"" +
                  stem + "16x9-200.jpg 200w, " + stem +
                  "16x9-400.jpg 400w\" sizes=\"(min-width: 60em) 50vw, &quot;100vw&quot;\" "
                  "width=\"400\" height=\"225\">\n"
                  "  <img src=\"" +
                  stem + "1x1-400.jpg\" srcset=\"" + stem + "1x1-200.jpg 200w, " + stem +
                  "1x1-400.jpg 400w\" sizes=\"(min-width: 60em) 50vw, &quot;100vw&quot;\" "
                  "width=\"400\" height=\"400\" alt=\"\">\n"
                  "</picture>\n");
}

TEST_F(Shapes, ThatContradictEachOtherAreRejected)
{
    for (const Words& words :
         {Words{"--fill", "10x10", "--resize", "5x5"}, Words{"--fill", "10x10", "--widths", "5"},
          Words{"--size", "10x10", "--preset", "square"}, Words{"--upscale"},
          Words{"--largest", "--scale", "0.5"}, Words{"--each-ratio"}, Words{"--sizes", "50vw"},
          Words{"--manifest", "m", "--resume"}, Words{"--preset", "unknown"},
          Words{"--widths", "0"}, Words{"--widths", "1.5"}, Words{"--aspect", "unknown"}})
        EXPECT_EQ(Crop(words).Status, 2) << words[0];
    EXPECT_NE(Crop({"--preset", "unknown"}).Err.find("there are square, portrait,"),
              std::string::npos);
}

} // namespace
} // namespace vistaTrim::cli
