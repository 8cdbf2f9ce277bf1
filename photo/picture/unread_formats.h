// Names for files that are not read, so that people learn what to do with them.
#ifndef VISTATRIM_PHOTO_PICTURE_UNREAD_FORMATS_H
#define VISTATRIM_PHOTO_PICTURE_UNREAD_FORMATS_H

#include <string>

#include <vips/vips8>

namespace vistaTrim::photo {

constexpr const char* kRawSentence =
    "a raw photograph, which has to be developed to JPEG or TIFF before it can be read";

// Lower case, without the dot.
bool IsRawEnding(const std::string& ending);

// A raw photograph in the frame of a TIFF file. Its first picture is a small preview, so read as
// TIFF it would give crops of a few hundred pixels. For use inside RunVips.
bool IsRawTiff(const vips::VSource& source);

// What the first bytes of a file that no loader takes say it is, as a sentence. `ending` helps
// where the bytes say nothing. For use inside RunVips.
std::string UnreadSentence(const vips::VSource& source, const std::string& ending);

} // namespace vistaTrim::photo

#endif
