// Replaces face_finder.cpp in a build without dlib.
#include "regions/face_finder.h"

namespace vistaTrim::photo {

bool HasFaceFinder()
{
    return false;
}

std::vector<FoundRegion> FindFaces(const PixelImage&, FaceSearch)
{
    return {};
}

} // namespace vistaTrim::photo
