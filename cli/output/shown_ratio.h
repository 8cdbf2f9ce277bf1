// The ratio of a crop as people read it.
#ifndef VISTATRIM_CLI_OUTPUT_SHOWN_RATIO_H
#define VISTATRIM_CLI_OUTPUT_SHOWN_RATIO_H

#include <string>

#include "batch/photo_result.h"

namespace vistaTrim::cli {

// The ratio of Found.Crops[index] as the request wrote it, as 21:9, or by its usual name. Of a few
// pixels no crop has the ratio that it was made for; then it is the one that the crop has.
std::string ShownRatioOf(const PhotoResult& result, size_t index);

} // namespace vistaTrim::cli

#endif
