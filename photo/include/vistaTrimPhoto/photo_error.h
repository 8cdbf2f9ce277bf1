// The one exception of this library.
#ifndef VISTATRIM_PHOTO_PHOTO_ERROR_H
#define VISTATRIM_PHOTO_PHOTO_ERROR_H

#include <optional>
#include <stdexcept>
#include <string>

#include "vistaTrimPhoto/region.h"

namespace vistaTrim::photo {

// The text is one line without the file name, which the caller adds.
class PhotoError : public std::runtime_error {
public:
    enum class Kind {
        Unreadable,     // no such file, no permission, a folder, an empty file
        Unsupported,    // not a picture, or its format or pixel type cannot be read
        Damaged,        // a picture that is broken or cut short
        InvalidRequest, // a value that no photograph could meet
        DoesNotFit,     // a size or region that does not fit into this photograph
        NotWritable,    // a crop or picture could not be written
        OutOfMemory,
        Internal // the picture library does not start, or the engine rejects the picture
    };

    PhotoError(Kind kind, const std::string& text);
    // About one wish. `text` says what is wrong, without naming the wish; what() is
    // "the region of must-keep 10,20,30,40 " followed by the text.
    PhotoError(Kind kind, const Wish& wish, const std::string& text);

    Kind GetKind() const;
    const std::optional<Wish>& ConcernedWish() const;

    // what() with the prefix before the name of the wish. A program whose options are named
    // after the wishes passes "--".
    std::string Text(const std::string& wishPrefix) const;

private:
    Kind Why;
    std::optional<Wish> About;
    std::string Fault; // without the wish
};

} // namespace vistaTrim::photo

#endif
