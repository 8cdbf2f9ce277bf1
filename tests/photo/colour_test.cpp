#include "vistaTrimPhoto/colour.h"

#include <gtest/gtest.h>

namespace vistaTrim::photo {
namespace {

TEST(ColourText, HexDigitsAndNamesAreRead)
{
    EXPECT_EQ(ParseColour("#ff8000"), (Colour{255, 128, 0}));
    EXPECT_EQ(ParseColour("white"), (Colour{255, 255, 255}));
    EXPECT_EQ(ParseColour("#f80"), (Colour{255, 136, 0}));
    EXPECT_EQ(ParseColour("Tomato"), (Colour{255, 99, 71}));
    EXPECT_EQ(ParseColour("aliceblue"), (Colour{240, 248, 255}));
    EXPECT_EQ(ParseColour("yellowgreen"), (Colour{154, 205, 50}));
    for (const char* text : {"", "#", "#ff", "fff", "#ffff", "ff8000", "#gg0000", "#ff80001",
                             "#-12345", "#ff80gg", "#ff800 ", "#f8g", "reddish"})
        EXPECT_FALSE(ParseColour(text)) << text;
}

} // namespace
} // namespace vistaTrim::photo
