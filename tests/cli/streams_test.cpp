// What goes to which stream, whether it is a terminal or a file, and with which exit status.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <numeric>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "photo/sample_pictures.h"
#include "run_program.h"

namespace vistaTrim::cli {
namespace {

using namespace photo;

constexpr const char* kClearLine = "\r\x1b[K";

struct StreamKinds {
    bool OutIsTerminal;
    bool ErrIsTerminal;
};
constexpr StreamKinds kAllKinds[] = {{false, false}, {false, true}, {true, false}, {true, true}};

Outcome RunWith(const StreamKinds& kinds, const std::vector<std::string>& arguments)
{
    RunOptions options;
    options.OutIsTerminal = kinds.OutIsTerminal;
    options.ErrIsTerminal = kinds.ErrIsTerminal;
    return RunProgram(arguments, options);
}

void MakePhotographs(const TempFolder& folder)
{
    for (const char* name : {"a.jpg", "b.jpg", "c.jpg"})
        Scene(300, 200, 0.3, 0.6).write_to_file(folder.Path(name).c_str());
}

bool Holds(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

TEST(Streams, AProgressBarIsShownOnlyIfStandardErrorIsATerminal)
{
    const TempFolder folder;
    MakePhotographs(folder);
    const std::vector<std::string> arguments = {"suggest", "--json", folder.Path("a.jpg"),
                                                folder.Path("b.jpg"), folder.Path("c.jpg")};
    const std::string expected = RunProgram(arguments).Out;
    for (const StreamKinds& kinds : kAllKinds) {
        SCOPED_TRACE(testing::Message() << kinds.OutIsTerminal << kinds.ErrIsTerminal);
        const Outcome outcome = RunWith(kinds, arguments);
        EXPECT_EQ(outcome.Status, 0);
        EXPECT_EQ(outcome.Out, expected); // no bar, terminal or not
        if (!kinds.ErrIsTerminal) {
            EXPECT_EQ(outcome.Err, "");
            continue;
        }
        const std::string& err = outcome.Err;
        EXPECT_TRUE(Holds(err, "] 0/3")) << err;
        EXPECT_TRUE(Holds(err, "] 1/3")) << err;
        EXPECT_TRUE(Holds(err, "] 3/3")) << err;
        EXPECT_FALSE(Holds(err, "\n")) << err;
        // The bar is erased at the end.
        const size_t last = err.rfind(kClearLine);
        ASSERT_NE(last, std::string::npos);
        EXPECT_EQ(last + std::string(kClearLine).size(), err.size());
    }
}

TEST(Streams, NoBarIsShownWithQuietOrForOnePhotograph)
{
    const TempFolder folder;
    MakePhotographs(folder);
    const StreamKinds terminals = {true, true};
    EXPECT_EQ(RunWith(terminals, {"suggest", "-q", folder.Path("a.jpg"), folder.Path("b.jpg")}).Err,
              "");
    EXPECT_EQ(RunWith(terminals, {"suggest", folder.Path("a.jpg")}).Err, "");
}

TEST(Streams, EveryCommandPutsItsBarOnStandardErrorAlone)
{
    const TempFolder folder;
    MakePhotographs(folder);
    const StreamKinds terminals = {true, true};
    const std::vector<std::string> photos = {folder.Path("a.jpg"), folder.Path("b.jpg")};
    const std::pair<const char*, const char*> commands[] = {
        {"crop", "crops"}, {"maps", "maps"}, {"report", "r.html"}, {"contact-sheet", "s.jpg"}};
    for (const auto& [command, output] : commands) {
        SCOPED_TRACE(command);
        const Outcome outcome =
            RunWith(terminals, {command, "-o", folder.Path(output), photos[0], photos[1]});
        EXPECT_EQ(outcome.Status, 0);
        EXPECT_TRUE(Holds(outcome.Err, "] 2/2"));
        EXPECT_FALSE(Holds(outcome.Out, "\x1b"));
    }
}

TEST(Streams, ErrorsAndStatusAreTheSameOnATerminalAndInAFile)
{
    const TempFolder folder;
    MakePhotographs(folder);
    WriteText(folder.Path("broken.jpg"), "no picture");
    const std::string fault = "vistatrim: " + folder.Path("broken.jpg") +
                              ": not a picture, or of a format that cannot be read\n";
    for (const StreamKinds& kinds : kAllKinds) {
        SCOPED_TRACE(testing::Message() << kinds.OutIsTerminal << kinds.ErrIsTerminal);
        const Outcome one = RunWith(kinds, {"suggest", "--csv", folder.Path("broken.jpg")});
        EXPECT_EQ(one.Status, 1);
        EXPECT_EQ(one.Err, fault);
        EXPECT_TRUE(Holds(one.Out, "not a picture")); // the list reports it too
        // The message is between two states of the bar, on a line of its own.
        const Outcome two =
            RunWith(kinds, {"suggest", folder.Path("a.jpg"), folder.Path("broken.jpg")});
        EXPECT_EQ(two.Status, 1);
        EXPECT_TRUE(Holds(two.Err, (kinds.ErrIsTerminal ? kClearLine : "") + fault)) << two.Err;
        EXPECT_FALSE(Holds(two.Out, "not a picture"));
        const Outcome usage = RunWith(kinds, {"suggest", "--top", "0", folder.Path("a.jpg")});
        EXPECT_EQ(usage.Status, 2);
        EXPECT_EQ(usage.Out, "");
        EXPECT_TRUE(Holds(usage.Err, "--top"));
        const Outcome help = RunWith(kinds, {"--help"});
        EXPECT_EQ(help.Status, 0);
        EXPECT_TRUE(Holds(help.Out, "suggest"));
        EXPECT_EQ(help.Err, "");
        const Outcome version = RunWith(kinds, {"--version"});
        EXPECT_EQ(version.Status, 0);
        EXPECT_EQ(version.Out.find("vistatrim "), 0U);
        EXPECT_EQ(version.Err, "");
    }
}

// The milliseconds of read, analyse, faces, score and write; empty for any other line.
std::vector<double> TimesOf(const std::string& line, const std::string& photo)
{
    const std::string start = "vistatrim: " + photo + ": ";
    std::vector<double> times(5);
    if (line.find(start) != 0 ||
        std::sscanf(line.c_str() + start.size(),
                    "read %lf ms, analyse %lf ms, faces %lf ms, score %lf ms, write %lf ms",
                    &times[0], &times[1], &times[2], &times[3], &times[4]) != 5)
        times.clear();
    return times;
}

TEST(Streams, TimingsGoToStandardError)
{
    const TempFolder folder;
    MakePhotographs(folder);
    const Outcome plain = RunProgram({"suggest", folder.Path("a.jpg")});
    const Outcome timed = RunProgram({"suggest", "--timings", folder.Path("a.jpg")});
    EXPECT_EQ(timed.Out, plain.Out);
    EXPECT_EQ(plain.Err, "");
    const std::vector<double> steps = TimesOf(timed.Err, folder.Path("a.jpg"));
    ASSERT_EQ(steps.size(), 5U);
    for (const size_t always : {0U, 1U, 3U}) // read, analyse, score
        EXPECT_GT(steps[always], 0.0);
    EXPECT_EQ(steps[4], 0.0); // suggest writes no file of its own
    const Outcome crops =
        RunProgram({"crop", "--timings", folder.Path("a.jpg"), "-o", folder.Path("out")});
    const std::vector<double> cropSteps = TimesOf(crops.Err, folder.Path("a.jpg"));
    ASSERT_EQ(cropSteps.size(), 5U);
    EXPECT_GT(cropSteps[4], 0.0);
}

// What remains on the screen of a terminal that received this text.
std::vector<std::string> ScreenAfter(const std::string& text)
{
    const std::string clearToEnd = "\x1b[K";
    std::vector<std::string> lines(1);
    size_t column = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        std::string& line = lines.back();
        if (text[i] == '\r') {
            column = 0;
        } else if (text[i] == '\n') {
            lines.emplace_back();
            column = 0;
        } else if (text.compare(i, clearToEnd.size(), clearToEnd) == 0) {
            line.resize(column);
            i += clearToEnd.size() - 1;
        } else {
            line.resize(std::max(line.size(), column + 1));
            line[column++] = text[i];
        }
    }
    return lines;
}

std::vector<std::string> LinesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(std::regex_replace(line, std::regex("[0-9.]+ ms"), "N ms"));
    return lines;
}

// The bar is erased for every result, error and timing, and leaves no trace.
TEST(Streams, OnOneTerminalOnlyResultsAndMessagesRemain)
{
    const TempFolder folder;
    MakePhotographs(folder);
    WriteText(folder.Path("broken.jpg"), "no picture");
    WriteText(folder.Path("last.jpg"), "no picture");
    const std::vector<std::vector<std::string>> commands = {
        {"suggest", "-n", "2"},
        {"crop", "-n", "2", "--force", "-o", folder.Path("out")},
        {"maps", "--force", "-o", folder.Path("maps")},
        {"report", "--force", "-o", folder.Path("r.html")},
        {"contact-sheet", "--force", "-o", folder.Path("s.jpg")}};
    for (std::vector<std::string> arguments : commands) {
        SCOPED_TRACE(arguments[0]);
        arguments.insert(arguments.end(),
                         {"-j", "1", "--timings", folder.Path("a.jpg"), folder.Path("broken.jpg"),
                          folder.Path("b.jpg"), folder.Path("last.jpg")});
        const Outcome apart = RunProgram(arguments);
        EXPECT_EQ(apart.Status, 1);
        RunOptions terminal;
        terminal.OneTerminal = true;
        const Outcome together = RunProgram(arguments, terminal);
        EXPECT_EQ(together.Status, 1);
        std::string shown;
        for (const std::string& line : ScreenAfter(together.Out))
            shown += line + "\n";
        std::vector<std::string> screen = LinesOf(shown);
        EXPECT_EQ(screen.back(), "");
        screen.pop_back();
        // The lines of both streams, each in its own order, and no others.
        const std::vector<std::string> out = LinesOf(apart.Out);
        const std::vector<std::string> err = LinesOf(apart.Err);
        EXPECT_EQ(err.size(), 4U); // two timings, two errors
        EXPECT_EQ(screen.size(), out.size() + err.size());
        size_t nextOut = 0;
        size_t nextErr = 0;
        for (const std::string& line : screen) {
            if (nextErr < err.size() && line == err[nextErr])
                ++nextErr;
            else if (nextOut < out.size() && line == out[nextOut])
                ++nextOut;
            else
                ADD_FAILURE() << line;
        }
        // During the run, the bar counts from none to all, with the time left only in between.
        const std::regex bar("\\[([#.]{30})\\] ([0-9])/4(  [0-9]+:[0-9]{2} left)?");
        std::string counts;
        for (std::sregex_iterator it(together.Out.begin(), together.Out.end(), bar), end; it != end;
             ++it) {
            const int done = std::stoi((*it)[2]);
            counts += (*it)[2];
            EXPECT_EQ((*it)[1], std::string(static_cast<size_t>(30 * done / 4), '#') +
                                    std::string(static_cast<size_t>(30 - 30 * done / 4), '.'));
            EXPECT_EQ((*it)[3].matched, done > 0 && done < 4) << (*it)[0];
        }
        EXPECT_EQ(counts, "01234");
    }
}

// With one worker the steps follow one another, so together they take no longer than the run, and
// a large share of it for a large photograph.
TEST(Streams, TimingsOfEachCommandAddUpToTheRun)
{
    const TempFolder folder;
    Scene(2400, 1600, 0.3, 0.6).write_to_file(folder.Path("a.png").c_str());
    const std::vector<std::vector<std::string>> commands = {
        {"suggest", "--each-ratio", "--aspect", "1:1", "--aspect", "3:2", "--aspect", "2:3"},
        {"crop", "-o", folder.Path("out")},
        {"maps", "-o", folder.Path("maps")},
        {"report", "-o", folder.Path("r.html")}};
    for (std::vector<std::string> arguments : commands) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        const bool writes = arguments[0] != "suggest";
        const bool scores = arguments[0] != "maps";
        arguments.insert(arguments.end(), {"--timings", "-j", "1", folder.Path("a.png")});
        const auto begin = std::chrono::steady_clock::now();
        const Outcome outcome = RunProgram(arguments);
        const std::chrono::duration<double, std::milli> took =
            std::chrono::steady_clock::now() - begin;
        const std::vector<double> times = TimesOf(outcome.Err, folder.Path("a.png"));
        ASSERT_EQ(times.size(), 5U) << outcome.Err;
        const double sum = std::accumulate(times.begin(), times.end(), 0.0);
        EXPECT_LE(sum, took.count());
        EXPECT_GE(sum, 0.3 * took.count()); // the rest: program start and reading ahead
        EXPECT_GT(times[0], 1.0);           // 3.8 million pixels of PNG
        EXPECT_GT(times[1], 1.0);
        EXPECT_NE(times[0], times[1]);
        EXPECT_EQ(times[2] > 0.0, scores); // maps searches for no faces
        EXPECT_EQ(times[3] > 0.0, scores);
        EXPECT_EQ(times[4] > 1.0, writes);
    }
}

} // namespace
} // namespace vistaTrim::cli
