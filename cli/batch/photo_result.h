// What came of one photograph of a run.
#ifndef VISTATRIM_CLI_BATCH_PHOTO_RESULT_H
#define VISTATRIM_CLI_BATCH_PHOTO_RESULT_H

#include <string>
#include <vector>

#include "vistaTrimPhoto/result.h"

namespace vistaTrim::cli {

struct PhotoResult {
    std::string File;
    photo::Suggestions Found;
    std::string Error; // empty if all went well
    double WriteMilliseconds = 0;
    std::vector<std::string> Written; // files
    std::string ReportSection;        // its piece of the page, for `report`
};

// What stands before the names of wishes where this program writes them.
constexpr const char* kWishPrefix = "--";

} // namespace vistaTrim::cli

#endif
