// Names the formats that are not read, so that people learn what to do with such files.
#ifndef VISTATRIM_PHOTO_PICTURE_UNREAD_FORMATS_H
#define VISTATRIM_PHOTO_PICTURE_UNREAD_FORMATS_H

#include <string>

#include <vips/vips8>

namespace vistaTrim::photo {

constexpr const char* kRawSentence =
    "a raw photograph, which has to be developed to JPEG or TIFF before it can be read";

// Lower case, without the dot.
bool IsRawEnding(const std::string& ending);

// A raw photograph stored as a TIFF file. Its first picture is a small preview, so reading it as
// TIFF would give crops of a few hundred pixels. For use inside RunVips.
bool IsRawTiff(const vips::VSource& source);

// A sentence that says what a file that no loader accepts is, judged by its first bytes, or by
// `ending` where the bytes say nothing. For use inside RunVips.
std::string UnreadSentence(const vips::VSource& source, const std::string& ending);

} // namespace vistaTrim::photo

#endif
