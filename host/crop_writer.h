// Writes the crops of a photograph as files, cut from its full resolution.
#ifndef VISTATRIM_HOST_CROP_WRITER_H
#define VISTATRIM_HOST_CROP_WRITER_H

#include <string>
#include <vector>

#include "options.h"
#include "photograph.h"
#include "result.h"

namespace vistaTrim::host {

// The largest size of the crop's own ratio that fits the box; one of its sides is the box's.
PixelSize FittedSize(PixelSize crop, PixelSize box);

// PREFIX-RANK.EXT, the best crop being of rank 1.
std::string CropFile(const Photograph& photograph, const std::string& prefix, size_t rank,
                     const Options& options);

// Writes PREFIX-1.EXT, PREFIX-2.EXT and so on, best crop first, and returns their names. Each
// appears whole or not at all, and the first one appears last. With options.Resume the files
// that stand already are left as they are, and not among the names. Throws PhotoError, without
// options.Resume and options.Force also if one of the files exists.
std::vector<std::string> WriteCrops(const Photograph& photograph,
                                    const std::vector<SuggestedCrop>& crops,
                                    const std::string& prefix, const Options& options);

// True if as many crops as are asked for stand under this prefix: nothing is left to find out.
// False says little, since a photograph can have fewer crops than asked for.
bool HasAllCrops(const Photograph& photograph, const std::string& prefix, const Options& options);

} // namespace vistaTrim::host

#endif
