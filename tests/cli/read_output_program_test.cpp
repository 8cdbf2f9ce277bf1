// An output inside the folder that is read.
#include <algorithm>
#include <filesystem>
#include <set>
#include <sstream>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "photo/sample_pictures.h"
#include "run_program.h"

namespace vistaTrim::cli {
namespace {

using namespace photo;

namespace fs = std::filesystem;

class ReadOutput : public testing::Test {
protected:
    ReadOutput()
    {
        fs::create_directories(Folder.Path("in/below"));
        Scene(300, 200, 0.3, 0.6).write_to_file(Folder.Path("in/a.jpg").c_str());
        Scene(300, 200, 0.6, 0.3).write_to_file(Folder.Path("in/below/b.jpg").c_str());
        fs::create_directory_symlink(Folder.Path("in"), Folder.Path("link"));
    }

    std::set<std::string> FilesBelow(const std::string& name) const
    {
        std::set<std::string> files;
        for (const auto& entry : fs::recursive_directory_iterator(Folder.Path(name)))
            if (entry.is_regular_file() && entry.path().filename().string()[0] != '.')
                files.insert(fs::relative(entry.path(), Folder.Path(name)).string());
        return files;
    }

    // The photographs that a run would read.
    std::set<std::string> Listed(const std::vector<std::string>& more) const
    {
        std::vector<std::string> arguments = {"suggest",         "--json",  "-r",
                                              Folder.Path("in"), "--faces", "off"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const Outcome outcome = RunProgram(arguments);
        std::set<std::string> files;
        std::istringstream lines(outcome.Out);
        for (std::string line; std::getline(lines, line);)
            files.insert(nlohmann::json::parse(line)["file"]);
        return files;
    }

    const TempFolder Folder;
};

TEST_F(ReadOutput, OfCropIsNotCroppedAgainHoweverItIsSpelled)
{
    const std::string spellings[] = {Folder.Path("in/out"), Folder.Path("in/out/"),
                                     Folder.Path("in/./below/../out"), Folder.Path("link/out"),
                                     fs::relative(Folder.Path("in/out")).string()};
    for (const std::string& output : spellings) {
        SCOPED_TRACE(output);
        const Outcome outcome = RunProgram({"crop", "-r", Folder.Path("in"), "-o", output, "--top",
                                            "1", "--faces", "off", "--force"});
        EXPECT_EQ(outcome.Status, 0) << outcome.Err;
        EXPECT_EQ(outcome.Err, "");
        EXPECT_EQ(FilesBelow("in/out"), (std::set<std::string>{"a-1.jpg", "below/b-1.jpg"}));
    }
    // A run with another output reads the crops as photographs of the folder.
    EXPECT_EQ(Listed({}).size(), 4U);
}

TEST_F(ReadOutput, OfMapsIsNotReadAgain)
{
    for (int run = 0; run < 2; ++run) {
        const Outcome outcome =
            RunProgram({"maps", "-r", Folder.Path("in"), "-o", Folder.Path("in/out"), "--force"});
        EXPECT_EQ(outcome.Status, 0) << outcome.Err;
    }
    for (const std::string& file : FilesBelow("in/out"))
        EXPECT_TRUE(file.find("a-") == 0 || file.find("below/b-") == 0) << file;
}

TEST_F(ReadOutput, OfContactSheetIsNotReadAgain)
{
    const auto sheet = [this] {
        const Outcome outcome =
            RunProgram({"contact-sheet", "-r", Folder.Path("in"), "-o", Folder.Path("in/sheet.png"),
                        "--faces", "off", "--force"});
        EXPECT_EQ(outcome.Status, 0) << outcome.Err;
        return ReadText(Folder.Path("in/sheet.png"));
    };
    const std::string first = sheet();
    EXPECT_TRUE(sheet() == first) << "the sheet shows itself"; // EXPECT_EQ would print pictures
}

TEST_F(ReadOutput, OfSuggestAndReportDoesNotChangeTheListOfPhotographs)
{
    // The output is recognised as the file it is, even if its ending is that of a photograph.
    const std::string output = Folder.Path("in/crops.jpg");
    for (int run = 0; run < 2; ++run) {
        EXPECT_EQ(RunProgram({"suggest", "--json", "-r", Folder.Path("in"), "-o", output, "--force",
                              "--faces", "off"})
                      .Status,
                  0);
        const std::string lines = ReadText(output);
        EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), 2);
    }
    std::filesystem::remove(output);
    // The program looks into files without an ending, so this one would count as skipped.
    for (int run = 0; run < 2; ++run) {
        const Outcome outcome = RunProgram({"report", "-r", Folder.Path("in"), "-o",
                                            Folder.Path("in/page"), "--force", "--faces", "off"});
        EXPECT_EQ(outcome.Status, 0) << outcome.Err;
        EXPECT_EQ(outcome.Err.find("skipped"), std::string::npos) << outcome.Err;
    }
}

TEST_F(ReadOutput, IsReadWithAWarningIfItIsNamed)
{
    const std::vector<std::string> both = {"crop",    "-o", Folder.Path("in"), "--top", "1",
                                           "--faces", "off"};
    const auto with = [&both](std::vector<std::string> more) {
        more.insert(more.begin(), both.begin(), both.end());
        return RunProgram(more);
    };
    const Outcome first = with({Folder.Path("link")});
    EXPECT_EQ(first.Status, 0) << first.Err;
    EXPECT_EQ(first.Err, "vistatrim: " + Folder.Path("link") +
                             " is both read and written: files of earlier runs in it count as "
                             "photographs\n");
    EXPECT_TRUE(fs::exists(Folder.Path("in/a-1.jpg")));
    // Naming a file gives no warning about folders.
    const Outcome second = with({Folder.Path("in/a-1.jpg")});
    EXPECT_EQ(second.Status, 0) << second.Err;
    EXPECT_EQ(second.Err, "");
    EXPECT_TRUE(fs::exists(Folder.Path("in/a-1-1.jpg")));
}

} // namespace
} // namespace vistaTrim::cli
