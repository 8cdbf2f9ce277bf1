// Translates libvips' messages into plain words.
#ifndef VISTATRIM_PHOTO_PICTURE_PLAIN_REASON_H
#define VISTATRIM_PHOTO_PICTURE_PLAIN_REASON_H

#include <string>

#include "vistaTrimPhoto/photo_error.h"

namespace vistaTrim::photo {

// kind     what the caller was doing; the error returned may have a more precise kind
// message  libvips' own lines; only a reason given by the operating system is shown
PhotoError PlainError(PhotoError::Kind kind, const std::string& message);

} // namespace vistaTrim::photo

#endif
