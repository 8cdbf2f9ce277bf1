// Plain pixels as encoded pictures, for pages and map files.
#ifndef VISTATRIM_PHOTO_IMAGE_ENCODER_H
#define VISTATRIM_PHOTO_IMAGE_ENCODER_H

#include <cstdint>
#include <string>
#include <vector>

#include "vistaTrimPhoto/geometry.h"
#include "vistaTrimPhoto/image_format.h"
#include "vistaTrimPhoto/pixels.h"

namespace vistaTrim::photo {

struct Encoding {
    ImageFormat Format = ImageFormat::Jpeg;
    int Quality = 82;  // 1..100, of colours and alpha alike
    bool Fast = false; // a larger file in less time, where the format gives the choice
};

// Without metadata. They throw PhotoError.
std::vector<uint8_t> EncodeImage(const PixelImage& image, const Encoding& encoding);
void WriteImage(const PixelImage& image, const std::string& path, const Encoding& encoding);

// A part of the image. The rectangle must lie inside it.
PixelImage CutOut(const PixelImage& image, const PixelRect& rect);
// Scaled down to a longer side of at most `longSide` pixels.
PixelImage ShrunkTo(const PixelImage& image, int32_t longSide);

} // namespace vistaTrim::photo

#endif
