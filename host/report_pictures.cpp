#include "report_pictures.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "vips_runtime.h"

namespace vistaTrim::host {

namespace {

using vips::VImage;

constexpr int32_t kPhotoLongSide = 1280;
constexpr int32_t kCropLongSide = 640;

std::string BlobUri(VipsBlob* blob, const char* type)
{
    size_t size = 0;
    const auto* bytes = static_cast<const unsigned char*>(vips_blob_get(blob, &size));
    std::string uri = std::string("data:") + type + ";base64," + Base64(bytes, size);
    vips_area_unref(VIPS_AREA(blob));
    return uri;
}

std::string JpegUri(const VImage& image, int quality)
{
    return BlobUri(
        image.jpegsave_buffer(
            VImage::option()->set("Q", quality)->set("optimize_coding", true)->set("strip", true)),
        "image/jpeg");
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

std::string OverlayUri(const MapPicture& map)
{
    std::vector<uint8_t> table = GlowTable();
    const VImage lut =
        VImage::new_from_memory(table.data(), table.size(), 256, 1, 4, VIPS_FORMAT_UCHAR)
            .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
    const VImage grey =
        VImage::new_from_memory(const_cast<uint8_t*>(map.Grey.data()), map.Grey.size(),
                                map.Size.Width, map.Size.Height, 1, VIPS_FORMAT_UCHAR);
    return BlobUri(grey.maplut(lut).webpsave_buffer(VImage::option()
                                                        ->set("Q", 60)
                                                        ->set("alpha_q", 60)
                                                        ->set("effort", 1)
                                                        ->set("strip", true)),
                   "image/webp");
}

// The crop in the preview's pixels, at least one of them.
VImage CutFromPreview(const VImage& preview, PixelSize photo, const PixelRect& rect)
{
    const auto scaled = [](int64_t value, int64_t to, int64_t from) {
        return static_cast<int>((2 * value * to + from) / (2 * from));
    };
    const int left = std::min(scaled(rect.X, preview.width(), photo.Width), preview.width() - 1);
    const int top = std::min(scaled(rect.Y, preview.height(), photo.Height), preview.height() - 1);
    const int right = scaled(rect.X + rect.Width, preview.width(), photo.Width);
    const int bottom = scaled(rect.Y + rect.Height, preview.height(), photo.Height);
    VImage cut =
        preview.extract_area(left, top, std::max(1, right - left), std::max(1, bottom - top));
    const int longSide = std::max(cut.width(), cut.height());
    if (longSide <= kCropLongSide)
        return cut;
    return cut.resize(static_cast<double>(kCropLongSide) / longSide);
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

ReportPictures MakeReportPictures(const Photograph& photograph,
                                  const std::vector<SuggestedCrop>& crops,
                                  const std::vector<MapPicture>& maps)
{
    ReportPictures pictures;
    RunVips([&] {
        pictures = {};
        const VImage preview = photograph.ReadPreview(kPhotoLongSide);
        pictures.Photo = JpegUri(preview, 82);
        for (const SuggestedCrop& crop : crops)
            pictures.Crops.push_back(
                JpegUri(CutFromPreview(preview, photograph.Size(), crop.Rect), 82));
        for (const MapPicture& map : maps)
            pictures.Maps.push_back({map.Name, OverlayUri(map)});
    });
    return pictures;
}

} // namespace vistaTrim::host
