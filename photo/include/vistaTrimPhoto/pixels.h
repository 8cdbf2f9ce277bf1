// Plain pixels: bytes in memory, borrowed or owned.
#ifndef VISTATRIM_PHOTO_PIXELS_H
#define VISTATRIM_PHOTO_PIXELS_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "vistaTrimPhoto/geometry.h"

namespace vistaTrim::photo {

// Pixels owned elsewhere, 8 bits per channel: grey (1), sRGB (3) or sRGB and alpha (4).
struct PixelView {
    const uint8_t* Data = nullptr; // the first byte of the top row
    int32_t Width = 0;
    int32_t Height = 0;
    int32_t Channels = 3;
    ptrdiff_t RowStride = 0; // bytes from a row to the one below; negative if rows are stored
                             // bottom up; its magnitude is at least Width * Channels
};

// Packed rows from the top down, 8 bits a channel, 1, 3 or 4 channels as above.
struct PixelImage {
    PixelSize Size;
    int32_t Channels = 3;
    std::vector<uint8_t> Bytes;
};

// The view stays valid as long as the image's bytes.
PixelView ViewOf(const PixelImage& image);

} // namespace vistaTrim::photo

#endif
