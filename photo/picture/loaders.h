// What libvips can load.
#ifndef VISTATRIM_PHOTO_PICTURE_LOADERS_H
#define VISTATRIM_PHOTO_PICTURE_LOADERS_H

#include <string>
#include <vector>

#include <vips/vips8>

namespace vistaTrim::photo {

struct Loader {
    std::string Family;               // "Jpeg" of the class "VipsForeignLoadJpegSource"
    std::vector<std::string> Endings; // lower case, without the dot
};

// Those that may be used now: not blocked, and loaded if they are modules.
std::vector<Loader> AllowedLoaders();

// The class of the loader for a source; empty if there is none that may be used. For use inside
// RunVips.
std::string LoaderOf(const vips::VSource& source);

} // namespace vistaTrim::photo

#endif
