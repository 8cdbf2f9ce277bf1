#include "suggest/lent_image.h"

#include "vistaTrim/vistaTrim.h"

namespace vistaTrim::photo {

namespace {

constexpr uint32_t kChannels = 3;

// The engine's own image object copies the pixels; this one lends them.
class CLentImage final : public IImage, public CRefCount {
public:
    explicit CLentImage(const PixelImage& pixels) : Pixels(pixels)
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
    uint8_t* GetData() override // the engine only reads
    {
        return const_cast<uint8_t*>(Pixels.Bytes.data());
    }
    const uint8_t* GetPixels() const override
    {
        return Pixels.Bytes.data();
    }
    uint32_t GetWidth() const override
    {
        return static_cast<uint32_t>(Pixels.Size.Width);
    }
    uint32_t GetHeight() const override
    {
        return static_cast<uint32_t>(Pixels.Size.Height);
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
    const PixelImage& Pixels;
};

} // namespace

void ImageDeleter::operator()(IImage* image) const
{
    image->Release();
}

ImageHandle LendToEngine(const PixelImage& pixels)
{
    return ImageHandle(new CLentImage(pixels));
}

} // namespace vistaTrim::photo
