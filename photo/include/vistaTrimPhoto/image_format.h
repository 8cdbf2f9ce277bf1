// The formats in which crops and pictures are written.
#ifndef VISTATRIM_PHOTO_IMAGE_FORMAT_H
#define VISTATRIM_PHOTO_IMAGE_FORMAT_H

#include <cstdint>
#include <optional>
#include <string>

namespace vistaTrim::photo {

enum class ImageFormat { Jpeg, Png, Webp, Tiff, Avif, Heic };

// How many colour values a JPEG file holds: one for each pixel (4:4:4), or one for each block of
// two by two (4:2:0).
enum class ChromaSampling { Full, Half };

std::string EndingOf(ImageFormat format); // "jpg", "png", "webp", "tif", "avif", "heic"
// Also "jpeg" and "tiff"; case does not matter. nullopt for any other text.
std::optional<ImageFormat> FormatOfEnding(const std::string& ending);

// Pixels of the longest side that files of the format are written with. A JPEG could hold 65,535,
// but libjpeg writes no more than 65,500; AVIF and HEIC are bound by what libheif reads again.
int32_t LongestSide(ImageFormat format);

} // namespace vistaTrim::photo

#endif
