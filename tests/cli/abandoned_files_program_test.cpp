// Temporary files of runs that were killed, and of runs that are still in progress.
#include <chrono>
#include <csignal>
#include <filesystem>
#include <functional>
#include <set>
#include <thread>

#include <sys/wait.h>

#include <gtest/gtest.h>

#include "photo/sample_pictures.h"
#include "run_program.h"

namespace vistaTrim::cli {
namespace {

using namespace photo;

namespace fs = std::filesystem;

class AbandonedFiles : public testing::Test {
protected:
    AbandonedFiles()
    {
        fs::create_directory(Folder.Path("in"));
        // Takes a while to write as PNG.
        Scene(2400, 1600, 0.3, 0.6).write_to_file(Folder.Path("in/large.jpg").c_str());
        Scene(300, 200, 0.3, 0.6).write_to_file(Folder.Path("small.jpg").c_str());
    }

    std::set<std::string> FilesIn(const std::string& name, bool temporary) const
    {
        std::set<std::string> files;
        std::error_code unknown;
        for (const auto& entry : fs::directory_iterator(Folder.Path(name), unknown)) {
            const std::string file = entry.path().filename().string();
            const bool isTemporary = file.compare(0, 11, ".vistatrim-") == 0;
            if (temporary ? isTemporary : file[0] != '.')
                files.insert(file);
        }
        return files;
    }

    pid_t BeginLarge(const std::string& out) const
    {
        return BeginProgram({"crop", "--faces", "off", "-j", "1", "--format", "png",
                             Folder.Path("in/large.jpg"), "-o", Folder.Path(out)});
    }

    // Waits until a picture is being written: the lock alone is not enough.
    void WaitForTemporary(const std::string& out) const
    {
        for (int i = 0; i < 20000; ++i) {
            for (const std::string& file : FilesIn(out, true))
                if (fs::path(file).extension() == ".png")
                    return;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        FAIL() << "nothing was written";
    }

    Outcome CropSmall(const std::string& out, const std::vector<std::string>& more = {}) const
    {
        std::vector<std::string> arguments = {
            "crop", "--faces",       "off", "--top", "1", Folder.Path("small.jpg"),
            "-o",   Folder.Path(out)};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunProgram(arguments);
    }

    const TempFolder Folder;
};

TEST_F(AbandonedFiles, OfAKilledRunAreDeletedByTheNextOne)
{
    const pid_t process = BeginLarge("out");
    WaitForTemporary("out");
    kill(process, SIGKILL);
    ASSERT_EQ(WaitFor(process), 1000 + SIGKILL);
    ASSERT_GE(FilesIn("out", true).size(), 2U); // with the lock
    ASSERT_TRUE(FilesIn("out", false).empty());

    const Outcome outcome = CropSmall("out");
    EXPECT_EQ(outcome.Status, 0) << outcome.Err;
    EXPECT_TRUE(FilesIn("out", true).empty());
    EXPECT_EQ(FilesIn("out", false), (std::set<std::string>{"small-1.jpg"}));
}

TEST_F(AbandonedFiles, OfATwiceInterruptedRunAreDeletedByARunWithNothingToWrite)
{
    ASSERT_EQ(CropSmall("out").Status, 0);
    const pid_t process = BeginLarge("out");
    WaitForTemporary("out");
    // Two signals count as one if the second comes before the program has seen the first.
    siginfo_t ended = {};
    while (ended.si_pid == 0 &&
           waitid(P_PID, static_cast<id_t>(process), &ended, WEXITED | WNOHANG | WNOWAIT) == 0) {
        kill(process, SIGINT);
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    ASSERT_EQ(WaitFor(process), 1000 + SIGINT);
    ASSERT_FALSE(FilesIn("out", true).empty());

    EXPECT_EQ(CropSmall("out", {"--resume"}).Status, 0);
    EXPECT_TRUE(FilesIn("out", true).empty());
}

TEST_F(AbandonedFiles, OfARunInProgressAreLeftAlone)
{
    const pid_t process = BeginLarge("out");
    WaitForTemporary("out");
    kill(process, SIGSTOP);
    const std::set<std::string> before = FilesIn("out", true);
    ASSERT_GE(before.size(), 2U);
    EXPECT_EQ(CropSmall("out").Status, 0);
    EXPECT_EQ(FilesIn("out", true), before);
    kill(process, SIGCONT);
    EXPECT_EQ(WaitFor(process), 0);
    EXPECT_TRUE(FilesIn("out", true).empty());
    EXPECT_EQ(FilesIn("out", false).size(), 5U + 1U);
}

TEST_F(AbandonedFiles, AreDeletedByEveryCommandThatWritesThere)
{
    const std::pair<const char*, std::vector<std::string>> commands[] = {
        {"suggest", {"--faces", "off", "--json", "-o", Folder.Path("out/list.json")}},
        {"report", {"--faces", "off", "-o", Folder.Path("out/page.html")}},
        {"contact-sheet", {"--faces", "off", "-o", Folder.Path("out/sheet.png")}},
        {"maps", {"-o", Folder.Path("out")}}};
    fs::create_directory(Folder.Path("out"));
    for (const auto& [command, options] : commands) {
        SCOPED_TRACE(command);
        for (const char* run : {"out/.vistatrim-1-01234567", "out/.vistatrim-1-89abcdef"}) {
            WriteText(Folder.Path(std::string(run) + ".lock"), "");
            WriteText(Folder.Path(std::string(run) + "-0.png"), "half");
        }
        std::vector<std::string> arguments = {command, Folder.Path("small.jpg")};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const Outcome outcome = RunProgram(arguments);
        EXPECT_EQ(outcome.Status, 0) << outcome.Err;
        EXPECT_TRUE(FilesIn("out", true).empty());
    }
}

TEST_F(AbandonedFiles, WithoutALockAreDeletedWhenTheyAreADayOld)
{
    fs::create_directory(Folder.Path("out"));
    const std::set<std::string> young = {".vistatrim-12-3.jpg", ".vistatrim-12-0123abcd-3.jpg"};
    const std::set<std::string> old = {".vistatrim-12-4.jpg", ".vistatrim-12-0123abcd-4"};
    const std::set<std::string> others = {
        ".vistatrim-notes.txt",        ".vistatrim--5.jpg",          ".vistatrim-12-3a.jpg",
        ".vistatrim-12-3-4-5.jpg",     ".vistatrim-12-0123abcd.txt", ".vistatrim-12-0123abcg-3.jpg",
        ".vistatrim-12-0123ABCD-3.jpg"};
    for (const auto& names : {young, old, others})
        for (const std::string& name : names) {
            WriteText(Folder.Path("out/" + name), "half");
            if (names != young)
                fs::last_write_time(Folder.Path("out/" + name),
                                    fs::file_time_type::clock::now() - std::chrono::hours(25));
        }
    EXPECT_EQ(CropSmall("out").Status, 0);
    std::set<std::string> left = young;
    left.insert(others.begin(), others.end());
    EXPECT_EQ(FilesIn("out", true), left);
}

} // namespace
} // namespace vistaTrim::cli
