#include "ranking/choice_network.h"

#include <algorithm>
#include <cstddef>

#include "numeric/isa_variants.h"

namespace vistaTrim::photo {

namespace {

// Planes lie in a frame of zeros as wide as the widest dilation, so that a tap never needs a
// test: a tap is a shift in memory. The frame between two rows is shared, and a few more cells at
// both ends take the diagonal shifts.
constexpr int32_t kStride = kGridSide + kMaxDilation;
constexpr int32_t kLead = kMaxDilation * kStride + kMaxDilation;
constexpr int32_t kSpan = kGridSide * kStride; // the rows with the frame to their right
constexpr int32_t kPlane = kLead + kSpan + kLead;

// to[i] += the nine taps of from around i, added one by one from the top left: that order, and
// no fused operations, make the sum the same for every register width.
VISTATRIM_VARIANT_BODY void AddTapsBody(float* to, const float* from, const float* weights,
                                        int32_t dilation)
{
    const float* const above = from - static_cast<ptrdiff_t>(dilation) * kStride;
    const float* const below = from + static_cast<ptrdiff_t>(dilation) * kStride;
    VISTATRIM_INDEPENDENT_STEPS
    for (int32_t i = 0; i < kSpan; ++i) {
        float sum = to[i];
        sum += weights[0] * above[i - dilation];
        sum += weights[1] * above[i];
        sum += weights[2] * above[i + dilation];
        sum += weights[3] * from[i - dilation];
        sum += weights[4] * from[i];
        sum += weights[5] * from[i + dilation];
        sum += weights[6] * below[i - dilation];
        sum += weights[7] * below[i];
        sum += weights[8] * below[i + dilation];
        to[i] = sum;
    }
}
VISTATRIM_VARIANTS(AddTaps, (float* to, const float* from, const float* weights, int32_t dilation),
                   (to, from, weights, dilation))

float* Inside(std::vector<float>& planes, int32_t plane)
{
    return planes.data() + static_cast<ptrdiff_t>(plane) * kPlane + kLead;
}

// The taps wrote to the frame too, so it is zeroed again.
void FinishPlane(float* plane, bool rectify)
{
    for (int32_t r = 0; r < kGridSide; ++r) {
        float* row = plane + static_cast<ptrdiff_t>(r) * kStride;
        if (rectify)
            for (int32_t c = 0; c < kGridSide; ++c)
                row[c] = std::max(row[c], 0.0F);
        std::fill(row + kGridSide, row + kStride, 0.0F);
    }
}

std::vector<float> Convolve(const ConvolutionLayer& layer, std::vector<float>& from, bool rectify)
{
    std::vector<float> to(static_cast<size_t>(layer.Outputs) * kPlane, 0.0F);
    const float* weights = layer.Weights.data();
    for (int32_t out = 0; out < layer.Outputs; ++out) {
        float* const plane = Inside(to, out);
        std::fill(plane, plane + kSpan, layer.Biases[static_cast<size_t>(out)]);
        for (int32_t in = 0; in < layer.Inputs; ++in, weights += 9)
            AddTaps(plane, Inside(from, in), weights, layer.Dilation);
        FinishPlane(plane, rectify);
    }
    return to;
}

} // namespace

std::vector<float> RunChoiceNetwork(const ChoiceModel& model, const InputGrid& inputs)
{
    std::vector<float> planes(static_cast<size_t>(kNumInputs) * kPlane, 0.0F);
    for (int32_t i = 0; i < kNumInputs; ++i) {
        const float mean = model.InputMeans[static_cast<size_t>(i)];
        const float scale = model.InputScales[static_cast<size_t>(i)];
        const float* from = inputs.Planes.data() + static_cast<ptrdiff_t>(i) * kGridCells;
        for (int32_t r = 0; r < kGridSide; ++r)
            for (int32_t c = 0; c < kGridSide; ++c)
                Inside(planes, i)[r * kStride + c] = (from[r * kGridSide + c] - mean) * scale;
    }
    for (size_t i = 0; i < model.Layers.size(); ++i)
        planes = Convolve(model.Layers[i], planes, i + 1 < model.Layers.size());

    const int32_t outputs = model.Layers.back().Outputs;
    std::vector<float> result(static_cast<size_t>(outputs) * kGridCells);
    for (int32_t i = 0; i < outputs; ++i)
        for (int32_t r = 0; r < kGridSide; ++r)
            std::copy_n(Inside(planes, i) + static_cast<ptrdiff_t>(r) * kStride, kGridSide,
                        result.begin() + (static_cast<ptrdiff_t>(i) * kGridSide + r) * kGridSide);
    return result;
}

} // namespace vistaTrim::photo
