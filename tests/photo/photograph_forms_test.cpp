// The three forms of a photograph: file, bytes, pixels.
#include <algorithm>
#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "photo/sample_pictures.h"
#include "vistaTrimPhoto/crop_writer.h"
#include "vistaTrimPhoto/photo_error.h"
#include "vistaTrimPhoto/photograph.h"

namespace vistaTrim::photo {
namespace {

using vips::VImage;

// Every byte depends on its position, and no two rows or columns are equal.
PixelImage Pattern(PixelSize size, int32_t channels)
{
    PixelImage image{size, channels, {}};
    for (int32_t y = 0; y < size.Height; ++y)
        for (int32_t x = 0; x < size.Width; ++x)
            for (int32_t c = 0; c < channels; ++c)
                image.Bytes.push_back(static_cast<uint8_t>(
                    127 + 60 * ((x / 9 + y / 7 + c) % 3 - 1) + (x * 5 + y * 11 + c * 17) % 40));
    return image;
}

VImage AsImage(const PixelImage& pixels)
{
    return VImage::new_from_memory(const_cast<uint8_t*>(pixels.Bytes.data()), pixels.Bytes.size(),
                                   pixels.Size.Width, pixels.Size.Height, pixels.Channels,
                                   VIPS_FORMAT_UCHAR)
        .copy(VImage::option()->set("interpretation", pixels.Channels == 1
                                                          ? VIPS_INTERPRETATION_B_W
                                                          : VIPS_INTERPRETATION_sRGB));
}

void ExpectSamePixels(const PixelImage& a, const PixelImage& b)
{
    EXPECT_EQ(a.Size, b.Size);
    EXPECT_EQ(a.Channels, b.Channels);
    EXPECT_TRUE(a.Bytes == b.Bytes);
}

// Everything read from one equals, byte for byte, what is read from the other.
void ExpectSamePhotograph(const Photograph& a, const Photograph& b)
{
    EXPECT_EQ(a.Size(), b.Size());
    EXPECT_EQ(a.NativeFormat(), b.NativeFormat());
    const WorkingPicture working = a.ReadWorkingPicture();
    EXPECT_EQ(working.Photo, b.ReadWorkingPicture().Photo);
    ExpectSamePixels(working.Pixels, b.ReadWorkingPicture().Pixels);
    ExpectSamePixels(a.ReadPreview(100), b.ReadPreview(100));
    CropOutput crop;
    crop.Rect = {a.Size().Width / 3, a.Size().Height / 4, std::max(1, a.Size().Width / 2),
                 std::max(1, a.Size().Height / 2)};
    ExpectSamePixels(ReadCrops(a, {crop})[0], ReadCrops(b, {crop})[0]);
}

// The pixels in a larger block, between guard bytes; with the rows bottom up if requested.
struct Strided {
    Strided(const PixelImage& image, ptrdiff_t padding, bool bottomUp)
    {
        const ptrdiff_t row = ptrdiff_t{image.Size.Width} * image.Channels;
        const ptrdiff_t step = row + padding;
        Block.assign(static_cast<size_t>(step * image.Size.Height), 0xEE);
        for (ptrdiff_t y = 0; y < image.Size.Height; ++y) {
            const ptrdiff_t place = bottomUp ? image.Size.Height - 1 - y : y;
            std::copy_n(image.Bytes.begin() + y * row, row, Block.begin() + place * step);
        }
        View = {Block.data() + (bottomUp ? (image.Size.Height - 1) * step : 0), image.Size.Width,
                image.Size.Height, image.Channels, bottomUp ? -step : step};
    }

