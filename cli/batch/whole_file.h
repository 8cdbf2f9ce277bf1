// A file that appears under its name complete, or not at all.
#ifndef VISTATRIM_CLI_BATCH_WHOLE_FILE_H
#define VISTATRIM_CLI_BATCH_WHOLE_FILE_H

#include <optional>
#include <string>

#include "batch/temporary_files.h"

namespace vistaTrim::cli {

// Write to TemporaryPath, then call Appear. Otherwise the destructor deletes the temporary file.
class WholeFile {
public:
    WholeFile(const std::string& target, bool replace);
    ~WholeFile();
    WholeFile(const WholeFile&) = delete;
    WholeFile& operator=(const WholeFile&) = delete;

    // The folder must exist by now. Throws ProgramError if it cannot be written.
    const std::string& TemporaryPath();
    const std::string& Target() const;
    // Throws ProgramError if the target exists and must not be replaced, even if it was created
    // only a moment ago.
    void Appear();

private:
    std::string Path;
    bool Replace;
    std::optional<TemporaryFile> Temporary;
};

// Writes the text as a whole file. Throws ProgramError.
void WriteWholeFile(const std::string& target, bool replace, const std::string& text);

} // namespace vistaTrim::cli

#endif
