#include "photo_reader.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

// libvips's headers trigger our warnings.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wshadow"
#include <vips/vips8>
#pragma GCC diagnostic pop

// An OpenBLAS function; null with another BLAS.
extern "C" void openblas_set_num_threads(int count) __attribute__((weak));

namespace {

constexpr int kLongerSide = 640;

} // namespace

void StartPhotoReader(const char* programName)
{
    if (VIPS_INIT(programName) != 0)
        throw std::runtime_error("cannot start libvips: " + std::string(vips_error_buffer()));
    // A tool runs a driver on each of its threads; libraries that start more would compete with
    // them.
    if (openblas_set_num_threads != nullptr)
        openblas_set_num_threads(1);
    vips_concurrency_set(1);
    vips_cache_set_max(0);
}

WorkingPhoto ReadWorkingPhoto(const std::string& file)
{
    try {
        // A thumbnail in a square box scales the longer side to the box's side, up or down.
        vips::VImage image = vips::VImage::thumbnail(file.c_str(), kLongerSide,
                                                     vips::VImage::option()
                                                         ->set("height", kLongerSide)
                                                         ->set("size", VIPS_SIZE_BOTH)
                                                         ->set("export_profile", "srgb")
                                                         ->set("import_profile", "srgb"));
        if (image.has_alpha())
            image = image.flatten();
        image = image.colourspace(VIPS_INTERPRETATION_sRGB).cast(VIPS_FORMAT_UCHAR);
        if (image.bands() > 3)
            image = image.extract_band(0, vips::VImage::option()->set("n", 3));

        WorkingPhoto photo;
        photo.Width = image.width();
        photo.Height = image.height();
        size_t size = 0;
        void* memory = image.write_to_memory(&size);
        photo.Pixels.resize(size);
        std::memcpy(photo.Pixels.data(), memory, size);
        g_free(memory);
        return photo;
    } catch (const vips::VError& error) {
        std::string reason = error.what();
        while (!reason.empty() && reason.back() == '\n')
            reason.pop_back();
        throw std::runtime_error(file + ": " + reason);
    }
}
