#include "crop_writer.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include <unistd.h>

#include "crop_metadata.h"
#include "vips_runtime.h"
#include "whole_file.h"

namespace vistaTrim::host {

namespace {

using vips::VImage;

constexpr int kDefaultQuality = 90;
// The best JPEG codes make a file 1 to 5 % smaller, but take a second pass over the whole crop,
// which then stands in memory: half as much time again, and 6 bytes a pixel.
constexpr int64_t kLargestInTwoPasses = 2'000'000; // pixels

std::string FormatFor(const Photograph& photograph, const Options& options)
{
    return options.CropFiles.Format.empty() ? photograph.NativeFormat() : options.CropFiles.Format;
}

bool Stands(const std::string& file)
{
    return access(file.c_str(), F_OK) == 0;
}

bool KeepsAlpha(const std::string& format)
{
    return format != "jpg";
}

bool KeepsCmyk(const std::string& format)
{
    return format == "jpg" || format == "tif";
}

// Brings whatever a format cannot hold to something that it can.
VImage FitForFormat(VImage image, const std::string& format, const Colour& background)
{
    const VipsInterpretation kind = image.interpretation();
    if (kind == VIPS_INTERPRETATION_CMYK && !KeepsCmyk(format)) {
        image = image.icc_transform(
            "srgb", VImage::option()->set("embedded", true)->set("input_profile", "cmyk"));
    } else if (kind != VIPS_INTERPRETATION_sRGB && kind != VIPS_INTERPRETATION_RGB16 &&
               kind != VIPS_INTERPRETATION_B_W && kind != VIPS_INTERPRETATION_GREY16 &&
               kind != VIPS_INTERPRETATION_CMYK && kind != VIPS_INTERPRETATION_RGB) {
        image = image.colourspace(VIPS_INTERPRETATION_sRGB);
    }
    if (image.has_alpha() && !KeepsAlpha(format)) {
        const double white = image.format() == VIPS_FORMAT_USHORT ? 65535.0 : 255.0;
        std::vector<double> under;
        if (image.bands() >= 4)
            under.assign(background.begin(), background.end());
        else // the grey of the same brightness
            under.push_back(0.299 * background[0] + 0.587 * background[1] + 0.114 * background[2]);
        for (double& value : under)
            value *= white / 255.0;
        under.resize(static_cast<size_t>(image.bands()) - 1, 0.0);
        image = image.flatten(VImage::option()->set("background", under));
    }
    return image;
}

VImage Resized(VImage image, PixelSize size)
{
    const double across = static_cast<double>(size.Width) / image.width();
    const double down = static_cast<double>(size.Height) / image.height();
    const VipsBandFormat format = image.format();
    const bool alpha = image.has_alpha();
    if (alpha) // colours of transparent pixels must not bleed into their neighbours
        image = image.premultiply();
    image = image.resize(across, VImage::option()->set("vscale", down));
    if (alpha)
        image = image.unpremultiply().cast(format);
    return image;
}

void Save(const VImage& image, const std::string& path, const std::string& format, int quality)
{
    const vips::VTarget target = vips::VTarget::new_to_file(path.c_str());
    vips::VOption* options = VImage::option();
    const bool isSmall = int64_t{image.width()} * image.height() <= kLargestInTwoPasses;
    if (format == "jpg") {
        image.jpegsave_target(target, options->set("Q", quality)->set("optimize_coding", isSmall));
    } else if (format == "png") {
        image.pngsave_target(target, options);
    } else if (format == "webp") {
        image.webpsave_target(target, options->set("Q", quality));
    } else if (format == "tif") {
        image.tiffsave_target(target,
                              options->set("compression", VIPS_FOREIGN_TIFF_COMPRESSION_DEFLATE)
                                  ->set("predictor", VIPS_FOREIGN_TIFF_PREDICTOR_HORIZONTAL));
    } else {
        image.heifsave_target(target,
                              options->set("Q", quality)
                                  ->set("compression", format == "avif"
                                                           ? VIPS_FOREIGN_HEIF_COMPRESSION_AV1
                                                           : VIPS_FOREIGN_HEIF_COMPRESSION_HEVC));
    }
}

} // namespace

PixelSize FittedSize(PixelSize crop, PixelSize box)
{
    const double scale = std::min(static_cast<double>(box.Width) / crop.Width,
                                  static_cast<double>(box.Height) / crop.Height);
    const auto scaled = [scale](int32_t side) {
        return static_cast<int32_t>(std::max(1L, std::lround(side * scale)));
    };
    return {std::min(scaled(crop.Width), box.Width), std::min(scaled(crop.Height), box.Height)};
}

std::string CropFile(const Photograph& photograph, const std::string& prefix, size_t rank,
                     const Options& options)
{
    return prefix + "-" + std::to_string(rank) + "." + FormatFor(photograph, options);
}

std::vector<std::string> WriteCrops(const Photograph& photograph,
                                    const std::vector<SuggestedCrop>& crops,
                                    const std::string& prefix, const Options& options)
{
    const CropFileOptions& how = options.CropFiles;
    const std::string format = FormatFor(photograph, options);
    const int quality = how.Quality == 0 ? kDefaultQuality : how.Quality;
    if (format == "avif" || format == "heic")
        LoadVipsModules();
    std::vector<PixelRect> rects; // of the files to write
    std::vector<std::unique_ptr<WholeFile>> files;
    for (size_t i = 0; i < crops.size(); ++i) {
        const std::string name = CropFile(photograph, prefix, i + 1, options);
        if (options.Resume && Stands(name))
            continue;
        rects.push_back(crops[i].Rect);
        files.push_back(std::make_unique<WholeFile>(name, options.Force));
    }
    if (files.empty())
        return {};

    RunVips([&] {
        const VImage full = photograph.ReadFull(files.size() == 1);
        for (size_t i = 0; i < files.size(); ++i) {
            const PixelRect& rect = rects[i];
            VImage image = full.extract_area(rect.X, rect.Y, rect.Width, rect.Height);
            image = FitForFormat(image, format, options.Background);
            if (how.ResizeTo)
                image = Resized(image, FittedSize({rect.Width, rect.Height}, *how.ResizeTo));
            image = WithMetadataForCrop(image, how.Strip);
            Save(image, files[i]->TemporaryPath(), format, quality);
        }
    });

    std::vector<std::string> written;
    written.reserve(files.size());
    for (size_t i = files.size(); i-- > 0;)
        files[i]->Appear();
    for (const std::unique_ptr<WholeFile>& file : files)
        written.push_back(file->Target());
    return written;
}

bool HasAllCrops(const Photograph& photograph, const std::string& prefix, const Options& options)
{
    for (int32_t rank = 1; rank <= options.Request.Top; ++rank)
        if (!Stands(CropFile(photograph, prefix, static_cast<size_t>(rank), options)))
            return false;
    return true;
}

} // namespace vistaTrim::host
