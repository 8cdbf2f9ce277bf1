// The directories of EXIF: CIPA DC-008 (2019), section 4.6.
#include "picture/tiff_exif.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>

#include "vistaTrimPhoto/photo_error.h"

namespace vistaTrim::photo {

namespace {

using vips::VImage;

constexpr size_t kEntry = 12;                              // bytes of a directory entry
constexpr size_t kLargestExif = 60'000;                    // a segment of a JPEG file holds 65,533
constexpr uint16_t kDirectories[] = {34665, 34853, 40965}; // exposure, place, interoperability

// Kept from the first directory: description, make, model, software, date, author, host computer,
// copyright, rating, and the fields that one system's file properties show.
constexpr uint16_t kAboutPhotograph[] = {270,   271,   272,   305,   306,   315,   316,  18246,
                                         18249, 33432, 40091, 40092, 40093, 40094, 40095};

struct Tree {
    TiffDirectory Fields;
    std::vector<uint16_t> Tags; // of the subdirectories
    std::vector<Tree> Below;
};

std::optional<Tree> ReadTree(const TiffReader& file, uint64_t offset, int depth)
{
    auto fields = file.Directory(offset);
    if (!fields)
        return std::nullopt;
    Tree tree;
    for (const uint16_t tag : kDirectories) {
        const std::vector<uint64_t> place = NumbersOf(*fields, tag);
        fields->erase(tag);
        if (place.empty() || depth == 0)
            continue;
        if (auto below = ReadTree(file, place[0], depth - 1)) {
            tree.Tags.push_back(tag);
            tree.Below.push_back(std::move(*below));
        }
    }
    tree.Fields = std::move(*fields);
    return tree;
}

// The tree, leaving out what describes the file itself.
std::optional<Tree> ReadExifTree(const TiffReader& file)
{
    constexpr int kDepth = 2;
    auto tree = file.First() ? ReadTree(file, *file.First(), kDepth) : std::nullopt;
    if (!tree)
        return std::nullopt;
    for (auto field = tree->Fields.begin(); field != tree->Fields.end();) {
        const bool isKept = std::find(std::begin(kAboutPhotograph), std::end(kAboutPhotograph),
                                      field->first) != std::end(kAboutPhotograph);
        field = isKept ? std::next(field) : tree->Fields.erase(field);
    }
    return tree;
}

size_t SizeOf(const Tree& tree)
{
    size_t size = 6;
    for (const auto& [tag, field] : tree.Fields)
        size += kEntry + field.Bytes.size() + 1;
    for (const Tree& below : tree.Below)
        size += kEntry + SizeOf(below);
    return size;
}

// `owner` stays null if there is no field.
void FindLargest(Tree& tree, TiffDirectory*& owner, TiffDirectory::iterator& found)
{
    for (auto field = tree.Fields.begin(); field != tree.Fields.end(); ++field)
        if (owner == nullptr || field->second.Bytes.size() > found->second.Bytes.size()) {
            owner = &tree.Fields;
            found = field;
        }
    for (Tree& below : tree.Below)
        FindLargest(below, owner, found);
}

void Shrink(Tree& tree)
{
    while (SizeOf(tree) > kLargestExif) {
        TiffDirectory* owner = nullptr;
        TiffDirectory::iterator largest;
        FindLargest(tree, owner, largest);
        if (owner == nullptr)
            return;
        owner->erase(largest);
    }
}

void AddNumber(std::vector<uint8_t>& bytes, uint64_t number, size_t size)
{
    for (size_t i = 0; i < size; ++i)
        bytes.push_back(static_cast<uint8_t>(number >> (8 * i)));
}

// Bytes to append, which begin at the even offset `Base` of a file.
class Appendix {
public:
    explicit Appendix(uint64_t base) : Base(base)
    {
    }

