// Writes the files of crops.
#ifndef VISTATRIM_CLI_COMMANDS_CROP_FILES_H
#define VISTATRIM_CLI_COMMANDS_CROP_FILES_H

#include <functional>
#include <vector>

#include "batch/photo_list.h"
#include "commands/crop_plan.h"
#include "options/options.h"
#include "vistaTrimPhoto/photograph.h"

namespace vistaTrim::cli {

// Writes the files and returns those it wrote, in their order. Each appears whole or not at all,
// and the first one appears last. Creates their folders. With options.Resume, existing files are
// left as they are and are not returned. Throws PhotoError, or ProgramError if one
// of the files exists and neither options.Resume nor options.Force is given. Calls `begin` before
// it writes, and not at all if it writes nothing. Encodes in at most `threads` threads.
std::vector<PlannedFile> WriteCropFiles(const photo::Photograph& photograph,
                                        const std::vector<PlannedFile>& files,
                                        const Options& options, int threads,
                                        const std::function<void()>& begin);

// Deletes what killed runs left in the folders that crops of these labels go to.
void ClearFoldersOf(const ListedPhoto& photo, const std::vector<CropLabel>& labels,
                    const Options& options);

// True if as many crops as requested exist, so nothing is left to do. False means little: a
// photograph can have fewer crops than requested, and file names can contain sizes not known yet.
bool HasAllCrops(const photo::Photograph& photograph, const ListedPhoto& photo,
                 const Options& options);

} // namespace vistaTrim::cli

#endif
