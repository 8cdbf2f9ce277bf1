// Regions that the photograph's own metadata names, and what of them is true for a crop.
#ifndef VISTATRIM_PHOTO_REGIONS_METADATA_REGIONS_H
#define VISTATRIM_PHOTO_REGIONS_METADATA_REGIONS_H

#include <optional>
#include <string>
#include <vector>

#include "vistaTrimPhoto/found_region.h"

namespace vistaTrim::photo {

// xmp          may be empty, broken or hostile: then there are no regions
// orientation  that of the stored photograph, as EXIF counts them
//
// A region that two standards name comes once.
std::vector<FoundRegion> RegionsOfXmp(const std::string& xmp, PixelSize displayed, int orientation);

// The photograph's XMP as it is true for a crop, which is stored upright: regions are moved,
// clipped to the crop, and left out if nothing of them is inside. What has no regions comes back as
// it is. Nothing if it has regions that cannot be made true: no XMP is better than a false one.
//
// crop    inside the photograph as displayed
// output  pixels of the file that is written
std::optional<std::string> XmpForCrop(const std::string& xmp, PixelSize displayed, int orientation,
                                      const PixelRect& crop, PixelSize output);

} // namespace vistaTrim::photo

#endif
