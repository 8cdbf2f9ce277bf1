// Photographs of every kind of pixels, in every format that can hold them, are cut, scaled and
// written in every format. The tests check what must survive, in the pixels that a viewer shows.
#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "photo/sample_pictures.h"
#include "vistaTrimPhoto/crop_writer.h"
#include "vistaTrimPhoto/image_encoder.h"
#include "vistaTrimPhoto/photograph.h"
#include "vistaTrimPhoto/picture_runtime.h"

namespace vistaTrim::photo {
namespace {

using vips::VImage;

constexpr Colour kBackground{60, 120, 180};

struct Kind {
    const char* Name;
    bool IsGrey, HasAlpha, IsDeep, IsWide, IsInk; // wide: another profile than sRGB
};

constexpr Kind kKinds[] = {{"colour", false, false, false, false, false},
                           {"colour, alpha", false, true, false, false, false},
                           {"deep colour", false, false, true, false, false},
                           {"deep colour, alpha", false, true, true, false, false},
                           {"grey", true, false, false, false, false},
                           {"grey, alpha", true, true, false, false, false},
                           {"deep grey", true, false, true, false, false},
                           {"deep grey, alpha", true, true, true, false, false},
                           {"wide colour", false, false, false, true, false},
                           {"ink", false, false, false, false, true}};

// If the kind has alpha, the right half of the picture is transparent.
VImage Sample(const Kind& kind, int width, int height)
{
    VImage image = Quarters(width, height);
    if (kind.IsGrey)
        image = image.colourspace(VIPS_INTERPRETATION_B_W).extract_band(0);
    if (kind.IsWide)
        image = image.icc_transform("p3", VImage::option()->set("input_profile", "srgb"));
    if (kind.IsInk)
        return image.icc_transform("cmyk", VImage::option()->set("input_profile", "srgb"));
    if (kind.HasAlpha)
        image = image.bandjoin(
            (VImage::xyz(width, height).extract_band(0) < width / 2).cast(VIPS_FORMAT_UCHAR));
    const VipsInterpretation interpretation =
        kind.IsGrey ? (kind.IsDeep ? VIPS_INTERPRETATION_GREY16 : VIPS_INTERPRETATION_B_W)
                    : (kind.IsDeep ? VIPS_INTERPRETATION_RGB16 : VIPS_INTERPRETATION_sRGB);
    if (kind.IsDeep)
        image = (image * 257).cast(VIPS_FORMAT_USHORT);
    return image.copy(VImage::option()->set("interpretation", interpretation));
}

bool Holds(ImageFormat format, const Kind& kind)
{
    switch (format) {
    case ImageFormat::Tiff: return true;
    case ImageFormat::Png: return !kind.IsInk;
    case ImageFormat::Webp: return !kind.IsInk && !kind.IsDeep && !kind.IsGrey;
    case ImageFormat::Jpeg: return !kind.IsDeep && !kind.HasAlpha;
    default: return false;
    }
}

// The image as a viewer shows it on the background: 8-bit sRGB.
VImage OnScreen(VImage image, const Colour& background)
{
    const bool isInk = image.interpretation() == VIPS_INTERPRETATION_CMYK;
    if (isInk || image.get_typeof(VIPS_META_ICC_NAME) != 0)
        image = image.icc_transform(
            "srgb",
            VImage::option()->set("embedded", true)->set("input_profile", isInk ? "cmyk" : "srgb"));
    image = image.colourspace(VIPS_INTERPRETATION_sRGB);
    if (image.has_alpha())
        image = image.flatten(VImage::option()->set(
            "background", std::vector<double>(background.begin(), background.end())));
    return image.cast(VIPS_FORMAT_UCHAR);
}

VImage Decoded(const std::vector<uint8_t>& bytes)
{
    return VImage::new_from_buffer(bytes.data(), bytes.size(), "").copy_memory();
}

PixelImage PixelsOf(const VImage& image)
{
    size_t size = 0;
    auto* bytes = static_cast<uint8_t*>(image.write_to_memory(&size));
    PixelImage pixels{{image.width(), image.height()}, image.bands(), {bytes, bytes + size}};
    g_free(bytes);
    return pixels;
}

PixelImage Shown(const VImage& image, const Colour& background = kBackground)
{
    return PixelsOf(OnScreen(image, background));
}

// The means of each channel in the middle of each quarter.
std::vector<double> QuarterMeansOf(const PixelImage& image)
{
    const int32_t width = image.Size.Width;
    const int32_t height = image.Size.Height;
    std::vector<double> means;
    for (const int32_t top : {height / 8, height / 2 + height / 8})
        for (const int32_t left : {width / 8, width / 2 + width / 8})
            for (int32_t channel = 0; channel < 3; ++channel) {
                double sum = 0;
                for (int32_t y = top; y < top + height / 4; ++y)
                    for (int32_t x = left; x < left + width / 4; ++x)
                        sum += image.Bytes.at(static_cast<size_t>(3 * (y * width + x) + channel));
                means.push_back(sum / (width / 4) / (height / 4));
            }
    return means;
}

void ExpectSameQuarters(const PixelImage& image, const PixelImage& expected, double tolerance)
{
    ASSERT_EQ(image.Channels, 3);
    const std::vector<double> means = QuarterMeansOf(image);
    const std::vector<double> expectedMeans = QuarterMeansOf(expected);
    for (size_t i = 0; i < means.size(); ++i)
        EXPECT_NEAR(means[i], expectedMeans[i], tolerance)
            << "quarter " << i / 3 << ", channel " << i % 3;
}

// Alpha and depth are kept where the format has them; otherwise transparent pixels show the
// background.
void ExpectWritten(const VImage& crop, const Kind& kind, ImageFormat format)
{
    const bool hasAlpha = kind.HasAlpha && format != ImageFormat::Jpeg;
    const bool isLossy = format == ImageFormat::Jpeg || format == ImageFormat::Webp;
    const bool isInk = kind.IsInk && (format == ImageFormat::Jpeg || format == ImageFormat::Tiff);
    const int colours = isInk ? 4 : kind.IsGrey && format != ImageFormat::Webp ? 1 : 3;
    EXPECT_EQ(crop.bands(), colours + (hasAlpha ? 1 : 0));
    EXPECT_EQ(crop.format(), kind.IsDeep && !isLossy ? VIPS_FORMAT_USHORT : VIPS_FORMAT_UCHAR);
    EXPECT_EQ(crop.interpretation() == VIPS_INTERPRETATION_CMYK, isInk);
    EXPECT_EQ(vips_image_get_orientation(crop.get_image()), 1);
    if (kind.IsWide) {
        EXPECT_NE(crop.get_typeof(VIPS_META_ICC_NAME), 0U);
    }
}

TEST(CropCombinations, EveryKindLooksTheSameInEveryFormat)
{
    SetThreadsPerPicture(1); // starting threads takes longer than such small pictures
    const TempFolder folder;
    const int width = 96;
    const int height = 64;
    for (const Kind& kind : kKinds)
        for (const ImageFormat from :
             {ImageFormat::Png, ImageFormat::Tiff, ImageFormat::Webp, ImageFormat::Jpeg}) {
            // Converting between profiles takes long, so such kinds are read from one format.
            const ImageFormat usual = kind.IsInk ? ImageFormat::Tiff : ImageFormat::Png;
            if (!Holds(from, kind) || ((kind.IsWide || kind.IsInk) && from != usual))
                continue;
            const VImage sample = Sample(kind, width, height);
            const PixelImage expected = Shown(sample);
            // In levels of 255, for lossy formats; measured: up to 5.5 where profiles are converted
            // too.
            const double tolerance = kind.IsWide || kind.IsInk ? 8 : 4;
            // Some are stored on their side. libvips writes no orientation into PNG files.
            const bool isTurned = kind.IsDeep == kind.HasAlpha && from != ImageFormat::Png;
            const int orientation = isTurned ? 6 : 1;
            const std::string path = folder.Path("a." + EndingOf(from));
            StoredWithOrientation(sample, orientation).write_to_file(path.c_str());
            const Photograph photograph = Photograph::FromFile(path, {kBackground});
            ASSERT_EQ(photograph.Size(), (PixelSize{width, height}));
            SCOPED_TRACE(std::string(kind.Name) + " in " + EndingOf(from));

            std::vector<CropOutput> crops;
            for (const ImageFormat to :
                 {ImageFormat::Png, ImageFormat::Tiff, ImageFormat::Webp, ImageFormat::Jpeg})
                for (const auto& size :
                     {std::optional<PixelSize>(), std::optional(PixelSize{120, 81})}) {
                    CropOutput crop;
                    crop.Rect = {0, 0, width, height};
                    crop.Format = to;
                    crop.Size = size;
                    crop.Quality = 95;
                    crop.Strip = size.has_value(); // the profile stays
                    crops.push_back(crop);
                }
            const auto encoded = EncodeCrops(photograph, crops);
            const std::vector<PixelImage> read = ReadCrops(photograph, crops);
            for (size_t i = 0; i < crops.size(); ++i) {
                SCOPED_TRACE(testing::Message() << "to " << EndingOf(crops[i].Format) << ", " << i);
                const PixelSize size = crops[i].Size.value_or(PixelSize{width, height});
                const VImage crop = Decoded(encoded[i]);
                EXPECT_EQ((PixelSize{crop.width(), crop.height()}), size);
                ExpectWritten(crop, kind, crops[i].Format);
                // A grey JPEG shows only the brightness of the background.
                const double grey =
                    0.299 * kBackground[0] + 0.587 * kBackground[1] + 0.114 * kBackground[2];
                const bool isGreyed =
                    kind.IsGrey && kind.HasAlpha && crops[i].Format == ImageFormat::Jpeg;
                ExpectSameQuarters(Shown(crop),
                                   isGreyed ? Shown(sample, {grey, grey, grey}) : expected,
                                   tolerance);
                EXPECT_EQ(read[i].Size, size);
                ExpectSameQuarters(read[i], expected, tolerance);
            }
            // The engine sees the same picture.
            ExpectSameQuarters(photograph.ReadWorkingPicture().Pixels, expected, tolerance);
        }
}

// Metadata is dropped whatever the format and size; the profile stays.
TEST(CropCombinations, StripLeavesTheProfileOnly)
{
    const TempFolder folder;
    VImage image = Sample(kKinds[8], 96, 64).copy();
    image.set("exif-ifd0-Artist", "somebody (somebody, ASCII, 9 components, 9 bytes)");
    const std::string xmp =
        "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"><rdf:RDF "
        "xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\"/></x:xmpmeta>";
    vips_image_set_blob_copy(image.get_image(), "xmp-data", xmp.data(), xmp.size());
    image.write_to_file(folder.Path("a.jpg").c_str());
    const Photograph photograph = Photograph::FromFile(folder.Path("a.jpg"));
    for (const ImageFormat format : {ImageFormat::Jpeg, ImageFormat::Png, ImageFormat::Webp,
                                     ImageFormat::Tiff, ImageFormat::Avif})
        for (const auto& size : {std::optional<PixelSize>(), std::optional(PixelSize{24, 16})})
            for (const bool strip : {false, true}) {
                SCOPED_TRACE(EndingOf(format) + (size ? ", scaled" : "") +
                             (strip ? ", strip" : ""));
                CropOutput crop;
                crop.Rect = {10, 10, 48, 32};
                crop.Format = format;
                crop.Size = size;
                crop.Strip = strip;
                const VImage written = Decoded(EncodeCrops(photograph, {crop}).at(0));
                EXPECT_NE(written.get_typeof(VIPS_META_ICC_NAME), 0U);
                EXPECT_EQ(written.get_typeof("xmp-data") != 0, !strip);
                // libvips reads no EXIF from TIFF files.
                if (format != ImageFormat::Tiff) {
                    EXPECT_EQ(written.get_typeof("exif-ifd0-Artist") != 0, !strip);
                }
            }
}

// Transparent pixels have colours too; scaling must not mix these into their neighbours.
TEST(CropCombinations, TransparentPixelsDoNotBleedWhenScaled)
{
    SetThreadsPerPicture(1); // starting threads takes longer than such small pictures
    const TempFolder folder;
    for (const bool isDeep : {false, true})
        for (const char* name : {"a.png", "a.tif"})
            for (const ImageFormat format :
                 {ImageFormat::Png, ImageFormat::Tiff, ImageFormat::Webp}) {
                SCOPED_TRACE(testing::Message() << name << " " << isDeep << EndingOf(format));
                const VImage left = VImage::xyz(90, 60).extract_band(0) < 46;
                VImage image = left.ifthenelse(
                    VImage::black(90, 60).new_from_image({200.0, 40.0, 40.0, 255.0}),
                    VImage::black(90, 60).new_from_image({0.0, 255.0, 0.0, 0.0}));
                image =
                    isDeep ? (image * 257).cast(VIPS_FORMAT_USHORT) : image.cast(VIPS_FORMAT_UCHAR);
                image
                    .copy(VImage::option()->set("interpretation", isDeep
                                                                      ? VIPS_INTERPRETATION_RGB16
                                                                      : VIPS_INTERPRETATION_sRGB))
                    .write_to_file(folder.Path(name).c_str());
                CropOutput crop;
                crop.Rect = {0, 0, 90, 60};
                crop.Format = format;
                crop.Quality = 100;
                for (const PixelSize size : {PixelSize{31, 21}, {200, 133}}) {
                    crop.Size = size;
                    const VImage scaled =
                        Decoded(EncodeCrops(Photograph::FromFile(folder.Path(name)), {crop}).at(0));
                    ASSERT_EQ(scaled.bands(), 4);
                    const double white = scaled.format() == VIPS_FORMAT_USHORT ? 65535 : 255;
                    const auto column = [&](int x) { return scaled.getpoint(x, size.Height / 2); };
                    int partly = 0;
                    for (int x = 0; x < size.Width; ++x) {
                        const std::vector<double> pixel = column(x);
                        if (pixel[3] < 0.2 * white)
                            continue;
                        partly += pixel[3] < 0.9 * white ? 1 : 0;
                        // WebP stores colours of blocks of four pixels.
                        const double tolerance = format == ImageFormat::Webp ? 0.2 : 0.03;
                        EXPECT_NEAR(pixel[0] / white, 200 / 255.0, tolerance) << x;
                        EXPECT_NEAR(pixel[1] / white, 40 / 255.0, tolerance) << x;
                    }
                    EXPECT_GT(partly, 0);
                }
            }
}

// Lower quality makes a smaller file in every format that has a quality, and changes nothing in the
// others.
TEST(CropCombinations, QualityCountsWhereTheFormatHasOne)
{
    SetThreadsPerPicture(1); // starting threads takes longer than such small pictures
    const TempFolder folder;
    const VImage scene = Scene(72, 48, 0.4, 0.5);
    scene.write_to_file(folder.Path("a.png").c_str());
    scene.write_to_file(folder.Path("a.jpg").c_str(), VImage::option()->set("Q", 30));
    for (const char* name : {"a.png", "a.jpg"})
        for (const ImageFormat format : {ImageFormat::Jpeg, ImageFormat::Webp, ImageFormat::Avif,
                                         ImageFormat::Heic, ImageFormat::Png, ImageFormat::Tiff}) {
            SCOPED_TRACE(std::string(name) + " to " + EndingOf(format));
            const Photograph photograph = Photograph::FromFile(folder.Path(name));
            const auto bytes = [&](std::optional<int> quality) {
                CropOutput crop;
                crop.Rect = {0, 0, 72, 48};
                crop.Format = format;
                crop.Quality = quality;
                return EncodeCrops(photograph, {crop}).at(0);
            };
            if (format == ImageFormat::Png || format == ImageFormat::Tiff) {
                EXPECT_EQ(bytes(10), bytes(100));
                continue;
            }
            EXPECT_LT(bytes(10).size(), bytes(50).size());
            EXPECT_LT(bytes(50).size(), bytes(98).size());
            // Only a JPEG crop takes over the quality of a JPEG photograph.
            const bool takesOver = format == ImageFormat::Jpeg && std::string(name) == "a.jpg";
            EXPECT_EQ(bytes(std::nullopt), bytes(takesOver ? 30 : kDefaultQuality));
        }
}

TEST(CropCombinations, CropsOfHeifAreWrittenInItsOwnFormat)
{
    const TempFolder folder;
    const std::pair<VipsForeignHeifCompression, ImageFormat> cases[] = {
        {VIPS_FOREIGN_HEIF_COMPRESSION_AV1, ImageFormat::Avif},
        {VIPS_FOREIGN_HEIF_COMPRESSION_HEVC, ImageFormat::Heic}};
    for (const auto& [compression, format] : cases)
        for (const char* name : {"a.heic", "without ending"}) {
            const std::string path = folder.Path(name);
            Quarters(64, 48).heifsave(path.c_str(),
                                      VImage::option()->set("compression", compression));
            EXPECT_EQ(Photograph::FromFile(path).NativeFormat(), format) << name;
        }
}

// Grey light from 0 to 1 with alpha: half the light of white is level 188 of 255.
TEST(CropCombinations, FloatingPointGreyKeepsItsTransparency)
{
    const TempFolder folder;
    const VImage light = VImage::black(64, 48) + 0.5;
    const VImage alpha = VImage::xyz(64, 48).extract_band(0) < 32;
    light.bandjoin(alpha / 255)
        .cast(VIPS_FORMAT_FLOAT)
        .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_B_W))
        .write_to_file(folder.Path("a.tif").c_str());
    const std::string bytes = ReadText(folder.Path("a.tif"));
    const Photograph photograph = Photograph::FromBytes(bytes.data(), bytes.size(), {kBackground});
    const std::vector<double> expected = {188, 188, 188, 60, 120, 180, 188, 188, 188, 60, 120, 180};
    const auto expectShown = [&expected](const PixelImage& image) {
        const std::vector<double> means = QuarterMeansOf(image);
        for (size_t i = 0; i < means.size(); ++i)
            EXPECT_NEAR(means[i], expected[i], 1) << i;
    };
    expectShown(photograph.ReadWorkingPicture().Pixels);
    CropOutput crop;
    crop.Rect = {0, 0, 64, 48};
    crop.Format = ImageFormat::Png;
    expectShown(ReadCrops(photograph, {crop}).at(0));
    const VImage written = Decoded(EncodeCrops(photograph, {crop}).at(0));
    EXPECT_EQ(written.bands(), 2);
    expectShown(Shown(written));
}

TEST(CropCombinations, QualityAppliesToTransparencyToo)
{
    PixelImage image{{80, 60}, 4, {}};
    unsigned state = 1;
    for (int i = 0; i < 80 * 60; ++i) {
        state = state * 1664525U + 1013904223U;
        image.Bytes.insert(image.Bytes.end(), {90, 90, 90, static_cast<uint8_t>(state >> 24)});
    }
    Encoding encoding;
    encoding.Format = ImageFormat::Webp;
    encoding.Quality = 20;
    const size_t coarse = EncodeImage(image, encoding).size();
    encoding.Quality = 100;
    EXPECT_LT(coarse * 2, EncodeImage(image, encoding).size());
}

} // namespace
} // namespace vistaTrim::photo
