// The working picture as an image of the engine.
#ifndef VISTATRIM_PHOTO_SUGGEST_LENT_IMAGE_H
#define VISTATRIM_PHOTO_SUGGEST_LENT_IMAGE_H

#include <memory>

#include "vistaTrim/image.h"
#include "vistaTrimPhoto/pixels.h"

namespace vistaTrim::photo {

// Owns an image.
struct ImageDeleter {
    void operator()(IImage* image) const;
};
using ImageHandle = std::unique_ptr<IImage, ImageDeleter>;

// Without a copy: keep the pixels until the image is gone. Three channels.
ImageHandle LendToEngine(const PixelImage& pixels);

} // namespace vistaTrim::photo

#endif
