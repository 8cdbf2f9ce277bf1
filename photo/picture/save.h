// Encoding an image in each of the formats.
#ifndef VISTATRIM_PHOTO_PICTURE_SAVE_H
#define VISTATRIM_PHOTO_PICTURE_SAVE_H

#include <cstdint>
#include <optional>
#include <vector>

#include <vips/vips8>

#include "vistaTrimPhoto/image_format.h"

namespace vistaTrim::photo {

struct SaveOptions {
    ImageFormat Format = ImageFormat::Jpeg;
    int Quality = 90;
    int AlphaQuality = 100;
    std::optional<ChromaSampling> Chroma; // of JPEG; none: as the quality suggests
    bool BestCodes = true;     // of JPEG: a second pass over the pixels, for a smaller file
    bool Photographic = false; // of PNG: coded for photographs, not for drawings
    bool Fast = false;         // of WebP: less effort, for a larger file
    bool Strip = false;        // no metadata and no profile
};

// All for use inside RunVips. Before that, AVIF and HEIC need LoadVipsModules.
void Save(const vips::VImage& image, const vips::VTarget& target, const SaveOptions& options);
std::vector<uint8_t> SaveToMemory(const vips::VImage& image, const SaveOptions& options);

bool NeedsModules(ImageFormat format);
bool KeepsAlpha(ImageFormat format);
bool KeepsCmyk(ImageFormat format);

} // namespace vistaTrim::photo

#endif
