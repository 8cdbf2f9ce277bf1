// What the library sees of a photograph.
#ifndef VISTATRIM_HOST_WORKING_PICTURE_H
#define VISTATRIM_HOST_WORKING_PICTURE_H

#include <cstdint>
#include <memory>
#include <vector>

#include "geometry.h"

namespace vistaTrim::host {

struct WorkingPicture {
    PixelSize Photo;             // the photograph as displayed
    PixelSize Size;              // longer side kWorkingLongSide
    std::vector<uint8_t> Pixels; // packed sRGB, three bytes a pixel
};

// Owns an image.
struct ImageDeleter {
    void operator()(IImage* image) const;
};
using ImageHandle = std::unique_ptr<IImage, ImageDeleter>;

// For the library's eyes, without a copy: keep the picture until the image is gone.
ImageHandle MakeLibraryImage(const WorkingPicture& picture);

} // namespace vistaTrim::host

#endif
