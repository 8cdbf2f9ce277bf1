// A photograph that is a block of pixels in memory.
#ifndef VISTATRIM_PHOTO_PICTURE_PIXEL_SOURCE_H
#define VISTATRIM_PHOTO_PICTURE_PIXEL_SOURCE_H

#include <memory>

#include "picture/photograph_source.h"
#include "vistaTrimPhoto/pixels.h"

namespace vistaTrim::photo {

// Throws PhotoError (InvalidRequest) for a view that describes no pixels.
std::shared_ptr<const PhotographSource> OpenPixels(const PixelView& pixels,
                                                   const ReadOptions& options);

} // namespace vistaTrim::photo

#endif
