// XMP as text and as Exiv2's flat list of properties.
#ifndef VISTATRIM_PHOTO_REGIONS_XMP_PACKET_H
#define VISTATRIM_PHOTO_REGIONS_XMP_PACKET_H

#include <optional>
#include <string>

#include <exiv2/exiv2.hpp>

namespace vistaTrim::photo {

// nullopt if the packet cannot be read or written. Exiv2's parser has process-wide state, so all
// calls go through these two functions, one at a time. Exiv2's messages are suppressed.
std::optional<Exiv2::XmpData> ParseXmp(const std::string& packet);
std::optional<std::string> WriteXmp(const Exiv2::XmpData& data);

} // namespace vistaTrim::photo

#endif
