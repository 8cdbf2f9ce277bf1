// IPTC data as files of different formats hold it.
#ifndef VISTATRIM_PHOTO_PICTURE_IPTC_H
#define VISTATRIM_PHOTO_PICTURE_IPTC_H

#include <string>

namespace vistaTrim::photo {

// JPEG holds a list of resources, one of which is IPTC and another a thumbnail of the whole
// photograph; TIFF holds IPTC alone. Both functions take either layout and drop the thumbnail.
// The result is empty if nothing is left.
std::string IptcForJpeg(const std::string& data);
std::string IptcForTiff(const std::string& data);

// A list of resources without the thumbnails.
std::string WithoutThumbnails(const std::string& resources);

} // namespace vistaTrim::photo

#endif
