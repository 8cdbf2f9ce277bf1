// The directories of a TIFF file: fields with their values, without the picture.
#ifndef VISTATRIM_PHOTO_PICTURE_TIFF_READER_H
#define VISTATRIM_PHOTO_PICTURE_TIFF_READER_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <vips/vips8>

namespace vistaTrim::photo {

struct TiffField {
    uint16_t Type = 0;
    uint64_t Count = 0;
    std::vector<uint8_t> Bytes; // of all values, each little-endian
};

using TiffDirectory = std::map<uint16_t, TiffField>; // by tag

// Reads TIFF and BigTIFF of either byte order. Even from a damaged or hostile file it reads
// at most a few megabytes, and it throws nothing.
class TiffReader {
public:
    // Reads `size` bytes at `offset` into `to`; false if the data ends before.
    using Reader = std::function<bool(uint64_t offset, size_t size, uint8_t* to)>;

    explicit TiffReader(Reader read);

    // Offset of the first directory; nullopt if this is not TIFF.
    const std::optional<uint64_t>& First() const;
    // nullopt if there is none at this offset. Damaged or very large fields are left out.
    std::optional<TiffDirectory> Directory(uint64_t offset) const;

private:
    uint64_t Number(const uint8_t* bytes, size_t size) const;

    Reader Read;
    bool BigEndian = false;
    bool Wide = false; // BigTIFF
    std::optional<uint64_t> FirstOffset;
};

// Reads from the source, which must stay alive as long as the reader. For use inside RunVips.
TiffReader TiffReaderOf(const vips::VSource& source);
// The bytes must outlive the reader too.
TiffReader TiffReaderOf(const std::vector<uint8_t>& bytes);

// Bytes of one value; 0 for an unknown type.
size_t SizeOfTiffType(uint16_t type);

// A field's integers, up to a limit; empty if it is missing or holds another type.
std::vector<uint64_t> NumbersOf(const TiffDirectory& directory, uint16_t tag);

} // namespace vistaTrim::photo

#endif
