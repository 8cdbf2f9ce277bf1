// The pictures of the report: what they show, how large they are.
#include "report/report_pictures.h"

#include <algorithm>
#include <numeric>

#include <gtest/gtest.h>

#include "photo/sample_pictures.h"
#include "vistaTrimPhoto/image_encoder.h"

namespace vistaTrim::cli {
namespace {

using namespace photo;

using vips::VImage;

const std::string kStart = "data:image/webp;base64,";

std::vector<uint8_t> BytesOf(const std::string& uri)
{
    EXPECT_EQ(uri.find(kStart), 0U);
    gsize count = 0;
    guchar* bytes = g_base64_decode(uri.c_str() + kStart.size(), &count);
    std::vector<uint8_t> copy(bytes, bytes + count);
    g_free(bytes);
    return copy;
}

VImage Decoded(const std::string& uri)
{
    const std::vector<uint8_t> bytes = BytesOf(uri);
    return VImage::new_from_buffer(bytes.data(), bytes.size(), "").copy_memory();
}

PixelImage Pixels(const VImage& image)
{
    size_t size = 0;
    auto* bytes = static_cast<uint8_t*>(image.write_to_memory(&size));
    PixelImage pixels{{image.width(), image.height()}, image.bands(), {bytes, bytes + size}};
    g_free(bytes);
    return pixels;
}

// Noise, which no encoder can make small.
PixelImage Noise(PixelSize size)
{
    PixelImage image{size, 3, {}};
    uint32_t state = 1;
    for (int64_t i = 0; i < int64_t{size.Width} * size.Height * 3; ++i) {
        state = state * 1664525U + 1013904223U;
        image.Bytes.push_back(static_cast<uint8_t>(state >> 24));
    }
    return image;
}

TEST(ReportPictures, ShowThePhotographAtUpTo1024Pixels)
{
    const std::pair<PixelSize, PixelSize> sizes[] = {
        {{3000, 2000}, {1024, 683}}, {{600, 900}, {600, 900}}, {{1000, 2048}, {500, 1024}}};
    for (const auto& [size, shown] : sizes) {
        const PixelImage pixels = Pixels(Quarters(size.Width, size.Height));
        const ReportPictures pictures =
            MakeReportPictures(Photograph::FromPixels(ViewOf(pixels)), {});
        const VImage picture = Decoded(pictures.Photo);
        EXPECT_EQ((PixelSize{picture.width(), picture.height()}), shown);
        const auto means = QuarterMeans(picture);
        for (size_t quarter = 0; quarter < 4; ++quarter)
            for (size_t band = 0; band < 3; ++band)
                EXPECT_NEAR(means[quarter][band], kQuarterColours[quarter][band], 6.0); // lossy
        EXPECT_TRUE(pictures.Maps.empty());
    }
}

TEST(ReportPictures, StayWithinTheirNumberOfBytes)
{
    const PixelImage noise = Noise({1600, 1200});
    const Photograph photograph = Photograph::FromPixels(ViewOf(noise));
    Map map{"EdgeMap", {640, 480}, std::vector<float>(640 * 480)};
    for (size_t i = 0; i < map.Values.size(); ++i)
        map.Values[i] = static_cast<float>(noise.Bytes[3 * i]);
    const ReportPictures pictures = MakeReportPictures(photograph, {map});
    const size_t photo = BytesOf(pictures.Photo).size();
    EXPECT_LE(photo, 39000U);
    EXPECT_GT(photo, 20000U); // the room is used
    ASSERT_EQ(pictures.Maps.size(), 1U);
    EXPECT_LE(BytesOf(pictures.Maps[0].Picture).size(), 6400U);
    EXPECT_GT(BytesOf(pictures.Maps[0].Picture).size(), 3000U);
    // Fewer pixels rather than coarser ones, of the same shape.
    const VImage shown = Decoded(pictures.Photo);
    EXPECT_LT(shown.width(), 1024);
    EXPECT_NEAR(static_cast<double>(shown.width()) / shown.height(), 4.0 / 3, 0.02);
}

// A simple picture gets the highest quality: far below the limit, it need not be coarse.
TEST(ReportPictures, AreAsGoodAsTheirBytesAllow)
{
    const PixelImage scene = Pixels(Scene(640, 400, 0.3, 0.6));
    const Photograph photograph = Photograph::FromPixels(ViewOf(scene));
    const std::vector<uint8_t> bytes = BytesOf(MakeReportPictures(photograph, {}).Photo);
    Encoding highest;
    highest.Format = ImageFormat::Webp;
    highest.Quality = 80;
    ASSERT_LE(bytes.size(), 39000U);
    EXPECT_EQ(bytes, EncodeImage(scene, highest));
}

TEST(ReportPictures, OfMapsAreGreyAndHalfAsLarge)
{
    const PixelImage pixels = Pixels(Quarters(90, 60));
    const Photograph photograph = Photograph::FromPixels(ViewOf(pixels));
    // Four quarters of 0, 100, 150 and 255, in a map of odd sides.
    Map map{"EdgeMap", {641, 401}, {}};
    for (int y = 0; y < 401; ++y)
        for (int x = 0; x < 641; ++x)
            map.Values.push_back(
                static_cast<float>(y < 200 ? (x < 320 ? 0 : 100) : (x < 320 ? 150 : 255)));
    Map other = map;
    other.Name = "PeakMap";
    const ReportPictures pictures = MakeReportPictures(photograph, {map, other});
    ASSERT_EQ(pictures.Maps.size(), 2U);
    EXPECT_EQ(pictures.Maps[0].Name, "EdgeMap");
    EXPECT_EQ(pictures.Maps[1].Name, "PeakMap");
    const VImage picture = Decoded(pictures.Maps[0].Picture);
    EXPECT_EQ((PixelSize{picture.width(), picture.height()}), (PixelSize{320, 200}));
    const auto means = QuarterMeans(picture);
    const double levels[] = {0, 100, 150, 255};
    for (size_t quarter = 0; quarter < 4; ++quarter)
        for (size_t band = 0; band < 3; ++band)
            EXPECT_NEAR(means[quarter][band], levels[quarter], 4.0); // lossy
    // A map of one row cannot be halved: it is shown as it is.
    const ReportPictures thin =
        MakeReportPictures(photograph, {Map{"EdgeMap", {40, 1}, std::vector<float>(40, 1.0F)}});
    EXPECT_EQ(Decoded(thin.Maps[0].Picture).width(), 40);
}

// Each pixel of a halved map is the mean of four, rounded to the nearest.
TEST(ReportPictures, OfMapsAreMeansOfFourPixels)
{
    const PixelImage pixels = Pixels(Quarters(90, 60));
    Map map{"EdgeMap", {512, 256}, {}};
    for (int y = 0; y < 256; ++y)
        for (int x = 0; x < 512; ++x)
            map.Values.push_back(static_cast<float>((x % 2 == 0) == (y % 2 == 0) ? 255 : 0));
    const ReportPictures pictures =
        MakeReportPictures(Photograph::FromPixels(ViewOf(pixels)), {map});
    const VImage picture = Decoded(pictures.Maps[0].Picture).extract_band(0);
    EXPECT_NEAR(picture.avg(), 127.5, 2.0);
    EXPECT_LT(picture.max() - picture.min(), 6.0); // a chequered map becomes a plain one
}

} // namespace
} // namespace vistaTrim::cli
