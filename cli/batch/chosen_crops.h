// Crops that a file names: lines of `suggest --json`, a choice made in the report, or a manifest.
#ifndef VISTATRIM_CLI_BATCH_CHOSEN_CROPS_H
#define VISTATRIM_CLI_BATCH_CHOSEN_CROPS_H

#include <optional>
#include <string>
#include <vector>

#include "batch/photo_result.h"
#include "vistaTrimPhoto/geometry.h"
#include "vistaTrimPhoto/result.h"

namespace vistaTrim::cli {

struct ChosenPhoto {
    std::string File;
    std::string Source;                   // "choice.json:3", where it is named
    std::optional<photo::PixelSize> Size; // of the photograph that the crops were chosen on
    std::vector<photo::Crop> Crops;
    std::vector<CropLabel> Labels;
};

struct ChosenCrops {
    std::vector<ChosenPhoto> Photos; // photographs that have crops
    size_t WithoutCrops = 0;         // photographs that are named but have none
    std::string Content;             // a mark that identifies the text
};

// The text is one JSON object after another, or an array of them. Each has file and crops; a crop
// has x, y, width and height. Other members may be missing, and unknown ones are ignored. Throws a
// ProgramError that names `source` and the line if something is not a crop or extends beyond its
// photograph.
ChosenCrops ReadChosenCrops(const std::string& text, const std::string& source);

} // namespace vistaTrim::cli

#endif
