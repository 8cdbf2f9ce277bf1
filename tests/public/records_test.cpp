#include "vistaTrim/records.h"

#include <limits>
#include <type_traits>

#include <gtest/gtest.h>

namespace vistaTrim {
namespace {

// Five doubles by value on the stack, for hosts with declarations of their own.
static_assert(std::is_trivially_copyable<WeightDistribution>::value, "passed by value");
static_assert(!std::is_default_constructible<WeightDistribution>::value, "weights must be given");
// Copying by member or by byte is always correct.
static_assert(std::is_trivially_copy_constructible<CInt32CropRect>::value, "plain record");
static_assert(std::is_trivially_destructible<CInt32CropRect>::value, "plain record");
static_assert(std::is_standard_layout<CInt32CropRect>::value, "plain record");
static_assert(std::is_standard_layout<CRectOfInterest>::value, "plain record");

TEST(CInt32Rect, DefaultIsOnePixelAtTheOrigin)
{
    const CInt32Rect rect;
    EXPECT_EQ(rect.Left, 0);
    EXPECT_EQ(rect.Right, 0);
    EXPECT_EQ(rect.Top, 0);
    EXPECT_EQ(rect.Bottom, 0);
    EXPECT_EQ(rect.Area(), 1);
    EXPECT_FALSE(rect.Empty());
}

TEST(CInt32Rect, ColumnsComeBeforeRows)
{
    const CInt32Rect rect(1, 2, 3, 4);
    EXPECT_EQ(rect.Left, 1);
    EXPECT_EQ(rect.Right, 2);
    EXPECT_EQ(rect.Top, 3);
    EXPECT_EQ(rect.Bottom, 4);
}

TEST(CInt32Rect, WholePictureCountsItsLastColumnAndRow)
{
    EXPECT_EQ(CInt32Rect(0, 639, 0, 479).Area(), 307200);
}

TEST(CInt32Rect, AreaOfAnEmptyRectangleIsNotGuarded)
{
    EXPECT_EQ(CInt32Rect(5, 3, 0, 9).Area(), -10);
    EXPECT_EQ(CInt32Rect(5, 4, 0, 9).Area(), 0);
    EXPECT_EQ(CInt32Rect(5, 3, 9, 7).Area(), 1); // -1 times -1
}

TEST(CInt32Rect, AreaIsA64BitProduct)
{
    EXPECT_EQ(CInt32Rect(0, 99999, 0, 99999).Area(), 10000000000);
}

TEST(CInt32Rect, SidesOfAnAreaWrapIn32Bits)
{
    const int32_t low = std::numeric_limits<int32_t>::min();
    const int32_t high = std::numeric_limits<int32_t>::max();
    EXPECT_EQ(CInt32Rect(low, high, 0, 9).Area(), 0); // 2^32 columns wrap to 0
    EXPECT_EQ(CInt32Rect(0, high, 0, 0).Area(), low); // 2^31 columns
}

TEST(CInt32Rect, EmptyIfASideIsPastItsOpposite)
{
    EXPECT_TRUE(CInt32Rect(1, 0, 0, 0).Empty());
    EXPECT_TRUE(CInt32Rect(0, 0, 1, 0).Empty());
    EXPECT_FALSE(CInt32Rect(1, 1, 1, 1).Empty());
}

TEST(CInt32Rect, AssignmentCopiesAllAndReturnsTheTarget)
{
    const CInt32Rect source(1, 2, 3, 4);
    CInt32Rect target;
    EXPECT_EQ(&(target = source), &target);
    EXPECT_EQ(target.Left, 1);
    EXPECT_EQ(target.Right, 2);
    EXPECT_EQ(target.Top, 3);
    EXPECT_EQ(target.Bottom, 4);
}

TEST(Score, OnlyRoiScoreStartsAtOne)
{
    const Score score;
    EXPECT_FALSE(score.Scored);
    EXPECT_EQ(score.CompositionScore, 0.0);
    EXPECT_EQ(score.CoverageScore, 0.0);
    EXPECT_EQ(score.BorderScore, 0.0);
    EXPECT_EQ(score.PeakScore, 0.0);
    EXPECT_EQ(score.CentrePeakScore, 0.0);
    EXPECT_EQ(score.RoiScore, 1.0);
    EXPECT_EQ(score.MergedScore, 0.0);
}

Score SomeScore()
{
    Score score;
    score.Scored = true;
    score.CompositionScore = 0.1;
    score.CoverageScore = 0.2;
    score.BorderScore = 0.3;
    score.PeakScore = 0.4;
    score.CentrePeakScore = 0.5;
    score.RoiScore = 0.6;
    score.MergedScore = 0.7;
    return score;
}

void ExpectSomeScore(const Score& score)
{
    EXPECT_TRUE(score.Scored);
    EXPECT_EQ(score.CompositionScore, 0.1);
    EXPECT_EQ(score.CoverageScore, 0.2);
    EXPECT_EQ(score.BorderScore, 0.3);
    EXPECT_EQ(score.PeakScore, 0.4);
    EXPECT_EQ(score.CentrePeakScore, 0.5);
    EXPECT_EQ(score.RoiScore, 0.6);
    EXPECT_EQ(score.MergedScore, 0.7);
}

TEST(Score, AssignmentCopiesAllAndReturnsTheTarget)
{
    Score target;
    EXPECT_EQ(&(target = SomeScore()), &target);
    ExpectSomeScore(target);
}

TEST(CInt32CropRect, DefaultIsUnscored)
{
    const CInt32CropRect crop;
    EXPECT_EQ(crop.Left, 0);
    EXPECT_EQ(crop.Right, 0);
    EXPECT_EQ(crop.Top, 0);
    EXPECT_EQ(crop.Bottom, 0);
    EXPECT_FALSE(crop.CoversContent);
    EXPECT_FALSE(crop.Score.Scored);
    EXPECT_EQ(crop.Score.RoiScore, 1.0);
}

TEST(CInt32CropRect, SidesAreInFieldOrderAndTheRestIsDefault)
{
    const CInt32CropRect crop(1, 2, 3, 4);
    EXPECT_EQ(crop.Left, 1);
    EXPECT_EQ(crop.Right, 2);
    EXPECT_EQ(crop.Top, 3);
    EXPECT_EQ(crop.Bottom, 4);
    EXPECT_FALSE(crop.CoversContent);
    EXPECT_EQ(crop.Score.RoiScore, 1.0);
}

TEST(CInt32CropRect, AssignmentCopiesTheScoresToo)
{
    CInt32CropRect source(1, 2, 3, 4);
    source.CoversContent = true;
    source.Score = SomeScore();
    CInt32CropRect target;
    EXPECT_EQ(&(target = source), &target);
    EXPECT_EQ(target.Left, 1);
    EXPECT_EQ(target.Right, 2);
    EXPECT_EQ(target.Top, 3);
    EXPECT_EQ(target.Bottom, 4);
    EXPECT_TRUE(target.CoversContent);
    ExpectSomeScore(target.Score);
}

TEST(CRectOfInterest, EveryConstructorEnablesASoftInclude)
{
    const CRectOfInterest rects[] = {CRectOfInterest(), CRectOfInterest(true),
                                     CRectOfInterest(1, 2, 3, 4, true),
                                     CRectOfInterest(CInt32Rect(1, 2, 3, 4), true)};
    for (const CRectOfInterest& rect : rects) {
        EXPECT_TRUE(rect.Enabled);
        EXPECT_EQ(rect.Kind, RoiSoftInclude);
    }
    EXPECT_FALSE(rects[0].Marked);
    EXPECT_TRUE(rects[1].Marked);
    EXPECT_EQ(rects[1].Right, 0);
    for (int i = 2; i < 4; ++i) {
        EXPECT_TRUE(rects[i].Marked);
        EXPECT_EQ(rects[i].Left, 1);
        EXPECT_EQ(rects[i].Right, 2);
        EXPECT_EQ(rects[i].Top, 3);
        EXPECT_EQ(rects[i].Bottom, 4);
    }
}

TEST(CRectOfInterest, KindsHaveTheirPublishedNumbers)
{
    EXPECT_EQ(RoiSoftInclude, 0);
    EXPECT_EQ(RoiHardInclude, 1);
    EXPECT_EQ(RoiSoftExclude, 2);
    EXPECT_EQ(RoiHardExclude, 3);
}

TEST(CRectOfInterest, AssignmentCopiesAllAndReturnsTheTarget)
{
    CRectOfInterest source(1, 2, 3, 4, true);
    source.Enabled = false;
    source.Kind = RoiHardExclude;
    CRectOfInterest target;
    EXPECT_EQ(&(target = source), &target);
    EXPECT_EQ(target.Left, 1);
    EXPECT_EQ(target.Right, 2);
    EXPECT_EQ(target.Top, 3);
    EXPECT_EQ(target.Bottom, 4);
    EXPECT_TRUE(target.Marked);
    EXPECT_FALSE(target.Enabled);
    EXPECT_EQ(target.Kind, RoiHardExclude);
}

TEST(DoubleInfo, IsEnabledByDefault)
{
    EXPECT_EQ(DoubleInfo().Value, 0.0);
    EXPECT_TRUE(DoubleInfo().Enabled);
    EXPECT_EQ(DoubleInfo(1.5).Value, 1.5);
    EXPECT_TRUE(DoubleInfo(1.5).Enabled);
    EXPECT_EQ(DoubleInfo(1.5, false).Value, 1.5);
    EXPECT_FALSE(DoubleInfo(1.5, false).Enabled);
}

TEST(DoubleInfo, AssignmentCopiesAllAndReturnsTheTarget)
{
    DoubleInfo target;
    EXPECT_EQ(&(target = DoubleInfo(1.5, false)), &target);
    EXPECT_EQ(target.Value, 1.5);
    EXPECT_FALSE(target.Enabled);
}

TEST(WeightDistribution, ThreeWeightsDisableThePeakRankings)
{
    const WeightDistribution weights(1, 2, 3);
    EXPECT_EQ(weights.Weight1, 1.0);
    EXPECT_EQ(weights.Weight2, 2.0);
    EXPECT_EQ(weights.Weight3, 3.0);
    EXPECT_EQ(weights.Weight4, 0.0);
    EXPECT_EQ(weights.Weight5, 0.0);
}

TEST(WeightDistribution, FiveWeightsAndAssignmentKeepTheirOrder)
{
    WeightDistribution target(0, 0, 0);
    EXPECT_EQ(&(target = WeightDistribution(1, 2, 3, 4, 5)), &target);
    EXPECT_EQ(target.Weight1, 1.0);
    EXPECT_EQ(target.Weight2, 2.0);
    EXPECT_EQ(target.Weight3, 3.0);
    EXPECT_EQ(target.Weight4, 4.0);
    EXPECT_EQ(target.Weight5, 5.0);
}

TEST(SuggestionParameters, EachConstructorLeavesTheOtherNumbersAtZero)
{
    const SuggestionParameters size(300, 200, true);
    EXPECT_EQ(size.CropWidth, 300.0);
    EXPECT_EQ(size.CropHeight, 200.0);
    EXPECT_EQ(size.AspectRatio, 0.0);
    EXPECT_TRUE(size.DetectFaces);

    const SuggestionParameters ratio(1.5, true);
    EXPECT_EQ(ratio.CropWidth, 0.0);
    EXPECT_EQ(ratio.CropHeight, 0.0);
    EXPECT_EQ(ratio.AspectRatio, 1.5);
    EXPECT_TRUE(ratio.DetectFaces);

    const SuggestionParameters faces(true);
    EXPECT_EQ(faces.CropWidth, 0.0);
    EXPECT_EQ(faces.AspectRatio, 0.0);
    EXPECT_TRUE(faces.DetectFaces);

    const SuggestionParameters nothing;
    EXPECT_EQ(nothing.CropHeight, 0.0);
    EXPECT_FALSE(nothing.DetectFaces);
}

TEST(SuggestionParameters, AssignmentCopiesAllAndReturnsTheTarget)
{
    SuggestionParameters source(300, 200, true);
    source.AspectRatio = 1.5;
    SuggestionParameters target;
    EXPECT_EQ(&(target = source), &target);
    EXPECT_EQ(target.CropWidth, 300.0);
    EXPECT_EQ(target.CropHeight, 200.0);
    EXPECT_EQ(target.AspectRatio, 1.5);
    EXPECT_TRUE(target.DetectFaces);
}

TEST(NoIndexValue, IsTheSentinelOfAllOperations)
{
    EXPECT_EQ(NoIndex, 0xEFFFFFFFU);
}

} // namespace
} // namespace vistaTrim
