// A file that appears under its name whole or not at all.
#ifndef VISTATRIM_CLI_BATCH_WHOLE_FILE_H
#define VISTATRIM_CLI_BATCH_WHOLE_FILE_H

#include <string>

namespace vistaTrim::cli {

// Write to TemporaryPath, then call Appear. If that never happens, the temporary file goes
// with this object. It lies in the target's own folder, since a rename does not cross disks,
// under a name that begins with a dot, and it keeps the ending, from which writers tell the
// format.
class WholeFile {
public:
    WholeFile(const std::string& target, bool replace);
    ~WholeFile();
    WholeFile(const WholeFile&) = delete;
    WholeFile& operator=(const WholeFile&) = delete;

    const std::string& TemporaryPath() const;
    const std::string& Target() const;
    // Throws ProgramError if the target exists and is not to be replaced, even if it came into
    // being a moment ago.
    void Appear();

private:
    std::string Path;
    std::string Temporary;
    bool Replace;
    bool Done = false;
};

// Writes the text as a whole file. Throws ProgramError.
void WriteWholeFile(const std::string& target, bool replace, const std::string& text);

} // namespace vistaTrim::cli

#endif
