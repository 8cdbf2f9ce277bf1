#include "vistaTrimPhoto/ratio.h"

#include <gtest/gtest.h>

namespace vistaTrim::photo {
namespace {

TEST(Ratio, IsReducedToItsSmallestTerms)
{
    EXPECT_EQ(ParseRatio("16:9"), (Ratio{16, 9}));
    EXPECT_EQ(ParseRatio("1920:1080"), (Ratio{16, 9}));
    EXPECT_EQ(ParseRatio("6:4"), ParseRatio("3:2"));
}

TEST(Ratio, TakesTheUsualSeparators)
{
    for (const char* text : {"16:9", "16/9", "16x9"})
        EXPECT_EQ(ParseRatio(text), (Ratio{16, 9})) << text;
    EXPECT_EQ(ParseRatio("2.35/1"), (Ratio{47, 20}));
}

TEST(Ratio, TakesDecimals)
{
    EXPECT_EQ(ParseRatio("2.35:1"), (Ratio{47, 20}));
    EXPECT_EQ(ParseRatio("1.5"), (Ratio{3, 2}));
    EXPECT_EQ(ParseRatio(".5:1"), (Ratio{1, 2}));
    EXPECT_EQ(ParseRatio("1.0001"), (Ratio{10001, 10000}));
}

TEST(Ratio, RejectsOtherText)
{
    for (const char* text :
         {"",      ":",    "16:",  ":9",   "0:9",   "16:0", "-3:2",    "3:-2",      "3-2",  "3:2:1",
          "3:2x1", "16X9", " 3:2", "3:2 ", "1e3:1", "nan",  "1.00001", "1000000:1", "1..5", "."})
        EXPECT_FALSE(ParseRatio(text)) << text;
}

TEST(Ratio, IsRecoveredFromTheLibrarysDefaults)
{
    EXPECT_EQ(RatioOfValue(64.0 / 27.0), (Ratio{64, 27}));
    EXPECT_EQ(RatioOfValue(16.0 / 9.0), (Ratio{16, 9}));
    EXPECT_EQ(RatioOfValue(3.0 / 2.0), (Ratio{3, 2}));
    EXPECT_EQ(RatioOfValue(2.0 / 3.0), (Ratio{2, 3}));
    EXPECT_EQ(RatioOfValue(1.0), (Ratio{1, 1}));
}

TEST(Ratio, HasTheNameThatPeopleUse)
{
    EXPECT_EQ((Ratio{64, 27}).CommonName(), "21:9");
    EXPECT_EQ((Ratio{27, 64}).CommonName(), "9:21");
    EXPECT_EQ((Ratio{16, 9}).CommonName(), "16:9");
    EXPECT_EQ((Ratio{1, 1}).CommonName(), "1:1");
    EXPECT_EQ((Ratio{191, 100}).CommonName(), "1.91:1");
    EXPECT_EQ((Ratio{100, 239}).CommonName(), "1:2.39");
    EXPECT_EQ((Ratio{1001, 500}).CommonName(), "2:1");
    EXPECT_EQ((Ratio{1003, 400}).CommonName(), "2.51:1");
}

TEST(Ratio, IrrationalValueBecomesTheNearestThousandth)
{
    EXPECT_NEAR(RatioOfValue(1.6180339887).Value(), 1.6180339887, 0.0005);
}

TEST(Ratio, TermsUpTo32AreShownAsTheyAre)
{
    EXPECT_EQ((Ratio{32, 31}).CommonName(), "32:31");
    EXPECT_EQ((Ratio{31, 32}).CommonName(), "31:32");
    EXPECT_EQ((Ratio{33, 32}).CommonName(), "1.03:1");
    EXPECT_EQ((Ratio{32, 33}).CommonName(), "1:1.03");
}

} // namespace
} // namespace vistaTrim::photo
