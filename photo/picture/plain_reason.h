// What libvips says, in words for people.
#ifndef VISTATRIM_PHOTO_PICTURE_PLAIN_REASON_H
#define VISTATRIM_PHOTO_PICTURE_PLAIN_REASON_H

#include <string>

#include "vistaTrimPhoto/photo_error.h"

namespace vistaTrim::photo {

// kind     what the caller was about to do; the error's may be a nearer one
// message  libvips' own, some lines of it; nothing of it is shown but a reason of the system
PhotoError PlainError(PhotoError::Kind kind, const std::string& message);

} // namespace vistaTrim::photo

#endif
