// Any two options of a command are accepted together, or refused with a message that names one of
// them: an option that another one makes pointless must not be ignored silently.
#include <algorithm>
#include <regex>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "options/options.h"

namespace vistaTrim::cli {
namespace {

using Words = std::vector<std::string>;

struct Given {
    std::string Name; // the option, with a value where the value decides
    Words Typed;
    Words Needed; // names of the options without which this one is refused
};

const std::vector<Given> kGiven = {
    {"PHOTO", {"a.jpg"}, {}},
    {"--files-from", {"--files-from", "l"}, {}},
    {"--recursive", {"-r"}, {}},
    {"--null", {"-0"}, {}},
    {"--background", {"--background", "red"}, {}},
    {"--jobs", {"-j", "2"}, {}},
    {"--quiet", {"-q"}, {}},
    {"--timings", {"--timings"}, {}},
    {"--top", {"-n", "2"}, {}},
    {"--rank-by peak", {"--rank-by", "peak"}, {}},
    {"--rank-by engine", {"--rank-by", "engine"}, {}},
    {"--ranking", {"--ranking", "/dev/null"}, {}},
    {"--weights", {"--weights", "1,2,3"}, {}},
    {"--keep", {"--keep", "1,2,3,4"}, {}},
    {"--avoid", {"--avoid", "1,2,3,4"}, {}},
    {"--must-keep", {"--must-keep", "1,2,3,4"}, {}},
    {"--must-avoid", {"--must-avoid", "1,2,3,4"}, {}},
    {"--faces", {"--faces", "off"}, {}},
    {"--regions", {"--regions", "r"}, {}},
    {"--ignore-metadata-regions", {"--ignore-metadata-regions"}, {}},
    {"--presets", {"--presets", "/dev/null"}, {}},
    {"--aspect", {"--aspect", "1:1"}, {}},
    {"--preset", {"--preset", "square"}, {}},
    {"--each-ratio", {"--each-ratio"}, {"--aspect"}},
    {"--scale", {"--scale", "0.5"}, {}},
    {"--largest", {"--largest"}, {}},
    {"--size", {"--size", "5x5"}, {}},
    {"--density", {"--density", "9"}, {}},
    {"--json", {"--json"}, {}},
    {"--csv", {"--csv"}, {}},
    {"--explain", {"--explain"}, {}},
    {"--output", {"-o", "out"}, {}},
    {"--force", {"--force"}, {"--output"}},
    {"--resume", {"--resume"}, {"--output"}},
    {"--resize", {"--resize", "5x5"}, {}},
    {"--format png", {"--format", "png"}, {}},
    {"--format webp", {"--format", "webp"}, {}},
    {"--quality", {"--quality", "80"}, {}},
    {"--chroma", {"--chroma", "4:4:4"}, {}},
    {"--strip", {"--strip"}, {}},
    {"--fill", {"--fill", "5x5"}, {}},
    {"--widths", {"--widths", "5"}, {}},
    {"--upscale", {"--upscale"}, {"--widths"}},
    {"--name", {"--name", "{stem}"}, {}},
    {"--xmp", {"--xmp"}, {}},
    {"--xmp-only", {"--xmp-only"}, {}},
    {"--manifest", {"--manifest", "m"}, {}},
    {"--picture", {"--picture", "p"}, {}},
    {"--sizes", {"--sizes", "50vw"}, {"--picture"}},
    {"--from", {"--from", "f"}, {}},
    {"--maps", {"--maps", "no"}, {}},
    {"--cell", {"--cell", "20x20"}, {}},
};

using Pair = std::pair<std::string, std::string>;

// All other pairs are accepted.
const std::vector<Pair> kRefused = {
    {"--size", "--aspect"},
    {"--size", "--preset"},
    {"--size", "--scale"},
    {"--size", "--largest"},
    {"--largest", "--scale"},
    {"--ranking", "--weights"},
    {"--ranking", "--rank-by engine"},
    {"--weights", "--rank-by peak"},
    {"--rank-by peak", "--rank-by engine"},
    {"--csv", "--json"},
    {"--csv", "--explain"},
    {"--force", "--resume"},
    {"--fill", "--resize"},
    {"--fill", "--size"},
    {"--fill", "--widths"},
    {"--widths", "--resize"},
    {"--xmp", "--xmp-only"},
    {"--picture", "--xmp-only"},
    {"--picture", "--resume"},
    {"--manifest", "--resume"},
    {"--quality", "--format png"},
    {"--chroma", "--format png"},
    {"--chroma", "--format webp"},
    {"--format png", "--format webp"},
    // The file says what to cut, so nothing is searched.
    {"--from", "PHOTO"},
    {"--from", "--files-from"},
    {"--from", "--top"},
    {"--from", "--rank-by peak"},
    {"--from", "--rank-by engine"},
    {"--from", "--ranking"},
    {"--from", "--weights"},
    {"--from", "--keep"},
    {"--from", "--avoid"},
    {"--from", "--must-keep"},
    {"--from", "--must-avoid"},
    {"--from", "--faces"},
    {"--from", "--regions"},
    {"--from", "--ignore-metadata-regions"},
    {"--from", "--presets"},
    {"--from", "--aspect"},
    {"--from", "--preset"},
    {"--from", "--each-ratio"},
    {"--from", "--scale"},
    {"--from", "--largest"},
    {"--from", "--size"},
    {"--from", "--density"},
    {"--from", "--fill"},
};

std::string OptionOf(const std::string& name)
{
    return name.substr(0, name.find(' '));
}

const Given& Find(const std::string& name)
{
    const auto found = std::find_if(kGiven.begin(), kGiven.end(),
                                    [&name](const Given& given) { return given.Name == name; });
    if (found == kGiven.end())
        throw std::runtime_error(name + " is not in the list of options");
    return *found;
}

struct Outcome {
    bool Refused = false;
    std::string Output;
    std::string Fault;
};

Outcome Parse(const Words& words)
{
    std::vector<const char*> pointers = {"vistatrim"};
    for (const std::string& word : words)
        pointers.push_back(word.c_str());
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const CommandLine line = ParseCommandLine(static_cast<int>(pointers.size()), pointers.data());
    Outcome outcome;
    outcome.Output = testing::internal::GetCapturedStdout();
    outcome.Fault = testing::internal::GetCapturedStderr();
    // The ranking file is read last. The one given here is empty.
    outcome.Refused = line.ExitStatus.value_or(0) != 0 &&
                      outcome.Fault.find("/dev/null: is not valid JSON") == std::string::npos;
    return outcome;
}

std::set<std::string> OptionsInHelp(const std::string& command)
{
    std::set<std::string> options;
    std::istringstream help(Parse({command, "--help"}).Output);
    const std::regex beginsOption("^  (?:-.,)?(--[a-z-]+).*");
    std::smatch match;
    for (std::string line; std::getline(help, line);)
        if (std::regex_match(line, match, beginsOption) && match[1] != "--help")
            options.insert(match[1]);
    return options;
}

bool IsRefused(const std::string& a, const std::string& b)
{
    return std::find(kRefused.begin(), kRefused.end(), Pair(a, b)) != kRefused.end() ||
           std::find(kRefused.begin(), kRefused.end(), Pair(b, a)) != kRefused.end();
}

// The names of both, with what they need.
std::set<std::string> Together(const std::string& command, const Given& a, const Given& b)
{
    std::set<std::string> names = {a.Name, b.Name};
    for (const Given* given : {&a, &b})
        names.insert(given->Needed.begin(), given->Needed.end());
    if (command != "suggest")
        names.insert("--output");
    else if (names.count("--resume") != 0 && names.count("--csv") == 0)
        names.insert("--json"); // text is not resumed
    if (names.count("--files-from") + names.count("--from") == 0)
        names.insert("PHOTO");
    return names;
}

class OptionPairs : public testing::TestWithParam<const char*> {};

TEST_P(OptionPairs, AreAcceptedOrRefusedByName)
{
    const std::string command = GetParam();
    const std::set<std::string> options = OptionsInHelp(command);
    ASSERT_GT(options.size(), 5U);
    std::vector<Given> offered;
    std::set<std::string> known;
    for (const Given& given : kGiven)
        if (given.Name == "PHOTO" || options.count(OptionOf(given.Name)) != 0) {
            offered.push_back(given);
            known.insert(OptionOf(given.Name));
        }
    for (const std::string& option : options)
        EXPECT_EQ(known.count(option), 1U) << option << " is not in the list above";

    for (size_t i = 0; i < offered.size(); ++i)
        for (size_t k = i + 1; k < offered.size(); ++k) {
            const std::set<std::string> names = Together(command, offered[i], offered[k]);
            Words words = {command};
            Words conflicting;
            for (const std::string& name : names) {
                const Words& typed = Find(name).Typed;
                words.insert(words.end(), typed.begin(), typed.end());
                if (std::any_of(names.begin(), names.end(), [&name](const std::string& other) {
                        return IsRefused(name, other);
                    }))
                    conflicting.push_back(OptionOf(name));
            }
            SCOPED_TRACE(testing::PrintToString(words));
            const Outcome outcome = Parse(words);
            EXPECT_EQ(outcome.Refused, !conflicting.empty()) << outcome.Fault;
            if (!outcome.Refused)
                continue;
            EXPECT_TRUE(std::any_of(conflicting.begin(), conflicting.end(),
                                    [&outcome](const std::string& option) {
                                        return outcome.Fault.find(option) != std::string::npos;
                                    }))
                << outcome.Fault;
        }
}

INSTANTIATE_TEST_SUITE_P(OfEachCommand, OptionPairs,
                         testing::Values("suggest", "crop", "report", "maps", "contact-sheet"));

TEST(DependentOption, AloneIsRefused)
{
    const std::pair<Words, const char*> cases[] = {
        {{"suggest", "a.jpg", "--force"}, "--force needs --output"},
        {{"suggest", "a.jpg", "--json", "--resume"}, "--resume needs --output"},
        {{"suggest", "a.jpg", "-o", "out", "--resume"}, "--resume needs --json or --csv"},
        {{"suggest", "a.jpg", "--each-ratio"}, "--each-ratio needs --aspect"},
        {{"report", "a.jpg", "-o", "r", "--each-ratio"}, "--each-ratio needs --aspect"},
        {{"contact-sheet", "a.jpg", "-o", "s", "--each-ratio"}, "--each-ratio needs --aspect"},
        {{"crop", "a.jpg", "-o", "out", "--each-ratio"}, "--each-ratio needs --aspect"},
        {{"crop", "a.jpg", "-o", "out", "--upscale"}, "--upscale needs --widths"},
        {{"crop", "a.jpg", "-o", "out", "--sizes", "5"}, "--sizes needs --picture"},
        {{"crop", "a.jpg"}, "--output DIR is missing"},
        {{"report", "a.jpg"}, "--output FILE.html is missing"},
        {{"maps", "a.jpg"}, "--output DIR is missing"},
        {{"contact-sheet", "a.jpg"}, "--output FILE.jpg is missing"}};
    for (const auto& [words, fault] : cases) {
        const Outcome outcome = Parse(words);
        EXPECT_TRUE(outcome.Refused) << fault;
        EXPECT_NE(outcome.Fault.find(fault), std::string::npos) << outcome.Fault;
    }
}

} // namespace
} // namespace vistaTrim::cli
