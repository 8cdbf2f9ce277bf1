// Converts plain pixels to libvips images and back.
#ifndef VISTATRIM_PHOTO_PICTURE_VIPS_PIXELS_H
#define VISTATRIM_PHOTO_PICTURE_VIPS_PIXELS_H

#include <vips/vips8>

#include "vistaTrimPhoto/pixels.h"

namespace vistaTrim::photo {

// All for use inside RunVips.

// Does not copy the pixels: keep them, and for padded or reversed rows the view itself, until the
// image and everything made from it are gone.
vips::VImage BorrowedImage(const PixelView& pixels);

// A copy of an image of 8-bit bands.
PixelImage PixelsOf(const vips::VImage& image);

} // namespace vistaTrim::photo

#endif
