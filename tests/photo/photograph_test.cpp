#include "vistaTrimPhoto/photograph.h"

#include <cmath>

#include <gtest/gtest.h>

#include "photo/sample_pictures.h"
#include "picture/photograph_source.h"
#include "vistaTrimPhoto/crop_writer.h"
#include "vistaTrimPhoto/photo_error.h"

namespace vistaTrim::photo {
namespace {

using vips::VImage;

constexpr Colour kWhite = {255, 255, 255};

VImage AsImage(const WorkingPicture& picture)
{
    const PixelImage& pixels = picture.Pixels;
    return VImage::new_from_memory(const_cast<uint8_t*>(pixels.Bytes.data()), pixels.Bytes.size(),
                                   pixels.Size.Width, pixels.Size.Height, 3, VIPS_FORMAT_UCHAR);
}

WorkingPicture Read(const std::string& path, const Colour& background = kWhite)
{
    return Photograph::FromFile(path, {background}).ReadWorkingPicture();
}

// `tolerance` is in levels of 255. Lossless formats keep plain colours exactly, except for rounding
// through a profile and back; JPEG is allowed its measured loss.
void ExpectQuarters(const WorkingPicture& picture, double tolerance)
{
    ASSERT_EQ(picture.Pixels.Bytes.size(), static_cast<size_t>(picture.Pixels.Size.Width) *
                                               static_cast<size_t>(picture.Pixels.Size.Height) * 3);
    const auto means = QuarterMeans(AsImage(picture));
    for (size_t quarter = 0; quarter < 4; ++quarter)
        for (size_t band = 0; band < 3; ++band)
            EXPECT_NEAR(means[quarter][band], kQuarterColours[quarter][band], tolerance)
                << "quarter " << quarter << ", band " << band;
}

std::string ReasonOf(const std::string& path)
{
    try {
        Read(path);
    } catch (const PhotoError& error) {
        return error.what();
    }
    return "";
}

TEST(Photograph, IsReadFromEveryFormat)
{
    const TempFolder folder;
    const VImage image = Quarters(900, 600);
    for (const char* name : {"a.jpg", "a.png", "a.webp", "a.tif", "a.gif", "a.ppm"}) {
        SCOPED_TRACE(name);
        image.write_to_file(folder.Path(name).c_str());
        const WorkingPicture picture = Read(folder.Path(name));
        EXPECT_EQ(picture.Photo, (PixelSize{900, 600}));
        EXPECT_EQ(picture.Pixels.Size, (PixelSize{640, 427}));
        ExpectQuarters(picture, 2.0);
    }
}

// Debian's libvips can read these two; another build may not, and then reports it.
TEST(Photograph, IsReadFromHeifWhereLibvipsSupportsIt)
{
    const TempFolder folder;
    for (const auto compression :
         {VIPS_FOREIGN_HEIF_COMPRESSION_AV1, VIPS_FOREIGN_HEIF_COMPRESSION_HEVC}) {
        const std::string path = folder.Path("a.heic");
        try {
            Quarters(200, 100).heifsave(path.c_str(),
                                        VImage::option()->set("compression", compression));
        } catch (const vips::VError&) {
            GTEST_SKIP() << "this libvips does not write HEIF";
        }
        ExpectQuarters(Read(path), 4.0);
    }
}

TEST(Photograph, BecomesUprightFromAllEightOrientations)
{
    const TempFolder folder;
    const VImage upright = Quarters(1000, 600);
    for (int orientation = 1; orientation <= 8; ++orientation) {
        for (const char* name : {"o.jpg", "o.tif", "o.webp"}) {
            SCOPED_TRACE(testing::Message() << name << " " << orientation);
            StoredWithOrientation(upright, orientation).write_to_file(folder.Path(name).c_str());
            const Photograph photograph = Photograph::FromFile(folder.Path(name));
            EXPECT_EQ(photograph.Size(), (PixelSize{1000, 600}));
            ExpectQuarters(photograph.ReadWorkingPicture(), 2.0);
            const VImage full = PhotographSource::Of(photograph).ReadFull(true);
            EXPECT_EQ(full.width(), 1000);
            EXPECT_EQ(full.height(), 600);
            EXPECT_EQ(full.get_typeof("orientation"), 0U);
        }
    }
}

TEST(Photograph, SixteenBitsAreReadAsEight)
{
    const TempFolder folder;
    for (const char* name : {"a.png", "a.tif"}) {
        (Quarters(900, 600).cast(VIPS_FORMAT_USHORT) * 257)
            .cast(VIPS_FORMAT_USHORT)
            .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_RGB16))
            .write_to_file(folder.Path(name).c_str());
        ExpectQuarters(Read(folder.Path(name)), 1.0);
    }
}

