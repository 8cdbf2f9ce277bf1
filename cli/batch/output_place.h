// Checks that the output can be written before any work is done.
#ifndef VISTATRIM_CLI_BATCH_OUTPUT_PLACE_H
#define VISTATRIM_CLI_BATCH_OUTPUT_PLACE_H

#include <string>

namespace vistaTrim::cli {

// The folder of the file, "." if its name has none.
std::string FolderOf(const std::string& file);

// Throws ProgramError if the file is a folder, or its folder does not exist.
void CheckOutputFile(const std::string& file);

// Throws ProgramError if a file is in the way, or the folder may not be created.
void CheckOutputFolder(const std::string& folder);

// Creates the folder and its parents. Throws ProgramError.
void MakeFolder(const std::string& folder);

} // namespace vistaTrim::cli

#endif
