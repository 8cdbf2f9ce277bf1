// Regions named in the photograph's own metadata, and their update for a crop.
#ifndef VISTATRIM_PHOTO_REGIONS_METADATA_REGIONS_H
#define VISTATRIM_PHOTO_REGIONS_METADATA_REGIONS_H

#include <optional>
#include <string>
#include <vector>

#include "vistaTrimPhoto/found_region.h"

namespace vistaTrim::photo {

// xmp          may be empty, broken or hostile: then there are no regions
// orientation  that of the stored photograph, as in EXIF
//
// A region that two standards name is listed once.
std::vector<FoundRegion> RegionsOfXmp(const std::string& xmp, PixelSize displayed, int orientation);

// The photograph's XMP, corrected for a crop that is stored upright: regions are moved, clipped to
// the crop, and left out if they lie outside it. XMP without regions is returned unchanged. nullopt
// if its regions cannot be corrected: no XMP is better than a false one.
//
// crop    inside the photograph as displayed
// output  pixels of the file that is written
std::optional<std::string> XmpForCrop(const std::string& xmp, PixelSize displayed, int orientation,
                                      const PixelRect& crop, PixelSize output);

} // namespace vistaTrim::photo

#endif
