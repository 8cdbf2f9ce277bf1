// The outcome of one photograph in a run.
#ifndef VISTATRIM_CLI_BATCH_PHOTO_RESULT_H
#define VISTATRIM_CLI_BATCH_PHOTO_RESULT_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "vistaTrimPhoto/geometry.h"
#include "vistaTrimPhoto/ratio.h"
#include "vistaTrimPhoto/result.h"

namespace vistaTrim::cli {

// What was requested of a crop; names its files.
struct CropLabel {
    std::string Shape; // "og-image", "16x9"; empty if all shapes were ranked together
    std::string Ratio; // "16x9", as the request wrote it; else its usual name
    int32_t Rank = 1;  // among the crops of its shape
    std::optional<photo::PixelSize> Fill; // scaled to exactly this
};

struct WrittenCrop {
    std::string File;
    size_t Crop = 0; // index into PhotoResult::Found.Crops
    photo::PixelSize Size;
};

struct PhotoResult {
    std::string File;
    photo::Suggestions Found;
    std::vector<CropLabel> Labels; // one for each crop
    std::string WhyNone;           // why there are no crops, for people; empty if not requested
    std::string Error;             // empty if all went well
    double WriteMilliseconds = 0;
    std::vector<std::string> Written; // files
    std::vector<WrittenCrop> Crops;   // of these, the crops
    std::string ReportSection;        // its part of the page, for `report`
};

// Goes before the names of wishes in this program's messages.
constexpr const char* kWishPrefix = "--";

} // namespace vistaTrim::cli

#endif
