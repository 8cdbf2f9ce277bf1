#include "vistaTrimPhoto/pixels.h"

namespace vistaTrim::photo {

PixelView ViewOf(const PixelImage& image)
{
    return {image.Bytes.data(), image.Size.Width, image.Size.Height, image.Channels,
            ptrdiff_t{image.Size.Width} * image.Channels};
}

} // namespace vistaTrim::photo
