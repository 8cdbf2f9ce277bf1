// All candidates of real photographs: those in the folder that VISTATRIM_TEST_PHOTOGRAPHS names, or
// the wallpapers of the Debian package lomiri-wallpapers-16.04.
#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>
#include <vips/vips.h>

#include "scoring/all_candidates.h"

using vistaTrim::testPictures::Picture;

namespace scoringTests {
namespace {

std::vector<std::string> Photographs()
{
    const char* named = std::getenv("VISTATRIM_TEST_PHOTOGRAPHS");
    const std::string folder = named != nullptr ? named : "/usr/share/backgrounds";
    std::vector<std::string> files;
    std::error_code missing;
    for (const auto& entry : std::filesystem::directory_iterator(folder, missing))
        if (entry.path().extension() == ".jpg")
            files.push_back(entry.path().string());
    std::sort(files.begin(), files.end());
    // No more than finish in a few seconds.
    files.resize(std::min<size_t>(files.size(), 12));
    return files;
}

// sRGB, longer side 640.
Picture ReadPhotograph(const std::string& file)
{
    VipsImage* small = nullptr;
    if (vips_thumbnail(file.c_str(), &small, 640, "height", 640, "export_profile", "srgb",
                       nullptr) != 0)
        throw std::runtime_error(vips_error_buffer());
    VipsImage* flat = nullptr;
    vips_extract_band(small, &flat, 0, "n", 3, nullptr);
    g_object_unref(small);
    size_t size = 0;
    void* bytes = vips_image_write_to_memory(flat, &size);
    Picture picture(vips_image_get_width(flat), vips_image_get_height(flat));
    g_object_unref(flat);
    if (bytes == nullptr || size != picture.Bytes.size())
        throw std::runtime_error("not three channels of eight bits: " + file);
    std::copy_n(static_cast<const uint8_t*>(bytes), size, picture.Bytes.begin());
    g_free(bytes);
    return picture;
}

TEST(Photographs, AllCandidatesMatchTheSlowForm)
{
    const std::vector<std::string> files = Photographs();
    if (files.empty())
        GTEST_SKIP() << "no photographs found";
    if (VIPS_INIT("photographs_test") != 0)
        FAIL() << vips_error_buffer();
    for (const std::string& file : files) {
        SCOPED_TRACE(file);
        ExpectAllCandidatesMatchTheOracle(ReadPhotograph(file));
    }
    vips_shutdown();
}

} // namespace
} // namespace scoringTests
