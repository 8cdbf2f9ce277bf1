// Interrupted runs: status and message, and what each command leaves behind.
#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "photo/sample_pictures.h"
#include "run_program.h"

namespace vistaTrim::cli {
namespace {

using namespace photo;

namespace fs = std::filesystem;
using nlohmann::json;
using Words = std::vector<std::string>;

Words LinesOf(const std::string& text)
{
    Words lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

// Forty photographs, of which the second and the third are broken. Standard error is a pipe with
// room for the message of the second only: the program blocks on the message of the third until the
// test reads. So the signal comes early in the run, however fast it is.
class Interrupted : public testing::Test {
protected:
    Interrupted()
    {
        fs::create_directory(Folder.Path("in"));
        Scene(300, 200, 0.3, 0.6).write_to_file(Photo(0).c_str());
        for (int i = 1; i < kCount; ++i)
            if (i == 1 || i == 2)
                WriteText(Photo(i), "no picture");
            else
                fs::copy_file(Photo(0), Photo(i));
        mkfifo(Folder.Path("stderr").c_str(), 0600);
    }

    std::string Photo(int index) const
    {
        return Folder.Path("in/" + std::to_string(10 + index) + ".jpg");
    }

    std::string Message(int index) const
    {
        return "vistatrim: " + Photo(index) +
               ": not a picture, or of a format that cannot be read\n";
    }

    Outcome RunAndSignal(Words arguments, int signal) const
    {
        for (int i = 0; i < kCount; ++i)
            arguments.push_back(Photo(i));
        const int pipe = open(Folder.Path("stderr").c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
        const auto size = static_cast<size_t>(fcntl(pipe, F_SETPIPE_SZ, 4096));
        const std::string filling(size - Message(1).size() * 3 / 2, '.');
        EXPECT_EQ(write(pipe, filling.data(), filling.size()),
                  static_cast<ssize_t>(filling.size()));
        const pid_t process = BeginProgram(arguments, Folder.Path("stdout"), Folder.Path("stderr"));
        int held = 0;
        for (int i = 0; i < 20000 && held <= static_cast<int>(filling.size()); ++i) {
            usleep(1000);
            ioctl(pipe, FIONREAD, &held);
        }
        kill(process, signal);
        // Time to record the signal; the program cannot continue until the pipe is read.
        usleep(100'000);
        Outcome outcome;
        std::atomic<bool> ended(false);
        const auto drain = [&] {
            char block[4096];
            for (ssize_t count = 0; (count = read(pipe, block, sizeof block)) > 0;)
                outcome.Err.append(block, static_cast<size_t>(count));
        };
        std::thread reader([&] {
            for (; !ended; usleep(1000))
                drain();
        });
        outcome.Status = WaitFor(process);
        ended = true;
        reader.join();
        drain();
        close(pipe);
        outcome.Err.erase(0, filling.size());
        outcome.Out = ReadText(Folder.Path("stdout"));
        return outcome;
    }

    // How many photographs the last message says were done.
    static int DoneOf(const Outcome& outcome)
    {
        const std::string before = "vistatrim: interrupted after ";
        const std::string after = " of 40 photographs";
        const Words lines = LinesOf(outcome.Err);
        const std::string last = lines.empty() ? "" : lines.back();
        EXPECT_EQ(last.compare(0, before.size(), before), 0) << outcome.Err;
        EXPECT_NE(last.find(after), std::string::npos) << last;
        return std::atoi(last.c_str() + std::min(last.size(), before.size()));
    }

    static constexpr int kCount = 40;
    const TempFolder Folder;
};

TEST_F(Interrupted, ByEachSignalEndsBetweenPhotographsWithItsStatus)
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        SCOPED_TRACE(signal);
        const Outcome outcome =
            RunAndSignal({"suggest", "--json", "-j", "1", "--faces", "off"}, signal);
        EXPECT_EQ(outcome.Status, 128 + signal); // even though some failed
        const int done = DoneOf(outcome);
        EXPECT_GE(done, 2);
        EXPECT_LE(done, 3); // with the one in progress when the signal came
        EXPECT_EQ(LinesOf(outcome.Out).size(), static_cast<size_t>(done));
        EXPECT_EQ(outcome.Err.compare(0, Message(1).size(), Message(1)), 0) << outcome.Err;
    }
}

TEST_F(Interrupted, ByAnIgnoredHangUpContinues)
{
    const auto before = signal(SIGHUP, SIG_IGN); // inherited, as under nohup
    const Outcome outcome = RunAndSignal({"suggest", "--csv", "-n", "1", "--faces", "off"}, SIGHUP);
    signal(SIGHUP, before);
    EXPECT_EQ(outcome.Status, 1);
    EXPECT_EQ(LinesOf(outcome.Out).size(), 41U);
    EXPECT_EQ(outcome.Err, Message(1) + Message(2));
}

// Workers run ahead of the one that is blocked, but only a little, and their results are kept.
TEST_F(Interrupted, WithSeveralWorkersKeepsAllTheirResults)
{
    const Outcome outcome =
        RunAndSignal({"suggest", "--json", "-j", "3", "-n", "1", "--faces", "off"}, SIGTERM);
    EXPECT_EQ(outcome.Status, 128 + SIGTERM);
    const Words lines = LinesOf(outcome.Out);
    EXPECT_GE(lines.size(), 2U);
    EXPECT_LT(lines.size(), 40U);
    for (size_t i = 0; i < lines.size(); ++i)
        EXPECT_EQ(json::parse(lines[i])["file"], Photo(static_cast<int>(i)));
    EXPECT_EQ(DoneOf(outcome), static_cast<int>(lines.size()));
}

TEST_F(Interrupted, LeavesManifestAndSnippetOfTheFilesWritten)
{
    const Outcome outcome =
        RunAndSignal({"crop", "-j", "1", "-n", "2", "--faces", "off", "-o", Folder.Path("out"),
                      "--manifest", Folder.Path("m.json"), "--picture", Folder.Path("p.html")},
                     SIGINT);
    EXPECT_EQ(outcome.Status, 128 + SIGINT);
    const Words written = {Folder.Path("out/10-1.jpg"), Folder.Path("out/10-2.jpg")};
    EXPECT_EQ(LinesOf(outcome.Out), written);
    const json manifest = json::parse(ReadText(Folder.Path("m.json")));
    ASSERT_EQ(manifest.size(), static_cast<size_t>(DoneOf(outcome)));
    for (size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(manifest[0]["crops"][i]["files"][0]["file"], written[i]);
        EXPECT_TRUE(fs::exists(written[i]));
    }
    EXPECT_TRUE(manifest[1].contains("error"));
    EXPECT_NE(ReadText(Folder.Path("p.html")).find("\"out/10-1.jpg"), std::string::npos);
}

TEST_F(Interrupted, LeavesReportAndSheetOfThePhotographsDone)
{
    const Outcome report = RunAndSignal(
        {"report", "-j", "1", "--faces", "off", "--maps", "no", "-o", Folder.Path("r.html")},
        SIGINT);
    EXPECT_EQ(report.Status, 128 + SIGINT);
    const std::string page = ReadText(Folder.Path("r.html"));
    const int done = DoneOf(report);
    const auto holds = [&page](int number) {
        return page.find("id=\"photo-" + std::to_string(number) + "\"") != std::string::npos;
    };
    EXPECT_NE(page.find(std::to_string(done) + " photographs, " + std::to_string(done - 1) +
                        " not readable."),
              std::string::npos);
    EXPECT_TRUE(holds(done));
    EXPECT_FALSE(holds(done + 1));
    EXPECT_NE(page.find("</html>"), std::string::npos);

    const Outcome sheet = RunAndSignal({"contact-sheet", "-j", "1", "--faces", "off", "-n", "1",
                                        "--cell", "60x40", "-o", Folder.Path("s.png")},
                                       SIGINT);
    EXPECT_EQ(sheet.Status, 128 + SIGINT);
    // A gap of 12 around; a head of 30; a row of 30 + 40 + 12, and 30 for each failure.
    const vips::VImage picture = vips::VImage::new_from_file(Folder.Path("s.png").c_str());
    EXPECT_EQ(picture.height(), 12 + 30 + 82 + 30 * (DoneOf(sheet) - 1) + 12);
}

} // namespace
} // namespace vistaTrim::cli
