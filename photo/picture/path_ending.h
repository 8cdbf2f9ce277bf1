#ifndef VISTATRIM_PHOTO_PICTURE_PATH_ENDING_H
#define VISTATRIM_PHOTO_PICTURE_PATH_ENDING_H

#include <string>

namespace vistaTrim::photo {

// Of the name of a file, in lower case and without the dot. Empty if it has none; what stands
// behind the last dot of "IMG_2026.11.22" or "Mr. Smith and his dog" is no ending.
std::string EndingOfPath(const std::string& path);

} // namespace vistaTrim::photo

#endif
