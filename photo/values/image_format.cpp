#include "vistaTrimPhoto/image_format.h"

#include <algorithm>
#include <cctype>

namespace vistaTrim::photo {

namespace {

struct Ending {
    const char* Text;
    ImageFormat Format;
};

// Files get the first ending of their format.
constexpr Ending kEndings[] = {{"jpg", ImageFormat::Jpeg},  {"jpeg", ImageFormat::Jpeg},
                               {"png", ImageFormat::Png},   {"webp", ImageFormat::Webp},
                               {"tif", ImageFormat::Tiff},  {"tiff", ImageFormat::Tiff},
                               {"avif", ImageFormat::Avif}, {"heic", ImageFormat::Heic}};

} // namespace

std::string EndingOf(ImageFormat format)
{
    for (const Ending& ending : kEndings)
        if (ending.Format == format)
            return ending.Text;
    return "";
}

std::optional<ImageFormat> FormatOfEnding(const std::string& ending)
{
    std::string lower = ending;
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    for (const Ending& known : kEndings)
        if (lower == known.Text)
            return known.Format;
    return std::nullopt;
}

int32_t LongestSide(ImageFormat format)
{
    switch (format) {
    case ImageFormat::Jpeg: return 65'500;
    case ImageFormat::Webp: return 16'383;
    case ImageFormat::Avif:
    case ImageFormat::Heic: return 16'384;
    case ImageFormat::Png:
    case ImageFormat::Tiff: break;
    }
    return 10'000'000; // as large as libvips' images
}

} // namespace vistaTrim::photo
