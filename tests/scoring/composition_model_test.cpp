#include "scoring/composition_model.h"

#include <algorithm>
#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "scoring/composition_coefficients.h"
#include "scoring/descriptor_grids.h"
#include "scoring/scoring_test_support.h"

using namespace vistaTrim;

namespace scoringTests {
namespace {

std::vector<float> Descriptor(const CCropAnalyzer& analyzer, const WorkingRect& rect)
{
    std::vector<float> descriptor(kDescriptorSize);
    ComputeCompositionDescriptor(analyzer.ContrastTable, analyzer.SaliencyTable, descriptor.data(),
                                 rect);
    return descriptor;
}

std::vector<int32_t> Limits(const int32_t* from, int32_t count)
{
    return std::vector<int32_t>(from, from + count);
}

TEST(CompositionModel, FourCellsOverTenRowsStepByTwoAndAHalf)
{
    for (const int32_t first : {0, 7, 300}) {
        GridLimits limits;
        FillGridLimits(first, first + 9, limits);
        EXPECT_EQ(Limits(limits.Start, 4),
                  (std::vector<int32_t>{first, first + 2, first + 5, first + 7}));
        EXPECT_EQ(Limits(limits.End, 4),
                  (std::vector<int32_t>{first + 1, first + 4, first + 6, first + 9}));
    }
}

TEST(CompositionModel, TwelveCellsOverTwoRowsRepeat)
{
    GridLimits limits;
    FillGridLimits(40, 41, limits);
    const int32_t* starts = limits.Start + kGridFirstCell[2];
    const int32_t* ends = limits.End + kGridFirstCell[2];
    EXPECT_FALSE(limits.Tiles);
    EXPECT_EQ(starts[0], 40);
    EXPECT_EQ(ends[0], 40);
    EXPECT_EQ(starts[11], 41);
    EXPECT_EQ(ends[11], 41);
    for (int32_t i = 0; i < 12; ++i) {
        EXPECT_EQ(starts[i], i < 6 ? 40 : 41) << i;
        EXPECT_EQ(ends[i], starts[i]) << i;
    }
}

// The upper six cells of a column read the first row of pixels, the lower six the second.
TEST(CompositionModel, TwoRowsFillEveryCellAsTheSlowFormDoes)
{
    const auto analyzer = NoiseAnalyzer(50, 80, 41);
    const slowOracle::ScoringInput in = OracleInput(*analyzer);
    for (const WorkingRect& rect :
         {WorkingRect{40, 3, 41, 62}, WorkingRect{0, 0, 1, 79}, WorkingRect{48, 70, 49, 79}}) {
        const std::vector<float> found = Descriptor(*analyzer, rect);
        const std::vector<float> slow = slowOracle::CompositionDescriptor(in, OracleRect(rect));
        ASSERT_EQ(slow.size(), found.size());
        for (size_t slot = 0; slot < slow.size(); ++slot)
            ASSERT_TRUE(SameBits(found[slot], slow[slot])) << slot;
        for (size_t row = 0; row < 12; ++row)
            for (size_t col = 0; col < 12; ++col)
                EXPECT_EQ(found[160 + row * 12 + col], found[160 + (row < 6 ? 0 : 132) + col])
                    << row << " " << col;
        EXPECT_NE(found[160], found[160 + 132]);
    }
}

TEST(CompositionModel, LimitsMatchTheSlowFormForEveryExtentAndPosition)
{
    const EachVariant variants;
    for (int32_t first : {0, 1, 2, 3, 5, 17, 63, 64, 100, 255, 256, 257, 400, 511, 512, 600})
        for (int32_t last = first; last < 640; ++last)
            for (const IsaVariant variant : variants.Variants) {
                SelectIsaVariant(variant);
                GridLimits limits;
                FillGridLimits(first, last, limits);
                int32_t cell = 0;
                for (const int32_t cells : {4, 8, 12})
                    for (int32_t i = 0; i < cells; ++i, ++cell) {
                        const slowOracle::CellLimits slow =
                            slowOracle::FindCellLimits(first, last, cells, i);
                        ASSERT_EQ(limits.Start[cell], slow.First) << first << ".." << last;
                        ASSERT_EQ(limits.End[cell], slow.Last) << first << ".." << last;
                        ASSERT_EQ(limits.Length[cell],
                                  static_cast<float>(slow.Last - slow.First + 1));
                    }
            }
}

// The fast form needs extents that the cells tile, as they do all long ones. Short extents are
// marked as not tiled, and the plain form scores them.
TEST(CompositionModel, ExtentsFromTwelvePixelsTileAndShorterOnesDoNot)
{
    for (int32_t first = 0; first < 640; ++first)
        for (int32_t last = first; last < 640; last += last < first + 20 ? 1 : 7) {
            GridLimits limits;
            FillGridLimits(first, last, limits);
            ASSERT_EQ(limits.Tiles, last - first + 1 >= 12) << first << ".." << last;
        }
}

TEST(CompositionModel, OnePixelFillsAllSlotsOfATableWithItsValue)
{
    const auto analyzer = NoiseAnalyzer(9, 11, 5);
    for (const WorkingRect& rect :
         {WorkingRect{0, 0, 0, 0}, WorkingRect{4, 7, 4, 7}, WorkingRect{8, 10, 8, 10}}) {
        const std::vector<float> descriptor = Descriptor(*analyzer, rect);
        const int32_t at = rect.FirstRow * 11 + rect.FirstCol;
        for (int32_t slot = 0; slot < kDescriptorSize; ++slot) {
            // The tables hold running sums, so the pixel is recovered only up to their rounding.
            const float value =
                slot < 80 ? analyzer->ContrastMap.Data[at] : analyzer->SaliencyMap.Data[at];
            EXPECT_NEAR(descriptor[static_cast<size_t>(slot)], value, 1e-6f);
            EXPECT_EQ(descriptor[static_cast<size_t>(slot)], descriptor[slot < 80 ? 0 : 80]);
        }
    }
}

TEST(CompositionModel, AConstantMapFillsEveryGridWithItsValue)
{
    const auto analyzer = ZeroAnalyzer(64, 96);
    FillMap(analyzer->Writable, MapContrast, 0.25f);
    FillMap(analyzer->Writable, MapSaliency, 0.5f);
    std::mt19937 random(3);
    for (int trial = 0; trial < 500; ++trial) {
        const std::vector<float> descriptor = Descriptor(*analyzer, RandomRect(random, 64, 96));
        for (size_t slot = 0; slot < descriptor.size(); ++slot)
            ASSERT_EQ(descriptor[slot], slot < 80 ? 0.25f : 0.5f); // exact: quarters add exactly
    }
}

TEST(CompositionModel, SlotsGoRowByRowWhateverTheAspectRatio)
{
    for (const WorkingRect& rect : {WorkingRect{0, 0, 23, 95}, WorkingRect{0, 0, 95, 23}}) {
        const auto analyzer = ZeroAnalyzer(96, 96);
        // Light up the second cell of the first row of the 4-fold grid.
        const int32_t height = rect.LastRow + 1;
        const int32_t width = rect.LastCol + 1;
        const WorkingRect lit{0, width / 4, height / 4 - 1, width / 2 - 1};
        FillMap(analyzer->Writable, MapContrast, lit, 1.0f);
        FillMap(analyzer->Writable, MapSaliency, lit, 0.5f);
        const std::vector<float> descriptor = Descriptor(*analyzer, rect);
        for (size_t slot = 0; slot < 16; ++slot) {
            EXPECT_EQ(descriptor[slot], slot == 1 ? 1.0f : 0.0f);
            EXPECT_EQ(descriptor[80 + slot], slot == 1 ? 0.5f : 0.0f);
        }
        for (size_t row = 0; row < 8; ++row)
            for (size_t col = 0; col < 8; ++col) {
                const bool inside = row < 2 && col >= 2 && col < 4;
                EXPECT_EQ(descriptor[16 + row * 8 + col], inside ? 1.0f : 0.0f);
                EXPECT_EQ(descriptor[96 + row * 8 + col], inside ? 0.5f : 0.0f);
            }
        for (size_t row = 0; row < 12; ++row)
            for (size_t col = 0; col < 12; ++col)
                EXPECT_EQ(descriptor[160 + row * 12 + col],
                          row < 3 && col >= 3 && col < 6 ? 0.5f : 0.0f);
    }
}

TEST(CompositionModel, RandomRectanglesMatchTheSlowFormInEveryIsaVariant)
{
    struct Size {
        int32_t Rows, Cols, Trials;
    };
    std::mt19937 random(77);
    for (const Size& size :
         {Size{480, 640, 1500}, Size{640, 427, 600}, Size{37, 640, 600}, Size{640, 5, 300},
          Size{3, 640, 300}, Size{1, 640, 150}, Size{13, 11, 300}}) {
        SCOPED_TRACE(testing::Message() << size.Rows << " x " << size.Cols);
        const auto analyzer = NoiseAnalyzer(size.Rows, size.Cols, 70);
        const slowOracle::ScoringInput in = OracleInput(*analyzer);
        const EachVariant variants;
        for (int trial = 0; trial < size.Trials; ++trial) {
            const WorkingRect rect = RandomRect(random, size.Rows, size.Cols);
            const std::vector<float> slow = slowOracle::CompositionDescriptor(in, OracleRect(rect));
            for (const IsaVariant variant : variants.Variants) {
                SelectIsaVariant(variant);
                const std::vector<float> fast = Descriptor(*analyzer, rect);
                for (size_t slot = 0; slot < slow.size(); ++slot)
                    ASSERT_TRUE(SameBits(fast[slot], slow[slot]))
                        << "variant " << variant << " slot " << slot << ": " << fast[slot] << " "
                        << slow[slot] << " rows " << rect.FirstRow << ".." << rect.LastRow
                        << " cols " << rect.FirstCol << ".." << rect.LastCol;
            }
        }
    }
}

TEST(CompositionModel, OutputsBeyondThreeSaturateExactly)
{
    const float bias = static_cast<float>(DescriptorBias);
    EXPECT_EQ(MapModelOutput(3.5f - bias), 1.0f);
    EXPECT_EQ(MapModelOutput(-3.5f - bias), 0.0f);
    EXPECT_EQ(MapModelOutput(1e30f), 1.0f);
    EXPECT_EQ(MapModelOutput(-1e30f), 0.0f);
    EXPECT_LT(MapModelOutput(2.99f - bias), 1.0f);
    EXPECT_GT(MapModelOutput(-2.99f - bias), 0.0f);
    EXPECT_TRUE(std::isnan(MapModelOutput(std::nanf(""))));
}

TEST(CompositionModel, TheMeanDescriptorScoresTheBiasAlone)
{
    std::vector<float> descriptor(DescriptorMean, DescriptorMean + kDescriptorSize);
    const float output = static_cast<float>(DescriptorBias);
    EXPECT_EQ(ScoreDescriptor(descriptor.data()), static_cast<float>((3.0 + output) / 6.0));
    EXPECT_TRUE(std::all_of(descriptor.begin(), descriptor.end(),
                            [](float value) { return value == 0.0f; }));
    EXPECT_NEAR(MapModelOutput(0.0f), (3.0 - 0.3835262358188629) / 6.0, 1e-7);
}

TEST(CompositionModel, ScoreMatchesTheSlowFormAndLeavesTheStandardisedDescriptor)
{
    const auto analyzer = NoiseAnalyzer(120, 160, 21);
    const slowOracle::ScoringInput in = OracleInput(*analyzer);
    std::mt19937 random(22);
    for (int trial = 0; trial < 1000; ++trial) {
        const WorkingRect rect = RandomRect(random, 120, 160);
        const slowOracle::Composition slow = slowOracle::EvaluateComposition(in, OracleRect(rect));

        const float score = analyzer->ComputeCompositionScore(rect);

        for (size_t slot = 0; slot < slow.Standardised.size(); ++slot)
            ASSERT_TRUE(SameBits(analyzer->DescriptorBuffer[slot], slow.Standardised[slot]));
        // BLAS adds the 304 products in its own order: at most 303 roundings, each of half a unit
        // in the last place of at most the sum of the magnitudes. A sixth of that reaches the
        // score, plus the score's own rounding.
        const double bound = 304 * std::ldexp(slow.DotMagnitude, -24) / 6 + std::ldexp(1.0, -23);
        EXPECT_NEAR(score, slow.Score, bound);
    }
}

} // namespace
} // namespace scoringTests
