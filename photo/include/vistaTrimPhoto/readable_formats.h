// Which photographs can be read. The answers come from the installed libvips.
#ifndef VISTATRIM_PHOTO_READABLE_FORMATS_H
#define VISTATRIM_PHOTO_READABLE_FORMATS_H

#include <string>
#include <vector>

namespace vistaTrim::photo {

struct ReadableFormat {
    std::string Name;                 // "JPEG"
    std::vector<std::string> Endings; // of its files, in lower case, without the dot
};

// By name. The reference is valid until the program ends. The first call takes about ten
// milliseconds, because libvips then loads the modules of some formats.
const std::vector<ReadableFormat>& ReadableFormats();

enum class FileKind { Photograph, Raw, Other };

// What kind of file this is, judged by its file name extension, or by its first bytes if it has
// none. Raw photographs have to be developed before they can be read.
FileKind KindOfFile(const std::string& path);

} // namespace vistaTrim::photo

#endif
