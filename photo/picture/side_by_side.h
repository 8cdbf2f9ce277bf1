// Runs pieces of picture work in parallel.
#ifndef VISTATRIM_PHOTO_PICTURE_SIDE_BY_SIDE_H
#define VISTATRIM_PHOTO_PICTURE_SIDE_BY_SIDE_H

#include <cstddef>
#include <functional>

namespace vistaTrim::photo {

// Calls work(0) to work(count - 1), each once, in at most `threads` threads with the calling one
// among them. Returns when all are done. If one throws, no further one begins, and the first
// exception is rethrown. For use inside RunVips.
void SideBySide(size_t count, int threads, const std::function<void(size_t index)>& work);

} // namespace vistaTrim::photo

#endif
