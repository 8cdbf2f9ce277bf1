// --resume with options other than those of the existing output.
#include <filesystem>
#include <map>

#include <gtest/gtest.h>

#include "photo/sample_pictures.h"
#include "run_program.h"

namespace vistaTrim::cli {
namespace {

using namespace photo;

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

class ResumedOptions : public testing::Test {
protected:
    ResumedOptions()
    {
        for (const char* name : {"a.jpg", "b.jpg"})
            Scene(300, 200, 0.3, 0.6).write_to_file(Folder.Path(name).c_str());
    }

    Outcome Run(const std::string& command, const Words& more) const
    {
        Words arguments = {command, "--faces", "off"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunProgram(arguments);
    }

    Outcome Crop(const std::string& photo, const Words& more) const
    {
        Words arguments = {Folder.Path(photo), "-o", Out};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return Run("crop", arguments);
    }

    std::string MadeWithOther(const std::string& output, const std::string& differences) const
    {
        return "vistatrim: " + output + " was made with other options: " + differences + "\n";
    }

    const TempFolder Folder;
    const std::string A = Folder.Path("a.jpg");
    const std::string B = Folder.Path("b.jpg");
    const std::string Out = Folder.Path("out");
};

TEST_F(ResumedOptions, OfAListAreRefusedByName)
{
    for (const char* format : {"--json", "--csv"}) {
        SCOPED_TRACE(format);
        const std::string list = Folder.Path(std::string("list") + format);
        ASSERT_EQ(Run("suggest", {format, "-o", list, "--top", "2", "--aspect", "16:9", A}).Status,
                  0);
        const std::string before = ReadText(list);
        const auto resume = [&](Words more) {
            more.insert(more.end(), {format, "-o", list, "--resume", A, B});
            return Run("suggest", more);
        };
        const Outcome other = resume({"--top", "3", "--largest"});
        EXPECT_EQ(other.Status, 1);
        EXPECT_EQ(other.Err,
                  MadeWithOther(list, "--aspect was 16x9 and is not given; --largest was not given "
                                      "and is given; --top was 2 and is 3"));
        EXPECT_EQ(ReadText(list), before);
        // Options that do not change the output may differ, and so may the spelling.
        const Outcome same = resume({"--top=2", "--aspect", "16/9", "-j", "1", "-q", "--timings"});
        EXPECT_EQ(same.Status, 0) << same.Err;
        EXPECT_EQ(ReadText(list).substr(0, before.size()), before);
        EXPECT_GT(ReadText(list).size(), before.size());
    }
}

TEST_F(ResumedOptions, CompareFilesByContentAndIgnoreExplicitDefaults)
{
    const std::string list = Folder.Path("list.json");
    const std::string regions = Folder.Path("r.json");
    const std::string row =
        "{\"file\":\"" + A + "\",\"regions\":[{\"x\":1,\"y\":1,\"width\":9,\"height\":9}]}\n";
    WriteText(regions, row);
    ASSERT_EQ(Run("suggest", {"--json", "-o", list, "--regions", regions, A}).Status, 0);
    const auto resume = [&](const std::string& file) {
        return Run("suggest",
                   {"--json", "-o", list, "--top", "5", "--resume", "--regions", file, A, B});
    };
    fs::rename(regions, Folder.Path("moved.json"));
    EXPECT_EQ(resume(Folder.Path("moved.json")).Status, 0);
    WriteText(regions, row + row);
    const Outcome changed = resume(regions);
    EXPECT_EQ(changed.Status, 1);
    EXPECT_NE(changed.Err.find("--regions was content "), std::string::npos) << changed.Err;
}

TEST_F(ResumedOptions, OfAnOutputWithoutARecordAreTrustedWithAMessage)
{
    const std::string list = Folder.Path("list.json");
    ASSERT_EQ(Run("suggest", {"--json", "-o", list, A}).Status, 0);
    ASSERT_TRUE(fs::remove(Folder.Path(".list.json.options")));
    const Outcome lines = Run("suggest", {"--json", "-o", list, "--resume", A, B});
    EXPECT_EQ(lines.Status, 0);
    EXPECT_EQ(lines.Err, "vistatrim: " + list +
                             " does not say with which options it was made; they are taken to be "
                             "those of this run\n");
    EXPECT_EQ(Run("suggest", {"--json", "-o", list, "--resume", A, B}).Err,
              "vistatrim: nothing left to do: " + list + " holds all the photographs\n");
    EXPECT_EQ(Run("suggest", {"--json", "-o", list, "--resume", "-q", A, B}).Err, "");

    ASSERT_EQ(Crop("a.jpg", {}).Status, 0);
    ASSERT_TRUE(fs::remove(Folder.Path("out/.vistatrim.options")));
    const Outcome crops = Crop("b.jpg", {"--resume"});
    EXPECT_EQ(crops.Status, 0);
    EXPECT_EQ(crops.Err, "vistatrim: " + Out +
                             " does not say with which options its crops were made; they are taken "
                             "to be those of this run\n");
    EXPECT_EQ(Crop("a.jpg", {"--resume"}).Err,
              "vistatrim: nothing left to do: " + Out + " holds all the crops\n");
    EXPECT_EQ(Crop("a.jpg", {"--resume", "-q"}).Err, "");
}

TEST_F(ResumedOptions, OfCropsAreRefusedByName)
{
    ASSERT_EQ(Crop("a.jpg", {"--quality", "80"}).Status, 0);
    const Outcome other = Crop("b.jpg", {"--resume", "--quality", "90", "--strip"});
    EXPECT_EQ(other.Status, 1);
    EXPECT_EQ(other.Err, MadeWithOther(Out, "--quality was 80 and is 90; --strip was not given and "
                                            "is given"));
    EXPECT_FALSE(fs::exists(Folder.Path("out/b-1.jpg")));
    EXPECT_EQ(Crop("b.jpg", {"--resume", "--quality", "80", "-j", "1"}).Err, "");
    EXPECT_TRUE(fs::exists(Folder.Path("out/b-1.jpg")));
}

TEST_F(ResumedOptions, OfRunsWithOtherFileNamesMayDiffer)
{
    const Words story = {"--preset", "story"};
    const Words square = {"--preset", "square", "--quality", "50"};
    ASSERT_EQ(Crop("a.jpg", story).Status, 0);
    ASSERT_EQ(Crop("a.jpg", square).Status, 0);
    for (Words again : {story, square}) {
        again.emplace_back("--resume");
        const Outcome outcome = Crop("b.jpg", again);
        EXPECT_EQ(outcome.Status, 0) << outcome.Err;
    }
    const Outcome mixed = Crop("b.jpg", {"--preset", "story", "--quality", "50", "--resume"});
    EXPECT_EQ(mixed.Err, MadeWithOther(Out, "--quality was not given and is 50"));
    // Every recorded run counts, whichever was first.
    const Outcome later = Crop("b.jpg", {"--preset", "square", "--resume"});
    EXPECT_EQ(later.Status, 1);
    EXPECT_EQ(later.Err, MadeWithOther(Out, "--quality was 50 and is not given"));
}

TEST_F(ResumedOptions, CompareTheFormatByTheFileNamesThatItGives)
{
    ASSERT_EQ(Crop("a.jpg", {"--quality", "80"}).Status, 0);
    const Outcome same = Crop("a.jpg", {"--quality", "80", "--format", "jpeg", "--resume"});
    EXPECT_EQ(same.Status, 0);
    EXPECT_EQ(same.Err, "vistatrim: nothing left to do: " + Out + " holds all the crops\n");
    const Outcome other = Crop("a.jpg", {"--quality", "90", "--format", "jpg", "--resume"});
    EXPECT_EQ(other.Err, MadeWithOther(Out, "--quality was 80 and is 90"));
    // Files of another format do not affect these.
    const Outcome webp = Crop("a.jpg", {"--quality", "90", "--format", "webp", "--resume"});
    EXPECT_EQ(webp.Status, 0) << webp.Err;
    EXPECT_TRUE(fs::exists(Folder.Path("out/a-1.webp")));

    // As the first versions recorded it.
    WriteText(Folder.Path("out/.vistatrim.options"),
              R"({"format": "vistatrim-options", "version": 1, "runs": [
                  {"names": ["{stem}-1"], "options": {"--faces": "off", "--top": "5"}},
                  {"names": ["{stem}-1.png"],
                   "options": {"--faces": "off", "--format": "png", "--top": "3"}}]})");
    EXPECT_EQ(Crop("a.jpg", {"--top", "4", "--resume"}).Err,
              MadeWithOther(Out, "--top was 5 and is 4"));
    EXPECT_EQ(Crop("a.jpg", {"--resume"}).Status, 0);
    EXPECT_EQ(Crop("a.jpg", {"--top", "3", "--format", "png", "--resume"}).Status, 1); // as jpg
}

TEST_F(ResumedOptions, OfARunThatWroteNothingOrWasReplacedDoNotCount)
{
    const Words resume = {"--resume"};
    ASSERT_EQ(Crop("a.jpg", {}).Status, 0);
    ASSERT_EQ(Crop("a.jpg", {"--quality", "50"}).Status, 1); // exists already
    EXPECT_EQ(Crop("a.jpg", resume).Status, 0);
    ASSERT_EQ(Crop("a.jpg", {"--quality", "50", "--force"}).Status, 0);
    EXPECT_EQ(Crop("a.jpg", resume).Status, 1);
    EXPECT_EQ(Crop("a.jpg", {"--quality", "50", "--resume"}).Status, 0);
    // People who empty a folder overlook the hidden record.
    for (int rank = 1; rank <= 5; ++rank)
        fs::remove(Folder.Path("out/a-" + std::to_string(rank) + ".jpg"));
    EXPECT_EQ(Crop("a.jpg", resume).Status, 0);
    EXPECT_EQ(Crop("b.jpg", resume).Status, 0);
}

// Whichever file is missing is written again, and the others stay as they are.
TEST_F(ResumedOptions, EachMissingFileIsWrittenAgain)
{
    const Words files = {"out/a-1-100.jpg", "out/a-1-50.jpg", "out/a-2-100.jpg", "out/a-2-50.jpg",
                         "out/a.xmp"};
    const Words words = {"--top", "2", "--widths", "50,100", "--xmp"};
    ASSERT_EQ(Crop("a.jpg", words).Status, 0);
    Words again = words;
    again.emplace_back("--resume");
    EXPECT_EQ(Crop("a.jpg", again).Out, "");
    std::map<std::string, std::string> written;
    for (const std::string& file : files)
        written[file] = ReadText(Folder.Path(file));
    for (const std::string& missing : files) {
        SCOPED_TRACE(missing);
        for (const std::string& file : files)
            WriteText(Folder.Path(file), "retouched");
        ASSERT_TRUE(fs::remove(Folder.Path(missing)));
        const Outcome outcome = Crop("a.jpg", again);
        EXPECT_EQ(outcome.Status, 0) << outcome.Err;
        EXPECT_EQ(outcome.Out, Folder.Path(missing) + "\n");
        for (const std::string& file : files)
            EXPECT_TRUE(ReadText(Folder.Path(file)) ==
                        (file == missing ? written[file] : "retouched"))
                << file;
    }
}

TEST_F(ResumedOptions, CompareTheListOfChosenCropsByContent)
{
    const std::string choice = Folder.Path("choice.json");
    const auto write = [&](const std::string& width) {
        WriteText(choice, "{\"file\":\"" + A +
                              "\",\"crops\":[{\"x\":0,\"y\":0,\"height\":100,\"width\":" + width +
                              "}]}\n");
    };
    const Words cut = {"crop", "--from", choice, "-o", Out};
    write("100");
    ASSERT_EQ(RunProgram(cut).Status, 0);
    Words again = cut;
    again.emplace_back("--resume");
    EXPECT_EQ(RunProgram(again).Status, 0);
    write("120");
    const Outcome other = RunProgram(again);
    EXPECT_EQ(other.Status, 1);
    EXPECT_NE(other.Err.find(" was made with other options: --from was content "),
              std::string::npos)
        << other.Err;
}

} // namespace
} // namespace vistaTrim::cli
