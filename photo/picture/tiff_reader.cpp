// TIFF, revision 6.0 (1992), section 2. BigTIFF differs in the width of its counts and offsets.
#include "picture/tiff_reader.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace vistaTrim::photo {

namespace {

constexpr uint64_t kMostFields = 1000;
constexpr uint64_t kLargestField = 1'000'000; // bytes
constexpr size_t kMostNumbers = 64;

} // namespace

TiffReader::TiffReader(Reader read) : Read(std::move(read))
{
    std::array<uint8_t, 16> head{};
    if (!Read(0, 8, head.data()))
        return;
    if (head[0] != head[1] || (head[0] != 'I' && head[0] != 'M'))
        return;
    BigEndian = head[0] == 'M';
    const uint64_t magic = Number(&head[2], 2);
    Wide = magic == 43;
    if (magic == 42)
        FirstOffset = Number(&head[4], 4);
    else if (Wide && Read(8, 8, &head[8]))
        FirstOffset = Number(&head[8], 8);
}

const std::optional<uint64_t>& TiffReader::First() const
{
    return FirstOffset;
}

std::optional<TiffDirectory> TiffReader::Directory(uint64_t offset) const
{
    const size_t countBytes = Wide ? 8 : 2;
    const size_t entryBytes = Wide ? 20 : 12;
    const size_t placeBytes = Wide ? 8 : 4;
    std::array<uint8_t, 20> bytes{};
    if (offset < 8 || !Read(offset, countBytes, bytes.data()))
        return std::nullopt;
    const uint64_t count = Number(bytes.data(), countBytes);
    if (count == 0 || count > kMostFields)
        return std::nullopt;
    TiffDirectory directory;
    for (uint64_t i = 0; i < count; ++i) {
        if (!Read(offset + countBytes + i * entryBytes, entryBytes, bytes.data()))
            break;
        TiffField field;
        const auto tag = static_cast<uint16_t>(Number(bytes.data(), 2));
        field.Type = static_cast<uint16_t>(Number(&bytes[2], 2));
        field.Count = Number(&bytes[4], placeBytes);
        const size_t each = SizeOfTiffType(field.Type);
        if (each == 0 || field.Count == 0 || field.Count > kLargestField / each)
            continue;
        const uint8_t* place = &bytes[4 + placeBytes];
        field.Bytes.resize(field.Count * each);
        if (field.Bytes.size() <= placeBytes)
            std::memcpy(field.Bytes.data(), place, field.Bytes.size());
        else if (!Read(Number(place, placeBytes), field.Bytes.size(), field.Bytes.data()))
            continue;
        // Each half of a fraction is a separate number.
        const size_t word = field.Type == 5 || field.Type == 10 ? 4 : each;
        if (BigEndian && word > 1)
            for (size_t at = 0; at < field.Bytes.size(); at += word)
                std::reverse(field.Bytes.begin() + static_cast<ptrdiff_t>(at),
                             field.Bytes.begin() + static_cast<ptrdiff_t>(at + word));
        directory.emplace(tag, std::move(field));
    }
    return directory;
}

uint64_t TiffReader::Number(const uint8_t* bytes, size_t size) const
{
    uint64_t number = 0;
    for (size_t i = 0; i < size; ++i)
        number = number << 8 | bytes[BigEndian ? i : size - 1 - i];
    return number;
}

TiffReader TiffReaderOf(const vips::VSource& source)
{
    VipsSource* handle = source.get_source();
    return TiffReader([handle](uint64_t offset, size_t size, uint8_t* to) {
        if (offset > static_cast<uint64_t>(INT64_MAX) ||
            vips_source_seek(handle, static_cast<gint64>(offset), SEEK_SET) < 0) {
            vips_error_clear();
            return false;
        }
        while (size > 0) {
            const gint64 got = vips_source_read(handle, to, size);
            if (got <= 0)
                return false;
            to += got;
            size -= static_cast<size_t>(got);
        }
        return true;
    });
}

TiffReader TiffReaderOf(const std::vector<uint8_t>& bytes)
{
    return TiffReader([&bytes](uint64_t offset, size_t size, uint8_t* to) {
        if (offset > bytes.size() || bytes.size() - offset < size)
            return false;
        std::memcpy(to, bytes.data() + offset, size);
        return true;
    });
}

size_t SizeOfTiffType(uint16_t type)
{
    constexpr size_t kSizes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4, 0, 0, 8, 8, 8};
    return type < std::size(kSizes) ? kSizes[type] : 0;
}

std::vector<uint64_t> NumbersOf(const TiffDirectory& directory, uint16_t tag)
{
    const auto found = directory.find(tag);
    if (found == directory.end())
        return {};
    const TiffField& field = found->second;
    constexpr uint16_t kWhole[] = {1, 3, 4, 13, 16, 18}; // unsigned numbers and offsets
    if (std::find(std::begin(kWhole), std::end(kWhole), field.Type) == std::end(kWhole))
        return {};
    const size_t each = SizeOfTiffType(field.Type);
    std::vector<uint64_t> numbers;
    for (size_t at = 0; at < field.Bytes.size() && numbers.size() < kMostNumbers; at += each) {
        uint64_t number = 0;
        for (size_t i = each; i-- > 0;)
            number = number << 8 | field.Bytes[at + i];
        numbers.push_back(number);
    }
    return numbers;
}

} // namespace vistaTrim::photo