TEST(Photograph, GreyHasThreeEqualBands)
{
    const TempFolder folder;
    Quarters(900, 600)
        .colourspace(VIPS_INTERPRETATION_B_W)
        .write_to_file(folder.Path("a.jpg").c_str());
    const auto means = QuarterMeans(AsImage(Read(folder.Path("a.jpg"))));
    EXPECT_NE(means[0][0], means[3][0]);
    for (const auto& mean : means) {
        EXPECT_EQ(mean[0], mean[1]);
        EXPECT_EQ(mean[1], mean[2]);
    }
}

// Light stored as 0 to 1 used to be read as black.
TEST(Photograph, FloatingPointLightIsReadFromZeroToOne)
{
    const TempFolder folder;
    const VImage band = Scene(90, 60, 0.4, 0.5).extract_band(1);
    const VImage scene =
        VImage::bandjoin(std::vector<VImage>{band, band, band})
            .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
    const VImage light = scene.colourspace(VIPS_INTERPRETATION_scRGB);
    const auto error = [&](const VImage& image) {
        image.write_to_file(folder.Path("f.tif").c_str());
        const PixelImage pixels = Photograph::FromFile(folder.Path("f.tif")).ReadPreview(90);
        const VImage read =
            VImage::new_from_memory(const_cast<uint8_t*>(pixels.Bytes.data()), pixels.Bytes.size(),
                                    pixels.Size.Width, pixels.Size.Height, 3, VIPS_FORMAT_UCHAR);
        return (read - scene).abs().max();
    };
    // The round trip through linear light may be off by one step.
    EXPECT_LE(error(light), 1);
    const VImage grey = light.extract_band(1).copy(
        VImage::option()->set("interpretation", VIPS_INTERPRETATION_B_W));
    EXPECT_LE(error(grey), 1);
    const VImage turned = StoredWithOrientation(grey, 6);
    EXPECT_LE(error(turned), 1);
    // Greys stored as 0 to 255 are still read as such.
    const VImage steps =
        scene.extract_band(0)
            .cast(VIPS_FORMAT_FLOAT)
            .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_B_W));
    EXPECT_LE(error(steps), 1);

    grey.write_to_file(folder.Path("g.tif").c_str());
    CropOutput crop;
    crop.Rect = {10, 5, 60, 40};
    crop.Format = ImageFormat::Png;
    const std::vector<uint8_t> bytes =
        EncodeCrops(Photograph::FromFile(folder.Path("g.tif")), {crop}).at(0);
    const VImage cut = VImage::new_from_buffer(bytes.data(), bytes.size(), "");
    EXPECT_LE((cut.extract_band(0) - scene.extract_band(0).extract_area(10, 5, 60, 40)).abs().max(),
              1);

    grey.cast(VIPS_FORMAT_DOUBLE).write_to_file(folder.Path("d.tif").c_str());
    EXPECT_EQ(ReasonOf(folder.Path("d.tif")), "an unsupported kind of picture");
    for (const VImage& unknown :
         {VImage(light.linear(255, 0)
                     .cast(VIPS_FORMAT_FLOAT)
                     .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_scRGB))),
          VImage(steps.linear(257, 0).cast(VIPS_FORMAT_FLOAT))}) {
        unknown.write_to_file(folder.Path("u.tif").c_str());
        EXPECT_NE(ReasonOf(folder.Path("u.tif")).find("floating-point values up to "),
                  std::string::npos);
    }
}

