#ifndef VISTATRIM_PHOTO_PICTURE_PATH_ENDING_H
#define VISTATRIM_PHOTO_PICTURE_PATH_ENDING_H

#include <string>

namespace vistaTrim::photo {

// The extension of a file name, in lower case and without the dot. Empty if it has none: in
// "IMG_2026.11.22" or "Mr. Smith and his dog", what follows the last dot is no extension.
std::string EndingOfPath(const std::string& path);

} // namespace vistaTrim::photo

#endif
