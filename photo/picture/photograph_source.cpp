#include "picture/photograph_source.h"

#include "vistaTrimPhoto/photo_error.h"

namespace vistaTrim::photo {

const PhotographSource& PhotographSource::Of(const Photograph& photograph)
{
    return *photograph.Shared;
}

PhotographSource::PhotographSource(const ReadOptions& options) : Under(options.Background)
{
}

PixelSize PhotographSource::Size() const
{
    return Displayed;
}

ImageFormat PhotographSource::NativeFormat() const
{
    return Native;
}

const std::optional<JpegCoding>& PhotographSource::Coding() const
{
    return StoredCoding;
}

const Colour& PhotographSource::Background() const
{
    return Under;
}

int PhotographSource::StoredOrientation() const
{
    return Orientation;
}

const std::vector<FoundRegion>& PhotographSource::NamedRegions() const
{
    return Named;
}

vips::VImage PhotographSource::ReadThumbnail(PixelSize size) const
{
    vips::VImage image = ReadThumbnailInColours(size);
    if (image.interpretation() != VIPS_INTERPRETATION_sRGB)
        image = image.colourspace(VIPS_INTERPRETATION_sRGB);
    if (image.has_alpha())
        image = image.flatten(vips::VImage::option()->set(
            "background", std::vector<double>(Under.begin(), Under.end())));
    if (image.bands() != 3 || image.width() != size.Width || image.height() != size.Height)
        throw PhotoError(PhotoError::Kind::Unsupported, "has an unsupported pixel type");
    return image.cast(VIPS_FORMAT_UCHAR);
}

} // namespace vistaTrim::photo
