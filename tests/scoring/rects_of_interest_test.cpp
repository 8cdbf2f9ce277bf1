#include "scoring/rects_of_interest.h"

#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "scoring/scoring_test_support.h"

using namespace vistaTrim;

namespace scoringTests {
namespace {

CRectOfInterest Roi(int32_t kind, int left, int right, int top, int bottom)
{
    CRectOfInterest rect(left, right, top, bottom, false);
    rect.Kind = kind;
    return rect;
}

const CInt32Rect kCrop(100, 299, 100, 249);

float Soft(const std::vector<CRectOfInterest>& rects, const CInt32Rect& crop = kCrop)
{
    return ComputeRoiScore(SoftRects(rects), crop);
}

bool Passes(const std::vector<CRectOfInterest>& rects, const CInt32Rect& crop = kCrop)
{
    return PassesHardRects(HardRects(rects), crop);
}

TEST(RectsOfInterest, CoverageIsTheShareOfTheRegionNotOfTheCrop)
{
    EXPECT_EQ(RectCoverage(kCrop, CInt32Rect(100, 109, 100, 109)), 1.0f);
    EXPECT_EQ(RectCoverage(kCrop, CInt32Rect(95, 104, 100, 109)), 0.5f);
    EXPECT_EQ(RectCoverage(kCrop, CInt32Rect(91, 100, 91, 100)), 0.01f);
    EXPECT_EQ(RectCoverage(kCrop, CInt32Rect(0, 99, 100, 249)), 0.0f);
    EXPECT_EQ(RectCoverage(CInt32Rect(0, 9, 0, 9), CInt32Rect(0, 99, 0, 99)), 0.01f);
}

TEST(RectsOfInterest, CoverageOfNoAreaIsNaN)
{
    EXPECT_TRUE(std::isnan(RectCoverage(kCrop, CInt32Rect(120, 119, 120, 129))));
    EXPECT_TRUE(std::isnan(RectCoverage(kCrop, CInt32Rect(120, 129, 120, 119))));
}

TEST(RectsOfInterest, NoneOrOnlyDisabledOnesChangeNothing)
{
    CRectOfInterest disabled = Roi(RoiSoftInclude, 0, 9, 0, 9);
    disabled.Enabled = false;
    CRectOfInterest disabledHard = Roi(RoiHardInclude, 0, 9, 0, 9);
    disabledHard.Enabled = false;
    EXPECT_EQ(Soft({}), 1.0f);
    EXPECT_EQ(Soft({disabled, disabledHard}), 1.0f);
    EXPECT_TRUE(Passes({}));
    EXPECT_TRUE(Passes({disabled, disabledHard}));
}

TEST(RectsOfInterest, HalfAnIncludeScoresItsShareAndALittleNearness)
{
    // Columns 95..104 with 95..99 outside: centres (199.5, 174.5) and (99.5, 174.5).
    const CRectOfInterest rect = Roi(RoiSoftInclude, 95, 104, 170, 179);
    const double twiceDistance = 2 * 100.0 + 0.0;
    const double near = static_cast<float>(std::exp(-(twiceDistance / 20)));
    const float sum = static_cast<float>(0.5 + near * static_cast<double>(0.01f));
    EXPECT_EQ(Soft({rect}), sum * 0.1f);
    EXPECT_GT(Soft({rect}), 0.05f); // more than the share alone
}

TEST(RectsOfInterest, AWholeIncludeScoresExactlyOneHoweverFarTheCentres)
{
    EXPECT_EQ(Soft({Roi(RoiSoftInclude, 100, 109, 100, 109)}), 1.0f);
    EXPECT_EQ(Soft({Roi(RoiSoftInclude, 195, 204, 170, 179)}), 1.0f);
}

TEST(RectsOfInterest, NearerIncludesOfTheSameShareScoreHigher)
{
    const CInt32Rect near(100, 139, 100, 139);
    const CInt32Rect far(104, 203, 100, 199);
    const CRectOfInterest rect = Roi(RoiSoftInclude, 95, 104, 100, 109);
    const CInt32Rect farHalf(100, 399, 100, 399);
    EXPECT_GT(Soft({rect}, near), Soft({rect}, farHalf));
    EXPECT_LT(Soft({rect}, far), Soft({rect}, near));
}

TEST(RectsOfInterest, AnExcludeTouchedByOnePixelLosesThatShareAndHasNoDistance)
{
    EXPECT_EQ(Soft({Roi(RoiSoftExclude, 0, 9, 0, 9)}), 1.0f);
    const float touched = Soft({Roi(RoiSoftExclude, 91, 100, 91, 100)});
    EXPECT_EQ(touched, static_cast<float>(0.99) * 0.1f);
}

TEST(RectsOfInterest, OneOfTwoWishesMetScoresHalfAndTheShares)
{
    // The include is whole; a tenth of the exclude lies inside.
    const std::vector<CRectOfInterest> rects = {Roi(RoiSoftInclude, 150, 159, 150, 159),
                                                Roi(RoiSoftExclude, 91, 100, 150, 159)};
    const float covered = static_cast<float>(1.0 + (1.0 - static_cast<double>(0.1f)));
    const double wishes = (1.0 + covered / 2.0) / 2.0;
    const double twiceDistance = std::abs(100 + 299 - 150 - 159) + std::abs(100 + 249 - 150 - 159);
    const double near = static_cast<float>(std::exp(-(twiceDistance / 20)));
    const float sum = static_cast<float>(wishes + near * static_cast<double>(0.01f));
    EXPECT_EQ(Soft(rects), sum * 0.1f);
    EXPECT_LT(Soft(rects), 0.102f);
}

TEST(RectsOfInterest, MoreWishesMetScoreHigherThanMoreShare)
{
    // One include held whole and one missed beat two held to nine tenths.
    const float oneWhole =
        Soft({Roi(RoiSoftInclude, 150, 159, 150, 159), Roi(RoiSoftInclude, 0, 9, 0, 9)});
    const float bothAlmost =
        Soft({Roi(RoiSoftInclude, 99, 108, 150, 159), Roi(RoiSoftInclude, 99, 108, 170, 179)});
    EXPECT_GT(oneWhole, bothAlmost);
    EXPECT_GT(bothAlmost, 0.04f);
    EXPECT_LT(oneWhole, 0.102f);
}

TEST(RectsOfInterest, HardKindsRequireAllOrNothing)
{
    EXPECT_TRUE(Passes({Roi(RoiHardInclude, 100, 299, 100, 249)}));
    EXPECT_FALSE(Passes({Roi(RoiHardInclude, 100, 299, 99, 249)}));
    EXPECT_FALSE(Passes({Roi(RoiHardInclude, 100, 299, 100, 250)}));
    EXPECT_TRUE(Passes({Roi(RoiHardExclude, 300, 309, 100, 109)}));
    EXPECT_FALSE(Passes({Roi(RoiHardExclude, 299, 309, 100, 109)})); // one shared column
    EXPECT_FALSE(Passes({Roi(RoiHardExclude, 299, 309, 249, 260)})); // one shared pixel
}

TEST(RectsOfInterest, OneFailingRectangleOfManyRejects)
{
    EXPECT_FALSE(Passes({Roi(RoiHardInclude, 150, 159, 150, 159), Roi(RoiHardExclude, 0, 9, 0, 9),
                         Roi(RoiHardExclude, 150, 159, 150, 159)}));
}

TEST(RectsOfInterest, HardKindsNeverTouchTheScoreAndSoftOnesNeverFilter)
{
    EXPECT_EQ(Soft({Roi(RoiHardInclude, 0, 9, 0, 9), Roi(RoiHardExclude, 150, 159, 150, 159)}),
              1.0f);
    EXPECT_TRUE(Passes({Roi(RoiSoftInclude, 0, 9, 0, 9), Roi(RoiSoftExclude, 150, 159, 150, 159)}));
}

TEST(RectsOfInterest, UnknownKindsAndTheMarkHaveNoEffect)
{
    EXPECT_EQ(Soft({Roi(4, 0, 9, 0, 9), Roi(-1, 0, 9, 0, 9)}), 1.0f);
    EXPECT_TRUE(Passes({Roi(4, 0, 9, 0, 9), Roi(-1, 0, 9, 0, 9)}));
    CRectOfInterest marked = Roi(RoiSoftInclude, 95, 104, 170, 179);
    const float unmarkedScore = Soft({marked});
    marked.Marked = true;
    EXPECT_EQ(Soft({marked}), unmarkedScore);
}

TEST(RectsOfInterest, NoAreaRejectsWhenHardAndGivesNaNWhenSoft)
{
    EXPECT_FALSE(Passes({Roi(RoiHardInclude, 150, 149, 150, 159)}));
    EXPECT_FALSE(Passes({Roi(RoiHardExclude, 150, 149, 150, 159)}));
    EXPECT_TRUE(std::isnan(Soft({Roi(RoiSoftInclude, 150, 149, 150, 159)})));
    EXPECT_TRUE(std::isnan(Soft({Roi(RoiSoftExclude, 150, 149, 150, 159)})));
    // No width and no height: even the unit of the distance is 0.
    EXPECT_TRUE(std::isnan(Soft({Roi(RoiSoftInclude, 150, 149, 150, 149)})));
}

TEST(RectsOfInterest, ListsKeepTheOrderOfTheHost)
{
    const std::vector<CRectOfInterest> rects = {
        Roi(RoiSoftExclude, 1, 2, 3, 4), Roi(RoiHardInclude, 5, 6, 7, 8),
        Roi(RoiSoftInclude, 9, 10, 11, 12), Roi(RoiHardExclude, 13, 14, 15, 16)};
    ASSERT_EQ(SoftRects(rects).size(), 2u);
    EXPECT_EQ(SoftRects(rects)[0].Left, 1);
    EXPECT_EQ(SoftRects(rects)[1].Left, 9);
    ASSERT_EQ(HardRects(rects).size(), 2u);
    EXPECT_EQ(HardRects(rects)[0].Left, 5);
    EXPECT_EQ(HardRects(rects)[1].Left, 13);
}

TEST(RectsOfInterest, RandomListsMatchTheSlowForms)
{
    std::mt19937 random(20240);
    const auto below = [&random](int n) {
        return static_cast<int>(random() % static_cast<uint32_t>(n));
    };
    for (int trial = 0; trial < 40000; ++trial) {
        std::vector<CRectOfInterest> rects;
        std::vector<slowOracle::Roi> slowRects;
        for (int i = below(5); i > 0; --i) {
            const int left = below(80) - 10;
            const int top = below(80) - 10;
            // Sometimes without width or height, or with crossed sides.
            CRectOfInterest rect =
                Roi(below(6) - 1, left, left + below(40) - 2, top, top + below(40) - 2);
            rect.Enabled = below(8) != 0;
            rects.push_back(rect);
            slowRects.push_back(OracleRoi(rect));
        }
        const int left = below(60);
        const int top = below(60);
        const CInt32Rect crop(left, left + below(60), top, top + below(60));
        const slowOracle::Rect slowCrop{crop.Left, crop.Right, crop.Top, crop.Bottom};

        const float score = Soft(rects, crop);
        const float slowScore = slowOracle::RoiScore(slowOracle::SoftRects(slowRects), slowCrop);
        if (std::isnan(slowScore))
            EXPECT_TRUE(std::isnan(score));
        else
            EXPECT_TRUE(SameBits(score, slowScore)) << score << " " << slowScore;
        EXPECT_EQ(Passes(rects, crop),
                  slowOracle::PassesHardRects(slowOracle::HardRects(slowRects), slowCrop));
    }
}

} // namespace
} // namespace scoringTests
