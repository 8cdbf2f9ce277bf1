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

} // namespace vistaTrim::photo
