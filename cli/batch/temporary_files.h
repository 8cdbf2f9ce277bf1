// Names for files that are not complete yet, and what becomes of those whose run was killed.
#ifndef VISTATRIM_CLI_BATCH_TEMPORARY_FILES_H
#define VISTATRIM_CLI_BATCH_TEMPORARY_FILES_H

#include <string>

namespace vistaTrim::cli {

// The name of a file beside `target`, in its folder, since a rename cannot cross file systems. It
// begins with a dot and keeps the extension, from which writers infer the format. The destructor
// deletes the file, if it is still there.
//
// While a run has such files in a folder, it holds a lock on a file there, which the system opens
// when the run ends, however it ends. So later runs can tell the files of a killed run from those
// of one that is still going, on another machine or in another container too.
class TemporaryFile {
public:
    // Throws ProgramError if the folder cannot be written.
    explicit TemporaryFile(const std::string& target);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const std::string& Path() const;

private:
    std::string Folder;
    std::string Name;
};

// Deletes the temporary files in the folder that killed runs left. Does nothing the second time for
// the same folder. TemporaryFile calls it for its folder.
void ClearAbandoned(const std::string& folder);

} // namespace vistaTrim::cli

#endif
