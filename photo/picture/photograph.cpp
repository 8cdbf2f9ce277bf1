#include "vistaTrimPhoto/photograph.h"

#include <algorithm>
#include <utility>

#include "picture/encoded_source.h"
#include "picture/pixel_source.h"
#include "picture/vips_pixels.h"
#include "picture/vips_runtime.h"
#include "vistaTrimPhoto/photo_error.h"
#include "vistaTrimPhoto/stopwatch.h"

namespace vistaTrim::photo {

namespace {

PixelImage ReadScaled(const PhotographSource& source, PixelSize size)
{
    PixelImage pixels;
    RunVips([&] { pixels = PixelsOf(source.ReadThumbnail(size)); }, PhotoError::Kind::Damaged);
    return pixels;
}

} // namespace

Photograph::Photograph(std::shared_ptr<const PhotographSource> source) : Shared(std::move(source))
{
}

Photograph Photograph::FromFile(const std::string& path, const ReadOptions& options)
{
    return Photograph(OpenFile(path, options));
}

Photograph Photograph::FromBytes(const void* data, size_t size, const ReadOptions& options)
{
    return Photograph(OpenBytes(data, size, options));
}

Photograph Photograph::FromPixels(const PixelView& pixels, const ReadOptions& options)
{
    return Photograph(OpenPixels(pixels, options));
}

PixelSize Photograph::Size() const
{
    return Shared->Size();
}

int Photograph::StoredOrientation() const
{
    return Shared->StoredOrientation();
}

ImageFormat Photograph::NativeFormat() const
{
    return Shared->NativeFormat();
}

WorkingPicture Photograph::ReadWorkingPicture() const
{
    const Stopwatch reading;
    WorkingPicture picture;
    picture.Photo = Size();
    picture.Pixels = ReadScaled(*Shared, WorkingSize(Size()));
    picture.NamedRegions = Shared->NamedRegions();
    picture.ReadMilliseconds = reading.Milliseconds();
    return picture;
}

PixelImage Photograph::ReadPreview(int32_t longSide) const
{
    if (longSide < 1)
        throw PhotoError(PhotoError::Kind::InvalidRequest,
                         "the longer side of a preview must be at least one pixel");
    const int32_t own = std::max(Size().Width, Size().Height);
    return ReadScaled(*Shared, ScaledToLongSide(Size(), std::min(own, longSide)));
}

} // namespace vistaTrim::photo
