// Plain pixels as encoded pictures, for pages and map files.
#ifndef VISTATRIM_PHOTO_IMAGE_ENCODER_H
#define VISTATRIM_PHOTO_IMAGE_ENCODER_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "vistaTrimPhoto/geometry.h"
#include "vistaTrimPhoto/image_format.h"
#include "vistaTrimPhoto/pixels.h"

namespace vistaTrim::photo {

struct Encoding {
    ImageFormat Format = ImageFormat::Jpeg;
    int Quality = 82;              // 1..100, of colours and alpha alike
    bool Fast = false;             // a larger file in less time, where the format gives the choice
    std::optional<PixelRect> Part; // only this part, which must lie inside the image
    std::optional<int32_t> LongSide; // scaled down until the longer side is at most this
};

// Both leave out metadata and throw PhotoError.
std::vector<uint8_t> EncodeImage(const PixelImage& image, const Encoding& encoding);
void WriteImage(const PixelImage& image, const std::string& path, const Encoding& encoding);

} // namespace vistaTrim::photo

#endif
