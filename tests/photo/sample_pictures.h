// Synthetic photographs for the tests, in every form that photographs come in.
#ifndef VISTATRIM_TESTS_PHOTO_SAMPLE_PICTURES_H
#define VISTATRIM_TESTS_PHOTO_SAMPLE_PICTURES_H

#include <array>
#include <string>
#include <vector>

#include <vips/vips8>

namespace vistaTrim::photo {

// A folder that is deleted with the object. Readable by everyone.
class TempFolder {
public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    std::string Path(const std::string& name) const;
    std::vector<std::string> Files() const; // names, sorted, hidden ones too

private:
    std::string Folder;
};

// Four quarters of plain colour, so that any rotation or flip shows: red, green / blue, yellow.
vips::VImage Quarters(int width, int height);
constexpr std::array<std::array<double, 3>, 4> kQuarterColours = {
    {{200, 40, 40}, {40, 160, 40}, {40, 40, 200}, {200, 200, 40}}};
// Mean colours of the middles of the four quarters, in the same order.
std::vector<std::vector<double>> QuarterMeans(const vips::VImage& image);

// A quiet grey background with soft grain and one bright disc, centred at the given fractions of
// width and height: something that a crop should contain.
vips::VImage Scene(int width, int height, double atX, double atY);

// The picture stored so that a reader that applies `orientation`, 1..8, gets `upright`.
vips::VImage StoredWithOrientation(const vips::VImage& upright, int orientation);

void WriteText(const std::string& path, const std::string& text);
std::string ReadText(const std::string& path);
// Copies the first `share` of a file's bytes, 0 to 1.
void CutShort(const std::string& from, const std::string& to, double share);

} // namespace vistaTrim::photo

#endif
