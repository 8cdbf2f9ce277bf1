// The list of what `crop` wrote.
#ifndef VISTATRIM_CLI_OUTPUT_MANIFEST_H
#define VISTATRIM_CLI_OUTPUT_MANIFEST_H

#include <string>

#include "batch/photo_result.h"
#include "batch/whole_file.h"

namespace vistaTrim::cli {

// A JSON array with one line per photograph: the line of `suggest --json`, and for each crop its
// files. Appears whole at the end.
class Manifest {
public:
    // Throws ProgramError if the file exists and is not to be replaced.
    Manifest(const std::string& file, bool replace);

    void Add(const PhotoResult& result);
    void Finish(); // Throws ProgramError.

private:
    std::string File;
    bool Replace;
    std::string Text;
};

} // namespace vistaTrim::cli

#endif
