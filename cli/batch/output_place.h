// Finds out before the work whether its output can be written.
#ifndef VISTATRIM_CLI_BATCH_OUTPUT_PLACE_H
#define VISTATRIM_CLI_BATCH_OUTPUT_PLACE_H

#include <string>

namespace vistaTrim::cli {

// The folder of the file, "." if its name has none.
std::string FolderOf(const std::string& file);

// Throws ProgramError if the file is a folder, or its folder does not exist.
void CheckOutputFile(const std::string& file);

// Throws ProgramError if there is a file in the way, or no right to make the folder.
void CheckOutputFolder(const std::string& folder);

// Makes the folder and those above it. Throws ProgramError.
void MakeFolder(const std::string& folder);

} // namespace vistaTrim::cli

#endif
