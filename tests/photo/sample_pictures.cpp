#include "photo/sample_pictures.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include <gtest/gtest.h>

#include "picture/vips_runtime.h"
#include "vistaTrimPhoto/picture_runtime.h"

namespace vistaTrim::photo {

namespace {

using vips::VImage;

class VipsEnvironment : public testing::Environment {
public:
    void SetUp() override
    {
        StartPictureRuntime("tests");
        LoadVipsModules(); // needed to write HEIF; the program loads them itself
    }
};

const testing::Environment* const kEnvironment =
    testing::AddGlobalTestEnvironment(new VipsEnvironment);

VImage PlainColour(int width, int height, const std::array<double, 3>& colour)
{
    return VImage::black(width, height)
        .new_from_image(std::vector<double>(colour.begin(), colour.end()))
        .cast(VIPS_FORMAT_UCHAR)
        .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
}

} // namespace

TempFolder::TempFolder()
{
    std::string pattern = (std::filesystem::temp_directory_path() / "vistatrim-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr)
        throw std::runtime_error("no temporary folder");
    Folder = pattern;
    std::filesystem::permissions(Folder, std::filesystem::perms(0755));
}

TempFolder::~TempFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(Folder, ignored);
}

std::string TempFolder::Path(const std::string& name) const
{
    return Folder + "/" + name;
}

std::vector<std::string> TempFolder::Files() const
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(Folder))
        if (entry.is_regular_file())
            names.push_back(std::filesystem::relative(entry.path(), Folder).string());
    std::sort(names.begin(), names.end());
    return names;
}

VImage Quarters(int width, int height)
{
    const int left = width / 2;
    const int top = height / 2;
    const VImage upper =
        PlainColour(left, top, kQuarterColours[0])
            .join(PlainColour(width - left, top, kQuarterColours[1]), VIPS_DIRECTION_HORIZONTAL);
    const VImage lower = PlainColour(left, height - top, kQuarterColours[2])
                             .join(PlainColour(width - left, height - top, kQuarterColours[3]),
                                   VIPS_DIRECTION_HORIZONTAL);
    return upper.join(lower, VIPS_DIRECTION_VERTICAL).copy_memory();
}

std::vector<std::vector<double>> QuarterMeans(const VImage& image)
{
    std::vector<std::vector<double>> means;
    const int width = image.width() / 4;
    const int height = image.height() / 4;
    for (int quarter = 0; quarter < 4; ++quarter) {
        const int x = image.width() / 2 * (quarter % 2) + width / 2;
        const int y = image.height() / 2 * (quarter / 2) + height / 2;
        const VImage middle = image.extract_area(x, y, width, height);
        std::vector<double> colour;
        for (int band = 0; band < image.bands(); ++band)
            colour.push_back(middle.extract_band(band).avg());
        means.push_back(colour);
    }
    return means;
}

VImage Scene(int width, int height, double atX, double atY)
{
    const VImage place = VImage::xyz(width, height);
    const VImage dx = place.extract_band(0) - width * atX;
    const VImage dy = place.extract_band(1) - height * atY;
    const double radius = 0.12 * std::min(width, height);
    const VImage disc = (dx * dx + dy * dy) < radius * radius;
    const VImage grain = VImage::gaussnoise(
        width, height, VImage::option()->set("mean", 110.0)->set("sigma", 3.0)->set("seed", 5));
    const VImage ground = VImage::bandjoin(std::vector<VImage>{grain, grain + 4.0, grain + 10.0});
    return disc.ifthenelse(VImage::black(width, height).new_from_image({230.0, 60.0, 30.0}), ground)
        .cast(VIPS_FORMAT_UCHAR)
        .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB))
        .copy_memory();
}

VImage StoredWithOrientation(const VImage& upright, int orientation)
{
    VImage stored = upright;
    switch (orientation) { // undoes the rotation that the reader will apply
    case 2: stored = upright.flip(VIPS_DIRECTION_HORIZONTAL); break;
    case 3: stored = upright.rot(VIPS_ANGLE_D180); break;
    case 4: stored = upright.flip(VIPS_DIRECTION_VERTICAL); break;
    case 5: stored = upright.rot(VIPS_ANGLE_D90).flip(VIPS_DIRECTION_HORIZONTAL); break;
    case 6: stored = upright.rot(VIPS_ANGLE_D270); break;
    case 7: stored = upright.rot(VIPS_ANGLE_D270).flip(VIPS_DIRECTION_HORIZONTAL); break;
    case 8: stored = upright.rot(VIPS_ANGLE_D90); break;
    default: break;
    }
    stored = stored.copy_memory().copy();
    stored.set("orientation", orientation);
    return stored;
}

void WriteText(const std::string& path, const std::string& text)
{
    std::ofstream(path, std::ios::binary) << text;
}

std::string ReadText(const std::string& path)
{
    std::ifstream stream(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
}

void CutShort(const std::string& from, const std::string& to, double share)
{
    const std::string bytes = ReadText(from);
    WriteText(to, bytes.substr(0, static_cast<size_t>(static_cast<double>(bytes.size()) * share)));
}

} // namespace vistaTrim::photo
