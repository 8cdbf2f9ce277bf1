// Names for incomplete files, and the cleanup of those that killed runs left.
#ifndef VISTATRIM_CLI_BATCH_TEMPORARY_FILES_H
#define VISTATRIM_CLI_BATCH_TEMPORARY_FILES_H

#include <string>

namespace vistaTrim::cli {

// The name of a file in the folder of `target`, since a rename cannot cross file systems. It
// begins with a dot and keeps the extension, from which writers infer the format. The destructor
// deletes the file, if it is still there.
//
// While a run has such files in a folder, it locks a file there; the system releases the lock when
// the run ends, however it ends. So later runs can tell the files of a killed run from those of a
// run in progress, even on another machine or in another container.
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
