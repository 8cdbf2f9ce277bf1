// What each option sets in the values of a run, for every command that has it.
#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "options/options.h"

namespace vistaTrim::cli {
namespace {

using namespace photo;

using Words = std::vector<std::string>;

CommandLine Parse(const Words& given)
{
    Words words = {"vistatrim"};
    words.insert(words.end(), given.begin(), given.end());
    std::vector<const char*> pointers;
    for (const std::string& word : words)
        pointers.push_back(word.c_str());
    testing::internal::CaptureStderr();
    CommandLine line = ParseCommandLine(static_cast<int>(pointers.size()), pointers.data());
    testing::internal::GetCapturedStderr();
    return line;
}

Options Read(const Words& words)
{
    const CommandLine line = Parse(words);
    EXPECT_FALSE(line.ExitStatus) << testing::PrintToString(words);
    return line.Values;
}

bool IsFault(const Words& words)
{
    return Parse(words).ExitStatus == kUsageFault;
}

struct CommandWords {
    const char* Name;
    Command Chosen;
    Words Least; // the fewest words that the command needs
};

const std::vector<CommandWords> kCommands = {
    {"suggest", Command::Suggest, {"suggest", "a.jpg"}},
    {"crop", Command::Crop, {"crop", "a.jpg", "-o", "out"}},
    {"report", Command::Report, {"report", "a.jpg", "-o", "out"}},
    {"maps", Command::Maps, {"maps", "a.jpg", "-o", "out"}},
    {"contact-sheet", Command::ContactSheet, {"contact-sheet", "a.jpg", "-o", "out"}}};

Words With(const CommandWords& command, const Words& more)
{
    Words words = command.Least;
    words.insert(words.end(), more.begin(), more.end());
    return words;
}

TEST(OptionValues, OfInputAndRunAreTheSameForEveryCommand)
{
    for (const CommandWords& command : kCommands) {
        SCOPED_TRACE(command.Name);
        const Options plain = Read(command.Least);
        EXPECT_EQ(plain.Chosen, command.Chosen);
        EXPECT_EQ(plain.Photos, (Words{"a.jpg"}));
        EXPECT_FALSE(plain.Recursive || plain.NullSeparated || plain.Quiet || plain.Timings ||
                     plain.Force || plain.Resume);
        EXPECT_EQ(plain.Workers, 0);
        EXPECT_EQ(plain.Reading.Background, (Colour{255, 255, 255}));
        EXPECT_TRUE(Read(With(command, {"-r"})).Recursive);
        EXPECT_TRUE(Read(With(command, {"--recursive"})).Recursive);
        EXPECT_TRUE(Read(With(command, {"-0"})).NullSeparated);
        EXPECT_TRUE(Read(With(command, {"--null"})).NullSeparated);
        EXPECT_TRUE(Read(With(command, {"-q"})).Quiet);
        EXPECT_TRUE(Read(With(command, {"--quiet"})).Quiet);
        EXPECT_TRUE(Read(With(command, {"--timings"})).Timings);
        EXPECT_EQ(Read(With(command, {"-j", "3"})).Workers, 3);
        EXPECT_EQ(Read(With(command, {"--jobs", "1024"})).Workers, 1024);
        EXPECT_TRUE(IsFault(With(command, {"-j", "0"})));
        EXPECT_TRUE(IsFault(With(command, {"-j", "1025"})));
        EXPECT_EQ(Read(With(command, {"--files-from", "l", "--files-from", "m"})).FilesFrom,
                  (Words{"l", "m"}));
        EXPECT_TRUE(IsFault(With(command, {"--files-from", ""})));
        EXPECT_TRUE(IsFault(With(command, {"-", "-"}))); // it can be read only once
        EXPECT_TRUE(IsFault(With(command, {"-", "--files-from", "-"})));
        EXPECT_EQ(Read(With(command, {"--background", "#102030"})).Reading.Background,
                  (Colour{16, 32, 48}));
        EXPECT_TRUE(IsFault(With(command, {"--background", "reddish"})));
        const bool toStandardOutput = command.Chosen == Command::Suggest;
        EXPECT_EQ(plain.Output, toStandardOutput ? "" : "out");
        EXPECT_TRUE(Read(toStandardOutput ? With(command, {"-o", "x", "--force"})
                                          : With(command, {"--force"}))
                        .Force);
        EXPECT_EQ(IsFault({command.Name, "a.jpg"}), !toStandardOutput);
        EXPECT_TRUE(IsFault({command.Name, "-o", "out"})); // no photograph
    }
}

TEST(OptionValues, OfRequestRegionsAndShapesAreTheSameForEveryCommandExceptMaps)
{
    for (const CommandWords& command : kCommands) {
        SCOPED_TRACE(command.Name);
        if (command.Chosen == Command::Maps) {
            for (const char* option : {"--top", "--scale", "--density", "--aspect"})
                EXPECT_TRUE(IsFault(With(command, {option, "1"})));
            continue;
        }
        const Options plain = Read(command.Least);
        EXPECT_EQ(plain.Request.Top, 5);
        EXPECT_EQ(plain.Request.Density, kDefaultDensity);
        EXPECT_EQ(plain.RegionUse.Faces, FaceSearch::All);
        EXPECT_TRUE(plain.RegionUse.UseNamed);
        EXPECT_EQ(Read(With(command, {"-n", "10000"})).Request.Top, 10000);
        EXPECT_EQ(Read(With(command, {"--top", "1"})).Request.Top, 1);
        EXPECT_TRUE(IsFault(With(command, {"-n", "0"})));
        EXPECT_TRUE(IsFault(With(command, {"-n", "10001"})));
        EXPECT_EQ(Read(With(command, {"--density", "500"})).Request.Density, 500U);
        EXPECT_EQ(Read(With(command, {"--density", "1"})).Request.Density, 1U);
        EXPECT_TRUE(IsFault(With(command, {"--density", "501"})));
        EXPECT_TRUE(IsFault(With(command, {"--density", "0"})));
        EXPECT_EQ(Read(With(command, {"--faces", "off"})).RegionUse.Faces, FaceSearch::Off);
        EXPECT_TRUE(IsFault(With(command, {"--faces", "some"})));
        EXPECT_FALSE(Read(With(command, {"--ignore-metadata-regions"})).RegionUse.UseNamed);
        EXPECT_EQ(Read(With(command, {"--regions", "r.jsonl"})).RegionsPath, "r.jsonl");
        EXPECT_TRUE(IsFault(With(command, {"--regions", ""})));
        const std::vector<Wish> wishes =
            Read(With(command, {"--must-avoid", "1,2,3,4", "--avoid", "5,6,7,8", "--keep",
                                "9,10,11,12", "--must-keep", "13,14,15,16", "--keep", "0,0,1,1"}))
                .Request.Wishes;
        ASSERT_EQ(wishes.size(), 5U);
        const auto has = [&wishes](WishKind kind, const PixelRect& rect) {
            return std::any_of(wishes.begin(), wishes.end(), [&](const Wish& wish) {
                return wish.Kind == kind && wish.Rect == rect;
            });
        };
        EXPECT_TRUE(has(WishKind::MustAvoid, {1, 2, 3, 4}));
        EXPECT_TRUE(has(WishKind::Avoid, {5, 6, 7, 8}));
        EXPECT_TRUE(has(WishKind::Keep, {9, 10, 11, 12}));
        EXPECT_TRUE(has(WishKind::MustKeep, {13, 14, 15, 16}));
        EXPECT_TRUE(has(WishKind::Keep, {0, 0, 1, 1}));
        EXPECT_EQ(Read(With(command, {"--largest"})).Request.Scales, (std::vector<double>{1.0}));
        EXPECT_EQ(Read(With(command, {"--size", "30x20"})).Request.Size, (PixelSize{30, 20}));
        const Weights weights = Read(With(command, {"--weights", "1,2,3,4,5"})).Request.Weights;
        EXPECT_EQ(weights.Composition, 1);
        EXPECT_EQ(weights.Coverage, 2);
        EXPECT_EQ(weights.Border, 3);
        EXPECT_EQ(weights.Peak, 4);
        EXPECT_EQ(weights.CentrePeak, 5);
        for (const char* text : {"1", "1,2", "1,2,3,4", "1,2,3,4,5,6", "1,2,x"})
            EXPECT_TRUE(IsFault(With(command, {"--weights", text}))) << text;
    }
}

TEST(OptionValues, ScalesAreAboveZeroAndAtMostOne)
{
    const auto scales = [](const Words& more) {
        return Read(With(kCommands[0], more)).Request.Scales;
    };
    using Doubles = std::vector<double>;
    EXPECT_EQ(scales({"--scale", "1"}), (Doubles{1.0}));
    EXPECT_EQ(scales({"--scale", "0.001"}), (Doubles{0.001}));
    EXPECT_EQ(scales({"--scale", "0.5,0.25", "--scale", "0.75"}), (Doubles{0.5, 0.25, 0.75}));
    for (const char* text : {"0", "-0.5", "1.001", "0.5,0", "", "half"})
        EXPECT_TRUE(IsFault(With(kCommands[0], {"--scale", text}))) << text;
    EXPECT_TRUE(IsFault(With(kCommands[0], {"--scale", "0.5", "--largest"})));
}

TEST(OptionValues, ShapesAreListedOnceAndInTheirOrder)
{
    const auto names = [](const Words& more) {
        Words list;
        for (const auto& shape : Read(With(kCommands[1], more)).Shapes)
            list.push_back(shape.Name);
        return list;
    };
    EXPECT_EQ(names({"--aspect", "16:9", "--aspect", "square", "--aspect", "16/9"}),
              (Words{"16x9", "square"}));
    EXPECT_EQ(names({"--preset", "wide", "--preset", "avatar", "--preset", "wide"}),
              (Words{"wide", "avatar"}));
    EXPECT_EQ(names({"--fill", "30x20", "--fill", "20x20"}), (Words{"30x20", "20x20"}));
    // The name of a preset given as a ratio means its ratio alone.
    const Options aspect = Read(With(kCommands[1], {"--aspect", "avatar"}));
    EXPECT_FALSE(aspect.Shapes.at(0).Fill);
    EXPECT_FALSE(aspect.EachShape);
    EXPECT_EQ(aspect.Request.Top, 5);
    EXPECT_EQ(aspect.Request.Aspects, (std::vector<Ratio>{{1, 1}}));
    // Each shape gives one crop, unless more are requested.
    for (const Words& each : {Words{"--preset", "avatar"}, Words{"--fill", "30x20"},
                              Words{"--aspect", "1:1", "--each-ratio"}}) {
        EXPECT_TRUE(Read(With(kCommands[1], each)).EachShape);
        EXPECT_EQ(Read(With(kCommands[1], each)).Request.Top, 1);
        Words more = each;
        more.insert(more.end(), {"-n", "3"});
        EXPECT_EQ(Read(With(kCommands[1], more)).Request.Top, 3);
    }
    EXPECT_EQ(Read({"crop", "a.jpg", "-o", "-"}).Request.Top, 1);
}

TEST(OptionValues, OfCropAreRead)
{
    const CommandWords& crop = kCommands[1];
    const CropFileOptions plain = Read(crop.Least).CropFiles;
    EXPECT_FALSE(plain.Strip || plain.Upscale || plain.Xmp || plain.XmpOnly || plain.ResizeTo ||
                 plain.Format);
    EXPECT_EQ(plain.Sizes, "100vw");
    const auto files = [&crop](const Words& more) { return Read(With(crop, more)).CropFiles; };
    EXPECT_EQ(files({"--widths", "400,800"}).Widths, (std::vector<int32_t>{400, 800}));
    EXPECT_EQ(files({"--widths", "1,100000"}).Widths, (std::vector<int32_t>{1, 100000}));
    for (const char* text : {"0", "100001", "1.5", "x", "-4", "", "5,"})
        EXPECT_TRUE(IsFault(With(crop, {"--widths", text}))) << text;
    EXPECT_TRUE(files({"--widths", "4", "--upscale"}).Upscale);
    EXPECT_TRUE(files({"--xmp"}).Xmp);
    EXPECT_TRUE(files({"--xmp-only"}).XmpOnly);
    EXPECT_EQ(files({"--manifest", "m"}).Manifest, "m");
    EXPECT_EQ(files({"--picture", "p", "--sizes", "50vw"}).Sizes, "50vw");
    EXPECT_EQ(files({"--picture", "p"}).Picture, "p");
    EXPECT_EQ(files({"--name", "{rank}"}).Name, "{rank}");
    EXPECT_EQ(files({"--resize", "30x20"}).ResizeTo, (PixelSize{30, 20}));
    EXPECT_EQ(Read({"crop", "--from", "c.json", "-o", "out"}).CropFiles.From, "c.json");
    EXPECT_TRUE(Read(With(crop, {"--resume"})).Resume);
    for (const char* quality : {"0", "101", "x"})
        EXPECT_TRUE(IsFault(With(crop, {"--quality", quality})));
    const Words contradictions[] = {{"--resume", "--force"},
                                    {"--xmp", "--xmp-only"},
                                    {"--manifest", "m", "--resume"},
                                    {"--picture", "p", "--resume"},
                                    {"--picture", "p", "--xmp-only"},
                                    {"--sizes", "50vw"},
                                    {"--upscale"},
                                    {"--resize", "5x5", "--widths", "5"},
                                    {"--fill", "5x5", "--resize", "5x5"},
                                    {"--fill", "5x5", "--widths", "5"},
                                    {"--fill", "5x5", "--size", "5x5"},
                                    {"--manifest", ""},
                                    {"--picture", ""}};
    for (const Words& words : contradictions)
        EXPECT_TRUE(IsFault(With(crop, words))) << testing::PrintToString(words);
}

TEST(OptionValues, ForStandardOutputAllowOnePicture)
{
    const auto isFault = [](Words more) {
        more.insert(more.begin(), {"crop", "a.jpg", "-o", "-"});
        return IsFault(more);
    };
    EXPECT_FALSE(isFault({}));
    EXPECT_FALSE(isFault({"-n", "1", "--widths", "5"}));
    EXPECT_FALSE(isFault({"--preset", "square"}));
    for (const Words& words :
         {Words{"-n", "2"}, Words{"--widths", "5,6"}, Words{"--preset", "square", "--preset", "hd"},
          Words{"--resume"}, Words{"--manifest", "m"}, Words{"--picture", "p"}, Words{"--xmp"},
          Words{"--xmp-only"}})
        EXPECT_TRUE(isFault(words)) << words[0];
}

TEST(OptionValues, OfTheOtherCommandsAreRead)
{
    EXPECT_EQ(Read({"contact-sheet", "a", "-o", "s"}).SheetCell, (PixelSize{360, 240}));
    EXPECT_EQ(Read({"contact-sheet", "a", "-o", "s", "--cell", "16x2000"}).SheetCell,
              (PixelSize{16, 2000}));
    for (const char* cell : {"15x20", "20x15", "2001x20", "20x2001", "20"})
        EXPECT_TRUE(IsFault({"contact-sheet", "a", "-o", "s", "--cell", cell})) << cell;
    EXPECT_TRUE(Read({"report", "a", "-o", "r"}).ReportMaps);
    EXPECT_TRUE(Read({"report", "a", "-o", "r", "--maps", "yes"}).ReportMaps);
    EXPECT_FALSE(Read({"report", "a", "-o", "r", "--maps", "no"}).ReportMaps);
    EXPECT_TRUE(IsFault({"report", "a", "-o", "r", "--maps", "none"}));
    EXPECT_EQ(Read({"suggest", "a", "--json"}).Format, ListFormat::Json);
    EXPECT_EQ(Read({"suggest", "a", "--csv"}).Format, ListFormat::Csv);
    EXPECT_TRUE(Read({"suggest", "a", "--explain"}).Request.Explain);
    EXPECT_FALSE(Read({"suggest", "a"}).Request.Explain);
    EXPECT_TRUE(IsFault({"suggest", "a", "--csv", "--explain"}));
    EXPECT_TRUE(IsFault({"suggest", "a", "--force"})); // nothing to replace
    EXPECT_TRUE(IsFault({"suggest", "a", "--json", "--resume"}));
    EXPECT_TRUE(Read({"suggest", "a", "--json", "--resume", "-o", "x"}).Resume);
}

// The last of two would win silently.
TEST(OptionValues, OfOneValueMayBeGivenOnce)
{
    const std::pair<const char*, const char*> single[] = {
        {"--rank-by", "peak"},   {"--weights", "1,0,0"}, {"--faces", "off"},  {"--size", "5x5"},
        {"--background", "red"}, {"--resize", "5x5"},    {"--format", "png"}, {"--widths", "5"}};
    for (const auto& [option, value] : single) {
        EXPECT_FALSE(IsFault(With(kCommands[1], {option, value}))) << option;
        EXPECT_TRUE(IsFault(With(kCommands[1], {option, value, option, value}))) << option;
    }
    EXPECT_TRUE(IsFault({"report", "a", "-o", "r", "--maps", "no", "--maps", "yes"}));
    EXPECT_TRUE(IsFault({"contact-sheet", "a", "-o", "s", "--cell", "20x20", "--cell", "20x20"}));
}

} // namespace
} // namespace vistaTrim::cli
