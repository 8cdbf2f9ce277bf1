#include "working_picture.h"

namespace vistaTrim::host {

namespace {

constexpr uint32_t kChannels = 3;

// The picture as the library asks for it. The library's own image object copies the pixels;
// this one lends them.
class CLentPicture final : public IImage, public CRefCount {
public:
    explicit CLentPicture(const WorkingPicture& picture) : Picture(picture)
    {
    }

    void Release() override
    {
        GiveUpReference();
    }
    void AddRef() override
    {
        TakeReference();
    }
    void Destroy() override
    {
        delete this;
    }
    uint8_t* GetData() override // the library only reads
    {
        return const_cast<uint8_t*>(Picture.Pixels.data());
    }
    const uint8_t* GetPixels() const override
    {
        return Picture.Pixels.data();
    }
    uint32_t GetWidth() const override
    {
        return static_cast<uint32_t>(Picture.Size.Width);
    }
    uint32_t GetHeight() const override
    {
        return static_cast<uint32_t>(Picture.Size.Height);
    }
    uint32_t GetNumChannels() const override
    {
        return kChannels;
    }
    uint32_t GetRowStride() const override
    {
        return GetWidth() * kChannels;
    }
    uint32_t GetPixelStride() const override
    {
        return kChannels;
    }
    int32_t GetChannelOffset(int index) const override
    {
        return index;
    }

private:
    const WorkingPicture& Picture;
};

} // namespace

void ImageDeleter::operator()(IImage* image) const
{
    image->Release();
}

ImageHandle MakeLibraryImage(const WorkingPicture& picture)
{
    return ImageHandle(new CLentPicture(picture));
}

} // namespace vistaTrim::host
