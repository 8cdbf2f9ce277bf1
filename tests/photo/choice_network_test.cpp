// The network against the definition of a convolution, and against what PyTorch computed.
#include <algorithm>
#include <cmath>
#include <fstream>
#include <random>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "numeric/isa_variants.h"
#include "ranking/choice_network.h"
#include "ranking/crop_utility.h"

namespace vistaTrim::photo {
namespace {

InputGrid NoiseGrid()
{
    InputGrid grid;
    std::mt19937 random(6);
    for (int i = 0; i < kNumInputs * kGridCells; ++i)
        grid.Planes.push_back(static_cast<float>(random()) / 4294967296.0F);
    return grid;
}

// One layer by the definition, its taps added from the top left, input after input.
std::vector<float> SlowLayer(const ConvolutionLayer& layer, const std::vector<float>& from,
                             bool rectify)
{
    std::vector<float> to;
    for (int out = 0; out < layer.Outputs; ++out)
        for (int r = 0; r < kGridSide; ++r)
            for (int c = 0; c < kGridSide; ++c) {
                float sum = layer.Biases[static_cast<size_t>(out)];
                for (int in = 0; in < layer.Inputs; ++in)
                    for (int tap = 0; tap < 9; ++tap) {
                        const int y = r + (tap / 3 - 1) * layer.Dilation;
                        const int x = c + (tap % 3 - 1) * layer.Dilation;
                        const bool inside = y >= 0 && y < kGridSide && x >= 0 && x < kGridSide;
                        const float value =
                            inside ? from[static_cast<size_t>(in * kGridCells + y * kGridSide + x)]
                                   : 0.0F;
                        sum +=
                            layer
                                .Weights[static_cast<size_t>((out * layer.Inputs + in) * 9 + tap)] *
                            value;
                    }
                to.push_back(rectify ? std::max(sum, 0.0F) : sum);
            }
    return to;
}

TEST(ChoiceNetwork, EveryIsaVariantMatchesTheDefinitionToTheBit)
{
    const ChoiceModel& model = *DefaultChoiceModel();
    const InputGrid grid = NoiseGrid();
    std::vector<float> expected = grid.Planes;
    for (size_t i = 0; i < expected.size(); ++i) {
        const size_t input = i / kGridCells;
        expected[i] = (expected[i] - model.InputMeans[input]) * model.InputScales[input];
    }
    for (size_t i = 0; i < model.Layers.size(); ++i)
        expected = SlowLayer(model.Layers[i], expected, i + 1 < model.Layers.size());

    const IsaVariant before = ActiveIsaVariant();
    for (int variant = 0; variant < IsaVariantCount; ++variant) {
        if (!IsaVariantAvailable(static_cast<IsaVariant>(variant)))
            continue;
        SelectIsaVariant(static_cast<IsaVariant>(variant));
        EXPECT_EQ(RunChoiceNetwork(model, grid), expected) << "variant " << variant;
    }
    SelectIsaVariant(before);
}

TEST(ChoiceNetwork, TheWidestDilationReadsNothingBeyondTheGrid)
{
    ChoiceModel model = *DefaultChoiceModel();
    for (ConvolutionLayer& layer : model.Layers)
        layer.Dilation = kMaxDilation;
    const InputGrid grid = NoiseGrid();
    std::vector<float> expected = grid.Planes;
    for (size_t i = 0; i < expected.size(); ++i) {
        const size_t input = i / kGridCells;
        expected[i] = (expected[i] - model.InputMeans[input]) * model.InputScales[input];
    }
    for (size_t i = 0; i < model.Layers.size(); ++i)
        expected = SlowLayer(model.Layers[i], expected, i + 1 < model.Layers.size());
    EXPECT_EQ(RunChoiceNetwork(model, grid), expected);
}

// The file is written together with the weights that are compiled in.
TEST(ChoiceNetwork, AgreesWithPyTorch)
{
    std::ifstream file(VISTATRIM_CHOICE_VECTORS);
    ASSERT_TRUE(file) << VISTATRIM_CHOICE_VECTORS;
    std::vector<std::vector<double>> lines;
    for (std::string text; std::getline(file, text);) {
        if (text.empty() || text[0] == '#')
            continue;
        std::istringstream stream(text);
        lines.emplace_back();
        for (double value = 0; stream >> value;)
            lines.back().push_back(value);
    }
    const size_t planesEnd = kNumInputs + kNumCropParts;
    ASSERT_GT(lines.size(), planesEnd);

    InputGrid grid;
    for (size_t i = 0; i < kNumInputs; ++i)
        for (const double value : lines[i])
            grid.Planes.push_back(static_cast<float>(value / 64));
    ASSERT_EQ(grid.Planes.size(), static_cast<size_t>(kNumInputs) * kGridCells);
    const std::vector<float> planes = RunChoiceNetwork(*DefaultChoiceModel(), grid);

    // PyTorch adds in another order, in single precision: planes of up to 3 differ by up to 2e-6.
    for (size_t i = 0; i < kNumCropParts; ++i)
        for (size_t k = 0; k < kGridCells; ++k)
            EXPECT_NEAR(static_cast<double>(planes[i * kGridCells + k]), lines[kNumInputs + i][k],
                        1e-5);
    const PartSums parts(planes);
    for (size_t i = planesEnd; i < lines.size(); ++i) {
        const auto side = [&](size_t k) { return static_cast<int>(lines[i][k]); };
        const CInt32CropRect crop(side(0), side(2) - 1, side(1), side(3) - 1);
        EXPECT_NEAR(parts.Sum(crop, {640, 480}), lines[i][4], 1e-5) << "line " << i;
    }
}

} // namespace
} // namespace vistaTrim::photo
