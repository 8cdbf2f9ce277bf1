// The fitted numbers of the choice model.
#ifndef VISTATRIM_PHOTO_RANKING_CHOICE_MODEL_H
#define VISTATRIM_PHOTO_RANKING_CHOICE_MODEL_H

#include <cstdint>
#include <memory>
#include <vector>

namespace vistaTrim::photo {

// A convolution of 3 x 3 taps that lie `Dilation` cells apart; everything beyond the border is
// zero.
struct ConvolutionLayer {
    int32_t Inputs = 0;
    int32_t Outputs = 0;
    int32_t Dilation = 1;
    std::vector<float> Weights; // Outputs x Inputs x 3 x 3
    std::vector<float> Biases;  // Outputs
};

constexpr int32_t kMaxDilation = 4;

struct ChoiceModel {
    // Inputs of the network become (value - mean) * scale.
    std::vector<float> InputMeans;
    std::vector<float> InputScales;
    // Negative outputs become 0 after every layer but the last, which has one output for each
    // part of a crop (crop_utility.h).
    std::vector<ConvolutionLayer> Layers;
    std::vector<double> FeatureWeights; // kNumCropFeatures, see crop_utility.h
    // How far the choice of a set trusts the model: the utilities are multiplied by it before they
    // become probabilities.
    double Sharpness = 1;
    // The overlap measured with people's crops, as a line in the overlap that the model expects.
    double OverlapOffset = 0;
    double OverlapSlope = 1;
};

// The compiled-in model.
std::shared_ptr<const ChoiceModel> DefaultChoiceModel();

} // namespace vistaTrim::photo

#endif
