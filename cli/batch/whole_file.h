// A file that appears under its name complete or not at all.
#ifndef VISTATRIM_CLI_BATCH_WHOLE_FILE_H
#define VISTATRIM_CLI_BATCH_WHOLE_FILE_H

#include <string>

namespace vistaTrim::cli {

// Write to TemporaryPath, then call Appear. Otherwise the destructor deletes the temporary file. It
// is in the target's folder, since a rename cannot cross file systems, has a name that begins with
// a dot, and keeps the extension, from which writers infer the format.
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
