#include "options/text_values.h"

#include <gtest/gtest.h>

namespace vistaTrim::cli {
namespace {

using namespace photo;

TEST(TextValues, ReadSizes)
{
    EXPECT_EQ(ParseSize("1920x1080"), (PixelSize{1920, 1080}));
    for (const char* text : {"", "x", "1920", "1920x", "x1080", "0x5", "5x0", "-1x5", "1920X1080",
                             "1920x1080x3", "1920 x1080", "99999999999x1", "1.5x2"})
        EXPECT_FALSE(ParseSize(text)) << text;
}

TEST(TextValues, ReadRegions)
{
    EXPECT_EQ(ParseRect("0,1,2,3"), (PixelRect{0, 1, 2, 3}));
    for (const char* text :
         {"", "1,2,3", "1,2,3,4,5", "-1,0,5,5", "0,0,0,5", "0,0,5,0", "a,0,5,5", "0,0,5,5 "})
        EXPECT_FALSE(ParseRect(text)) << text;
}

TEST(TextValues, ReadNumbers)
{
    EXPECT_EQ(ParseNumbers("0.3,0.25,-1"), (std::vector<double>{0.3, 0.25, -1.0}));
    for (const char* text : {"", "1,", ",1", "1;2", "nan", "inf,1", "0.3 ,1", "0x10"})
        EXPECT_FALSE(ParseNumbers(text)) << text;
}

TEST(TextValues, ReadColours)
{
    EXPECT_EQ(ParseColour("#ff8000"), (Colour{255, 128, 0}));
    EXPECT_EQ(ParseColour("white"), (Colour{255, 255, 255}));
    EXPECT_EQ(ParseColour("#f80"), (Colour{255, 136, 0}));
    EXPECT_EQ(ParseColour("Tomato"), (Colour{255, 99, 71}));
    EXPECT_EQ(ParseColour("aliceblue"), (Colour{240, 248, 255}));
    EXPECT_EQ(ParseColour("yellowgreen"), (Colour{154, 205, 50}));
    for (const char* text :
         {"", "#", "#ff", "fff", "#ffff", "ff8000", "#gg0000", "#ff80001", "#-12345", "reddish"})
        EXPECT_FALSE(ParseColour(text)) << text;
}

} // namespace
} // namespace vistaTrim::cli
