// The library's maps of a photograph, as pictures.
#ifndef VISTATRIM_HOST_MAP_PICTURES_H
#define VISTATRIM_HOST_MAP_PICTURES_H

#include <cstdint>
#include <string>
#include <vector>

#include "working_picture.h"

namespace vistaTrim::host {

struct MapPicture {
    std::string Name; // "EdgeMap"
    PixelSize Size;
    std::vector<uint8_t> Grey; // 255 is the map's own maximum; a map of zeros stays black
};

std::vector<MapPicture> ReadMaps(const WorkingPicture& picture);

// Writes PREFIX-NAME.png for each and returns the names. Throws PhotoError.
std::vector<std::string> WriteMaps(const std::vector<MapPicture>& maps, const std::string& prefix,
                                   bool replace);

} // namespace vistaTrim::host

#endif
