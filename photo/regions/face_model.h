// dlib's frontal face detector as dlib serialises it; make_face_model.cpp writes the source.
#ifndef VISTATRIM_PHOTO_REGIONS_FACE_MODEL_H
#define VISTATRIM_PHOTO_REGIONS_FACE_MODEL_H

#include <cstddef>
#include <cstdint>

namespace vistaTrim::photo {

extern const size_t kFaceModelBytes;
extern const uint64_t kFaceModel[];

} // namespace vistaTrim::photo

#endif
