// Compares the library's results for synthetic images with the recorded ones.
#include "golden/golden_results.h"

#include <fstream>

#include <gtest/gtest.h>

#include "numeric/linear_algebra.h"

namespace goldenResults {
namespace {

// The results were recorded with our own linear algebra, which reproduces every bit. With BLAS the
// maps and the composition score depend on its kernels, each of which sums in its own order.
// Across OpenBLAS's kernels for Prescott, Nehalem, Sandy Bridge, Haswell, Zen and Skylake-X the
// measures of these images differed by 2.2e-6 in composition and by 6e-8, a unit in the last
// place, in the others; the limits are four times that. Rectangles and RoiScore never pass
// through linear algebra.
constexpr double kCompositionLimit = 9e-6;
constexpr double kMeasureLimit = 2.4e-7;

// Nine digits are written, enough to round-trip a float; MergedScore is a double.
constexpr double kWritten = 1e-8;

// Two candidates whose composition scores differ by less than that may swap places. Each place
// moves the merged score by the weight of composition divided by the candidate count. The gradient
// moved one place with some OpenBLAS kernels, so with BLAS its limit is four places. No other ranks
// differed.
double MergedLimit(const std::string& picture, uint32_t candidateCount)
{
    const bool moves = picture == "gradient_640x360" && !vistaTrim::kFixedOrder;
    return moves ? kWritten + 4 * 0.31 / candidateCount : kWritten;
}

// The measures are floats in fields of type double.
void ExpectMeasure(double now, double recorded, double blasLimit)
{
    if (vistaTrim::kFixedOrder)
        EXPECT_EQ(static_cast<float>(now), static_cast<float>(recorded));
    else
        EXPECT_NEAR(now, recorded, blasLimit);
}

void ExpectSame(const std::vector<NamedCrop>& now, const std::vector<NamedCrop>& recorded,
                double mergedLimit)
{
    ASSERT_EQ(now.size(), recorded.size());
    for (size_t i = 0; i < now.size(); ++i) {
        SCOPED_TRACE(testing::Message() << "record " << i << ", index " << recorded[i].Index);
        const vistaTrim::CInt32CropRect& a = now[i].Crop;
        const vistaTrim::CInt32CropRect& b = recorded[i].Crop;
        EXPECT_EQ(now[i].Index, recorded[i].Index);
        EXPECT_EQ(a.Left, b.Left);
        EXPECT_EQ(a.Right, b.Right);
        EXPECT_EQ(a.Top, b.Top);
        EXPECT_EQ(a.Bottom, b.Bottom);
        EXPECT_EQ(a.CoversContent, b.CoversContent);
        EXPECT_TRUE(a.Score.Scored);
        ExpectMeasure(a.Score.CompositionScore, b.Score.CompositionScore, kCompositionLimit);
        ExpectMeasure(a.Score.CoverageScore, b.Score.CoverageScore, kMeasureLimit);
        ExpectMeasure(a.Score.BorderScore, b.Score.BorderScore, kMeasureLimit);
        ExpectMeasure(a.Score.PeakScore, b.Score.PeakScore, kMeasureLimit);
        ExpectMeasure(a.Score.CentrePeakScore, b.Score.CentrePeakScore, kMeasureLimit);
        EXPECT_NEAR(a.Score.RoiScore, b.Score.RoiScore, kWritten);
        EXPECT_NEAR(a.Score.MergedScore, b.Score.MergedScore, mergedLimit);
    }
}

class GoldenResults : public testing::TestWithParam<std::string> {};

TEST_P(GoldenResults, MatchTheRecordedOnes)
{
    std::ifstream file(std::string(GOLDEN_FOLDER) + "/" + GetParam() + ".txt");
    ASSERT_TRUE(file) << "no recorded results; run scripts/record_goldens.sh";
    const Results recorded = Read(file);
    const Results now = ResultsOf(GetParam());
    EXPECT_EQ(now.CandidateCount, recorded.CandidateCount);
    EXPECT_GT(recorded.Candidates.size(), 10u);
    ExpectSame(now.Candidates, recorded.Candidates, 0.0);
    const double mergedLimit = MergedLimit(GetParam(), recorded.CandidateCount);
    ExpectSame(now.Best, recorded.Best, mergedLimit);
    ExpectSame(now.BestWished, recorded.BestWished, mergedLimit);
}

INSTANTIATE_TEST_SUITE_P(SyntheticImages, GoldenResults, testing::ValuesIn(PictureNames()),
                         [](const testing::TestParamInfo<std::string>& picture) {
                             return picture.param;
                         });

} // namespace
} // namespace goldenResults
