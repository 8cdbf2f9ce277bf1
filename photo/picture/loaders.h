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

// The loaders that can be used now: not blocked, and already loaded if they are modules.
std::vector<Loader> AllowedLoaders();

// The class of the loader for a source; empty if none may be used. For use inside
// RunVips.
std::string LoaderOf(const vips::VSource& source);

} // namespace vistaTrim::photo

#endif
