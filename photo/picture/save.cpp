#include "picture/save.h"

namespace vistaTrim::photo {

using vips::VImage;

namespace {

VipsForeignSubsample SubsampleOf(const std::optional<ChromaSampling>& chroma)
{
    if (!chroma)
        return VIPS_FOREIGN_SUBSAMPLE_AUTO;
    return *chroma == ChromaSampling::Half ? VIPS_FOREIGN_SUBSAMPLE_ON : VIPS_FOREIGN_SUBSAMPLE_OFF;
}

} // namespace

void Save(const VImage& image, const vips::VTarget& target, const SaveOptions& options)
{
    vips::VOption* own = VImage::option()->set("strip", options.Strip);
    switch (options.Format) {
    case ImageFormat::Jpeg:
        image.jpegsave_target(target, own->set("Q", options.Quality)
                                          ->set("subsample_mode", SubsampleOf(options.Chroma))
                                          ->set("optimize_coding", options.BestCodes));
        return;
    case ImageFormat::Png:
        // For a photograph, filtered rows at compression level 2 give a smaller file than
        // unfiltered rows at level 6, in half the time.
        if (options.Photographic)
            own->set("filter", VIPS_FOREIGN_PNG_FILTER_ALL)->set("compression", 2);
        image.pngsave_target(target, own);
        return;
    case ImageFormat::Webp:
        image.webpsave_target(target, own->set("Q", options.Quality)
                                          ->set("alpha_q", options.AlphaQuality)
                                          ->set("effort", options.Fast ? 1 : 4));
        return;
    case ImageFormat::Tiff:
        image.tiffsave_target(target,
                              own->set("compression", VIPS_FOREIGN_TIFF_COMPRESSION_DEFLATE)
                                  ->set("predictor", VIPS_FOREIGN_TIFF_PREDICTOR_HORIZONTAL));
        return;
    case ImageFormat::Avif:
    case ImageFormat::Heic: break;
    }
    image.heifsave_target(target,
                          own->set("Q", options.Quality)
                              ->set("compression", options.Format == ImageFormat::Avif
                                                       ? VIPS_FOREIGN_HEIF_COMPRESSION_AV1
                                                       : VIPS_FOREIGN_HEIF_COMPRESSION_HEVC));
}

std::vector<uint8_t> SaveToMemory(const VImage& image, const SaveOptions& options)
{
    const vips::VTarget target = vips::VTarget::new_to_memory();
    Save(image, target, options);
    VipsBlob* blob = nullptr;
    g_object_get(target.get_target(), "blob", &blob, nullptr);
    size_t size = 0;
    const auto* bytes = static_cast<const uint8_t*>(vips_blob_get(blob, &size));
    std::vector<uint8_t> copy(bytes, bytes + size);
    vips_area_unref(VIPS_AREA(blob));
    return copy;
}

bool NeedsModules(ImageFormat format)
{
    return format == ImageFormat::Avif || format == ImageFormat::Heic;
}

bool KeepsAlpha(ImageFormat format)
{
    return format != ImageFormat::Jpeg;
}

bool KeepsCmyk(ImageFormat format)
{
    return format == ImageFormat::Jpeg || format == ImageFormat::Tiff;
}

} // namespace vistaTrim::photo
