// One photograph file, read through libvips.
#ifndef VISTATRIM_HOST_PHOTOGRAPH_H
#define VISTATRIM_HOST_PHOTOGRAPH_H

#include <array>
#include <string>

#include <vips/vips8>

#include "geometry.h"
#include "working_picture.h"

namespace vistaTrim::host {

using Colour = std::array<double, 3>; // red, green, blue, 0..255

class Photograph {
public:
    // Reads the header. Throws PhotoError for whatever is not a readable picture. background is
    // what shows through where the photograph is transparent.
    Photograph(const std::string& path, const Colour& background);

    PixelSize Size() const; // as displayed
    // The ending of files of its own format, if it is one that crops are written in; else "png",
    // which loses nothing.
    const std::string& NativeFormat() const;

    // Upright sRGB at the working size, decoded at reduced size where the format can.
    WorkingPicture ReadWorkingPicture() const;

    // The same at a longer side of `longSide` pixels, or its own size if that is less. For use
    // inside RunVips, like the one below.
    vips::VImage ReadPreview(int32_t longSide) const;

    // Upright, otherwise as stored: bands, depth, colour profile and metadata. With
    // `oncePerPixel` the pixels can be read only once, from the top down; then a picture that
    // is stored upright never stands in memory whole.
    vips::VImage ReadFull(bool oncePerPixel) const;

private:
    bool ReadHeader(); // false if no reader knows the format
    vips::VImage ReadThumbnail(PixelSize size) const;
    vips::VImage ThumbnailOfColours(PixelSize size) const;
    vips::VImage ThumbnailOfCmyk(PixelSize size) const;

    std::string Path;
    Colour Background;
    PixelSize Displayed;
    int Orientation = 1; // as EXIF counts them
    std::string Format;
    bool IsCmyk = false;
    bool HasProfile = false;
};

} // namespace vistaTrim::host

#endif
