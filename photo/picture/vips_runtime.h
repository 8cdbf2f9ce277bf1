// Calling libvips, and getting clean reasons out of it.
#ifndef VISTATRIM_PHOTO_PICTURE_VIPS_RUNTIME_H
#define VISTATRIM_PHOTO_PICTURE_VIPS_RUNTIME_H

#include <functional>

#include "vistaTrimPhoto/photo_error.h"

namespace vistaTrim::photo {

// HEIF, AVIF and JPEG XL are read and written by modules, which are not loaded at the start.
// Do not call it inside RunVips.
void LoadVipsModules();

// Runs work that calls libvips, in any thread, and starts libvips if needed. A failure leaves as
// PhotoError with a reason in plain words (see plain_reason.h). libvips keeps one error text for
// the whole process, so failed work is run once more while no other thread is inside: its text is
// then its own. The work must therefore bear being run twice.
void RunVips(const std::function<void()>& work, PhotoError::Kind kind);

} // namespace vistaTrim::photo

#endif