    // Appends the values and subdirectories; the caller then writes the directory itself.
    std::map<uint16_t, std::array<uint8_t, kEntry>> Entries(const Tree& tree)
    {
        std::map<uint16_t, std::array<uint8_t, kEntry>> entries;
        for (size_t i = 0; i < tree.Below.size(); ++i) {
            constexpr uint16_t kLong = 4;
            const uint64_t place = Directory(Entries(tree.Below[i]), 0);
            TiffField field{kLong, 1, {}};
            AddNumber(field.Bytes, place, 4);
            entries[tree.Tags[i]] = Entry(tree.Tags[i], field);
        }
        for (const auto& [tag, field] : tree.Fields)
            entries[tag] = Entry(tag, field);
        return entries;
    }

    // Returns its offset in the file.
    uint64_t Directory(const std::map<uint16_t, std::array<uint8_t, kEntry>>& entries,
                       uint64_t next)
    {
        const uint64_t place = EvenPlace();
        AddNumber(Bytes, entries.size(), 2);
        for (const auto& [tag, entry] : entries)
            Bytes.insert(Bytes.end(), entry.begin(), entry.end());
        AddNumber(Bytes, next, 4);
        return place;
    }

    std::vector<uint8_t> Bytes;

private:
    uint64_t EvenPlace()
    {
        if (Bytes.size() % 2 != 0)
            Bytes.push_back(0);
        return Base + Bytes.size();
    }

    std::array<uint8_t, kEntry> Entry(uint16_t tag, const TiffField& field)
    {
        std::vector<uint8_t> entry;
        AddNumber(entry, tag, 2);
        AddNumber(entry, field.Type, 2);
        AddNumber(entry, field.Count, 4);
        if (field.Bytes.size() <= 4) {
            entry.insert(entry.end(), field.Bytes.begin(), field.Bytes.end());
        } else {
            AddNumber(entry, EvenPlace(), 4);
            Bytes.insert(Bytes.end(), field.Bytes.begin(), field.Bytes.end());
        }
        entry.resize(kEntry, 0);
        std::array<uint8_t, kEntry> fixed{};
        std::copy(entry.begin(), entry.end(), fixed.begin());
        return fixed;
    }