TEST(Photograph, GreyWithAlphaShowsTheBackground)
{
    const TempFolder folder;
    // The left half is opaque grey 80, the right half transparent.
    const VImage grey = (VImage::black(800, 400) + 80).cast(VIPS_FORMAT_UCHAR);
    const VImage alpha = (VImage::xyz(800, 400).extract_band(0) < 400).cast(VIPS_FORMAT_UCHAR);
    grey.bandjoin(alpha)
        .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_B_W))
        .write_to_file(folder.Path("a.png").c_str());
    const auto means = QuarterMeans(AsImage(Read(folder.Path("a.png"), {10, 20, 30})));
    EXPECT_EQ(means[0], (std::vector<double>{80, 80, 80}));
    EXPECT_EQ(means[1], (std::vector<double>{10, 20, 30}));
}

TEST(Photograph, PaletteIsReadInItsColours)
{
    const TempFolder folder;
    Quarters(900, 600).pngsave(folder.Path("a.png").c_str(),
                               VImage::option()->set("palette", true));
    ExpectQuarters(Read(folder.Path("a.png")), 3.0);
}

TEST(Photograph, WideGamutIsConvertedToSrgb)
{
    const TempFolder folder;
    const VImage wide =
        Quarters(900, 600).icc_transform("p3", VImage::option()->set("input_profile", "srgb"));
    // The stored values differ, otherwise this would prove nothing.
    ASSERT_GT(std::abs(QuarterMeans(wide)[0][0] - kQuarterColours[0][0]), 8.0);
    for (const char* name : {"a.png", "a.jpg", "a.tif"}) {
        wide.write_to_file(folder.Path(name).c_str());
        ExpectQuarters(Read(folder.Path(name)), 4.0);
    }
}

TEST(Photograph, WithAnUnusableProfileCountsAsSrgb)
{
    const TempFolder folder;
    VImage image = Quarters(900, 600).copy();
    void* junk = g_malloc0(500);
    image.set(
        VIPS_META_ICC_NAME,
        [](void* data, void*) -> int {
            g_free(data);
            return 0;
        },
        junk, 500);
    image.write_to_file(folder.Path("a.tif").c_str());
    ExpectQuarters(Read(folder.Path("a.tif")), 1.0);
}

// Print colours have a smaller gamut than a screen's, so the colours do not round-trip; they must
// be what the profile gives.
TEST(Photograph, CmykIsConvertedToSrgb)
{
    const TempFolder folder;
    const VImage ink =
        Quarters(900, 600).icc_transform("cmyk", VImage::option()->set("input_profile", "srgb"));
    ASSERT_EQ(ink.bands(), 4);
    const auto expected =
        QuarterMeans(ink.icc_transform("srgb", VImage::option()->set("embedded", true)));
    VImage bare = ink.copy(); // without its profile it is still readable
    bare.remove(VIPS_META_ICC_NAME);
    for (const VImage& image : {ink, bare})
        for (const char* name : {"a.jpg", "a.tif"}) {
            image.write_to_file(folder.Path(name).c_str());
            const auto means = QuarterMeans(AsImage(Read(folder.Path(name))));
            for (size_t quarter = 0; quarter < 4; ++quarter)
                for (size_t band = 0; band < 3; ++band)
                    EXPECT_NEAR(means[quarter][band], expected[quarter][band], 3.0);
        }
}

TEST(Photograph, OnlyTheFirstPageIsRead)
{
    const TempFolder folder;
    const VImage first = Quarters(300, 200);
    const VImage pages = first.join(first.invert(), VIPS_DIRECTION_VERTICAL).copy_memory().copy();
    for (const char* name : {"a.gif", "a.webp", "a.tif"}) {
        VImage several = pages;
        several.set("page-height", 200);
        several.write_to_file(folder.Path(name).c_str());
        SCOPED_TRACE(name);
        EXPECT_EQ(Photograph::FromFile(folder.Path(name)).Size(), (PixelSize{300, 200}));
        ExpectQuarters(Read(folder.Path(name)), 3.0);
    }
}

