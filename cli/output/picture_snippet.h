// HTML that shows the crops of a photograph.
#ifndef VISTATRIM_CLI_OUTPUT_PICTURE_SNIPPET_H
#define VISTATRIM_CLI_OUTPUT_PICTURE_SNIPPET_H

#include <string>

#include "batch/photo_result.h"

namespace vistaTrim::cli {

// A <picture> of the best crop of each ratio, with all files of it. Of several ratios the browser
// takes the one nearest to that of its window. `page` is the file that the snippet goes into:
// the addresses are relative to it. Empty if no crop was written.
std::string PictureSnippet(const PhotoResult& result, const std::string& page,
                           const std::string& sizes);

} // namespace vistaTrim::cli

#endif
