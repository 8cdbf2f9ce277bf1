// Calls libvips and turns its errors into plain reasons.
#ifndef VISTATRIM_PHOTO_PICTURE_VIPS_RUNTIME_H
#define VISTATRIM_PHOTO_PICTURE_VIPS_RUNTIME_H

#include <functional>

#include "vistaTrimPhoto/photo_error.h"

namespace vistaTrim::photo {

// HEIF, AVIF and JPEG XL are read and written by modules, which are not loaded at startup.
// Do not call this inside RunVips.
void LoadVipsModules();

// Runs work that calls libvips, in any thread, and starts libvips if needed. A failure is thrown
// as a PhotoError with a reason in plain words (see plain_reason.h). libvips keeps one error text
// for the whole process, so failed work is run again while no other thread is inside, which makes
// the text its own. The work must therefore tolerate being run twice.
void RunVips(const std::function<void()>& work, PhotoError::Kind kind);

} // namespace vistaTrim::photo

#endif
