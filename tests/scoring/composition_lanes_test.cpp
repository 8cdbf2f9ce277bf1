#include "scoring/composition_lanes.h"

#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "numeric/linear_algebra.h"
#include "scoring/composition_coefficients.h"
#include "scoring/composition_model.h"
#include "scoring/scoring_test_support.h"

using namespace vistaTrim;

namespace scoringTests {
namespace {

// The plain form: the whole descriptor, then the dot product.
float ScoreAlone(const CCropAnalyzer& analyzer, const WorkingRect& rect)
{
    float descriptor[kDescriptorSize];
    ComputeCompositionDescriptor(analyzer.ContrastTable, analyzer.SaliencyTable, descriptor, rect);
    for (int32_t slot = 0; slot < kDescriptorSize; ++slot) {
        descriptor[slot] -= DescriptorMean[slot];
        descriptor[slot] *= DescriptorScale[slot];
    }
    return MapModelOutput(fixedOrder::DotProduct(kDescriptorSize, descriptor, DescriptorWeights));
}

struct Crop {
    WorkingRect Rect;
    GridLimits Rows;
    GridLimits Cols;
};

Crop RandomCrop(std::mt19937& random, int32_t rows, int32_t cols)
{
    Crop crop;
    do {
        crop.Rect = RandomRect(random, rows, cols);
        FillGridLimits(crop.Rect.FirstRow, crop.Rect.LastRow, crop.Rows);
        FillGridLimits(crop.Rect.FirstCol, crop.Rect.LastCol, crop.Cols);
    } while (!crop.Rows.Tiles || !crop.Cols.Tiles);
    return crop;
}

// Groups of every size, with crops of different rows at all borders of the map.
TEST(CompositionLanes, EveryCropOfAGroupGetsItsPlainScoreInEveryIsaVariant)
{
    const auto analyzer = NoiseAnalyzer(200, 300, 8);
    std::mt19937 random(9);
    const EachVariant variants;
    for (int32_t count = 1; count <= kScoredTogether; ++count)
        for (int trial = 0; trial < 6; ++trial) {
            std::vector<Crop> crops;
            for (int32_t i = 0; i < count; ++i)
                crops.push_back(RandomCrop(random, 200, 300));
            std::vector<const GridLimits*> rows;
            std::vector<const GridLimits*> cols;
            std::vector<float> expected;
            for (const Crop& crop : crops) {
                rows.push_back(&crop.Rows);
                cols.push_back(&crop.Cols);
                expected.push_back(ScoreAlone(*analyzer, crop.Rect));
            }
            for (const IsaVariant variant : variants.Variants) {
                SelectIsaVariant(variant);
                // The element after the scores must not change.
                std::vector<float> scores(crops.size() + 1, -7.0f);
                ScoreTogether(analyzer->ContrastTable, analyzer->SaliencyTable, rows.data(),
                              cols.data(), count, scores.data());
                for (size_t i = 0; i < crops.size(); ++i)
                    ASSERT_TRUE(SameBits(scores[i], expected[i]))
                        << "variant " << variant << ", " << i << " of " << count;
                EXPECT_EQ(scores.back(), -7.0f);
            }
        }
}

} // namespace
} // namespace scoringTests
