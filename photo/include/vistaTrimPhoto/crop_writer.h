// Crops cut from a photograph at full resolution.
#ifndef VISTATRIM_PHOTO_CROP_WRITER_H
#define VISTATRIM_PHOTO_CROP_WRITER_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "vistaTrimPhoto/geometry.h"
#include "vistaTrimPhoto/image_format.h"
#include "vistaTrimPhoto/photograph.h"
#include "vistaTrimPhoto/pixels.h"

namespace vistaTrim::photo {

constexpr int kDefaultQuality = 90;

struct CropOutput {
    PixelRect Rect;                // inside the photograph
    std::optional<PixelSize> Size; // scaled to exactly this; none: as many pixels as the rectangle
    ImageFormat Format = ImageFormat::Jpeg;
    // 1..100, for the formats that have a quality. None: a JPEG crop of a JPEG photograph gets the
    // photograph's, any other crop kDefaultQuality.
    std::optional<int> Quality;
    // JPEG only. None: that of a JPEG photograph, else full at quality 90 and above.
    std::optional<ChromaSampling> Chroma;
    bool Strip = false; // leave out all metadata; the colour profile stays
};

// Throws what WriteCrops would throw before it writes.
void CheckCropFiles(const Photograph& photograph, const std::vector<CropOutput>& crops);

// Each decodes the photograph once for all crops, keeps depth, colour profile and metadata as far
// as the format can hold them, and throws PhotoError. Files that were written before a failure
// are not removed.
void WriteCrops(const Photograph& photograph, const std::vector<CropOutput>& crops,
                const std::vector<std::string>& paths, // one a crop; replaced if it exists
                int threads = 1);                      // that encode at a time; same files
std::vector<std::vector<uint8_t>> EncodeCrops(const Photograph& photograph,
                                              const std::vector<CropOutput>& crops);

// The crops as plain pixels: sRGB, three channels, 8 bits. Format, Quality and Strip have no
// effect.
std::vector<PixelImage> ReadCrops(const Photograph& photograph,
                                  const std::vector<CropOutput>& crops);

} // namespace vistaTrim::photo

#endif
