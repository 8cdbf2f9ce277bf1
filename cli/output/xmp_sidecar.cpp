#include "output/xmp_sidecar.h"

#include <array>
#include <charconv>
#include <utility>

namespace vistaTrim::cli {

namespace {

// Nine decimals: one pixel of 100,000 already shows in the fifth.
std::string Share(double value)
{
    std::array<char, 40> text{};
    const std::to_chars_result end =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, 9);
    return std::string(text.data(), end.ptr);
}

void FlipAcross(CropShares& shares)
{
    shares = {1 - shares.Right, shares.Top, 1 - shares.Left, shares.Bottom};
}

void FlipDown(CropShares& shares)
{
    shares = {shares.Left, 1 - shares.Bottom, shares.Right, 1 - shares.Top};
}

// Rows become columns.
void Transpose(CropShares& shares)
{
    shares = {shares.Top, shares.Left, shares.Bottom, shares.Right};
}

} // namespace

CropShares StoredShares(const photo::PixelRect& crop, photo::PixelSize photo, int orientation)
{
    CropShares shares{static_cast<double>(crop.X) / photo.Width,
                      static_cast<double>(crop.Y) / photo.Height,
                      static_cast<double>(crop.X + crop.Width) / photo.Width,
                      static_cast<double>(crop.Y + crop.Height) / photo.Height};
    // From the displayed picture back to the stored one.
    switch (orientation) {
    case 2: FlipAcross(shares); break;
    case 3:
        FlipAcross(shares);
        FlipDown(shares);
        break;
    case 4: FlipDown(shares); break;
    case 5: Transpose(shares); break;
    case 6: // stored lying on its left side: shown turned clockwise
        FlipAcross(shares);
        Transpose(shares);
        break;
    case 7:
        FlipAcross(shares);
        FlipDown(shares);
        Transpose(shares);
        break;
    case 8: // shown turned anticlockwise
        FlipDown(shares);
        Transpose(shares);
        break;
    default: break;
    }
    return shares;
}

std::string XmpSidecar(const photo::PixelRect& crop, photo::PixelSize photo, int orientation)
{
    const CropShares shares = StoredShares(crop, photo, orientation);
    const std::array<std::pair<const char*, std::string>, 8> fields = {
        {{"tiff:Orientation", std::to_string(orientation)},
         {"crs:HasCrop", "True"},
         {"crs:CropTop", Share(shares.Top)},
         {"crs:CropLeft", Share(shares.Left)},
         {"crs:CropBottom", Share(shares.Bottom)},
         {"crs:CropRight", Share(shares.Right)},
         {"crs:CropAngle", "0"},
         {"crs:CropConstrainToWarp", "0"}}};
    std::string xmp = "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\">\n"
                      " <rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">\n"
                      "  <rdf:Description rdf:about=\"\"\n"
                      "    xmlns:tiff=\"http://ns.adobe.com/tiff/1.0/\"\n"
                      "    xmlns:crs=\"http://ns.adobe.com/camera-raw-settings/1.0/\"";
    for (const auto& [name, value] : fields)
        xmp += std::string("\n   ") + name + "=\"" + value + "\"";
    return xmp + "/>\n </rdf:RDF>\n</x:xmpmeta>\n";
}

} // namespace vistaTrim::cli
