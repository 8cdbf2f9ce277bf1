#include "picture/pixel_source.h"

#include <cstdlib>
#include <string>

#include "picture/vips_pixels.h"
#include "vistaTrimPhoto/photo_error.h"

namespace vistaTrim::photo {

namespace {

void Demand(bool holds, const std::string& text)
{
    if (!holds)
        throw PhotoError(PhotoError::Kind::InvalidRequest, text);
}

void CheckView(const PixelView& pixels)
{
    Demand(pixels.Data != nullptr, "there are no pixels");
    Demand(pixels.Channels == 1 || pixels.Channels == 3 || pixels.Channels == 4,
           "pixels must have 1, 3 or 4 channels");
    Demand(pixels.Width >= 1 && pixels.Height >= 1, "both sides must be at least one pixel");
    Demand(pixels.Width < VIPS_MAX_COORD && pixels.Height < VIPS_MAX_COORD,
           "a side must be shorter than " + std::to_string(VIPS_MAX_COORD) + " pixels");
    Demand(std::abs(pixels.RowStride) >= ptrdiff_t{pixels.Width} * pixels.Channels,
           "the row stride is shorter than a row");
}

class PixelSource : public PhotographSource {
public:
    PixelSource(const PixelView& pixels, const ReadOptions& options)
        : PhotographSource(options), Pixels(pixels)
    {
        CheckView(pixels);
        Displayed = {pixels.Width, pixels.Height};
    }

    vips::VImage ReadFull(bool) const override
    {
        return BorrowedImage(Pixels);
    }

protected:
    vips::VImage ReadThumbnailInColours(PixelSize size) const override
    {
        return BorrowedImage(Pixels).thumbnail_image(
            size.Width,
            vips::VImage::option()->set("height", size.Height)->set("size", VIPS_SIZE_FORCE));
    }

private:
    PixelView Pixels;
};

} // namespace

std::shared_ptr<const PhotographSource> OpenPixels(const PixelView& pixels,
                                                   const ReadOptions& options)
{
    return std::make_shared<const PixelSource>(pixels, options);
}

} // namespace vistaTrim::photo
