// Plans the files of a photograph's crops before any is written.
#ifndef VISTATRIM_CLI_COMMANDS_CROP_PLAN_H
#define VISTATRIM_CLI_COMMANDS_CROP_PLAN_H

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "batch/photo_list.h"
#include "batch/photo_result.h"
#include "options/options.h"
#include "vistaTrimPhoto/crop_writer.h"
#include "vistaTrimPhoto/photograph.h"

namespace vistaTrim::cli {

struct PlannedFile {
    size_t Crop = 0; // index into PhotoResult::Found.Crops
    photo::PixelSize Size;
    photo::CropOutput Output;
    std::string Path;
};

// The sizes in which a crop is written: one, or one for each requested width. A width beyond
// that of the crop is replaced by the crop's own, unless crops may be scaled up.
std::vector<photo::PixelSize> SizesOfCrop(photo::PixelSize crop, const CropLabel& label,
                                          const CropFileOptions& how);

// Throws ProgramError if two of the files would have the same name.
std::vector<PlannedFile> PlanCropFiles(const Options& options, const ListedPhoto& photo,
                                       const photo::Photograph& photograph,
                                       const PhotoResult& result);

// The labels expected before a photograph is analysed, with at most `most` ranks.
std::vector<CropLabel> ExpectedLabels(const Options& options, int32_t most);

// Paths below the output folder, without the ending. Sizes that are not known yet are "?".
std::vector<std::string> ExpectedNames(const Options& options, const ListedPhoto& photo,
                                       const CropLabel& label);

// Keeps two photographs of a run from writing the same file.
class ClaimedNames {
public:
    // Throws ProgramError if another photograph has one of the names, and then claims none.
    void Claim(const std::vector<PlannedFile>& files, const std::string& photo);

private:
    std::mutex Mutex;
    std::map<std::string, std::string> Owners;
};

} // namespace vistaTrim::cli

#endif
