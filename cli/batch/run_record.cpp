#include "batch/run_record.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <system_error>
#include <utility>

#include <nlohmann/json.hpp>

#include "batch/output_place.h"
#include "batch/whole_file.h"
#include "options/program_error.h"
#include "options/text_file.h"
#include "text/shown_name.h"

namespace vistaTrim::cli {

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

constexpr const char* kFormat = "vistatrim-options";

// nullopt if the file is missing or is not a record.
std::optional<std::vector<RecordedRun>> ReadRuns(const std::string& path)
{
    std::error_code unknown;
    return fs::exists(path, unknown) ? RecordedRuns(ReadTextFile(path)) : std::nullopt;
}

void WriteRuns(const std::string& path, const std::vector<RecordedRun>& runs)
{
    WriteWholeFile(path, true, RecordText(runs));
}

// Older versions left out the ending where it was that of the photograph.
bool IsSameName(const std::string& recorded, const std::string& name)
{
    return name == recorded || name.substr(0, name.find_last_of('.')) == recorded;
}

bool ShareNames(const RecordedRun& recorded, const RecordedRun& run)
{
    const auto isShared = [&run](const std::string& name) {
        return std::any_of(run.Names.begin(), run.Names.end(),
                           [&name](const std::string& other) { return IsSameName(name, other); });
    };
    return recorded.Names.empty() || run.Names.empty() ||
           std::any_of(recorded.Names.begin(), recorded.Names.end(), isShared);
}

// "--top was 5 and is 3; --strip was not given and is given"
std::string Differences(const RecordedRun& before, const RecordedRun& now)
{
    // As in the record, which replaces bytes that are not UTF-8.
    const auto value = [](const RecordedRun& run, const std::string& name) {
        const auto option = run.Options.find(name);
        if (option == run.Options.end())
            return std::string("not given");
        return json::parse(
                   json(option->second).dump(-1, ' ', false, json::error_handler_t::replace))
            .get<std::string>();
    };
    std::set<std::string> names;
    for (const RecordedRun* run : {&before, &now})
        for (const auto& option : run->Options)
            names.insert(option.first);
    std::string text;
    for (const std::string& name : names)
        if (value(before, name) != value(now, name))
            text += (text.empty() ? "" : "; ") + name + " was " + value(before, name) + " and is " +
                    value(now, name);
    return text;
}

} // namespace

std::string RecordText(const std::vector<RecordedRun>& runs)
{
    json record = {{"format", kFormat}, {"version", 1}, {"runs", json::array()}};
    for (const RecordedRun& run : runs)
        record["runs"].push_back({{"names", run.Names}, {"options", run.Options}});
    return record.dump(1, ' ', false, json::error_handler_t::replace) + "\n";
}

std::optional<std::vector<RecordedRun>> RecordedRuns(const std::string& text)
{
    const json record = json::parse(text, nullptr, false);
    const auto holds = [&record](const char* name) {
        return record.is_object() && record.contains(name);
    };
    if (!holds("format") || record["format"] != kFormat)
        return std::nullopt;
    if (!holds("runs") || !record["runs"].is_array())
        return std::nullopt;
    try {
        std::vector<RecordedRun> runs;
        for (const json& run : record["runs"]) {
            runs.push_back({run.at("names").get<std::vector<std::string>>(),
                            run.at("options").get<std::map<std::string, std::string>>()});
            // Written by older versions; the file names carry it now.
            runs.back().Options.erase("--format");
        }
        return runs;
    } catch (const json::exception&) {
        return std::nullopt;
    }
}

RunRecord::RunRecord(std::string output, std::string path, RecordedRun run)
    : Output(std::move(output)), Path(std::move(path)), Run(std::move(run))
{
}

RunRecord RunRecord::OfFile(const std::string& file, const RecordedRun& run)
{
    const std::string name = "." + fs::path(file).filename().string() + ".options";
    return {file, (fs::path(file).parent_path() / name).string(), run};
}

RunRecord RunRecord::OfFolder(const std::string& folder, const RecordedRun& run)
{
    return {folder, (fs::path(folder) / ".vistatrim.options").string(), run};
}

bool RunRecord::CheckResumed() const
{
    const auto runs = ReadRuns(Path);
    if (!runs)
        return false;
    for (const RecordedRun& run : *runs) {
        const std::string differences = ShareNames(run, Run) ? Differences(run, Run) : "";
        if (!differences.empty())
            throw ProgramError(Shown(Output) + " was made with other options: " + differences);
    }
    return true;
}

void RunRecord::Begin(bool anew) const
{
    std::vector<RecordedRun> runs;
    if (!anew)
        runs = ReadRuns(Path).value_or(runs);
    const bool known = std::any_of(runs.begin(), runs.end(), [this](const RecordedRun& run) {
        return run.Names == Run.Names && Differences(run, Run).empty();
    });
    if (known)
        return;
    runs.push_back(Run);
    WriteRuns(Path, runs);
}

void RunRecord::ReplacedAll() const
{
    std::vector<RecordedRun> runs = ReadRuns(Path).value_or(std::vector<RecordedRun>());
    const auto replaced = [this](const RecordedRun& run) {
        return ShareNames(run, Run) && !Differences(run, Run).empty();
    };
    const auto end = std::remove_if(runs.begin(), runs.end(), replaced);
    if (end == runs.end())
        return;
    runs.erase(end, runs.end());
    WriteRuns(Path, runs);
}

} // namespace vistaTrim::cli
