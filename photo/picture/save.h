// Encodes an image in any of the formats.
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
    std::optional<ChromaSampling> Chroma; // JPEG only; none: as the quality suggests
    bool BestCodes = true;     // JPEG only: a second pass over the pixels, for a smaller file
    bool Photographic = false; // PNG only: tuned for photographs, not for drawings
    bool Fast = false;         // WebP only: faster, but a larger file
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
