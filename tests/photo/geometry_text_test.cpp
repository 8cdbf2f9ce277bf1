#include "vistaTrimPhoto/geometry.h"

#include <gtest/gtest.h>

namespace vistaTrim::photo {
namespace {

TEST(GeometryText, SizesAreRead)
{
    EXPECT_EQ(ParseSize("1920x1080"), (PixelSize{1920, 1080}));
    for (const char* text : {"", "x", "1920", "1920x", "x1080", "0x5", "5x0", "-1x5", "1920X1080",
                             "1920x1080x3", "1920 x1080", "99999999999x1", "1.5x2"})
        EXPECT_FALSE(ParseSize(text)) << text;
}

TEST(GeometryText, RectanglesAreRead)
{
    EXPECT_EQ(ParseRect("0,1,2,3"), (PixelRect{0, 1, 2, 3}));
    for (const char* text :
         {"", "1,2,3", "1,2,3,4,5", "-1,0,5,5", "0,0,0,5", "0,0,5,0", "a,0,5,5", "0,0,5,5 "})
        EXPECT_FALSE(ParseRect(text)) << text;
}

} // namespace
} // namespace vistaTrim::photo