    uint64_t Base;
};

uint64_t NumberAt(const uint8_t* bytes, size_t size)
{
    uint64_t number = 0;
    for (size_t i = size; i-- > 0;)
        number = number << 8 | bytes[i];
    return number;
}

// Removes regions of the whole photograph and sets the size to that of the crop.
void MakeTrue(Tree& tree, const TiffDirectory& file)
{
    constexpr uint16_t kExposure = 34665;
    constexpr uint16_t kSubjectArea = 37396;
    constexpr uint16_t kSubjectLocation = 41492;
    constexpr uint16_t kSides[][2] = {{40962, 256}, {40963, 257}}; // of EXIF, of TIFF
    constexpr uint16_t kLong = 4;
    for (size_t i = 0; i < tree.Below.size(); ++i) {
        if (tree.Tags[i] != kExposure)
            continue;
        TiffDirectory& fields = tree.Below[i].Fields;
        fields.erase(kSubjectArea);
        fields.erase(kSubjectLocation);
        for (const auto& [exif, tiff] : kSides) {
            const std::vector<uint64_t> side = NumbersOf(file, tiff);
            if (fields.erase(exif) == 0 || side.empty())
                continue;
            TiffField field{kLong, 1, {}};
            AddNumber(field.Bytes, side[0], 4);
            fields.emplace(exif, field);
        }
    }
}

struct Addition {
    std::vector<uint8_t> Bytes;     // after the end of the file, at an even offset
    std::array<uint8_t, 4> First{}; // the header's new offset of the first directory
};

// nullopt if the file is not as libvips writes it here, or is too large.
std::optional<Addition> AdditionFor(const TiffExtras& extras, const TiffReader::Reader& read,
                                    uint64_t size)
{
    Tree tree;
    if (auto exif = ReadExifTree(TiffReaderOf(extras.Exif)))
        tree = std::move(*exif);
    if (!extras.Iptc.empty()) {
        constexpr uint16_t kIptc = 33723;
        constexpr uint16_t kUndefined = 7;
        tree.Fields[kIptc] = {
            kUndefined, extras.Iptc.size(), {extras.Iptc.begin(), extras.Iptc.end()}};
    }
    std::array<uint8_t, 8> head{};
    constexpr uint64_t kLargestFile = 0xFFFF0000; // offsets have 32 bits
    if (size > kLargestFile || !read(0, head.size(), head.data()) ||
        std::memcmp(head.data(), "II*\0", 4) != 0)
        return std::nullopt;
    // The entries stay as they are: their values, a large colour profile say, do not move.
    const uint64_t first = NumberAt(&head[4], 4);
    if (const auto fields = TiffReader(read).Directory(first))
        MakeTrue(tree, *fields);
    std::array<uint8_t, kEntry> entry{};
    if (!read(first, 2, entry.data()))
        return std::nullopt;
    const uint64_t count = NumberAt(entry.data(), 2);
    Appendix appendix(size + size % 2);
    auto entries = appendix.Entries(tree);
    for (uint64_t i = 0; i < count; ++i) {
        if (!read(first + 2 + i * kEntry, kEntry, entry.data()))
            return std::nullopt;
        entries.emplace(static_cast<uint16_t>(NumberAt(entry.data(), 2)), entry);
    }
    if (!read(first + 2 + count * kEntry, 4, entry.data()))
        return std::nullopt;
    const uint64_t place = appendix.Directory(entries, NumberAt(entry.data(), 4));
    Addition addition;
    addition.Bytes = std::move(appendix.Bytes);
    if (size % 2 != 0)
        addition.Bytes.insert(addition.Bytes.begin(), 0);
    for (size_t i = 0; i < 4; ++i)
        addition.First[i] = static_cast<uint8_t>(place >> (8 * i));
    return addition;
}

constexpr char kExifMark[] = "Exif\0"; // plus the null that ends the literal
constexpr size_t kExifMarkSize = sizeof kExifMark;

std::vector<uint8_t> BytesOf(VipsBlob* blob)
{
    size_t size = 0;
    const auto* bytes = static_cast<const uint8_t*>(vips_blob_get(blob, &size));
    std::vector<uint8_t> copy(bytes, bytes + size);
    vips_area_unref(VIPS_AREA(blob));
    return copy;
}

// Returns whether there are any.
bool CopyExifFields(const VImage& from, VImage& to)
{
    bool any = false;
    gchar** names = vips_image_get_fields(from.get_image());
    for (gchar** name = names; *name != nullptr; ++name)
        if (std::strncmp(*name, "exif-", 5) == 0) {
            any = true;
            GValue value = G_VALUE_INIT;
            if (vips_image_get(from.get_image(), *name, &value) == 0) {
                vips_image_set(to.get_image(), *name, &value);
                g_value_unset(&value);
            }
        }
    g_strfreev(names);
    return any;
}

} // namespace

ExifBlock ExifOfTiff(const TiffReader& file)
{
    auto tree = ReadExifTree(file);
    if (!tree || (tree->Fields.empty() && tree->Below.empty()))
        return {};
    Shrink(*tree);
    constexpr size_t kHeader = 8;
    Appendix appendix(kHeader);
    const uint64_t first = appendix.Directory(appendix.Entries(*tree), 0);
    ExifBlock block;
    AddNumber(block, 0x002A4949, 4); // "II*" and a null
    AddNumber(block, first, 4);
    block.insert(block.end(), appendix.Bytes.begin(), appendix.Bytes.end());
    return block;
}

void AddToTiff(const TiffExtras& extras, const std::string& path)
{
    if (extras.Exif.empty() && extras.Iptc.empty())
        return;
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary | std::ios::ate);
    const auto end = file.tellg();
    const auto read = [&file](uint64_t offset, size_t size, uint8_t* to) {
        file.clear();
        file.seekg(static_cast<std::streamoff>(offset));
        return static_cast<bool>(
            file.read(reinterpret_cast<char*>(to), static_cast<std::streamsize>(size)));
    };
    std::optional<Addition> addition;
    if (file && end > 0)
        addition = AdditionFor(extras, read, static_cast<uint64_t>(end));
    if (!addition)
        throw PhotoError(PhotoError::Kind::NotWritable, "its metadata cannot be written");
    file.clear();
    file.seekp(0, std::ios::end);
    file.write(reinterpret_cast<const char*>(addition->Bytes.data()),
               static_cast<std::streamsize>(addition->Bytes.size()));
    file.seekp(4);
    file.write(reinterpret_cast<const char*>(addition->First.data()), 4);
    file.close();
    if (!file)
        throw PhotoError(PhotoError::Kind::NotWritable, "its metadata cannot be written");
}

