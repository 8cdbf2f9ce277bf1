// HTML that shows the crops of a photograph.
#ifndef VISTATRIM_CLI_OUTPUT_PICTURE_SNIPPET_H
#define VISTATRIM_CLI_OUTPUT_PICTURE_SNIPPET_H

#include <string>

#include "batch/photo_result.h"

namespace vistaTrim::cli {

// A <picture> with the best crop of each ratio and all of its files. The browser picks the ratio
// nearest to its window's. `page` is the file that the snippet goes into: addresses are relative
// to it. Empty if no crop was written.
std::string PictureSnippet(const PhotoResult& result, const std::string& page,
                           const std::string& sizes);

} // namespace vistaTrim::cli

#endif
