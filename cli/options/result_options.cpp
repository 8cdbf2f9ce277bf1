#include "options/result_options.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

namespace vistaTrim::cli {

namespace {

bool IsOneOf(const std::string& name, std::initializer_list<const char*> names)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

// True for options that only choose photographs, steer the run or add files beside the results.
bool LeavesResultsAlone(const std::string& name)
{
    return IsOneOf(name, {"PHOTO", "--files-from", "--recursive", "--null", "--jobs", "--quiet",
                          "--timings", "--output", "--force", "--resume", "--help", "--manifest",
                          "--picture", "--sizes"});
}

std::string TextOf(const CLI::Option& option)
{
    const std::string name = option.get_name();
    std::error_code unknown;
    if (option.get_expected_max() == 0)
        return "given";
    std::string text;
    for (const std::string& result : option.results()) {
        std::string value = result;
        if (name == "--aspect")
            value = photo::FileSafeRatio(result); // 16:9, 16/9 and 16x9 are the same ratio
        if (IsOneOf(name, {"--regions", "--ranking", "--presets", "--from"}) &&
            std::filesystem::is_regular_file(result, unknown)) {
            std::ifstream file(result, std::ios::binary);
            value = ContentMark({std::istreambuf_iterator<char>(file), {}});
        }
        text += (text.empty() ? "" : ",") + value;
    }
    return text;
}

} // namespace

std::map<std::string, std::string> ResultOptionsOf(const CLI::App& command, const Options& values)
{
    std::map<std::string, std::string> asked;
    for (const CLI::Option* option : command.get_options()) {
        const std::string name = option->get_name();
        if (option->count() != 0 && !LeavesResultsAlone(name))
            asked[name] = TextOf(*option);
    }
    // Its default depends on other options.
    if (command.get_option_no_throw("--top") != nullptr)
        asked["--top"] = std::to_string(values.Request.Top);
    return asked;
}

// FNV-1a: enough to notice changes; nobody has a reason to forge one.
std::string ContentMark(const std::string& content)
{
    uint64_t hash = 0xCBF29CE484222325;
    for (const char c : content)
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3;
    char text[40];
    std::snprintf(text, sizeof text, "content %016llx", static_cast<unsigned long long>(hash));
    return text;
}

} // namespace vistaTrim::cli
