// What crops of every format keep of their photograph's metadata, read back by another library.
#include <cstring>

#include <exiv2/exiv2.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "photo/sample_pictures.h"
#include "picture/iptc.h"
#include "picture/tiff_exif.h"
#include "vistaTrimPhoto/crop_writer.h"

namespace vistaTrim::photo {
namespace {

using testing::HasSubstr;
using testing::Not;
using vips::VImage;

using Metadata = std::unique_ptr<Exiv2::Image>;

Metadata Opened(const std::string& path)
{
    Metadata image(Exiv2::ImageFactory::open(path).release());
    image->readMetadata();
    return image;
}

std::string ExifText(const Metadata& image, const std::string& key)
{
    const auto found = image->exifData().findKey(Exiv2::ExifKey(key));
    return found == image->exifData().end() ? "" : found->toString();
}

std::string IptcText(const Metadata& image)
{
    const auto found = image->iptcData().findKey(Exiv2::IptcKey("Iptc.Application2.Caption"));
    return found == image->iptcData().end() ? "" : found->toString();
}

constexpr const char* kRegions =
    "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"><rdf:RDF "
    "xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\"><rdf:Description rdf:about=\"\" "
    "xmlns:dc=\"http://purl.org/dc/elements/1.1/\" "
    "xmlns:MP=\"http://ns.microsoft.com/photo/1.2/\" "
    "xmlns:MPRI=\"http://ns.microsoft.com/photo/1.2/t/RegionInfo#\" "
    "xmlns:MPReg=\"http://ns.microsoft.com/photo/1.2/t/Region#\">"
    "<dc:source>a darkroom</dc:source><MP:RegionInfo rdf:parseType=\"Resource\"><MPRI:Regions>"
    "<rdf:Bag><rdf:li MPReg:Rectangle=\"0.8, 0.8, 0.1, 0.1\" "
    "MPReg:PersonDisplayName=\"Grace\"/></rdf:Bag></MPRI:Regions></MP:RegionInfo>"
    "</rdf:Description></rdf:RDF></x:xmpmeta>";

// Stored on its side, with every kind of metadata and a thumbnail.
void WritePhotograph(const std::string& path)
{
    StoredWithOrientation(
        Quarters(600, 400).icc_transform("p3", VImage::option()->set("input_profile", "srgb")), 6)
        .copy(VImage::option()->set("xres", 11.811)->set("yres", 11.811)) // 300 dots per inch
        .write_to_file(path.c_str());
    const Metadata image = Opened(path);
    Exiv2::ExifData& exif = image->exifData();
    exif["Exif.Image.Make"] = "Testers";
    exif["Exif.Image.Artist"] = "somebody with a long name";
    exif["Exif.Photo.ExposureTime"] = Exiv2::Rational(1, 250);
    exif["Exif.Photo.LensModel"] = "50 mm";
    exif["Exif.Photo.SubjectArea"] = "10 20 30 40";
    exif["Exif.Photo.SubjectLocation"] = "10 20";
    exif["Exif.Photo.PixelXDimension"] = uint32_t{400};
    exif["Exif.Photo.PixelYDimension"] = uint32_t{600};
    exif["Exif.GPSInfo.GPSLatitudeRef"] = "N";
    exif["Exif.GPSInfo.GPSLatitude"] = "47/1 30/1 0/1";
    image->iptcData()["Iptc.Application2.Caption"] = "a caption";
    image->setXmpPacket(kRegions);
    Exiv2::XmpParser::decode(image->xmpData(), kRegions);
    if (path.find(".jpg") != std::string::npos) {
        const auto* small = reinterpret_cast<const Exiv2::byte*>("small picture of the whole");
        Exiv2::ExifThumb(exif).setJpegThumbnail(small, 26);
    }
    image->writeMetadata();
}

void ExpectKept(const std::string& path)
{
    const Metadata image = Opened(path);
    EXPECT_EQ(ExifText(image, "Exif.Image.Make"), "Testers");
    EXPECT_EQ(ExifText(image, "Exif.Image.Artist"), "somebody with a long name");
    EXPECT_EQ(ExifText(image, "Exif.Photo.ExposureTime"), "1/250");
    EXPECT_EQ(ExifText(image, "Exif.Photo.LensModel"), "50 mm");
    EXPECT_EQ(ExifText(image, "Exif.GPSInfo.GPSLatitude"), "47/1 30/1 0/1");
    EXPECT_EQ(ExifText(image, "Exif.Photo.SubjectArea"), "");
    const std::string width = ExifText(image, "Exif.Photo.PixelXDimension");
    EXPECT_TRUE(width.empty() || width == std::to_string(image->pixelWidth())) << width;
    const std::string height = ExifText(image, "Exif.Photo.PixelYDimension");
    EXPECT_TRUE(height.empty() || height == std::to_string(image->pixelHeight())) << height;
    EXPECT_EQ(ExifText(image, "Exif.Photo.SubjectLocation"), "");
    const std::string orientation = ExifText(image, "Exif.Image.Orientation");
    EXPECT_TRUE(orientation.empty() || orientation == "1") << orientation;
    for (const Exiv2::Exifdatum& datum : image->exifData()) {
        EXPECT_NE(datum.groupName(), "Thumbnail") << datum.key();
        EXPECT_THAT(datum.key(), Not(HasSubstr("SubImage")));
    }
    EXPECT_THAT(image->xmpPacket(), HasSubstr("a darkroom"));
    EXPECT_THAT(image->xmpPacket(), Not(HasSubstr("Grace"))); // she was cropped away
    EXPECT_THAT(ReadText(path), Not(HasSubstr("small picture of the whole")));
    const VImage written = VImage::new_from_file(path.c_str());
    EXPECT_NE(written.get_typeof(VIPS_META_ICC_NAME), 0U);
}

TEST(CropFiles, KeepMetadataFromJpegAndTiffInEveryFormat)
{
    const TempFolder folder;
    for (const char* source : {"a.jpg", "a.tif"}) {
        WritePhotograph(folder.Path(source));
        const Photograph photograph = Photograph::FromFile(folder.Path(source));
        for (const ImageFormat format : {ImageFormat::Jpeg, ImageFormat::Tiff, ImageFormat::Webp}) {
            SCOPED_TRACE(std::string(source) + " to " + EndingOf(format));
            CropOutput crop;
            crop.Rect = {0, 0, 300, 200};
            crop.Format = format;
            const std::string path = folder.Path("out." + EndingOf(format));
            WriteCrops(photograph, {crop}, {path});
            ExpectKept(path);
            const auto bytes = EncodeCrops(photograph, {crop}).at(0);
            EXPECT_EQ(std::string(bytes.begin(), bytes.end()), ReadText(path));
            if (format == ImageFormat::Webp)
                continue; // holds neither
            EXPECT_EQ(IptcText(Opened(path)), "a caption");
            EXPECT_NEAR(VImage::new_from_file(path.c_str()).xres(), 11.811, 0.01);
        }
    }
}

TEST(CropFiles, KeepPixelsAndMetadataOverSeveralTiffGenerations)
{
    const TempFolder folder;
    WritePhotograph(folder.Path("0.tif"));
    CropOutput crop;
    crop.Rect = {0, 0, 299, 200};
    crop.Format = ImageFormat::Tiff;
    for (int round = 0; round < 3; ++round) {
        const std::string from = folder.Path(std::to_string(round) + ".tif");
        const std::string to = folder.Path(std::to_string(round + 1) + ".tif");
        WriteCrops(Photograph::FromFile(from), {crop}, {to});
        ExpectKept(to);
        const Metadata image = Opened(to); // a TIFF crop states its sides here too
        EXPECT_EQ(ExifText(image, "Exif.Photo.PixelXDimension"), "299");
        EXPECT_EQ(ExifText(image, "Exif.Photo.PixelYDimension"), "200");
    }
    const VImage before = VImage::new_from_file(folder.Path("1.tif").c_str());
    const VImage after = VImage::new_from_file(folder.Path("3.tif").c_str());
    EXPECT_EQ((before - after).abs().max(), 0.0);
}

TEST(CropFiles, KeepASingleFieldOfATiff)
{
    const TempFolder folder;
    for (const char* key : {"Exif.Image.Artist", "Exif.Photo.LensModel"}) {
        SCOPED_TRACE(key);
        Quarters(60, 40).write_to_file(folder.Path("a.tif").c_str());
        const Metadata image = Opened(folder.Path("a.tif"));
        image->exifData()[key] = "somebody";
        image->writeMetadata();
        for (const ImageFormat format : {ImageFormat::Jpeg, ImageFormat::Tiff}) {
            CropOutput crop;
            crop.Rect = {0, 0, 30, 20};
            crop.Format = format;
            const std::string path = folder.Path("out." + EndingOf(format));
            WriteCrops(Photograph::FromFile(folder.Path("a.tif")), {crop}, {path});
            EXPECT_EQ(ExifText(Opened(path), key), "somebody");
        }
    }
}

// A small photograph as cameras with big-endian processors write it.
std::string BigEndianTiff()
{
    std::string bytes;
    const auto add = [&bytes](uint32_t number, int size) {
        for (int shift = 8 * (size - 1); shift >= 0; shift -= 8)
            bytes += static_cast<char>(number >> shift);
    };
    constexpr uint32_t kShort = 3;
    constexpr uint32_t kLong = 4;
    constexpr uint32_t kFraction = 5;
    constexpr uint32_t kAscii = 2;
    const auto entry = [&add](uint32_t tag, uint32_t type, uint32_t count, uint32_t value) {
        add(tag, 2);
        add(type, 2);
        add(count, 4);
        if (type == kShort && count == 1)
            value <<= 16; // short values are left-justified
        add(value, 4);
    };
    constexpr uint32_t kEntries = 11;
    constexpr uint32_t kExif = 8 + 2 + 12 * kEntries + 4;
    constexpr uint32_t kData = kExif + 2 + 12 * 3 + 4;
    bytes += "MM";
    add(42, 2);
    add(8, 4);
    add(kEntries, 2);
    entry(256, kShort, 1, 30);        // width
    entry(257, kShort, 1, 20);        // height
    entry(258, kShort, 1, 8);         // bits
    entry(259, kShort, 1, 1);         // not compressed
    entry(262, kShort, 1, 1);         // black is zero
    entry(273, kLong, 1, kData + 20); // pixels
    entry(277, kShort, 1, 1);         // one plane
    entry(278, kShort, 1, 20);        // rows of the strip
    entry(279, kLong, 1, 600);        // its bytes
    entry(315, kAscii, 12, kData);    // artist
    entry(34665, kLong, 1, kExif);
    add(0, 4);
    add(3, 2);
    entry(33434, kFraction, 1, kData + 12); // exposure time
    entry(34855, kShort, 1, 640);           // sensitivity
    entry(37385, kShort, 1, 9);             // flash
    add(0, 4);
    bytes += std::string("somebody else").substr(0, 11) + '\0';
    add(1, 4);
    add(250, 4);
    bytes.append(600, '\x80');
    return bytes;
}

TEST(CropFiles, KeepNumbersAndFractionsOfABigEndianTiff)
{
    const TempFolder folder;
    WriteText(folder.Path("a.tif"), BigEndianTiff());
    for (const ImageFormat format : {ImageFormat::Jpeg, ImageFormat::Tiff}) {
        CropOutput crop;
        crop.Rect = {0, 0, 15, 10};
        crop.Format = format;
        const std::string path = folder.Path("out." + EndingOf(format));
        WriteCrops(Photograph::FromFile(folder.Path("a.tif")), {crop}, {path});
        const Metadata image = Opened(path);
        EXPECT_EQ(ExifText(image, "Exif.Image.Artist"), "somebody el");
        EXPECT_EQ(ExifText(image, "Exif.Photo.ExposureTime"), "1/250");
        EXPECT_EQ(ExifText(image, "Exif.Photo.ISOSpeedRatings"), "640");
        EXPECT_EQ(ExifText(image, "Exif.Photo.Flash"), "9");
    }
}

TEST(CropFiles, DropOnlyTheLargestFieldOfOversizedTiffExif)
{
    const TempFolder folder;
    WritePhotograph(folder.Path("a.tif"));
    const Metadata large = Opened(folder.Path("a.tif"));
    large->exifData()["Exif.Image.ImageDescription"] = std::string(35'000, 'd');
    large->exifData()["Exif.Photo.UserComment"] = "charset=Ascii " + std::string(30'000, 'c');
    large->writeMetadata();
    CropOutput crop;
    crop.Rect = {0, 0, 300, 200};
    WriteCrops(Photograph::FromFile(folder.Path("a.tif")), {crop}, {folder.Path("out.jpg")});
    ExpectKept(folder.Path("out.jpg"));
    const Metadata image = Opened(folder.Path("out.jpg"));
    EXPECT_EQ(ExifText(image, "Exif.Image.ImageDescription"), "");
    EXPECT_THAT(ExifText(image, "Exif.Photo.UserComment"), HasSubstr("cccc"));
}

TEST(CropFiles, LoseTheCommentsOfAPngWhenStripped)
{
    const TempFolder folder;
    VImage picture = Quarters(60, 40);
    picture.set("png-comment-0-Title", "a walk by the sea");
    picture.write_to_file(folder.Path("a.png").c_str());
    CropOutput crop;
    crop.Rect = {0, 0, 30, 20};
    crop.Format = ImageFormat::Png;
    for (const bool strip : {false, true}) {
        crop.Strip = strip;
        WriteCrops(Photograph::FromFile(folder.Path("a.png")), {crop}, {folder.Path("out.png")});
        const VImage written = VImage::new_from_file(folder.Path("out.png").c_str());
        EXPECT_EQ(written.get_typeof("png-comment-0-Title") == 0, strip);
    }
}

TEST(CropFiles, HaveNoMetadataWhenStripped)
{
    const TempFolder folder;
    WritePhotograph(folder.Path("a.tif"));
    CropOutput crop;
    crop.Rect = {0, 0, 300, 200};
    crop.Format = ImageFormat::Tiff;
    crop.Strip = true;
    WriteCrops(Photograph::FromFile(folder.Path("a.tif")), {crop}, {folder.Path("b.tif")});
    const Metadata image = Opened(folder.Path("b.tif"));
    EXPECT_EQ(ExifText(image, "Exif.Image.Make"), "");
    EXPECT_EQ(ExifText(image, "Exif.Photo.LensModel"), "");
    EXPECT_EQ(IptcText(image), "");
}

// Whatever bytes change, nothing is read out of bounds, and no photograph fails because of its
// EXIF.
TEST(TiffExif, DamagedFilesAreHarmless)
{
    const TempFolder folder;
    WritePhotograph(folder.Path("a.tif"));
    const std::string whole = ReadText(folder.Path("a.tif"));
    const std::vector<uint8_t> sound(whole.begin(), whole.end());
    EXPECT_FALSE(ExifOfTiff(TiffReaderOf(sound)).empty());
    unsigned state = 1;
    const auto random = [&state] { return state = state * 1664525U + 1013904223U, state >> 8; };
    for (int round = 0; round < 300; ++round) {
        std::vector<uint8_t> damaged = sound;
        for (int change = 0; change < 40; ++change) // the fields are at both ends
            damaged[random() % 2 != 0 ? random() % 64 : damaged.size() - 1 - random() % 2000] =
                static_cast<uint8_t>(random());
        const ExifBlock exif = ExifOfTiff(TiffReaderOf(damaged));
        EXPECT_LE(exif.size(), 61000U);
        VImage image = VImage::black(1, 1).copy();
        SetExif(image, exif);
    }
}

TEST(Iptc, TakesTheFormThatEachFormatNeeds)
{
    const std::string mark("Photoshop 3.0\0", 14);
    const std::string iptc("8BIM\x04\x04\0\0\0\0\0\x03"
                           "abc\0",
                           16);
    const std::string small("8BIM\x04\x0C\0\0\0\0\0\x02xy", 14);
    EXPECT_EQ(IptcForTiff(mark + small + iptc), "abc");
    EXPECT_EQ(IptcForTiff("abc"), "abc");
    EXPECT_EQ(IptcForTiff(mark + small), "");
    EXPECT_EQ(IptcForJpeg("abc"), mark + iptc);
    EXPECT_EQ(IptcForJpeg(mark + small + iptc), mark + iptc);
    EXPECT_EQ(IptcForJpeg(mark + small), "");
    EXPECT_EQ(WithoutThumbnails(small + iptc), iptc);
    EXPECT_EQ(WithoutThumbnails("8BIM\x04\x04 cut short"), "");
    const std::string old("8BIM\x04\x09\0\0\0\0\0\x02xy", 14); // the older kind of thumbnail
    EXPECT_EQ(WithoutThumbnails(old + iptc + small), iptc);
}

// An 8BIM resource: a kind, a name with its length, padded to even, and data with theirs.
TEST(Iptc, ResourcesEndWhereTheyOrTheListDo)
{
    const std::string empty("8BIM\x04\x21\0\0\0\0\0\0", 12);
    const std::string named("8BIM\x04\x22\x04name\0\0\0\0\x01x\0", 18);
    const std::string thumbnail("8BIM\x04\x0C\0\0\0\0\0\x02xy", 14);
    EXPECT_EQ(WithoutThumbnails(empty), empty);
    EXPECT_EQ(WithoutThumbnails(named + empty), named + empty);
    EXPECT_EQ(WithoutThumbnails(named + thumbnail + empty), named + empty);
    EXPECT_EQ(WithoutThumbnails(empty + named.substr(0, 17)), empty + named.substr(0, 17));
    EXPECT_EQ(WithoutThumbnails(empty + named.substr(0, 16)), empty); // data cut short
    EXPECT_EQ(WithoutThumbnails(empty + named.substr(0, 14)), empty); // their length cut short
    EXPECT_EQ(WithoutThumbnails(empty + "8BIX" + named.substr(4)), empty);
}

} // namespace
} // namespace vistaTrim::photo
