// What of a photograph's metadata goes into its crops.
#ifndef VISTATRIM_PHOTO_PICTURE_CROP_METADATA_H
#define VISTATRIM_PHOTO_PICTURE_CROP_METADATA_H

#include <string>

#include <vips/vips8>

namespace vistaTrim::photo {

// All but what is untrue of a crop: the small picture of the whole photograph that cameras
// embed (it would show what was cropped away), the orientation, which is in the pixels now,
// and the number of pages. With strip only the colour profile stays.
vips::VImage WithMetadataForCrop(const vips::VImage& image, bool strip);

// The XMP text with every tiff:Orientation set to 1, upright; its length stays the same.
std::string UprightXmp(std::string xmp);

} // namespace vistaTrim::photo

#endif
