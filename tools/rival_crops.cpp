#include "rival_crops.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>

// libvips's headers trigger our warnings.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wshadow"
#include <vips/vips8>
#pragma GCC diagnostic pop

CropBox CentredFrame(double width, double height, double share)
{
    return {width * (1 - share) / 2, height * (1 - share) / 2, width * share, height * share};
}

CropBox LargestCentredCrop(double width, double height, double ratio)
{
    const double cropWidth = std::min(width, height * ratio);
    const double cropHeight = std::min(height, width / ratio);
    return {(width - cropWidth) / 2, (height - cropHeight) / 2, cropWidth, cropHeight};
}

CropBox AttentionCrop(const WorkingPhoto& photo, double ratio)
{
    const CropBox largest = LargestCentredCrop(photo.Width, photo.Height, ratio);
    const int width = std::max(1, static_cast<int>(std::lround(largest.Width)));
    const int height = std::max(1, static_cast<int>(std::lround(largest.Height)));
    try {
        const vips::VImage image =
            vips::VImage::new_from_memory(const_cast<uint8_t*>(photo.Pixels.data()),
                                          photo.Pixels.size(), photo.Width, photo.Height, 3,
                                          VIPS_FORMAT_UCHAR)
                .copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
        const vips::VImage crop = image.smartcrop(
            width, height, vips::VImage::option()->set("interesting", VIPS_INTERESTING_ATTENTION));
        // The offsets of an extracted area give the position of the old origin in it.
        return {static_cast<double>(-crop.xoffset()), static_cast<double>(-crop.yoffset()),
                static_cast<double>(crop.width()), static_cast<double>(crop.height())};
    } catch (const vips::VError& error) {
        throw std::runtime_error(std::string("libvips' attention crop: ") + error.what());
    }
}
