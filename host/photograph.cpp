#include "photograph.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "photo_error.h"
#include "vips_runtime.h"

namespace vistaTrim::host {

namespace {

// What can be told without libvips, in plainer words than it has.
void CheckFile(const std::string& path)
{
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0)
        throw PhotoError(std::generic_category().message(errno));
    if (S_ISDIR(status.st_mode))
        throw PhotoError("is a folder, not a photograph");
    if (!S_ISREG(status.st_mode))
        throw PhotoError("is not a regular file");
    if (status.st_size == 0)
        throw PhotoError("the file is empty");
    if (access(path.c_str(), R_OK) != 0)
        throw PhotoError(std::generic_category().message(errno));
}

// A source and not a file name: libvips reads options out of names that end in brackets.
vips::VSource OpenSource(const std::string& path)
{
    return vips::VSource::new_from_file(path.c_str());
}

// loader is the name of libvips' class, "VipsForeignLoadJpegSource".
std::string FormatOf(const std::string& loader, const vips::VImage& header)
{
    const std::pair<const char*, const char*> kFormats[] = {
        {"Jpeg", "jpg"}, {"Png", "png"}, {"Webp", "webp"}, {"Tiff", "tif"}};
    for (const auto& [name, format] : kFormats)
        if (loader.find(name) != std::string::npos)
            return format;
    if (loader.find("Heif") == std::string::npos)
        return "png";
    const bool isAvif = header.get_typeof("heif-compression") != 0 &&
                        std::string(header.get_string("heif-compression")) == "av1";
    return isAvif ? "avif" : "heic";
}

// A picture that is cut short is an error: half a photograph, the rest grey, gets crops that
// nobody wants, and nobody would know why.
constexpr VipsFailOn kFailOn = VIPS_FAIL_ON_TRUNCATED;

} // namespace

Photograph::Photograph(const std::string& path, const Colour& background)
    : Path(path), Background(background)
{
    CheckFile(path);
    if (!ReadHeader()) {
        LoadVipsModules();
        if (!ReadHeader())
            throw PhotoError("not a picture, or of a format that cannot be read");
    }
}

bool Photograph::ReadHeader()
{
    bool isKnown = false;
    RunVips([this, &isKnown] {
        const vips::VSource source = OpenSource(Path);
        const char* loader = vips_foreign_find_load_source(source.get_source());
        isKnown = loader != nullptr;
        if (!isKnown) {
            vips_error_clear();
            return;
        }
        const vips::VImage header = vips::VImage::new_from_source(
            source, "", vips::VImage::option()->set("access", VIPS_ACCESS_SEQUENTIAL));
        Format = FormatOf(loader, header);
        IsCmyk = header.interpretation() == VIPS_INTERPRETATION_CMYK;
        HasProfile = header.get_typeof(VIPS_META_ICC_NAME) != 0;
        Displayed = {header.width(), header.height()};
        Orientation = vips_image_get_orientation(header.get_image());
        if (Orientation >= 5) // these lie on their side
            std::swap(Displayed.Width, Displayed.Height);
    });
    return isKnown;
}

PixelSize Photograph::Size() const
{
    return Displayed;
}

const std::string& Photograph::NativeFormat() const
{
    return Format;
}

// libvips' thumbnails of CMYK come out in other colours than its own conversion by profile
// gives, so the conversion is made here, and the picture is decoded at full size.
vips::VImage Photograph::ThumbnailOfCmyk(PixelSize size) const
{
    const vips::VImage full = ReadFull(true);
    const double across = static_cast<double>(size.Width) / full.width();
    const double down = static_cast<double>(size.Height) / full.height();
    return full.resize(across, vips::VImage::option()->set("vscale", down))
        .icc_transform("srgb",
                       vips::VImage::option()->set("embedded", true)->set("input_profile", "cmyk"));
}

vips::VImage Photograph::ThumbnailOfColours(PixelSize size) const
{
    // Both sides are forced: the library wants its 640 exactly, and a side that would round to
    // nothing must stay one pixel.
    vips::VOption* options = vips::VImage::option()
                                 ->set("height", size.Height)
                                 ->set("size", VIPS_SIZE_FORCE)
                                 // Given to the reader itself: from a source, libvips' own
                                 // "fail_on" of thumbnails reaches no reader.
                                 ->set("option_string", "fail_on=truncated");
    // Pixels without a profile count as sRGB and must then not be converted at all: on the way
    // through another colour space they would not come back the same. A profile that is of no
    // use counts as none.
    if (HasProfile)
        options->set("export_profile", "srgb")->set("import_profile", "srgb");
    return vips::VImage::thumbnail_source(OpenSource(Path), size.Width, options);
}

vips::VImage Photograph::ReadThumbnail(PixelSize size) const
{
    vips::VImage image = IsCmyk ? ThumbnailOfCmyk(size) : ThumbnailOfColours(size);
    if (image.interpretation() != VIPS_INTERPRETATION_sRGB)
        image = image.colourspace(VIPS_INTERPRETATION_sRGB);
    if (image.has_alpha())
        image = image.flatten(vips::VImage::option()->set(
            "background", std::vector<double>(Background.begin(), Background.end())));
    if (image.bands() != 3 || image.width() != size.Width || image.height() != size.Height)
        throw PhotoError("has a kind of pixels that is not understood");
    return image.cast(VIPS_FORMAT_UCHAR);
}

WorkingPicture Photograph::ReadWorkingPicture() const
{
    WorkingPicture picture;
    picture.Photo = Displayed;
    picture.Size = WorkingSize(Displayed);
    RunVips(
        [this, &picture] {
            const vips::VImage image = ReadThumbnail(picture.Size);
            size_t size = 0;
            const std::unique_ptr<void, decltype(&g_free)> pixels(image.write_to_memory(&size),
                                                                  &g_free);
            const uint8_t* bytes = static_cast<const uint8_t*>(pixels.get());
            picture.Pixels.assign(bytes, bytes + size);
        },
        "the file is damaged or cut short");
    return picture;
}

vips::VImage Photograph::ReadPreview(int32_t longSide) const
{
    const int64_t own = std::max(Displayed.Width, Displayed.Height);
    const int64_t wanted = std::min<int64_t>(own, longSide);
    const auto scaled = [own, wanted](int64_t side) {
        return static_cast<int32_t>(std::max<int64_t>(1, (2 * side * wanted + own) / (2 * own)));
    };
    return ReadThumbnail({scaled(Displayed.Width), scaled(Displayed.Height)}).copy_memory();
}

vips::VImage Photograph::ReadFull(bool oncePerPixel) const
{
    const bool sequential = oncePerPixel && Orientation == 1;
    vips::VImage image = vips::VImage::new_from_source(
        OpenSource(Path), "",
        vips::VImage::option()
            ->set("access", sequential ? VIPS_ACCESS_SEQUENTIAL : VIPS_ACCESS_RANDOM)
            ->set("fail_on", kFailOn));
    return image.autorot();
}

} // namespace vistaTrim::host
