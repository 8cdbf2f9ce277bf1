// Reads the output file of an earlier, interrupted run.
#ifndef VISTATRIM_CLI_BATCH_RESUME_H
#define VISTATRIM_CLI_BATCH_RESUME_H

#include <set>
#include <string>

namespace vistaTrim::cli {

struct EarlierOutput {
    std::string Kept;            // the text to keep
    std::set<std::string> Files; // names as the file shows them
};

// A photograph counts as done if all its crops are there. Errors are dropped, since they may
// succeed now; so is a truncated last line.
EarlierOutput HeldByJson(const std::string& text);
// Throws ProgramError if the text does not begin with the header: then it is some other file.
EarlierOutput HeldByCsv(const std::string& text, const std::string& header);

// The name of a file as the JSON output shows it.
std::string JsonFileKey(const std::string& file);

} // namespace vistaTrim::cli

#endif
