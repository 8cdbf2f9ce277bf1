// Selects the metadata of a photograph that its crops keep.
#ifndef VISTATRIM_PHOTO_PICTURE_CROP_METADATA_H
#define VISTATRIM_PHOTO_PICTURE_CROP_METADATA_H

#include <string>

#include <vips/vips8>

#include "vistaTrimPhoto/geometry.h"
#include "vistaTrimPhoto/image_format.h"

namespace vistaTrim::photo {

// Where a crop comes from.
struct CropPlace {
    PixelSize Photo; // as displayed
    int Orientation = 1;
    PixelRect Rect;
};

// The picture's XMP; empty if it has none.
std::string XmpOf(const vips::VImage& image);

// Removes metadata that is untrue of a crop: the thumbnail of the whole photograph that cameras
// embed (it would show what was cropped away) with its description, the orientation, which is now
// in the pixels, and the number of pages. Regions that the metadata names are moved and clipped
// with the crop. With strip only the colour profile stays.
//
// image  the crop as it is written
vips::VImage WithMetadataForCrop(const vips::VImage& image, const CropPlace& place,
                                 ImageFormat format, bool strip);

// The XMP text with every tiff:Orientation set to 1 (upright); its length does not change.
std::string UprightXmp(std::string xmp);

} // namespace vistaTrim::photo

#endif
