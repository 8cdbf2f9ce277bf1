// Where the results of `suggest` go: standard output or a file that grows line by line.
#ifndef VISTATRIM_CLI_OUTPUT_LIST_OUTPUT_H
#define VISTATRIM_CLI_OUTPUT_LIST_OUTPUT_H

#include <cstdio>
#include <set>
#include <string>
#include <vector>

#include "batch/photo_list.h"
#include "batch/photo_result.h"
#include "options/options.h"

namespace vistaTrim::cli {

class ListOutput {
public:
    // Throws ProgramError if the file cannot be written, exists and must not be replaced, or is to
    // be resumed but was not made by this program.
    explicit ListOutput(const Options& options);
    ~ListOutput();
    ListOutput(const ListOutput&) = delete;
    ListOutput& operator=(const ListOutput&) = delete;

    // The photographs not yet in the output.
    std::vector<ListedPhoto> StillToDo(const std::vector<ListedPhoto>& photos) const;

    // Flushes each result before the next one. Throws ProgramError.
    void Write(const PhotoResult& result);

private:
    void Put(const std::string& text);

    ListFormat Format;
    std::string Path; // empty: standard output
    FILE* Stream;
    std::set<std::string> Held;
};

} // namespace vistaTrim::cli

#endif
