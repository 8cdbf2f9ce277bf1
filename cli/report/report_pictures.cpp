#include "report/report_pictures.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "vistaTrimPhoto/image_encoder.h"

namespace vistaTrim::cli {

namespace {

using photo::PixelImage;
using photo::PixelRect;
using photo::PixelSize;

constexpr int32_t kPhotoLongSide = 1280;
constexpr int32_t kCropLongSide = 640;
constexpr int kPictureQuality = 82;
constexpr int kOverlayQuality = 60;

std::string DataUri(const std::vector<uint8_t>& bytes, const char* type)
{
    return std::string("data:") + type + ";base64," + Base64(bytes.data(), bytes.size());
}

// Of a whole image, or of a part at a longer side of at most kCropLongSide.
std::string JpegUri(const PixelImage& image, const std::optional<PixelRect>& part = {})
{
    photo::Encoding encoding;
    encoding.Quality = kPictureQuality;
    encoding.Part = part;
    if (part)
        encoding.LongSide = kCropLongSide;
    return DataUri(photo::EncodeImage(image, encoding), "image/jpeg");
}

// From clear violet over red to opaque yellow: weak places let the photograph through, strong
// ones glow.
std::vector<uint8_t> GlowTable()
{
    constexpr std::array<std::array<double, 4>, 4> kStops = {
        {{60, 0, 120, 0}, {200, 20, 110, 150}, {255, 110, 20, 215}, {255, 240, 90, 255}}};
    std::vector<uint8_t> table;
    for (int value = 0; value < 256; ++value) {
        const double at = value / 255.0 * 3.0;
        const auto below = static_cast<size_t>(std::min(2.0, std::floor(at)));
        const double share = at - static_cast<double>(below);
        for (size_t band = 0; band < 4; ++band)
            table.push_back(static_cast<uint8_t>(std::lround(kStops[below][band] * (1.0 - share) +
                                                             kStops[below + 1][band] * share)));
    }
    return table;
}

std::string OverlayUri(const photo::Map& map)
{
    const std::vector<uint8_t> table = GlowTable();
    PixelImage overlay{map.Size, 4, {}};
    for (const uint8_t grey : photo::GreyOf(map).Bytes) {
        const auto colour = table.begin() + 4 * ptrdiff_t{grey};
        overlay.Bytes.insert(overlay.Bytes.end(), colour, colour + 4);
    }
    photo::Encoding encoding;
    encoding.Format = photo::ImageFormat::Webp;
    encoding.Quality = kOverlayQuality;
    encoding.Fast = true;
    return DataUri(photo::EncodeImage(overlay, encoding), "image/webp");
}

// The crop in the preview's pixels, at least one of them.
PixelRect InPreview(const PixelRect& rect, PixelSize photo, PixelSize preview)
{
    const auto scaled = [](int64_t value, int64_t to, int64_t from) {
        return static_cast<int32_t>((2 * value * to + from) / (2 * from));
    };
    const int32_t left = std::min(scaled(rect.X, preview.Width, photo.Width), preview.Width - 1);
    const int32_t top = std::min(scaled(rect.Y, preview.Height, photo.Height), preview.Height - 1);
    const int32_t right = scaled(int64_t{rect.X} + rect.Width, preview.Width, photo.Width);
    const int32_t bottom = scaled(int64_t{rect.Y} + rect.Height, preview.Height, photo.Height);
    return {left, top, std::max(1, right - left), std::max(1, bottom - top)};
}

} // namespace

std::string Base64(const unsigned char* bytes, size_t size)
{
    constexpr const char* kDigits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((size + 2) / 3 * 4);
    for (size_t i = 0; i < size; i += 3) {
        const size_t count = std::min<size_t>(3, size - i);
        uint32_t group = 0;
        for (size_t k = 0; k < 3; ++k)
            group = group << 8 | (k < count ? bytes[i + k] : 0U);
        for (size_t k = 0; k < 4; ++k)
            text += k <= count ? kDigits[group >> (18 - 6 * k) & 63U] : '=';
    }
    return text;
}

ReportPictures MakeReportPictures(const photo::Photograph& photograph,
                                  const std::vector<photo::Crop>& crops,
                                  const std::vector<photo::Map>& maps)
{
    ReportPictures pictures;
    const PixelImage preview = photograph.ReadPreview(kPhotoLongSide);
    pictures.Photo = JpegUri(preview);
    for (const photo::Crop& crop : crops)
        pictures.Crops.push_back(
            JpegUri(preview, InPreview(crop.Rect, photograph.Size(), preview.Size)));
    for (const photo::Map& map : maps)
        pictures.Maps.push_back({map.Name, OverlayUri(map)});
    return pictures;
}

} // namespace vistaTrim::cli
