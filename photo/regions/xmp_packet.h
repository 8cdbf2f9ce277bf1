// XMP as text and as Exiv2's flat list of properties.
#ifndef VISTATRIM_PHOTO_REGIONS_XMP_PACKET_H
#define VISTATRIM_PHOTO_REGIONS_XMP_PACKET_H

#include <optional>
#include <string>

#include <exiv2/exiv2.hpp>

namespace vistaTrim::photo {

// Nothing if it cannot be read or written. Exiv2's parser keeps state of its own for the whole
// process, so all its work goes through these two, one at a time; it prints nothing.
std::optional<Exiv2::XmpData> ParseXmp(const std::string& packet);
std::optional<std::string> WriteXmp(const Exiv2::XmpData& data);

} // namespace vistaTrim::photo

#endif
