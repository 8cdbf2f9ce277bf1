// The picture that a driver works on.
#ifndef VISTATRIM_IMAGE_H
#define VISTATRIM_IMAGE_H

#include <cstdint>

#include "vistaTrim/base_class.h"
#include "vistaTrim/export.h"

namespace vistaTrim {

// A picture of packed 8-bit pixels, top row first, with no padding between rows. The driver borrows
// it: keep it until the driver is gone.
//
// Give it three bytes per pixel and a longer side of exactly 640 pixels; resampling is the host's
// work. The analysis never resamples. It works at W x H, the image's size times 640 / longer side,
// each rounded to the nearest, and reads the first W x H x 3 bytes of GetPixels(), packed, whatever
// GetNumChannels() and GetRowStride() say. Hence, for any other image:
// - Its buffer, GetRowStride() x GetHeight() bytes counted in 32 bits, has fewer than W x H x 3
//   bytes (320 x 240 x 3, 640 x 480 x 1): making a driver throws the char pointer
//   "VistaTrim: the image holds fewer pixels than the analysis reads.\n".
// - Its longer side is above 640, its pixels have more than three bytes, or its rows are padded (as
//   those of a host's own IImage may be): the bytes are read with the wrong row length. There is no
//   error, and the crops mean nothing.
// - W or H rounds to 0 (a ratio above about 1:1280), or the image has no pixels: a line on the
//   error stream, and a driver that scores every crop 0.
class VISTATRIM_API IImage : public IBaseClass {
public:
    IImage();
    IImage(const IImage& other);
    IImage& operator=(const IImage& other);

protected:
    ~IImage() override;

public:
    virtual void Destroy() = 0;                   // destroys the object, whatever its count
    virtual uint8_t* GetData() = 0;               // the pixels, writable; the image owns them
    virtual const uint8_t* GetPixels() const = 0; // the same pointer
    virtual uint32_t GetWidth() const = 0;        // pixels
    virtual uint32_t GetHeight() const = 0;       // pixels
    virtual uint32_t GetNumChannels() const = 0;  // bytes per pixel, as given at creation
    virtual uint32_t GetRowStride() const = 0;    // bytes per row
    virtual uint32_t GetPixelStride() const = 0;  // bytes per pixel
    virtual int32_t GetChannelOffset(int index) const = 0; // index 0..3, not checked
};

} // namespace vistaTrim

#endif
