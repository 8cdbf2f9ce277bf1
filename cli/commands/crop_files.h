// Files of crops: their names, and that each appears whole or not at all.
#ifndef VISTATRIM_CLI_COMMANDS_CROP_FILES_H
#define VISTATRIM_CLI_COMMANDS_CROP_FILES_H

#include <string>
#include <vector>

#include "options/options.h"
#include "vistaTrimPhoto/photograph.h"
#include "vistaTrimPhoto/result.h"

namespace vistaTrim::cli {

// PREFIX-RANK.EXT, the best crop being of rank 1.
std::string CropFile(const photo::Photograph& photograph, const std::string& prefix, size_t rank,
                     const Options& options);

// Writes PREFIX-1.EXT, PREFIX-2.EXT and so on, best crop first, and returns their names. Each
// appears whole or not at all, and the first one appears last. With options.Resume the files
// that exist already are left as they are, and are not among the names. Throws PhotoError, or
// ProgramError if one of the files exists and neither options.Resume nor options.Force is given.
std::vector<std::string> WriteCropFiles(const photo::Photograph& photograph,
                                        const std::vector<photo::Crop>& crops,
                                        const std::string& prefix, const Options& options);

// True if as many crops as are asked for exist under this prefix: nothing is left to find out.
// False says little, since a photograph can have fewer crops than asked for.
bool HasAllCrops(const photo::Photograph& photograph, const std::string& prefix,
                 const Options& options);

} // namespace vistaTrim::cli

#endif
