#include "working_picture.h"

#include <new>

namespace vistaTrim::host {

void ImageDeleter::operator()(IImage* image) const
{
    DestroyImageObj(image);
}

ImageHandle MakeLibraryImage(const WorkingPicture& picture)
{
    constexpr int32_t kChannelOffsets[4] = {0, 1, 2, 3};
    ImageHandle image(CreateImageObj(static_cast<uint32_t>(picture.Size.Height),
                                     static_cast<uint32_t>(picture.Size.Width), 3, kChannelOffsets,
                                     picture.Pixels.data()));
    if (!image)
        throw std::bad_alloc();
    return image;
}

} // namespace vistaTrim::host
