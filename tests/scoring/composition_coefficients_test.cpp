// What is known of the published model must hold for every set of coefficients that is compiled in:
// hosts have been tuned against these anchors.
#include "scoring/composition_coefficients.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>

#include <gtest/gtest.h>

namespace vistaTrim {
namespace {

struct Block {
    const char* Name;
    int First;
    int Size;
    // As printed: means to five places, ranges to five digits, first entries to the last bit.
    const char* MeanOfMeans;
    const char* ScaleLow;
    const char* ScaleHigh;
    const char* WeightLow;
    const char* WeightHigh;
    float FirstMean;
    float FirstScale;
    float FirstWeight;

    int End() const
    {
        return First + Size * Size;
    }
};

const Block kBlocks[] = {
    {"contrast 4 x 4", 0, 4, "0.21334", "6.0262", "6.2095", "-0.89931", "1.2309", 0.20075105f,
     6.2094865f, -0.13435628f},
    {"contrast 8 x 8", 16, 8, "0.21334", "5.3818", "5.7225", "-0.3568", "0.36523", 0.19909194f,
     5.7142549f, 0.20006749f},
    {"saliency 4 x 4", 80, 4, "0.07920", "11.779", "12.782", "-2.5609", "1.4146", 0.069642715f,
     12.781688f, 1.1977082f},
    {"saliency 8 x 8", 96, 8, "0.07919", "10.08", "11.757", "-0.51564", "0.56573", 0.065015428f,
     11.757263f, -0.51537943f},
    {"saliency 12 x 12", 160, 12, "0.07919", "9.4769", "11.297", "-0.36554", "0.35922",
     0.063562356f, 11.297307f, 0.056382731f},
};

std::string Digits(double value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.5g", value);
    return text;
}

std::string Places(double value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.5f", value);
    return text;
}

float Lowest(const float* table, const Block& block)
{
    return *std::min_element(table + block.First, table + block.End());
}

float Highest(const float* table, const Block& block)
{
    return *std::max_element(table + block.First, table + block.End());
}

TEST(CompositionCoefficients, FirstEntriesOfEachBlockAreThePublishedOnes)
{
    for (const Block& block : kBlocks) {
        SCOPED_TRACE(block.Name);
        EXPECT_EQ(DescriptorMean[block.First], block.FirstMean);
        EXPECT_EQ(DescriptorScale[block.First], block.FirstScale);
        EXPECT_EQ(DescriptorWeights[block.First], block.FirstWeight);
    }
}

TEST(CompositionCoefficients, LastSlotAndBiasAreThePublishedOnes)
{
    EXPECT_EQ(DescriptorMean[303], 0.06395882f);
    EXPECT_EQ(DescriptorScale[303], 11.113572f);
    EXPECT_EQ(DescriptorWeights[303], 0.09241009f);
    EXPECT_EQ(DescriptorBias, -0.3835262358188629);
}

TEST(CompositionCoefficients, CoarseSaliencyWeightsAreThePublishedOnes)
{
    const double published[16] = {1.197708, -0.02140538, 1.113734, -0.03390493, 1.413938, -2.560412,
                                  1.222332, -1.543203,   1.414617, -2.560871,   1.224022, -1.540826,
                                  1.207239, -0.01820735, 1.10877,  -0.03239964};
    for (int i = 0; i < 16; ++i)
        EXPECT_NEAR(DescriptorWeights[80 + i], published[i], std::abs(published[i]) * 5e-7)
            << "slot " << 80 + i;
}

TEST(CompositionCoefficients, ScalesAndWeightsSpanThePublishedRanges)
{
    for (const Block& block : kBlocks) {
        SCOPED_TRACE(block.Name);
        EXPECT_EQ(Digits(Lowest(DescriptorScale, block)), block.ScaleLow);
        EXPECT_EQ(Digits(Highest(DescriptorScale, block)), block.ScaleHigh);
        EXPECT_EQ(Digits(Lowest(DescriptorWeights, block)), block.WeightLow);
        EXPECT_EQ(Digits(Highest(DescriptorWeights, block)), block.WeightHigh);
    }
}

TEST(CompositionCoefficients, MeansSpanThePublishedRange)
{
    EXPECT_EQ(Digits(*std::min_element(DescriptorMean, DescriptorMean + 304)), "0.063562");
    EXPECT_EQ(Digits(*std::max_element(DescriptorMean, DescriptorMean + 304)), "0.23598");
}

// Every grid tiles the crop, so the mean of the cell means of a table is its mean over the crop.
TEST(CompositionCoefficients, BlocksOfOneTableHaveTheSameMean)
{
    for (const Block& block : kBlocks) {
        SCOPED_TRACE(block.Name);
        double sum = 0;
        for (int slot = block.First; slot < block.End(); ++slot)
            sum += DescriptorMean[slot];
        EXPECT_EQ(Places(sum / (block.Size * block.Size)), block.MeanOfMeans);
    }
}

// The same holds for each cell: four or nine finer cells tile a coarse one.
TEST(CompositionCoefficients, FinerCellsAverageToTheCoarserOneThatHoldsThem)
{
    const struct {
        int Coarse;
        int Fine;
        int FineSize;
    } kPairs[] = {{0, 16, 8}, {80, 96, 8}, {80, 160, 12}};
    for (const auto& pair : kPairs) {
        const int ratio = pair.FineSize / 4;
        for (int row = 0; row < 4; ++row)
            for (int col = 0; col < 4; ++col) {
                double sum = 0;
                for (int y = 0; y < ratio; ++y)
                    for (int x = 0; x < ratio; ++x)
                        sum += DescriptorMean[pair.Fine + (row * ratio + y) * pair.FineSize +
                                              col * ratio + x];
                // The printed block means 0.07920 and 0.07919 differ by less than a millionth.
                EXPECT_NEAR(sum / (ratio * ratio), DescriptorMean[pair.Coarse + row * 4 + col],
                            1e-6)
                    << "grid " << pair.FineSize << " cell " << row << ", " << col;
            }
    }
}

TEST(CompositionCoefficients, RowsMirrorOneAnother)
{
    for (const Block& block : kBlocks) {
        SCOPED_TRACE(block.Name);
        for (int row = 0; row < block.Size; ++row)
            for (int col = 0; col < block.Size; ++col) {
                const int slot = block.First + row * block.Size + col;
                const int twin = block.First + (block.Size - 1 - row) * block.Size + col;
                EXPECT_EQ(DescriptorMean[slot], DescriptorMean[twin]) << slot;
                EXPECT_EQ(DescriptorScale[slot], DescriptorScale[twin]) << slot;
                EXPECT_LE(std::abs(DescriptorWeights[slot] - DescriptorWeights[twin]), 0.01f)
                    << slot;
            }
    }
}

TEST(CompositionCoefficients, ScalesArePositive)
{
    for (int slot = 0; slot < 304; ++slot)
        EXPECT_GT(DescriptorScale[slot], 0.0f) << slot;
}

} // namespace
} // namespace vistaTrim
