#include "scoring/all_candidates.h"

#include <cmath>

#include <gtest/gtest.h>

#include "candidates/random_crop_generator.h"
#include "scoring/scoring_test_support.h"
#include "vistaTrim/parameters.h"

using namespace vistaTrim;

namespace scoringTests {

void ExpectAllCandidatesMatchTheOracle(const testPictures::Picture& picture)
{
    VistaTrimParameters defaults;
    defaults.SetDefaults();
    RandomCropGenerator generator;
    generator.Initialize(
        static_cast<uint32_t>(picture.Cols), static_cast<uint32_t>(picture.Rows),
        std::vector<DoubleInfo>(defaults.AspectRatios, defaults.AspectRatios + 6),
        std::vector<DoubleInfo>(defaults.CropRectScaleRatios, defaults.CropRectScaleRatios + 7),
        defaults.NumMaxCropRectsPerSide);
    generator.GenerateAll();
    const auto analyzer = testPictures::Analyse(picture);
    const slowOracle::ScoringInput in = OracleInput(*analyzer);

    analyzer->EvaluateCropRects(generator.CropGrid, NoIndex, NoIndex);

    size_t compared = 0;
    for (const CropRow& row : generator.CropGrid)
        for (const CropCell& cell : row)
            for (const CInt32CropRect& crop : cell) {
                slowOracle::Crop unscored;
                unscored.Left = crop.Left;
                unscored.Right = crop.Right;
                unscored.Top = crop.Top;
                unscored.Bottom = crop.Bottom;
                const slowOracle::WorkRect rect = slowOracle::ToWorkingRect(in, unscored);
                const slowOracle::Shares shares = slowOracle::MeasureShares(in, rect);
                const slowOracle::Composition composition =
                    slowOracle::EvaluateComposition(in, rect);
                const double bound =
                    304 * std::ldexp(composition.DotMagnitude, -24) / 6 + std::ldexp(1.0, -23);
                const double border =
                    slowOracle::BorderScoreOfCost(slowOracle::BorderCost(in, rect));
                ASSERT_TRUE(
                    crop.Score.Scored &&
                    crop.CoversContent ==
                        slowOracle::ReachesContent(shares.ContrastMask, shares.ColorContrast) &&
                    SameBits(crop.Score.CoverageScore, static_cast<double>(shares.Coverage)) &&
                    SameBits(crop.Score.PeakScore, static_cast<double>(shares.Peak)) &&
                    SameBits(crop.Score.CentrePeakScore,
                             static_cast<double>(slowOracle::CentrePeakShare(in, rect))) &&
                    SameBits(crop.Score.BorderScore, border) &&
                    std::fabs(crop.Score.CompositionScore - composition.Score) <= bound &&
                    crop.Score.RoiScore == 1.0 && crop.Score.MergedScore == 0.0)
                    << crop.Left << ".." << crop.Right << " x " << crop.Top << ".." << crop.Bottom
                    << ": composition " << crop.Score.CompositionScore << " slow "
                    << composition.Score << " bound " << bound;
                ++compared;
            }
    EXPECT_GT(compared, 1000u);
}

} // namespace scoringTests
