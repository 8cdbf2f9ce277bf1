// Starting libvips, and getting clean reasons out of it.
#ifndef VISTATRIM_HOST_VIPS_RUNTIME_H
#define VISTATRIM_HOST_VIPS_RUNTIME_H

#include <functional>
#include <string>

namespace vistaTrim::host {

// Throws PhotoError if libvips does not start. Only loaders meant for files of unknown origin
// are let in.
void StartVips(const char* programName);
void StopVips();
// Threads that libvips may use for one picture.
void SetVipsThreads(int count);
// HEIF, AVIF and JPEG XL are read and written by modules, which are not loaded at the start.
// Not to be called inside RunVips.
void LoadVipsModules();
// For a thread that has used libvips and ends.
void LeaveVips();

// Runs work that calls libvips, in any thread. A failure leaves as PhotoError with a reason on
// one line. libvips keeps one error text for the whole process, so a failed piece of work is
// run once more while no other thread is inside: its text is then its own. The work must
// therefore bear being run twice. What libvips says stands behind `what`, in brackets; nothing
// means that it speaks for itself.
void RunVips(const std::function<void()>& work, const std::string& what = "");

} // namespace vistaTrim::host

#endif
