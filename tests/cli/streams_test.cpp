// What goes to which stream, whether it is a terminal or a file, and with which exit status.
#include <cstdio>
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

} // namespace
} // namespace vistaTrim::cli
