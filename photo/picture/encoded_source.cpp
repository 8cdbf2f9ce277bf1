#include "picture/encoded_source.h"

#include <cerrno>
#include <cstdio>
#include <functional>
#include <system_error>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

#include "picture/crop_metadata.h"
#include "picture/loaders.h"
#include "picture/path_ending.h"
#include "picture/tiff_exif.h"
#include "picture/unread_formats.h"
#include "picture/vips_runtime.h"
#include "regions/metadata_regions.h"
#include "vistaTrimPhoto/photo_error.h"

namespace vistaTrim::photo {

namespace {

[[noreturn]] void ThrowUnreadable(const std::string& text)
{
    throw PhotoError(PhotoError::Kind::Unreadable, text);
}

// Checks that need no libvips, for clearer messages than its own.
void CheckFile(const std::string& path)
{
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0)
        ThrowUnreadable(std::generic_category().message(errno));
    if (S_ISDIR(status.st_mode))
        ThrowUnreadable("is a folder, not a photograph");
    if (!S_ISREG(status.st_mode))
        ThrowUnreadable("is not a regular file");
    if (status.st_size == 0)
        ThrowUnreadable("the file is empty");
    if (access(path.c_str(), R_OK) != 0)
        ThrowUnreadable(std::generic_category().message(errno));
}

struct LoaderFormat {
    const char* Name; // part of the name of libvips' class, as in "VipsForeignLoadJpegSource"
    ImageFormat Format;
};

constexpr LoaderFormat kLoaderFormats[] = {{"Jpeg", ImageFormat::Jpeg},
                                           {"Png", ImageFormat::Png},
                                           {"Webp", ImageFormat::Webp},
                                           {"Tiff", ImageFormat::Tiff}};

// PNG, which is lossless, stands in for formats that crops cannot be written in.
ImageFormat FormatOf(const std::string& loader, const vips::VImage& header)
{
    for (const LoaderFormat& known : kLoaderFormats)
        if (loader.find(known.Name) != std::string::npos)
            return known.Format;
    if (loader.find("Heif") == std::string::npos)
        return ImageFormat::Png;
    const bool isAvif = header.get_typeof("heif-compression") != 0 &&
                        std::string(header.get_string("heif-compression")) == "av1";
    return isAvif ? ImageFormat::Avif : ImageFormat::Heic;
}

// A truncated picture is an error: half a photograph, the rest grey, would get useless crops
// without explanation.
constexpr VipsFailOn kFailOn = VIPS_FAIL_ON_TRUNCATED;

constexpr int kMaximum = 1; // columns of libvips' statistics
constexpr int kMean = 4;

std::string NumberText(double value)
{
    char text[40];
    std::snprintf(text, sizeof text, "%.6g", value);
    return text;
}

// Converts linear grey light, 0..1, to 8-bit grey as colours are converted.
vips::VImage InSteps(const vips::VImage& light)
{
    const vips::VImage grey = light.extract_band(0);
    vips::VImage steps =
        vips::VImage::bandjoin({grey, grey, grey})
            .copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_scRGB))
            .colourspace(VIPS_INTERPRETATION_sRGB)
            .extract_band(0);
    if (light.bands() > 1)
        steps = steps.bandjoin(light.extract_band(1).linear(255, 0).cast(VIPS_FORMAT_UCHAR));
    steps = steps.copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_B_W));
    steps.remove(VIPS_META_ICC_NAME); // it is that of the light
    return steps;
}

vips::VImage Scaled(const vips::VImage& image, PixelSize size)
{
    const double across = static_cast<double>(size.Width) / image.width();
    const double down = static_cast<double>(size.Height) / image.height();
    return image.resize(across, vips::VImage::option()->set("vscale", down));
}

class EncodedSource : public PhotographSource {
public:
    using Opener = std::function<vips::VSource()>;

    // ending  the extension of the file name; may be empty
    EncodedSource(Opener open, const std::string& ending, const ReadOptions& options)
        : PhotographSource(options), Open(std::move(open))
    {
        if (ReadHeader())
            return;
        LoadVipsModules();
        if (!ReadHeader())
            ThrowUnread(ending);
    }

    vips::VImage ReadFull(bool oncePerPixel) const override
    {
        vips::VImage image = AsStored(oncePerPixel && Orientation == 1);
        if (IsUnitGrey)
            image = InSteps(image);
        image = image.autorot().copy(); // only a private copy's fields may be changed
        SetExif(image, TiffExif);
        return image;
    }

protected:
    vips::VImage ReadThumbnailInColours(PixelSize size) const override
    {
        return IsCmyk       ? ThumbnailOfCmyk(size)
               : IsUnitGrey ? Scaled(ReadFull(true), size)
                            : ThumbnailOfColours(size);
    }

private:
    vips::VImage AsStored(bool sequential) const
    {
        return vips::VImage::new_from_source(
            Open(), "",
            vips::VImage::option()
                ->set("access", sequential ? VIPS_ACCESS_SEQUENTIAL : VIPS_ACCESS_RANDOM)
                ->set("fail_on", kFailOn));
    }

