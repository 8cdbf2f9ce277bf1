#include "real_photographs.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include <vips/vips.h>

namespace vistaTrim {
namespace testPictures {

std::vector<std::string> PhotographPaths()
{
    std::vector<std::string> paths;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator("/usr/share/backgrounds", error))
        if (entry.path().extension() == ".jpg")
            paths.push_back(entry.path().string());
    std::sort(paths.begin(), paths.end());
    return paths;
}

slowOracle::Picture ReadPhotograph(const std::string& path)
{
    static const bool started = VIPS_INIT("analysis_oracle_test") == 0;
    VipsImage* image = nullptr;
    VipsImage* colour = nullptr;
    if (!started || vips_thumbnail(path.c_str(), &image, 640, "height", 640, nullptr) != 0)
        throw std::runtime_error(path + ": " + vips_error_buffer());
    const int failed = vips_colourspace(image, &colour, VIPS_INTERPRETATION_sRGB, nullptr);
    g_object_unref(image);
    if (failed != 0)
        throw std::runtime_error(path + ": " + vips_error_buffer());

    slowOracle::Picture picture;
    picture.Cols = vips_image_get_width(colour);
    picture.Rows = vips_image_get_height(colour);
    const int bands = vips_image_get_bands(colour);
    size_t size = 0;
    void* const bytes = vips_image_write_to_memory(colour, &size);
    g_object_unref(colour);
    if (bytes == nullptr || bands != 3 || std::max(picture.Cols, picture.Rows) != 640)
        throw std::runtime_error(path + ": not a colour picture of 640 pixels");
    picture.Bytes.assign(static_cast<const uint8_t*>(bytes),
                         static_cast<const uint8_t*>(bytes) + size);
    g_free(bytes);
    return picture;
}

} // namespace testPictures
} // namespace vistaTrim
