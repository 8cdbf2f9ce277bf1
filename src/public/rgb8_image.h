// The library's own image: a copy of the host's pixels.
#ifndef VISTATRIM_PUBLIC_RGB8_IMAGE_H
#define VISTATRIM_PUBLIC_RGB8_IMAGE_H

#include "vistaTrim/image.h"

namespace vistaTrim {

class CRGB8Image : public IImage, public CRefCount {
public:
    // Reads four numbers from channelOffsets. Sizes are not checked: byte counts beyond 32 bits
    // wrap. Fill provides the pixels.
    CRGB8Image(uint32_t height, uint32_t width, uint32_t channels, const int32_t* channelOffsets);
    ~CRGB8Image() override;

    // Copies the pixels, or fills with black if the pointer is null. Throws std::bad_alloc.
    void Fill(const uint8_t* pixels);

    void Release() override;
    void AddRef() override;
    void Destroy() override;
    uint8_t* GetData() override;
    const uint8_t* GetPixels() const override;
    uint32_t GetWidth() const override;
    uint32_t GetHeight() const override;
    uint32_t GetNumChannels() const override;
    uint32_t GetRowStride() const override;
    uint32_t GetPixelStride() const override;
    int32_t GetChannelOffset(int index) const override;

private:
    uint8_t* Pixels;
    uint32_t Width;
    uint32_t Height;
    uint32_t Channels;
    uint32_t RowStride;
    uint32_t PixelStride;
    uint32_t ByteSize;
    int32_t ChannelOffsets[4]; // stored for the host; the library never reads them
};

} // namespace vistaTrim

#endif
