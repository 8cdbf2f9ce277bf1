#include "output/xmp_sidecar.h"

#include <cmath>

#include <gtest/gtest.h>

#include "photo/sample_pictures.h"

namespace vistaTrim::cli {
namespace {

using namespace photo;
using vips::VImage;

// A crop cut from the stored picture by its shares and then turned upright has the same pixels as
// one cut from the upright picture.
TEST(XmpSidecar, SharesAreThoseOfTheStoredPicture)
{
    const VImage upright = VImage::xyz(60, 40).cast(VIPS_FORMAT_UCHAR); // all pixels differ
    const PixelRect crop{7, 11, 23, 17};
    const VImage wanted = upright.extract_area(crop.X, crop.Y, crop.Width, crop.Height);
    for (int orientation = 1; orientation <= 8; ++orientation) {
        SCOPED_TRACE(orientation);
        const VImage stored = StoredWithOrientation(upright, orientation);
        const CropShares shares = StoredShares(crop, {60, 40}, orientation);
        const auto pixel = [](double share, int side) {
            return static_cast<int>(std::lround(share * side));
        };
        const int left = pixel(shares.Left, stored.width());
        const int top = pixel(shares.Top, stored.height());
        const VImage cut = stored
                               .extract_area(left, top, pixel(shares.Right, stored.width()) - left,
                                             pixel(shares.Bottom, stored.height()) - top)
                               .autorot();
        ASSERT_EQ(cut.width(), crop.Width);
        ASSERT_EQ(cut.height(), crop.Height);
        EXPECT_EQ((cut - wanted).abs().max(), 0.0);
    }
}

TEST(XmpSidecar, HoldsTheFieldsOfTheCrop)
{
    const std::string xmp = XmpSidecar({100, 50, 200, 300}, {400, 800}, 6);
    for (const char* field :
         {"crs:HasCrop=\"True\"", "crs:CropLeft=\"0.062500000\"", "crs:CropRight=\"0.437500000\"",
          "crs:CropTop=\"0.250000000\"", "crs:CropBottom=\"0.750000000\"", "crs:CropAngle=\"0\"",
          "tiff:Orientation=\"6\""})
        EXPECT_NE(xmp.find(field), std::string::npos) << field << "\n" << xmp;
}

} // namespace
} // namespace vistaTrim::cli
