#include "vistaTrimPhoto/readable_formats.h"

#include <algorithm>
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "photo/sample_pictures.h"
#include "picture/path_ending.h"
#include "picture/plain_reason.h"
#include "vistaTrimPhoto/photo_error.h"
#include "vistaTrimPhoto/photograph.h"

namespace vistaTrim::photo {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Not;
using vips::VImage;

std::vector<std::string> EndingsOf(const std::string& name)
{
    for (const ReadableFormat& format : ReadableFormats())
        if (format.Name == name)
            return format.Endings;
    return {};
}

std::string ReasonOf(const std::string& path)
{
    try {
        Photograph::FromFile(path).ReadWorkingPicture();
    } catch (const PhotoError& error) {
        return error.what();
    }
    return "";
}

std::string LittleEndian(uint32_t number, size_t bytes)
{
    std::string text;
    for (size_t i = 0; i < bytes; ++i)
        text.push_back(static_cast<char>(number >> (8 * i) & 0xFF));
    return text;
}

struct Entry {
    uint32_t Tag, Type, Count, Value;
};

std::string DirectoryText(const std::vector<Entry>& entries)
{
    std::string text = LittleEndian(static_cast<uint32_t>(entries.size()), 2);
    for (const Entry& entry : entries)
        text += LittleEndian(entry.Tag, 2) + LittleEndian(entry.Type, 2) +
                LittleEndian(entry.Count, 4) + LittleEndian(entry.Value, 4);
    return text + LittleEndian(0, 4);
}

// A TIFF of 8 x 8 grey pixels with the fields `more`, followed by `behind`.
std::string TinyTiff(const std::vector<Entry>& more, const std::string& behind = "")
{
    std::vector<Entry> entries = {{256, 3, 1, 8}, {257, 3, 1, 8}, {258, 3, 1, 8},
                                  {259, 3, 1, 1}, {262, 3, 1, 1}, {273, 4, 1, 8},
                                  {277, 3, 1, 1}, {278, 3, 1, 8}, {279, 4, 1, 64}};
    entries.insert(entries.end(), more.begin(), more.end());
    return std::string("II*\0", 4) + LittleEndian(72, 4) + std::string(64, 'x') +
           DirectoryText(entries) + behind;
}

TEST(ReadableFormats, AreThoseOfPhotographs)
{
    EXPECT_THAT(EndingsOf("JPEG"), Contains("jpg"));
    EXPECT_THAT(EndingsOf("JPEG"), Contains("jfif"));
    EXPECT_THAT(EndingsOf("PNG"), Contains("png"));
    EXPECT_THAT(EndingsOf("TIFF"), Contains("tif"));
    std::vector<std::string> all;
    for (const ReadableFormat& format : ReadableFormats()) {
        EXPECT_FALSE(format.Endings.empty()) << format.Name;
        all.insert(all.end(), format.Endings.begin(), format.Endings.end());
    }
    // Drawings, documents, tables and raw memory are not photographs.
    for (const char* other : {"svg", "pdf", "csv", "mat", "v", "raw", "fits"})
        EXPECT_THAT(all, Not(Contains(other)));
}

int blockedCalls = 0;

gboolean CountBlockedCall(VipsSource*)
{
    ++blockedCalls;
    return FALSE;
}

void* WatchIfBlocked(void* type, void*, void*)
{
    VipsForeignLoadClass* loader = VIPS_FOREIGN_LOAD_CLASS(type);
    if ((VIPS_OPERATION_CLASS(type)->flags & VIPS_OPERATION_BLOCKED) != 0 &&
        loader->is_a_source != nullptr)
        loader->is_a_source = CountBlockedCall;
    return nullptr;
}

// Some blocked loaders decompress a file to look inside, to whatever size its header claims.
// In a process of its own, because the hook is never removed.
TEST(ReadableFormatsDeathTest, BlockedLoadersNeverSeeAnUnsupportedFile)
{
    const TempFolder folder;
    WriteText(folder.Path("a.zip"), std::string("PK\3\4") + std::string(100, '\xf0'));
    WriteText(folder.Path("a.gz"), std::string("\x1f\x8b\x08") + std::string(100, '\xf0'));
    const auto look = [&folder] {
        ReadableFormats(); // loads the modules, whose loaders are blocked too
        vips_foreign_map("VipsForeignLoad", WatchIfBlocked, nullptr, nullptr);
        for (const char* name : {"a.zip", "a.gz"})
            if (KindOfFile(folder.Path(name)) != FileKind::Other ||
                ReasonOf(folder.Path(name)).empty())
                std::exit(1);
        const int byUs = blockedCalls;
        const auto source = vips::VSource::new_from_file(folder.Path("a.gz").c_str());
        vips_foreign_find_load_source(source.get_source());
        std::fprintf(stderr, "calls: %d, by libvips: %s", byUs, blockedCalls > 0 ? "yes" : "no");
        std::exit(0);
    };
    EXPECT_EXIT(look(), testing::ExitedWithCode(0), "calls: 0, by libvips: yes");
}

TEST(ReadableFormats, CanBeReadWhateverTheName)
{
    const TempFolder folder;
    int written = 0;
    for (const ReadableFormat& format : ReadableFormats()) {
        SCOPED_TRACE(format.Name);
        const std::string ending = format.Endings[0];
        try {
            Quarters(300, 200).write_to_file(folder.Path("a." + ending).c_str());
        } catch (const vips::VError&) {
            continue; // libvips cannot write this format
        }
        ++written;
        EXPECT_EQ(ReasonOf(folder.Path("a." + ending)), "");
        EXPECT_EQ(KindOfFile(folder.Path("a." + ending)), FileKind::Photograph);
        for (const char* name : {"plain", "IMG_2026.11.22", "Mr. Smith and dog"}) {
            WriteText(folder.Path(name), ReadText(folder.Path("a." + ending)));
            EXPECT_EQ(KindOfFile(folder.Path(name)), FileKind::Photograph) << name;
        }
    }
    EXPECT_GE(written, 5);
}

TEST(KindOfFile, FollowsTheEndingOrTheContent)
{
    const TempFolder folder;
    Quarters(30, 20).write_to_file(folder.Path("a.jpg").c_str());
    const std::string jpeg = ReadText(folder.Path("a.jpg"));
    const auto kindOf = [&folder](const std::string& name, const std::string& content) {
        WriteText(folder.Path(name), content);
        return KindOfFile(folder.Path(name));
    };
    EXPECT_EQ(kindOf("A.JPEG", "broken"), FileKind::Photograph); // reading it reports the error
    EXPECT_EQ(kindOf("a.jfif", jpeg), FileKind::Photograph);
    EXPECT_EQ(kindOf("a.NEF", "broken"), FileKind::Raw);
    // Its content decides, as for a file that is named explicitly.
    EXPECT_EQ(kindOf("plain.nef", TinyTiff({})), FileKind::Photograph);
    EXPECT_EQ(kindOf("sensor.nef", TinyTiff({{50706, 1, 4, 1}})), FileKind::Raw);
    EXPECT_EQ(kindOf("a.jpg~", jpeg), FileKind::Other); // a copy that an editor made
    EXPECT_EQ(kindOf("a.jpg_original", jpeg), FileKind::Other);
    EXPECT_EQ(kindOf("a.txt", jpeg), FileKind::Other);
    EXPECT_EQ(kindOf("README", "Dear diary"), FileKind::Other);
    EXPECT_EQ(kindOf("numbers", "2 2\n1 2\n3 4\n"), FileKind::Other);
    EXPECT_EQ(kindOf("drawing", "<svg width=\"9\" height=\"9\"/>"), FileKind::Other);
    EXPECT_EQ(kindOf("sensor", TinyTiff({{50706, 1, 4, 1}})), FileKind::Raw);
    EXPECT_EQ(kindOf("empty", ""), FileKind::Other);
    EXPECT_EQ(KindOfFile(folder.Path("missing")), FileKind::Other);
}

// The first picture in a raw file is a preview of a few hundred pixels; libvips would read that.
TEST(Photograph, RawFileIsRefused)
{
    const TempFolder folder;
    const auto reason = [&folder](const std::string& content) {
        WriteText(folder.Path("photo.tif"), content);
        return ReasonOf(folder.Path("photo.tif"));
    };
    EXPECT_EQ(reason(TinyTiff({})), ""); // an ordinary TIFF is read
    EXPECT_EQ(reason(TinyTiff({{50827, 1, 4, 1}})), "");
    const std::string raw =
        "a raw photograph, which has to be developed to JPEG or TIFF before it can be read";
    EXPECT_EQ(reason(TinyTiff({{50706, 1, 4, 1}})), raw);
    const std::string frame = TinyTiff({{330, 4, 1, 0}});
    const auto size = static_cast<uint32_t>(frame.size());
    EXPECT_EQ(reason(TinyTiff({{330, 4, 1, size}}, DirectoryText({{262, 3, 1, 32803}}))), raw);
    EXPECT_EQ(reason(TinyTiff({{330, 4, 1, size}}, DirectoryText({{262, 3, 1, 2}}))), "");
    WriteText(folder.Path("a.x3f"), "unknown bytes");
    EXPECT_EQ(ReasonOf(folder.Path("a.x3f")), raw);
    WriteText(folder.Path("a.cr3"), std::string("\0\0\0\x18", 4) + "ftypcrx ");
    EXPECT_EQ(ReasonOf(folder.Path("a.cr3")), raw);
}

TEST(Photograph, UnsupportedFormatIsNamed)
{
    const TempFolder folder;
    const auto reason = [&folder](const std::string& content) {
        WriteText(folder.Path("photo.jpg"), content);
        return ReasonOf(folder.Path("photo.jpg"));
    };
    EXPECT_EQ(reason("BM and the rest"),
              "a BMP picture, which is not read here; convert it to JPEG, PNG or TIFF");
    EXPECT_EQ(reason("<?xml version=\"1.0\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\"/>"),
              "an SVG drawing, not a photograph");
    EXPECT_EQ(reason("%PDF-1.7"), "a PDF document, not a photograph");
    EXPECT_EQ(reason(std::string("\0\0\0\x18", 4) + "ftypisom"), "a video, not a photograph");
    EXPECT_EQ(reason("1 2 3\n"), "not a picture, or of a format that cannot be read");
}

// Whatever is wrong with a file, users see our messages, never those of libvips.
TEST(Photograph, BrokenFileIsReportedInPlainWords)
{
    const TempFolder folder;
    const std::vector<std::string> sentences = {
        "the file is cut short", "the file is damaged or cut short",
        "not a picture, or of a format that cannot be read", "an unsupported kind of picture",
        "the picture is larger than can be read"};
    int broken = 0;
    for (const ReadableFormat& format : ReadableFormats()) {
        SCOPED_TRACE(format.Name);
        const std::string whole = folder.Path("a." + format.Endings[0]);
        try {
            Scene(300, 200, 0.5, 0.5).write_to_file(whole.c_str());
        } catch (const vips::VError&) {
            continue;
        }
        for (const double share : {0.01, 0.1, 0.5, 0.9}) {
            CutShort(whole, folder.Path("cut"), share);
            const std::string reason = ReasonOf(folder.Path("cut"));
            if (!reason.empty()) {
                EXPECT_THAT(sentences, Contains(reason));
                ++broken;
            }
        }
    }
    EXPECT_GE(broken, 16);
    Scene(300, 200, 0.5, 0.5).write_to_file(folder.Path("b.jpg").c_str());
    CutShort(folder.Path("b.jpg"), folder.Path("cut"), 0.5);
    EXPECT_EQ(ReasonOf(folder.Path("cut")), "the file is cut short");
}

TEST(PlainError, KeepsTheSystemsReasonAndNothingElse)
{
    using Kind = PhotoError::Kind;
    const PhotoError full = PlainError(
        Kind::NotWritable, "wbuffer_write: write failed\nunix error: No space left on device\n");
    EXPECT_STREQ(full.what(), "cannot be written: No space left on device");
    EXPECT_EQ(full.GetKind(), Kind::NotWritable);
    const PhotoError wide =
        PlainError(Kind::NotWritable, "VipsJpeg: Maximum supported image dimension is 65500\n");
    EXPECT_STREQ(wide.what(), "the format does not hold a picture of this size");
    const PhotoError blocked = PlainError(Kind::Damaged, "svgload_source: operation is blocked\n");
    EXPECT_STREQ(blocked.what(), "an unsupported kind of picture");
    EXPECT_EQ(blocked.GetKind(), Kind::Unsupported);
    EXPECT_EQ(PlainError(Kind::Damaged, "vips: out of memory --- size == 9MB\n").GetKind(),
              Kind::OutOfMemory);
    EXPECT_STREQ(PlainError(Kind::Damaged, "VipsJpeg: Premature end of JPEG file\n").what(),
                 "the file is cut short");
    EXPECT_STREQ(PlainError(Kind::Damaged, "pngload: bad CRC\n").what(),
                 "the file is damaged or cut short");
}

TEST(EndingOfPath, IsWhatFollowsTheLastDotOfTheName)
{
    const std::pair<const char*, const char*> cases[] = {
        {"a.JPG", "jpg"}, {"a.b.Png", "png"}, {"/x.y/z.tif", "tif"},    {"/x.y/z", ""},
        {".jpg", ""},     {"/x/.hidden", ""}, {".hidden.webp", "webp"}, {"a.", ""},
        {"a.123", ""},    {"a.jp2", "jp2"},   {"Mr. Smith", ""},        {"", ""}};
    for (const auto& [path, ending] : cases)
        EXPECT_EQ(EndingOfPath(path), ending) << path;
}

} // namespace
} // namespace vistaTrim::photo
