// dump_maps: writes every map of a picture's analysis as a grey PNG for inspection.
//
//     dump_maps photo.jpg folder
//
// The picture is turned upright, scaled to 640 pixels on its longer side and written beside the
// maps as input.png. Map values 0 to 1 become 0 to 255; --stretch first divides each map by its
// maximum, which makes faint maps visible.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <vips/vips8>

#include "public/analysed_picture.h"
#include "vistaTrim/functions.h"

namespace {

namespace fs = std::filesystem;

constexpr int kLongSide = 640;

struct ImageEnd {
    void operator()(vistaTrim::IImage* image) const
    {
        DestroyImageObj(image);
    }
};

struct PixelEnd {
    void operator()(void* pixels) const
    {
        g_free(pixels);
    }
};

// Throws an error that names the file.
[[noreturn]] void Fail(const std::string& file, const std::string& what)
{
    throw std::runtime_error(file + ": " + what);
}

// libvips's messages end in line feeds and may span several lines.
std::string OneLine(std::string text)
{
    while (!text.empty() && text.back() == '\n')
        text.pop_back();
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

// Upright, three bytes per pixel, longer side exactly 640.
vips::VImage ReadPicture(const std::string& path)
{
    if (!fs::exists(path))
        Fail(path, "no such file");
    try {
        // Scales down or up; a short side never rounds to 0.
        vips::VImage picture = vips::VImage::thumbnail(
            path.c_str(), kLongSide, vips::VImage::option()->set("height", kLongSide));
        if (picture.has_alpha())
            picture = picture.flatten();
        picture = picture.colourspace(VIPS_INTERPRETATION_sRGB).cast(VIPS_FORMAT_UCHAR);
        if (picture.bands() != 3)
            Fail(path, "has " + std::to_string(picture.bands()) + " bands instead of 3");
        if (std::max(picture.width(), picture.height()) != kLongSide)
            Fail(path, "was scaled to " + std::to_string(picture.width()) + " x " +
                           std::to_string(picture.height()));
        return picture.copy_memory();
    } catch (const vips::VError& error) {
        Fail(path, "cannot be read: " + OneLine(error.what()));
    }
}

void WritePng(const vips::VImage& image, const fs::path& path)
{
    try {
        image.pngsave(path.c_str());
    } catch (const vips::VError& error) {
        Fail(path.string(), "cannot be written: " + OneLine(error.what()));
    }
}

void WriteMap(const vistaTrim::NamedPictureMap& map, bool stretch, const fs::path& path)
{
    const size_t count = static_cast<size_t>(map.Cols) * static_cast<size_t>(map.Rows);
    const float maximum = *std::max_element(map.Data, map.Data + count);
    const float scale = stretch && maximum > 0.0f ? 255.0f / maximum : 255.0f;

    std::vector<uint8_t> bytes(count);
    for (size_t i = 0; i < count; ++i)
        bytes[i] = static_cast<uint8_t>(std::clamp(map.Data[i] * scale + 0.5f, 0.0f, 255.0f));
    vips::VImage image = vips::VImage::new_from_memory(bytes.data(), bytes.size(), map.Cols,
                                                       map.Rows, 1, VIPS_FORMAT_UCHAR);
    WritePng(image.copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_B_W)),
             path);
}

void DumpMaps(const std::string& picturePath, const fs::path& folder, bool stretch)
{
    const vips::VImage picture = ReadPicture(picturePath);

    std::error_code error;
    fs::create_directories(folder, error);
    if (!fs::is_directory(folder))
        Fail(folder.string(), error ? error.message() : "is not a folder");

    size_t size = 0;
    const std::unique_ptr<void, PixelEnd> pixels(picture.write_to_memory(&size));
    const int32_t offsets[4] = {0, 1, 2, 3};
    const std::unique_ptr<vistaTrim::IImage, ImageEnd> image(CreateImageObj(
        static_cast<uint32_t>(picture.height()), static_cast<uint32_t>(picture.width()), 3, offsets,
        static_cast<const uint8_t*>(pixels.get())));
    const vistaTrim::CAnalysedPicture analysed(*image);

    WritePng(picture, folder / "input.png");
    for (const vistaTrim::NamedPictureMap& map : analysed.Maps()) {
        if (map.Data == nullptr)
            Fail(picturePath, "is too narrow to be analysed");
        WriteMap(map, stretch, folder / (std::string(map.Name) + ".png"));
    }
}

} // namespace

int main(int argc, char** argv)
{
    CLI::App app("Writes every map of a picture's analysis as a grey PNG.", "dump_maps");
    std::string picture;
    std::string folder;
    bool stretch = false;
    app.add_option("picture", picture, "the picture, in any format that libvips reads")->required();
    app.add_option("folder", folder, "folder for the PNGs; created if missing")->required();
    app.add_flag("--stretch", stretch, "divide each map by its maximum");
    CLI11_PARSE(app, argc, argv);

    if (VIPS_INIT(argv[0]) != 0) {
        std::fprintf(stderr, "dump_maps: cannot start libvips: %s\n",
                     OneLine(vips_error_buffer()).c_str());
        return 1;
    }
    int result = 0;
    try {
        DumpMaps(picture, folder, stretch);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "dump_maps: %s\n", failure.what());
        result = 1;
    } catch (const char* text) {
        std::fprintf(stderr, "dump_maps: %s", text);
        result = 1;
    }
    vips_shutdown();
    return result;
}
