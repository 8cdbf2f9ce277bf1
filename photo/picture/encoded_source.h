// A photograph that is an encoded file, on disk or in memory.
#ifndef VISTATRIM_PHOTO_PICTURE_ENCODED_SOURCE_H
#define VISTATRIM_PHOTO_PICTURE_ENCODED_SOURCE_H

#include <cstddef>
#include <memory>
#include <string>

#include "picture/photograph_source.h"

namespace vistaTrim::photo {

// Both read the header and throw PhotoError for anything that is not a readable picture.
std::shared_ptr<const PhotographSource> OpenFile(const std::string& path,
                                                 const ReadOptions& options);
std::shared_ptr<const PhotographSource> OpenBytes(const void* data, size_t size,
                                                  const ReadOptions& options);

} // namespace vistaTrim::photo

#endif
