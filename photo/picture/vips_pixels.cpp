#include "picture/vips_pixels.h"

#include <cstring>
#include <memory>

namespace vistaTrim::photo {

namespace {

VipsInterpretation InterpretationOf(int32_t channels)
{
    return channels == 1 ? VIPS_INTERPRETATION_B_W : VIPS_INTERPRETATION_sRGB;
}

// libvips requests one part of the image at a time.
int CopyRegion(VipsRegion* out, void*, void* view, void*, gboolean*)
{
    const PixelView& pixels = *static_cast<const PixelView*>(view);
    const VipsRect& part = out->valid;
    for (int row = part.top; row < part.top + part.height; ++row)
        std::memcpy(VIPS_REGION_ADDR(out, part.left, row),
                    pixels.Data + row * pixels.RowStride + ptrdiff_t{part.left} * pixels.Channels,
                    static_cast<size_t>(part.width) * static_cast<size_t>(pixels.Channels));
    return 0;
}

vips::VImage StridedImage(const PixelView& pixels)
{
    VipsImage* image = vips_image_new();
    vips::VImage owner(image);
    vips_image_init_fields(image, pixels.Width, pixels.Height, pixels.Channels, VIPS_FORMAT_UCHAR,
                           VIPS_CODING_NONE, InterpretationOf(pixels.Channels), 1.0, 1.0);
    if (vips_image_pipelinev(image, VIPS_DEMAND_STYLE_ANY, nullptr) != 0 ||
        vips_image_generate(image, nullptr, CopyRegion, nullptr, const_cast<PixelView*>(&pixels),
                            nullptr) != 0)
        throw vips::VError();
    return owner;
}

} // namespace

vips::VImage BorrowedImage(const PixelView& pixels)
{
    const ptrdiff_t rowBytes = ptrdiff_t{pixels.Width} * pixels.Channels;
    if (pixels.RowStride != rowBytes)
        return StridedImage(pixels);
    return vips::VImage::new_from_memory(
               const_cast<uint8_t*>(pixels.Data),
               static_cast<size_t>(rowBytes) * static_cast<size_t>(pixels.Height), pixels.Width,
               pixels.Height, pixels.Channels, VIPS_FORMAT_UCHAR)
        .copy(vips::VImage::option()->set("interpretation", InterpretationOf(pixels.Channels)));
}

PixelImage PixelsOf(const vips::VImage& image)
{
    size_t size = 0;
    const std::unique_ptr<void, decltype(&g_free)> pixels(image.write_to_memory(&size), &g_free);
    const uint8_t* bytes = static_cast<const uint8_t*>(pixels.get());
    return {{image.width(), image.height()}, image.bands(), {bytes, bytes + size}};
}

} // namespace vistaTrim::photo
