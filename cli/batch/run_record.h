// Records the options an output was made with, so that --resume does not mix results.
#ifndef VISTATRIM_CLI_BATCH_RUN_RECORD_H
#define VISTATRIM_CLI_BATCH_RUN_RECORD_H

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vistaTrim::cli {

struct RecordedRun {
    // Templates of its file names, such as "{stem}-story.jpg". Runs whose names differ do not touch
    // each other's files. Empty: any name.
    std::vector<std::string> Names;
    std::map<std::string, std::string> Options;
};

// The text of a record, and what it says; nullopt if it is not a record.
std::string RecordText(const std::vector<RecordedRun>& runs);
std::optional<std::vector<RecordedRun>> RecordedRuns(const std::string& text);

// The record is a hidden file beside the output, not in it: lists stay plain JSON lines or CSV.
class RunRecord {
public:
    // DIR/.NAME.options for a list, DIR/.vistatrim.options for a folder.
    static RunRecord OfFile(const std::string& file, const RecordedRun& run);
    static RunRecord OfFolder(const std::string& folder, const RecordedRun& run);

    // Throws a ProgramError that names the options that differ from those of an earlier run, or the
    // record if it cannot be read. Returns false if the output has no record.
    bool CheckResumed() const;

    // Call before the first result is written. `anew` means that no earlier results are kept.
    void Begin(bool anew) const;
    // Call if all results now are from this run.
    void ReplacedAll() const;

private:
    RunRecord(std::string output, std::string path, RecordedRun run);

    std::string Output;
    std::string Path;
    RecordedRun Run;
};

} // namespace vistaTrim::cli

#endif