    std::vector<uint8_t> Block;
    PixelView View;
};

PhotoError::Kind KindOf(const PixelView& view)
{
    try {
        Photograph::FromPixels(view);
    } catch (const PhotoError& error) {
        EXPECT_NE(std::string(error.what()), "");
        return error.GetKind();
    }
    ADD_FAILURE() << "no error";
    return PhotoError::Kind::Internal;
}

TEST(PhotographForms, PixelsAreReadLikeAFileOfThem)
{
    const TempFolder folder;
    const ReadOptions options{{20, 90, 160}};
    for (const int32_t channels : {1, 3, 4})
        for (const PixelSize size :
             {PixelSize{1, 1}, PixelSize{1, 300}, PixelSize{317, 1}, PixelSize{40, 30},
              PixelSize{640, 480}, PixelSize{901, 1207}}) {
            SCOPED_TRACE(testing::Message()
                         << size.Width << " x " << size.Height << " x " << channels);
            const PixelImage image = Pattern(size, channels);
            AsImage(image).write_to_file(folder.Path("a.png").c_str());
            ExpectSamePhotograph(Photograph::FromPixels(ViewOf(image), options),
                                 Photograph::FromFile(folder.Path("a.png"), options));
        }
}

TEST(PhotographForms, RowsMayBePaddedAndStoredBottomUp)
{
    for (const int32_t channels : {1, 3, 4})
        for (const ptrdiff_t padding : {0, 1, 13})
            for (const bool bottomUp : {false, true}) {
                SCOPED_TRACE(testing::Message() << channels << " " << padding << " " << bottomUp);
                const PixelImage image = Pattern({700, 211}, channels);
                const Strided strided(image, padding, bottomUp);
                ExpectSamePhotograph(Photograph::FromPixels(strided.View),
                                     Photograph::FromPixels(ViewOf(image)));
            }
}

TEST(PhotographForms, BackgroundShowsThroughAlpha)
{
    PixelImage clear{{64, 64}, 4, std::vector<uint8_t>(64 * 64 * 4, 0)};
    const Photograph photograph = Photograph::FromPixels(ViewOf(clear), {{10, 200, 30}});
    const PixelImage preview = photograph.ReadPreview(64);
    ASSERT_EQ(preview.Bytes.size(), 64U * 64 * 3);
    for (size_t i = 0; i < preview.Bytes.size(); i += 3) {
        ASSERT_EQ(preview.Bytes[i], 10);
        ASSERT_EQ(preview.Bytes[i + 1], 200);
        ASSERT_EQ(preview.Bytes[i + 2], 30);
    }
}

TEST(PhotographForms, InvalidViewsAreRefused)
{
    const std::vector<uint8_t> bytes(300);
    const PixelView good{bytes.data(), 10, 10, 3, 30};
    EXPECT_NO_THROW(Photograph::FromPixels(good));
    const PhotoError::Kind invalid = PhotoError::Kind::InvalidRequest;
    EXPECT_EQ(KindOf({nullptr, 10, 10, 3, 30}), invalid);
    EXPECT_EQ(KindOf({bytes.data(), 0, 10, 3, 30}), invalid);
    EXPECT_EQ(KindOf({bytes.data(), 10, -1, 3, 30}), invalid);
    EXPECT_EQ(KindOf({bytes.data(), 10, 10, 2, 30}), invalid);
    EXPECT_EQ(KindOf({bytes.data(), 10, 10, 3, 29}), invalid);
    EXPECT_EQ(KindOf({bytes.data(), 10, 10, 3, -29}), invalid);
    EXPECT_EQ(KindOf({bytes.data(), 10, 10, 3, 0}), invalid);
    EXPECT_EQ(KindOf({bytes.data(), 10000000, 1, 3, 30000000}), invalid);
}

TEST(PhotographForms, BytesAreReadLikeTheFile)
{
    const TempFolder folder;
    for (const char* name : {"a.jpg", "a.png", "a.webp", "a.tif", "a.gif", "o.jpg"}) {
        SCOPED_TRACE(name);
        StoredWithOrientation(Scene(903, 604, 0.3, 0.6), name[0] == 'o' ? 6 : 1)
            .write_to_file(folder.Path(name).c_str());
        const std::string bytes = ReadText(folder.Path(name));
        ExpectSamePhotograph(Photograph::FromBytes(bytes.data(), bytes.size()),
                             Photograph::FromFile(folder.Path(name)));
    }
}

TEST(PhotographForms, CopiesShareWhatWasRead)
{
    const PixelImage image = Pattern({90, 70}, 3);
    Photograph copy = Photograph::FromPixels(ViewOf(Pattern({5, 5}, 1)));
    {
        const Photograph photograph = Photograph::FromPixels(ViewOf(image));
        copy = photograph;
    }
    EXPECT_EQ(copy.Size(), (PixelSize{90, 70}));
    ExpectSamePixels(copy.ReadPreview(1000), image);
}

TEST(PhotographForms, APreviewIsNeverLargerThanThePhotograph)
{
    const PixelImage image = Pattern({900, 300}, 3);
    const Photograph photograph = Photograph::FromPixels(ViewOf(image));
    EXPECT_EQ(photograph.ReadPreview(450).Size, (PixelSize{450, 150}));
    EXPECT_EQ(photograph.ReadPreview(1).Size, (PixelSize{1, 1}));
    EXPECT_EQ(photograph.ReadPreview(900).Size, (PixelSize{900, 300}));
    ExpectSamePixels(photograph.ReadPreview(5000), image);
    EXPECT_THROW(photograph.ReadPreview(0), PhotoError);
}

// Callers act on the kind, not on the message.
TEST(PhotographForms, ErrorsHaveKinds)
{
    using Kind = PhotoError::Kind;
    const TempFolder folder;
    Scene(900, 600, 0.5, 0.5).write_to_file(folder.Path("whole.jpg").c_str());
    CutShort(folder.Path("whole.jpg"), folder.Path("cut.jpg"), 0.5);
    WriteText(folder.Path("text.jpg"), "no picture, whatever the name says");
    WriteText(folder.Path("empty.jpg"), "");
    const auto kindOf = [](const auto& open) {
        try {
            open().ReadWorkingPicture();
        } catch (const PhotoError& error) {
            EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos);
            EXPECT_EQ(std::string(error.what()).find("--"), std::string::npos);
            return error.GetKind();
        }
        ADD_FAILURE() << "no error";
        return Kind::Internal;
    };
    const auto file = [&](const char* name) {
        return [path = folder.Path(name)] { return Photograph::FromFile(path); };
    };
    const auto bytes = [&](const char* name) {
        return [text = ReadText(folder.Path(name))] {
            return Photograph::FromBytes(text.data(), text.size());
        };
    };
    EXPECT_EQ(kindOf(file("none.jpg")), Kind::Unreadable);
    EXPECT_EQ(kindOf(file("")), Kind::Unreadable);
    EXPECT_EQ(kindOf(file("empty.jpg")), Kind::Unreadable);
    EXPECT_EQ(kindOf(file("text.jpg")), Kind::Unsupported);
    EXPECT_EQ(kindOf(file("cut.jpg")), Kind::Damaged);
    EXPECT_EQ(kindOf(bytes("empty.jpg")), Kind::Unreadable);
    EXPECT_EQ(kindOf(bytes("text.jpg")), Kind::Unsupported);
    EXPECT_EQ(kindOf(bytes("cut.jpg")), Kind::Damaged);
    EXPECT_EQ(kindOf([] { return Photograph::FromBytes(nullptr, 10); }), Kind::Unreadable);
}

} // namespace
} // namespace vistaTrim::photo
