// What the program reports, and that it reports it before it starts working.
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

    // Of a run that fails and writes nothing.
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

TEST_F(Messages, StrangeNamesAreQuotedInAllThatPeopleReadAndExactInJson)
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

TEST_F(Messages, TheWorkingFolderWillDoAsOutputFolder)
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

TEST_F(Messages, AReportWithTheNameOfAPictureIsASlip)
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

TEST_F(Messages, AFolderWhereAFileIsExpectedIsSaidToBeOne)
{
    const std::string folder = Folder.Path("folder");
    EXPECT_EQ(FaultOf({"suggest", Photo, "--ranking", folder}, 2),
              "vistatrim: the ranking file " + folder + " is a folder\n");
    EXPECT_EQ(FaultOf({"suggest", Photo, "--presets", folder}, 2),
              "vistatrim: --presets: " + folder +
                  " is a folder, not a table\nvistatrim: try --help\n");
    EXPECT_EQ(FaultOf({"suggest", Photo, "--regions", folder}),
              "vistatrim: " + folder + ": Is a directory\n");
    EXPECT_EQ(FaultOf({"suggest", ""}), "vistatrim: '': No such file or directory\n");
}

TEST_F(Messages, FaultsOfTheCommandLineAreInPlainWords)
{
    EXPECT_EQ(FaultOf({}, 2), "vistatrim: a command is missing; there are suggest, crop, report, "
                              "maps and contact-sheet\nvistatrim: try --help\n");
    EXPECT_EQ(FaultOf({"suggest", Photo, "--top", "1", "--top", "2"}, 2),
              "vistatrim: --top is given more than once\nvistatrim: try --help\n");
}

} // namespace
} // namespace vistaTrim::cli
