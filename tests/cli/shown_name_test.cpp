#include "text/shown_name.h"

#include <gtest/gtest.h>

namespace vistaTrim::cli {
namespace {

TEST(ShownName, LeavesOrdinaryNamesAlone)
{
    for (const char* name :
         {"a.jpg", "two words.jpg", "o'clock.jpg", "back\\slash", "caf\xC3\xA9.jpg",
          "\xE5\xAF\xAB\xE7\x9C\x9F.png", "\xF0\x9F\x93\xB7.jpg"})
        EXPECT_EQ(Shown(name), name);
    EXPECT_EQ(Shown(""), "''");
}

TEST(ShownName, QuotesWhatControlsATerminalOrEndsALine)
{
    EXPECT_EQ(Shown("new\nline.jpg"), "$'new\\nline.jpg'");
    EXPECT_EQ(Shown("tab\tand\rreturn"), "$'tab\\tand\\rreturn'");
    EXPECT_EQ(Shown("\x1b[31mred"), "$'\\033[31mred'");
    EXPECT_EQ(Shown("\x7f"), "$'\\177'");
    EXPECT_EQ(Shown("it's\\\n"), "$'it\\'s\\\\\\n'");
    EXPECT_EQ(Shown("\xC2\x9B"
                    "31m"),
              "$'\\302\\23331m'"); // the control sequence introducer as one character
    EXPECT_EQ(Shown("\xE2\x80\xAEgpj.exe"), "$'\\342\\200\\256gpj.exe'"); // reverses the text
    EXPECT_EQ(Shown("\xE2\x80\xA8"), "$'\\342\\200\\250'");               // ends a line
}

TEST(ShownName, QuotesEachControlCharacterButNotItsNeighbours)
{
    const char* const plain[] = {" ",
                                 "~",
                                 "\xC2\xA0",
                                 "\xE2\x80\x8D",
                                 "\xE2\x80\x90",
                                 "\xE2\x80\xA7",
                                 "\xE2\x80\xAF",
                                 "\xE2\x81\xA5",
                                 "\xE2\x81\xAA"};
    for (const char* name : plain)
        EXPECT_EQ(Shown(name), name);
    const char* const quoted[] = {"\x01",         "\x1F",         "\x7F",
                                  "\xC2\x80",     "\xC2\x9F", // controls
                                  "\xE2\x80\x8E", "\xE2\x80\x8F", "\xE2\x80\xAA",
                                  "\xE2\x80\xAC", // direction of text
                                  "\xE2\x80\xAE", "\xE2\x81\xA6", "\xE2\x81\xA9",
                                  "\xE2\x80\xA8", "\xE2\x80\xA9"}; // line and paragraph separators
    for (const char* name : quoted)
        EXPECT_NE(Shown(name), name);
}

TEST(ShownName, QuotesWhatIsNotUtf8)
{
    EXPECT_EQ(Shown("caf\xE9.jpg"), "$'caf\\351.jpg'");              // Latin-1
    EXPECT_EQ(Shown("\xC3"), "$'\\303'");                            // cut short
    EXPECT_EQ(Shown("\xC0\xAF"), "$'\\300\\257'");                   // overlong
    EXPECT_EQ(Shown("\xED\xA0\x80"), "$'\\355\\240\\200'");          // half of a surrogate pair
    EXPECT_EQ(Shown("\xF5\x80\x80\x80"), "$'\\365\\200\\200\\200'"); // beyond the last character
}

TEST(ShownName, OneLineEscapesWithoutQuotes)
{
    EXPECT_EQ(OneLine("cannot read a\nb's \x1b"), "cannot read a\\nb's \\033");
    EXPECT_EQ(OneLine("caf\xC3\xA9: it's well"), "caf\xC3\xA9: it's well");
}

} // namespace
} // namespace vistaTrim::cli
