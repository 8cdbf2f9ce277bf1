#include "public/rgb8_image.h"

#include <cstring>

namespace vistaTrim {

CRGB8Image::CRGB8Image(uint32_t height, uint32_t width, uint32_t channels,
                       const int32_t* channelOffsets)
    : Pixels(nullptr), Width(width), Height(height), Channels(channels),
      RowStride(width * channels), PixelStride(channels), ByteSize(width * channels * height)
{
    std::memcpy(ChannelOffsets, channelOffsets, sizeof ChannelOffsets);
}

CRGB8Image::~CRGB8Image()
{
    delete[] Pixels;
    Pixels = nullptr;
}

void CRGB8Image::Fill(const uint8_t* pixels)
{
    Pixels = new uint8_t[ByteSize];
    if (pixels != nullptr)
        std::memcpy(Pixels, pixels, ByteSize);
    else
        std::memset(Pixels, 0, ByteSize);
}

void CRGB8Image::Release()
{
    GiveUpReference();
}

void CRGB8Image::AddRef()
{
    TakeReference();
}

void CRGB8Image::Destroy()
{
    CRGB8Image* volatile self = this; // null if a host calls the slot on null: nothing happens
    delete self;
}

uint8_t* CRGB8Image::GetData()
{
    return Pixels;
}

const uint8_t* CRGB8Image::GetPixels() const
{
    return Pixels;
}

uint32_t CRGB8Image::GetWidth() const
{
    return Width;
}

uint32_t CRGB8Image::GetHeight() const
{
    return Height;
}

uint32_t CRGB8Image::GetNumChannels() const
{
    return Channels;
}

uint32_t CRGB8Image::GetRowStride() const
{
    return RowStride;
}

uint32_t CRGB8Image::GetPixelStride() const
{
    return PixelStride;
}

int32_t CRGB8Image::GetChannelOffset(int index) const
{
    return ChannelOffsets[index];
}

} // namespace vistaTrim