    [[noreturn]] void ThrowUnread(const std::string& ending) const
    {
        std::string sentence;
        RunVips([&] { sentence = UnreadSentence(Open(), ending); }, PhotoError::Kind::Unreadable);
        throw PhotoError(PhotoError::Kind::Unsupported, sentence);
    }

    // False if no reader knows the format.
    bool ReadHeader()
    {
        bool isKnown = false;
        RunVips(
            [this, &isKnown] {
                const vips::VSource source = Open();
                const std::string loader = LoaderOf(source);
                isKnown = !loader.empty() &&
                          (loader.find("Tiff") == std::string::npos || !IsRawTiff(Open()));
                if (!isKnown)
                    return;
                const vips::VImage header = vips::VImage::new_from_source(
                    source, "", vips::VImage::option()->set("access", VIPS_ACCESS_SEQUENTIAL));
                Native = FormatOf(loader, header);
                if (Native == ImageFormat::Tiff) {
                    const vips::VSource fields = Open();
                    TiffExif = ExifOfTiff(TiffReaderOf(fields));
                    NoteFloats(header);
                }
                if (Native == ImageFormat::Jpeg)
                    StoredCoding = CodingOfJpeg(Open());
                IsCmyk = header.interpretation() == VIPS_INTERPRETATION_CMYK;
                HasProfile = header.get_typeof(VIPS_META_ICC_NAME) != 0;
                Displayed = {header.width(), header.height()};
                Orientation = vips_image_get_orientation(header.get_image());
                if (Orientation >= 5) // these lie on their side
                    std::swap(Displayed.Width, Displayed.Height);
                Named = RegionsOfXmp(XmpOf(header), Displayed, Orientation);
            },
            PhotoError::Kind::Damaged);
        return isKnown;
    }

    // libvips takes floating-point colours as light from 0 to 1, but greys as steps from 0 to 255,
    // although most files have 0 to 1 in both. Only the pixels show which it is.
    void NoteFloats(const vips::VImage& header)
    {
        if (header.format() != VIPS_FORMAT_FLOAT) // libvips reads no larger ones
            return;
        const bool isGrey = header.interpretation() == VIPS_INTERPRETATION_B_W;
        if (!isGrey && header.interpretation() != VIPS_INTERPRETATION_scRGB)
            return;
        const vips::VImage stats =
            AsStored(true)
                .extract_band(0, vips::VImage::option()->set("n", isGrey ? 1 : 3))
                .stats();
        const double most = stats.getpoint(kMaximum, 0)[0];
        const double mean = stats.getpoint(kMean, 0)[0];
        IsUnitGrey = isGrey && most <= 1;
        // Highlights above 1 become white. A mean above 1 means another scale.
        const bool isUnknown = isGrey ? most > 255 : mean > 1;
        if (isUnknown)
            throw PhotoError(PhotoError::Kind::Unsupported,
                             "floating-point values up to " + NumberText(most) +
                                 "; they must be linear light, 0 (black) to 1 (white)");
    }

    // libvips thumbnails of CMYK have different colours from its profile conversion, so this
    // decodes at full size and converts here.
    vips::VImage ThumbnailOfCmyk(PixelSize size) const
    {
        return Scaled(ReadFull(true), size)
            .icc_transform(
                "srgb",
                vips::VImage::option()->set("embedded", true)->set("input_profile", "cmyk"));
    }

    vips::VImage ThumbnailOfColours(PixelSize size) const
    {
        // Both sides are forced: the engine wants its 640 exactly, and a side that would round
        // to nothing must stay one pixel.
        vips::VOption* options = vips::VImage::option()
                                     ->set("height", size.Height)
                                     ->set("size", VIPS_SIZE_FORCE)
                                     // Passed to the loader itself: with a source, the thumbnail
                                     // option "fail_on" does not reach it.
                                     ->set("option_string", "fail_on=truncated");
        // Pixels without a profile count as sRGB and must not be converted at all: they would not
        // round-trip through another colour space. An unusable profile counts as none.
        if (HasProfile)
            options->set("export_profile", "srgb")->set("import_profile", "srgb");
        return vips::VImage::thumbnail_source(Open(), size.Width, options);
    }

    Opener Open;
    ExifBlock TiffExif; // of a TIFF file, from which libvips does not read it
    bool IsCmyk = false;
    bool IsUnitGrey = false; // floating-point grey of 0 to 1
    bool HasProfile = false;
};

} // namespace

std::shared_ptr<const PhotographSource> OpenFile(const std::string& path,
                                                 const ReadOptions& options)
{
    CheckFile(path);
    // A source, not a file name: libvips parses options from names that end in brackets.
    return std::make_shared<const EncodedSource>(
        [path] { return vips::VSource::new_from_file(path.c_str()); }, EndingOfPath(path), options);
}

std::shared_ptr<const PhotographSource> OpenBytes(const void* data, size_t size,
                                                  const ReadOptions& options)
{
    if (data == nullptr || size == 0)
        ThrowUnreadable("there are no bytes to read");
    return std::make_shared<const EncodedSource>(
        [data, size] { return vips::VSource::new_from_memory(data, size); }, "", options);
}

} // namespace vistaTrim::photo
