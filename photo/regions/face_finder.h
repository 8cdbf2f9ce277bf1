// Faces in a working picture.
#ifndef VISTATRIM_PHOTO_REGIONS_FACE_FINDER_H
#define VISTATRIM_PHOTO_REGIONS_FACE_FINDER_H

#include <vector>

#include "vistaTrimPhoto/found_region.h"
#include "vistaTrimPhoto/pixels.h"

namespace vistaTrim::photo {

// The picture is upright sRGB of three channels. The faces are in pixels of the picture and
// inside it, the most certain first, and do not depend on other threads. May be called from several
// threads at once.
std::vector<FoundRegion> FindFaces(const PixelImage& picture, FaceSearch search);

} // namespace vistaTrim::photo

#endif
