// What the program reports, and that it does so before it starts work.
#include <filesystem>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "photo/sample_pictures.h"
#include "run_program.h"

namespace vistaTrim::cli {
namespace {

using namespace photo;

namespace fs = std::filesystem;

class Messages : public testing::Test {
protected:
    Messages()
    {
        Scene(300, 200, 0.3, 0.6).write_to_file(Photo.c_str());
        fs::create_directory(Folder.Path("folder"));
        WriteText(Folder.Path("file"), "a file\n");
        Before = Folder.Files();
    }

    // The message of a run that fails and writes nothing.
    std::string FaultOf(const std::vector<std::string>& arguments, int status = 1) const
    {
        const Outcome outcome = RunProgram(arguments);
        EXPECT_EQ(outcome.Status, status);
        EXPECT_EQ(outcome.Out, "");
        EXPECT_EQ(Folder.Files(), Before);
        return outcome.Err;
    }

    const TempFolder Folder;
    const std::string Photo = Folder.Path("a.jpg");
    std::vector<std::string> Before;
};

bool Holds(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

TEST_F(Messages, StrangeNamesAreQuotedForPeopleAndExactInJson)
{
    const std::string name = Folder.Path("new\nline \x1b[31m.jpg");
    const std::string shown = "$'" + Folder.Path("new\\nline \\033[31m.jpg") + "'";
    fs::copy_file(Photo, name);
    WriteText(Folder.Path("bad\xFF\n.jpg"), "no picture");
    const std::string badShown = "$'" + Folder.Path("bad\\377\\n.jpg") + "'";

    const Outcome text =
        RunProgram({"suggest", "--faces", "off", "--timings", name, Folder.Path("bad\xFF\n.jpg")});
    EXPECT_EQ(text.Out.find(shown + ": 300 x 200\n"), 0U) << text.Out;
    EXPECT_TRUE(Holds(text.Err, "vistatrim: " + badShown + ": not a picture")) << text.Err;
    EXPECT_TRUE(Holds(text.Err, "vistatrim: " + shown + ": read ")) << text.Err;
    EXPECT_FALSE(Holds(text.Out + text.Err, "\x1b"));

    const Outcome json = RunProgram({"suggest", "--faces", "off", "--json", name});
    EXPECT_EQ(nlohmann::json::parse(json.Out)["file"], name);

    const std::vector<std::string> crop = {"crop", "--faces", "off", "--top",
                                           "1",    name,      "-o",  Folder.Path("out")};
    const std::string cropShown = "$'" + Folder.Path("out/new\\nline \\033[31m-1.jpg") + "'";
    EXPECT_EQ(RunProgram(crop).Out, cropShown + "\n");
    const Outcome again = RunProgram(crop);
    EXPECT_EQ(again.Err,
              "vistatrim: " + shown + ": " + cropShown + " exists already; --force replaces it\n");
    const Outcome option = RunProgram({"suggest", "--x\x1b[31m"});
    EXPECT_EQ(option.Status, 2);
    EXPECT_FALSE(Holds(option.Err, "\x1b")) << option.Err;
}

TEST_F(Messages, ANameThatBeginsWithADashHintsAtTheTwoDashes)
{
    const fs::path before = fs::current_path();
    fs::current_path(Folder.Path("folder"));
    for (const char* name : {"-dash.jpg", "-j.jpg", "--top.jpg"}) {
        SCOPED_TRACE(name);
        fs::copy_file(Photo, name, fs::copy_options::overwrite_existing);
        const Outcome fault = RunProgram({"suggest", "--faces", "off", name});
        EXPECT_EQ(fault.Status, 2);
        EXPECT_TRUE(Holds(fault.Err, std::string("vistatrim: there is a file ") + name +
                                         "; put -- before the photographs, as in: vistatrim "
                                         "suggest -- " +
                                         name + "\n"))
            << fault.Err;
        EXPECT_EQ(RunProgram({"suggest", "--faces", "off", "--", name}).Status, 0);
        // No hint for an option that is merely wrong.
        EXPECT_FALSE(
            Holds(RunProgram({"suggest", "--no-such", "--", name}).Err, "there is a file"));
    }
    fs::current_path(before);
}

TEST_F(Messages, TheWorkingFolderCanBeTheOutputFolder)
{
    const fs::path before = fs::current_path();
    fs::current_path(Folder.Path("folder"));
    const Outcome outcome =
        RunProgram({"crop", "--faces", "off", "--top", "1", "../a.jpg", "-o", "."});
    EXPECT_EQ(outcome.Status, 0) << outcome.Err;
    EXPECT_EQ(outcome.Out, "./a-1.jpg\n");
    EXPECT_EQ(outcome.Err, "");
    EXPECT_TRUE(fs::exists("a-1.jpg"));
    EXPECT_EQ(RunProgram({"suggest", "../a.jpg", "-o", "."}).Err,
              "vistatrim: . is a folder; --output takes the name of a file\n");
    fs::current_path(before);
}

TEST_F(Messages, ACropThatTheRequestRulesOutIsExplained)
{
    const std::string out = Folder.Path("out");
    EXPECT_EQ(FaultOf({"crop", "--faces", "off", Photo, "--scale", "0.0001", "-o", out}),
              "vistatrim: " + Photo +
                  ": no crop: --scale is too small: a crop would be less than a pixel of the "
                  "reduced picture that is searched\n");
    EXPECT_EQ(FaultOf({"crop", "--faces", "off", Photo, "--aspect", "1:90000", "-o", out}),
              "vistatrim: " + Photo +
                  ": no crop: --aspect is too extreme: a crop would be less than a pixel wide or "
                  "high in the reduced picture that is searched\n");
    EXPECT_EQ(FaultOf({"crop", "--faces", "off", Photo, "--must-avoid", "0,0,300,200", "-o", out}),
              "vistatrim: " + Photo +
                  ": no crop: no candidate meets --must-avoid; try more ratios or scales\n");
}

TEST_F(Messages, OnlyWhatWouldHelpIsSuggested)
{
    const std::string list = Folder.Path("file");
    EXPECT_EQ(FaultOf({"suggest", Photo, "-o", list}),
              "vistatrim: " + list + " exists already; --force replaces it\n");
    EXPECT_EQ(FaultOf({"suggest", "--csv", Photo, "-o", list}),
              "vistatrim: " + list + " exists already; --force replaces it, --resume goes on\n");
}

TEST_F(Messages, AnOutputThatCannotBeWrittenIsNamedBeforeTheWork)
{
    const std::string folder = Folder.Path("folder");
    const std::string missing = Folder.Path("none");
    const std::string file = Folder.Path("file");
    for (const char* command : {"suggest", "report", "contact-sheet"}) {
        SCOPED_TRACE(command);
        EXPECT_EQ(FaultOf({command, Photo, "-o", folder, "--force"}),
                  "vistatrim: " + folder + " is a folder; --output takes the name of a file\n");
        EXPECT_EQ(FaultOf({command, Photo, "-o", missing + "/x.jpg"}),
                  "vistatrim: cannot write " + missing + "/x.jpg: there is no folder " + missing +
                      "\n");
        EXPECT_EQ(FaultOf({command, Photo, "-o", file + "/x.jpg"}),
                  "vistatrim: cannot write " + file + "/x.jpg: " + file +
                      " is a file, not a folder\n");
    }
    for (const char* command : {"crop", "maps"}) {
        SCOPED_TRACE(command);
        EXPECT_EQ(FaultOf({command, Photo, "-o", file}),
                  "vistatrim: cannot create the folder " + file + ": " + file + " is a file\n");
        EXPECT_EQ(FaultOf({command, Photo, "-o", file + "/below/"}),
                  "vistatrim: cannot create the folder " + file + "/below/: " + file +
                      " is a file\n");
    }
    for (const char* beside : {"--manifest", "--picture"})
        EXPECT_EQ(FaultOf({"crop", Photo, "-o", Folder.Path("out"), beside, missing + "/m"}),
                  "vistatrim: cannot write " + missing + "/m: there is no folder " + missing +
                      "\n");
    for (const char* command : {"report", "maps", "contact-sheet"})
        EXPECT_EQ(FaultOf({command, Photo, "-o", "-"}, 2),
                  "vistatrim: -o - is standard output, to which only suggest and crop write; name "
                  "a file or folder\n");
}

TEST_F(Messages, AReportNamedLikeAPictureIsRefused)
{
    for (const char* name : {"x.jpg", "x.PNG", "x.webp"}) {
        const std::string page = Folder.Path(name);
        EXPECT_EQ(FaultOf({"report", Photo, "-o", page}),
                  "vistatrim: " + page +
                      ": a report is a page, whose name ends in .html; contact-sheet makes a "
                      "picture\n");
        EXPECT_FALSE(std::filesystem::exists(page));
    }
}

TEST_F(Messages, ACropForAFullDeviceNamesTheReason)
{
    RunOptions full;
    full.OutTo = "/dev/full";
    const Outcome outcome =
        RunProgram({"crop", "--faces", "off", "-n", "1", Photo, "-o", "-"}, full);
    EXPECT_EQ(outcome.Status, 1);
    EXPECT_EQ(outcome.Err, "vistatrim: cannot write standard output: No space left on device\n");
}

TEST_F(Messages, ADashIsStandardOutputForListsToo)
{
    const Outcome plain = RunProgram({"suggest", "--json", Photo});
    const Outcome dash = RunProgram({"suggest", "--json", Photo, "-o", "-"});
    EXPECT_EQ(dash.Status, 0) << dash.Err;
    EXPECT_EQ(dash.Out, plain.Out);
    EXPECT_EQ(FaultOf({"suggest", "--json", Photo, "-o", "-", "--resume"}, 2),
              "vistatrim: -o - is standard output, which cannot be replaced or resumed\n");
}

TEST_F(Messages, AFolderInPlaceOfAFileIsReported)
{
    const std::string folder = Folder.Path("folder");
    for (const char* option : {"--ranking", "--presets", "--regions", "--files-from"})
        EXPECT_EQ(FaultOf({"suggest", Photo, option, folder}, 2), std::string("vistatrim: ") +
                                                                      option + ": " + folder +
                                                                      " is a folder, not a file\n");
    EXPECT_EQ(FaultOf({"crop", "--from", folder, "-o", Folder.Path("out")}, 2),
              "vistatrim: --from: " + folder + " is a folder, not a file\n");
    EXPECT_EQ(FaultOf({"suggest", ""}), "vistatrim: '': No such file or directory\n");
}

TEST_F(Messages, AnOptionsFileThatCannotBeReadIsNamedWithTheOption)
{
    const std::string missing = Folder.Path("none");
    const std::string fault = ": cannot read " + missing + ": No such file or directory\n";
    for (const char* option : {"--ranking", "--presets", "--regions", "--files-from"})
        EXPECT_EQ(FaultOf({"suggest", Photo, option, missing}, 2),
                  std::string("vistatrim: ") + option + fault);
    EXPECT_EQ(FaultOf({"crop", "--from", missing, "-o", Folder.Path("out")}, 2),
              "vistatrim: --from" + fault);

    const std::string file = Folder.Path("file"); // not of the expected kind
    for (const char* option : {"--ranking", "--presets", "--regions"})
        EXPECT_EQ(FaultOf({"suggest", Photo, option, file}, 2)
                      .find(std::string("vistatrim: ") + option + ": "),
                  0U);
    EXPECT_EQ(FaultOf({"crop", "--from", file, "-o", Folder.Path("out")}, 2),
              "vistatrim: --from: " + file + ":1: is not the JSON of suggest or of a manifest\n");
}

TEST_F(Messages, SuggestNamesTheScaleThatLeavesNoCrop)
{
    const Outcome outcome = RunProgram({"suggest", "--faces", "off", Photo, "--scale", "0.0001"});
    EXPECT_EQ(outcome.Status, 0);
    EXPECT_EQ(outcome.Out, Photo + ": 300 x 200\n  no crop: --scale is too small: a crop would be "
                                   "less than a pixel of the reduced picture that is searched\n");
}

TEST_F(Messages, CropsLargerThanTheFormatHoldsAreRefusedBeforeAnythingIsWritten)
{
    const std::string wide = Folder.Path("wide.png");
    vips::VImage::black(3300, 110, vips::VImage::option()->set("bands", 3))
        .write_to_file(wide.c_str());
    Before = Folder.Files();
    const std::string out = Folder.Path("out");
    const auto faultOf = [&](const char* format, const char* width) {
        return FaultOf({"crop", "--faces", "off", "-n", "1", "--aspect", "30:1", "--largest",
                        "--upscale", "--widths", width, "--format", format, wide, "-o", out});
    };
    EXPECT_EQ(faultOf("jpg", "66000"), "vistatrim: " + wide +
                                           ": a crop of 66000 x 2200 pixels is larger than jpg "
                                           "holds: at most 65500 a side\n");
    EXPECT_EQ(faultOf("webp", "16500"), "vistatrim: " + wide +
                                            ": a crop of 16500 x 550 pixels is larger than webp "
                                            "holds: at most 16383 a side\n");
    EXPECT_EQ(faultOf("avif", "16500"), "vistatrim: " + wide +
                                            ": a crop of 16500 x 550 pixels is larger than avif "
                                            "holds: at most 16384 a side\n");
    EXPECT_EQ(RunProgram({"crop", "--faces", "off", "-n", "1", "--aspect", "30:1", "--largest",
                          "--upscale", "--widths", "16500", "--format", "jpg", wide, "-o", out})
                  .Status,
              0);
}

TEST_F(Messages, OptionsWithoutEffectOnTheFormatAreRefused)
{
    const auto faultOf = [&](const std::vector<std::string>& more) {
        std::vector<std::string> words = {"crop", Photo, "-o", Folder.Path("out")};
        words.insert(words.end(), more.begin(), more.end());
        return FaultOf(words, 2);
    };
    EXPECT_EQ(faultOf({"--format", "png", "--chroma", "4:4:4"}),
              "vistatrim: --chroma has no effect on png; it is for jpg\n");
    EXPECT_EQ(faultOf({"--format", "webp", "--chroma", "4:4:4"}),
              "vistatrim: --chroma has no effect on webp; it is for jpg\n");
    for (const char* format : {"png", "tif"})
        EXPECT_EQ(faultOf({"--format", format, "--quality", "50"}),
                  std::string("vistatrim: --quality has no effect on ") + format +
                      ", which loses nothing; it is for jpg, webp, avif and heic\n");
}

TEST_F(Messages, FaultsOfTheCommandLineAreInPlainWords)
{
    const std::pair<std::vector<std::string>, const char*> faults[] = {
        {{"suggest", Photo, "--top", "0"}, "--top: '0' is not an integer from 1 to 10000"},
        {{"suggest", Photo, "-n", "two"}, "--top: 'two' is not an integer from 1 to 10000"},
        {{"suggest", Photo, "-j", "1025"}, "--jobs: '1025' is not an integer from 1 to 1024"},
        {{"suggest", Photo, "--regions"}, "--regions: FILE is missing"},
        {{"suggest", Photo, "--keep"}, "--keep: X,Y,W,H is missing"},
        {{"suggest", Photo, "--keep", "0,0,0,0"},
         "--keep: '0,0,0,0' is not X,Y,W,H with W and H of at least 1"},
        {{"suggest", Photo, "--size", "0x9"}, "--size: '0x9' is not WxH, both at least 1"},
        {{"suggest", "--bright", Photo, "--dark"}, "there is no option --bright"},
        {{"crop", Photo}, "--output DIR is missing"},
        {{"suggest", Photo, "--force"}, "--force needs --output"},
        {{"suggest", Photo, "--json", "--csv"}, "--json and --csv cannot be given together"},
        {{"suggest", Photo, "--weights", "0,0,0"},
         "--weights: '0,0,0' ranks by nothing; one weight must not be 0"},
        {{"suggest", Photo, "--weights", "1,0,0,0,-1"},
         "--weights: '1,0,0,0,-1': the weights of peak and centre peak must be 0 or more"}};
    for (const auto& [words, fault] : faults)
        EXPECT_EQ(FaultOf(words, 2),
                  std::string("vistatrim: ") + fault + "\nvistatrim: try --help\n");
    EXPECT_EQ(FaultOf({}, 2), "vistatrim: a command is missing; there are suggest, crop, report, "
                              "maps and contact-sheet\nvistatrim: try --help\n");
    EXPECT_EQ(FaultOf({"suggest", Photo, "--top", "1", "--top", "2"}, 2),
              "vistatrim: --top is given more than once\nvistatrim: try --help\n");
}

} // namespace
} // namespace vistaTrim::cli
