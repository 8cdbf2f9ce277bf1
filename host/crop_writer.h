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

// Writes PREFIX-1.EXT, PREFIX-2.EXT and so on, best crop first, and returns their names. Each
// appears whole or not at all, and the first one appears last: where it stands, all stand.
// Throws PhotoError, also if one of them exists and may not be replaced.
std::vector<std::string> WriteCrops(const Photograph& photograph,
                                    const std::vector<SuggestedCrop>& crops,
                                    const std::string& prefix, const Options& options);

// True if an earlier run wrote all crops under this prefix, in whatever format.
bool HasCrops(const std::string& prefix);

} // namespace vistaTrim::host

#endif