void AddToTiff(const TiffExtras& extras, std::vector<uint8_t>& file)
{
    if (extras.Exif.empty() && extras.Iptc.empty())
        return;
    const auto read = [&file](uint64_t offset, size_t size, uint8_t* to) {
        if (offset > file.size() || file.size() - offset < size)
            return false;
        std::memcpy(to, file.data() + offset, size);
        return true;
    };
    const auto addition = AdditionFor(extras, read, file.size());
    if (!addition)
        throw PhotoError(PhotoError::Kind::NotWritable, "its metadata cannot be written");
    file.insert(file.end(), addition->Bytes.begin(), addition->Bytes.end());
    std::copy(addition->First.begin(), addition->First.end(), file.begin() + 4);
}

// libvips parses EXIF only while it reads a file that can hold it, so a JPEG of one pixel carries
// it in, and out again in ExifOf.
void SetExif(VImage& image, const ExifBlock& exif)
{
    if (exif.empty() || exif.size() > kLargestExif + 1000)
        return;
    std::vector<uint8_t> carrier =
        BytesOf(VImage::black(1, 1).jpegsave_buffer(VImage::option()->set("strip", true)));
    const size_t length = 2 + kExifMarkSize + exif.size();
    std::vector<uint8_t> segment;
    AddNumber(segment, 0xE1FF, 2);
    AddNumber(segment, length >> 8, 1);
    AddNumber(segment, length, 1);
    segment.insert(segment.end(), kExifMark, kExifMark + kExifMarkSize);
    segment.insert(segment.end(), exif.begin(), exif.end());
    carrier.insert(carrier.begin() + 2, segment.begin(), segment.end());
    try {
        CopyExifFields(VImage::new_from_buffer(carrier.data(), carrier.size(), ""), image);
    } catch (const vips::VError&) { // damaged EXIF is no reason to refuse the photograph
        vips_error_clear();
    }
}

ExifBlock ExifOf(const VImage& image)
{
    VImage carrier = VImage::black(1, 1).copy();
    if (!CopyExifFields(image, carrier))
        return {};
    const std::vector<uint8_t> bytes = BytesOf(carrier.jpegsave_buffer());
    size_t at = 2;
    while (at + 4 + kExifMarkSize <= bytes.size() && bytes[at] == 0xFF && bytes[at + 1] != 0xDA) {
        const size_t length = static_cast<size_t>(bytes[at + 2]) * 256 + bytes[at + 3];
        if (bytes[at + 1] == 0xE1 && std::memcmp(&bytes[at + 4], kExifMark, kExifMarkSize) == 0 &&
            at + 2 + length <= bytes.size())
            return {bytes.begin() + static_cast<ptrdiff_t>(at + 4 + kExifMarkSize),
                    bytes.begin() + static_cast<ptrdiff_t>(at + 2 + length)};
        at += 2 + length;
    }
    return {};
}

TiffExtras TiffExtrasOf(const VImage& image)
{
    TiffExtras extras;
    extras.Exif = ExifOf(image);
    if (image.get_typeof(VIPS_META_IPTC_NAME) != 0) {
        size_t size = 0;
        const auto* bytes = static_cast<const char*>(image.get_blob(VIPS_META_IPTC_NAME, &size));
        extras.Iptc.assign(bytes, size);
    }
    return extras;
}

} // namespace vistaTrim::photo
