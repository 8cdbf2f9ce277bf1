#include "vistaTrimPhoto/crop_writer.h"

#include <algorithm>
#include <functional>

#include "picture/crop_metadata.h"
#include "picture/photograph_source.h"
#include "picture/save.h"
#include "picture/side_by_side.h"
#include "picture/tiff_exif.h"
#include "picture/vips_pixels.h"
#include "picture/vips_runtime.h"
#include "vistaTrimPhoto/photo_error.h"

namespace vistaTrim::photo {

namespace {

using vips::VImage;

// The best JPEG codes make a file 1 to 5 % smaller, but take a second pass over the whole crop,
// which is then in memory: half as much time again, and 6 bytes per pixel.
constexpr int64_t kLargestInTwoPasses = 2'000'000; // pixels

// Converts what a format cannot store to something it can.
VImage FitForFormat(VImage image, ImageFormat format, const Colour& background)
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
        else // the grey of equal brightness
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

// `encodes`: the crops go into files of their formats.
void CheckCrops(const PhotographSource& source, const std::vector<CropOutput>& crops, bool encodes)
{
    const PixelRect whole{0, 0, source.Size().Width, source.Size().Height};
    for (const CropOutput& crop : crops) {
        if (crop.Rect.Width < 1 || crop.Rect.Height < 1 || !Contains(whole, crop.Rect))
            throw PhotoError(PhotoError::Kind::DoesNotFit, "a crop is not inside the photograph");
        if (crop.Size && (crop.Size->Width < 1 || crop.Size->Height < 1))
            throw PhotoError(PhotoError::Kind::InvalidRequest,
                             "both sides of a crop must be at least one pixel");
        const PixelSize size = crop.Size.value_or(PixelSize{crop.Rect.Width, crop.Rect.Height});
        if (encodes && std::max(size.Width, size.Height) > LongestSide(crop.Format))
            throw PhotoError(PhotoError::Kind::NotWritable,
                             "a crop of " + std::to_string(size.Width) + " x " +
                                 std::to_string(size.Height) + " pixels is larger than " +
                                 EndingOf(crop.Format) + " holds: at most " +
                                 std::to_string(LongestSide(crop.Format)) + " a side");
        if (crop.Quality && (*crop.Quality < 1 || *crop.Quality > 100))
            throw PhotoError(PhotoError::Kind::InvalidRequest, "the quality must be 1 to 100");
    }
}

using CropReceiver = std::function<void(size_t index, const VImage& cut)>;

// Decodes once, cuts each crop and passes it to `receive`. For use inside RunVips. The first thread
// that needs pixels makes libvips decode them; the others wait for that.
void CutEach(const PhotographSource& source, const std::vector<CropOutput>& crops, int threads,
             const CropReceiver& receive)
{
    const VImage full = source.ReadFull(crops.size() == 1);
    SideBySide(crops.size(), threads, [&](size_t i) {
        const PixelRect& rect = crops[i].Rect;
        receive(i, full.extract_area(rect.X, rect.Y, rect.Width, rect.Height));
    });
}

// The crop as it goes into a file.
VImage Finished(const VImage& cut, const CropOutput& crop, const PhotographSource& source)
{
    VImage image = FitForFormat(cut, crop.Format, source.Background());
    if (crop.Size)
        image = Resized(image, *crop.Size);
    return WithMetadataForCrop(image, {source.Size(), source.StoredOrientation(), crop.Rect},
                               crop.Format, crop.Strip);
}

// Encoding more finely than the photograph would only spend bytes on its compression artefacts.
SaveOptions SaveOptionsOf(const VImage& image, const CropOutput& crop,
                          const PhotographSource& source)
{
    SaveOptions options;
    options.Format = crop.Format;
    options.Quality = crop.Quality.value_or(kDefaultQuality);
    options.Chroma = crop.Chroma;
    if (crop.Format == ImageFormat::Jpeg && source.Coding()) {
        if (!crop.Quality)
            options.Quality = source.Coding()->Quality;
        if (!crop.Chroma)
            options.Chroma = source.Coding()->Chroma;
    }
    options.Photographic = true;
    options.BestCodes = int64_t{image.width()} * image.height() <= kLargestInTwoPasses;
    return options;
}

// Upright sRGB of three 8-bit channels.
VImage InScreenColours(VImage image, const Colour& background)
{
    const bool isCmyk = image.interpretation() == VIPS_INTERPRETATION_CMYK;
    if (isCmyk || image.get_typeof(VIPS_META_ICC_NAME) != 0)
        image = image.icc_transform("srgb", VImage::option()
                                                ->set("embedded", true)
                                                ->set("input_profile", isCmyk ? "cmyk" : "srgb"));
    else if (image.interpretation() != VIPS_INTERPRETATION_sRGB)
        image = image.colourspace(VIPS_INTERPRETATION_sRGB);
    if (image.has_alpha())
        image = image.flatten(VImage::option()->set(
            "background", std::vector<double>(background.begin(), background.end())));
    return image.cast(VIPS_FORMAT_UCHAR);
}

// Reading and writing happen in one pass, so a failure does not say which of the two failed.
// Failures are rare, so the photograph is simply read once more. Throws if that fails.
void ReadOnceMore(const PhotographSource& source)
{
    RunVips([&source] { source.ReadFull(true).avg(); }, PhotoError::Kind::Damaged);
}

// Passes every crop to `save`, which may be called twice for each, and by several threads.
void SaveEach(const Photograph& photograph, const std::vector<CropOutput>& crops, int threads,
              const CropReceiver& save)
{
    if (crops.empty())
        return;
    const PhotographSource& source = PhotographSource::Of(photograph);
    CheckCrops(source, crops, true);
    for (const CropOutput& crop : crops)
        if (NeedsModules(crop.Format))
            LoadVipsModules();
    try {
        RunVips(
            [&] {
                CutEach(source, crops, threads, [&](size_t i, const VImage& cut) {
                    save(i, Finished(cut, crops[i], source));
                });
            },
            PhotoError::Kind::NotWritable);
    } catch (const PhotoError& error) {
        if (error.GetKind() == PhotoError::Kind::NotWritable)
            ReadOnceMore(source);
        throw;
    }
}

} // namespace

void CheckCropFiles(const Photograph& photograph, const std::vector<CropOutput>& crops)
{
    CheckCrops(PhotographSource::Of(photograph), crops, true);
}

void WriteCrops(const Photograph& photograph, const std::vector<CropOutput>& crops,
                const std::vector<std::string>& paths, int threads)
{
    if (paths.size() != crops.size())
        throw PhotoError(PhotoError::Kind::InvalidRequest, "there must be one path for each crop");
    const PhotographSource& source = PhotographSource::Of(photograph);
    SaveEach(photograph, crops, threads, [&](size_t i, const VImage& image) {
        Save(image, vips::VTarget::new_to_file(paths[i].c_str()),
             SaveOptionsOf(image, crops[i], source));
        if (crops[i].Format == ImageFormat::Tiff)
            AddToTiff(TiffExtrasOf(image), paths[i]);
    });
}

std::vector<std::vector<uint8_t>> EncodeCrops(const Photograph& photograph,
                                              const std::vector<CropOutput>& crops)
{
    std::vector<std::vector<uint8_t>> encoded(crops.size());
    const PhotographSource& source = PhotographSource::Of(photograph);
    SaveEach(photograph, crops, 1, [&](size_t i, const VImage& image) {
        encoded[i] = SaveToMemory(image, SaveOptionsOf(image, crops[i], source));
        if (crops[i].Format == ImageFormat::Tiff)
            AddToTiff(TiffExtrasOf(image), encoded[i]);
    });
    return encoded;
}

std::vector<PixelImage> ReadCrops(const Photograph& photograph,
                                  const std::vector<CropOutput>& crops)
{
    std::vector<PixelImage> pixels(crops.size());
    if (crops.empty())
        return pixels;
    const PhotographSource& source = PhotographSource::Of(photograph);
    CheckCrops(source, crops, false);
    RunVips(
        [&] {
            CutEach(source, crops, 1, [&](size_t i, const VImage& cut) {
                VImage image = InScreenColours(cut, source.Background());
                if (crops[i].Size)
                    image = Resized(image, *crops[i].Size);
                pixels[i] = PixelsOf(image);
            });
        },
        PhotoError::Kind::Damaged);
    return pixels;
}

} // namespace vistaTrim::photo
