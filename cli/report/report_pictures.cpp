#include "report/report_pictures.h"

#include <utility>

#include "report/base64.h"
#include "vistaTrimPhoto/image_encoder.h"

namespace vistaTrim::cli {

namespace {

using photo::PixelImage;

// These limits keep a photograph below 60 kB of the page, and below 150 kB with its ten maps:
// base64 turns every 3 bytes into 4.
constexpr size_t kPhotoBytes = 39000;
constexpr size_t kMapBytes = 6400;

// Enough for a large screen.
constexpr int32_t kPhotoLongSide = 1024;
constexpr int32_t kMapLongSide = photo::kWorkingLongSide / 2;

using Bytes = std::vector<uint8_t>;

Bytes Webp(const PixelImage& image, int32_t longSide, int quality)
{
    photo::Encoding encoding;
    encoding.Format = photo::ImageFormat::Webp;
    encoding.Quality = quality;
    encoding.LongSide = longSide;
    return photo::EncodeImage(image, encoding);
}

// The best quality that fits. Where even the lowest does not, fewer pixels look better than
// coarser ones.
Bytes WebpWithin(const PixelImage& image, int32_t longSide, size_t limit)
{
    constexpr int kLowest = 40;
    constexpr int kFirst = 60;
    constexpr int kHighest = 80;
    constexpr int kStep = 10;
    constexpr int32_t kShortest = 64; // pictures of this size are far below every limit
    for (;; longSide = longSide * 4 / 5) {
        int quality = kFirst;
        Bytes best = Webp(image, longSide, quality);
        // Go up only from the first try: above any lower quality the picture was too large.
        while (best.size() <= limit && quality >= kFirst && quality < kHighest) {
            Bytes better = Webp(image, longSide, quality += kStep);
            if (better.size() > limit)
                return best;
            best = std::move(better);
        }
        while (best.size() > limit && quality > kLowest)
            best = Webp(image, longSide, quality -= kStep);
        if (best.size() <= limit || longSide < kShortest)
            return best;
    }
}

// A grey picture of half the size: each pixel is the mean of four. If a side is odd, its last
// row or column is dropped.
PixelImage Halved(const PixelImage& image)
{
    PixelImage half;
    half.Size = {image.Size.Width / 2, image.Size.Height / 2};
    half.Channels = 1;
    if (half.Size.Width == 0 || half.Size.Height == 0)
        return image;
    const auto stride = static_cast<size_t>(image.Size.Width);
    for (size_t y = 0; y < static_cast<size_t>(half.Size.Height); ++y)
        for (size_t x = 0; x < static_cast<size_t>(half.Size.Width); ++x) {
            const uint8_t* const at = image.Bytes.data() + 2 * y * stride + 2 * x;
            half.Bytes.push_back(
                static_cast<uint8_t>((at[0] + at[1] + at[stride] + at[stride + 1] + 2) / 4));
        }
    return half;
}

std::string WebpUri(const PixelImage& image, int32_t longSide, size_t limit)
{
    return "data:image/webp;base64," + Base64(WebpWithin(image, longSide, limit));
}

} // namespace

ReportPictures MakeReportPictures(const photo::Photograph& photograph,
                                  const std::vector<photo::Map>& maps)
{
    ReportPictures pictures;
    pictures.Photo = WebpUri(photograph.ReadPreview(kPhotoLongSide), kPhotoLongSide, kPhotoBytes);
    for (const photo::Map& map : maps)
        pictures.Maps.push_back(
            {map.Name, WebpUri(Halved(photo::GreyOf(map)), kMapLongSide, kMapBytes)});
    return pictures;
}

} // namespace vistaTrim::cli
