#include "vistaTrimPhoto/image_encoder.h"

#include <algorithm>

#include "picture/save.h"
#include "picture/vips_pixels.h"
#include "picture/vips_runtime.h"
#include "vistaTrimPhoto/photo_error.h"

namespace vistaTrim::photo {

namespace {

SaveOptions SaveOptionsOf(const Encoding& encoding)
{
    SaveOptions options;
    options.Format = encoding.Format;
    options.Quality = encoding.Quality;
    options.AlphaQuality = encoding.Quality;
    options.Fast = encoding.Fast;
    options.Strip = true;
    if (NeedsModules(encoding.Format))
        LoadVipsModules();
    return options;
}

void CheckEncoding(const PixelImage& image, const Encoding& encoding)
{
    const PixelRect whole{0, 0, image.Size.Width, image.Size.Height};
    if (encoding.Part &&
        (encoding.Part->Width < 1 || encoding.Part->Height < 1 || !Contains(whole, *encoding.Part)))
        throw PhotoError(PhotoError::Kind::DoesNotFit, "the part is not inside the image");
    if (encoding.Quality < 1 || encoding.Quality > 100)
        throw PhotoError(PhotoError::Kind::InvalidRequest, "the quality must be 1 to 100");
    if (encoding.LongSide && *encoding.LongSide < 1)
        throw PhotoError(PhotoError::Kind::InvalidRequest,
                         "the longer side must be at least one pixel");
}

// Cut and scaled on the way to the encoder, without a copy in between.
vips::VImage RequestedPart(const PixelImage& image, const Encoding& encoding)
{
    vips::VImage part = BorrowedImage(ViewOf(image));
    // Makes libvips scale in strips of full width, as it does while it decodes a file: where a
    // tile starts decides how it rounds.
    part.set(VIPS_META_SEQUENTIAL, 1);
    if (encoding.Part)
        part = part.extract_area(encoding.Part->X, encoding.Part->Y, encoding.Part->Width,
                                 encoding.Part->Height);
    const int longSide = std::max(part.width(), part.height());
    if (encoding.LongSide && longSide > *encoding.LongSide)
        part = part.resize(static_cast<double>(*encoding.LongSide) / longSide);
    return part;
}

} // namespace

std::vector<uint8_t> EncodeImage(const PixelImage& image, const Encoding& encoding)
{
    CheckEncoding(image, encoding);
    const SaveOptions options = SaveOptionsOf(encoding);
    std::vector<uint8_t> bytes;
    RunVips([&] { bytes = SaveToMemory(RequestedPart(image, encoding), options); },
            PhotoError::Kind::NotWritable);
    return bytes;
}

void WriteImage(const PixelImage& image, const std::string& path, const Encoding& encoding)
{
    CheckEncoding(image, encoding);
    const SaveOptions options = SaveOptionsOf(encoding);
    RunVips(
        [&] {
            Save(RequestedPart(image, encoding), vips::VTarget::new_to_file(path.c_str()), options);
        },
        PhotoError::Kind::NotWritable);
}

} // namespace vistaTrim::photo