TEST(Photograph, AwkwardSizesHaveAWorkingPicture)
{
    const TempFolder folder;
    const std::pair<PixelSize, PixelSize> sizes[] = {
        {{1, 1}, {640, 640}},     {{1, 5000}, {1, 640}}, {{20000, 10}, {640, 1}},
        {{641, 640}, {640, 639}}, {{640, 3}, {640, 3}},  {{7, 5}, {640, 457}}};
    for (const auto& [size, working] : sizes) {
        for (const char* name : {"a.jpg", "a.png", "a.tif"}) {
            SCOPED_TRACE(testing::Message() << size.Width << " x " << size.Height << " " << name);
            Quarters(std::max(2, size.Width), std::max(2, size.Height))
                .extract_area(0, 0, size.Width, size.Height)
                .write_to_file(folder.Path(name).c_str());
            const WorkingPicture picture = Read(folder.Path(name));
            EXPECT_EQ(picture.Photo, size);
            EXPECT_EQ(picture.Pixels.Size, working);
            EXPECT_EQ(picture.Pixels.Bytes.size(),
                      static_cast<size_t>(working.Width) * static_cast<size_t>(working.Height) * 3);
        }
    }
}

TEST(Photograph, NameMayContainLibvipsOptionSyntax)
{
    const TempFolder folder;
    Quarters(90, 60).write_to_file(folder.Path("plain.jpg").c_str());
    for (const char* name : {"a[1].jpg", "b.jpg[2]", "c [x=y", "-d.jpg"}) {
        WriteText(folder.Path(name), ReadText(folder.Path("plain.jpg")));
        ExpectQuarters(Read(folder.Path(name)), 2.0);
    }
}

TEST(Photograph, BrokenFileGivesAReason)
{
    const TempFolder folder;
    Quarters(900, 600).write_to_file(folder.Path("a.jpg").c_str());
    Quarters(900, 600).write_to_file(folder.Path("a.png").c_str());
    Scene(900, 600, 0.5, 0.5).write_to_file(folder.Path("a.webp").c_str());
    Scene(900, 600, 0.5, 0.5).write_to_file(folder.Path("a.tif").c_str());
    for (const char* name : {"a.jpg", "a.png", "a.webp", "a.tif"})
        for (const double share : {0.02, 0.5, 0.9}) {
            const std::string cut = folder.Path("cut");
            CutShort(folder.Path(name), cut, share);
            EXPECT_NE(ReasonOf(cut), "") << name << " " << share;
        }
    WriteText(folder.Path("empty.jpg"), "");
    EXPECT_EQ(ReasonOf(folder.Path("empty.jpg")), "the file is empty");
    WriteText(folder.Path("notes.jpg"), "Dear diary, today I took no photograph.\n");
    EXPECT_EQ(ReasonOf(folder.Path("notes.jpg")),
              "not a picture, or of a format that cannot be read");
    EXPECT_EQ(ReasonOf(folder.Path("")), "is a folder, not a photograph");
    EXPECT_EQ(ReasonOf(folder.Path("none.jpg")), "No such file or directory");
}

TEST(Photograph, NamesTheFormatOfItsCrops)
{
    const TempFolder folder;
    const std::pair<const char*, const char*> formats[] = {{"a.jpg", "jpg"},   {"a.png", "png"},
                                                           {"a.webp", "webp"}, {"a.tif", "tif"},
                                                           {"a.gif", "png"},   {"a.ppm", "png"}};
    for (const auto& [name, format] : formats) {
        Quarters(90, 60).write_to_file(folder.Path(name).c_str());
        EXPECT_EQ(EndingOf(Photograph::FromFile(folder.Path(name)).NativeFormat()), format);
    }
}

} // namespace
} // namespace vistaTrim::photo
