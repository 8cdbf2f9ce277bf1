// A crop as a file that raw developers read beside a photograph.
#ifndef VISTATRIM_CLI_OUTPUT_XMP_SIDECAR_H
#define VISTATRIM_CLI_OUTPUT_XMP_SIDECAR_H

#include <string>

#include "vistaTrimPhoto/geometry.h"

namespace vistaTrim::cli {

// Sides of a crop as shares of a picture.
struct CropShares {
    double Left = 0;
    double Top = 0;
    double Right = 1;
    double Bottom = 1;
};

// Shares of the stored picture, before its EXIF orientation (1..8) is applied.
CropShares StoredShares(const photo::PixelRect& crop, photo::PixelSize photo, int orientation);

// The XMP with the crs: fields of the crop.
std::string XmpSidecar(const photo::PixelRect& crop, photo::PixelSize photo, int orientation);

} // namespace vistaTrim::cli

#endif
