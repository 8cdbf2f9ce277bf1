// The regions that a photograph's XMP names, by three standards: the Metadata Working Group's
// (Guidelines for handling image metadata, 2010), IPTC image regions (IPTC Photo Metadata
// Standard, 2019), and Microsoft's people tags.
#ifndef VISTATRIM_PHOTO_REGIONS_XMP_REGIONS_H
#define VISTATRIM_PHOTO_REGIONS_XMP_REGIONS_H

#include <string>
#include <vector>

#include "regions/stored_place.h"
#include "regions/xmp_packet.h"
#include "vistaTrimPhoto/found_region.h"

namespace vistaTrim::photo {

enum class RegionStandard { MetadataWorkingGroup, Iptc, Microsoft };
constexpr RegionStandard kRegionStandards[] = {RegionStandard::MetadataWorkingGroup,
                                               RegionStandard::Iptc, RegionStandard::Microsoft};

const char* RootKeyOf(RegionStandard standard); // of the property that holds all its regions

struct XmpRegion {
    RegionStandard Standard = RegionStandard::MetadataWorkingGroup;
    std::string Key;   // of its structure, "Xmp.mwg-rs.Regions/mwg-rs:RegionList[1]"
    RelativeRect Rect; // of the photograph as displayed; a point has no width and height
    RegionKind Kind = RegionKind::Other;
    std::string Label;
};

// Regions with coordinates that cannot be read are left out, and so are all of a standard
// whose stated picture size has another shape: the photograph has been cropped since.
//
// orientation  that of the stored photograph, as in EXIF
std::vector<XmpRegion> ListXmpRegions(const Exiv2::XmpData& data, PixelSize displayed,
                                      int orientation);

// "RegionList[2]/Area/x" of the key "Xmp.mwg-rs.Regions/mwg-rs:RegionList[2]/mwg-rs:Area/stArea:x"
// and the root "Xmp.mwg-rs.Regions": prefixes are each file's own choice. Empty for a key that is
// not below the root.
std::string PathBelow(const std::string& root, const std::string& key);

} // namespace vistaTrim::photo

#endif
