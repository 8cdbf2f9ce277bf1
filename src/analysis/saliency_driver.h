// From the bytes of a picture to its seven saliency maps.
#ifndef VISTATRIM_ANALYSIS_SALIENCY_DRIVER_H
#define VISTATRIM_ANALYSIS_SALIENCY_DRIVER_H

#include <cstdint>
#include <vector>

#include "numeric/plane_stack.h"
#include "numeric/vector_ops.h"

namespace vistaTrim {

// Seven planes of cols x rows floats, owned by the caller and written in full.
struct SaliencyMapBuffers {
    float* ContrastMap;
    float* SaliencyMap;
    float* ColorContrastMap;
    float* SideMaps[4]; // top, bottom, left, right
};

// The normalisation that each map still needs.
struct SaliencyMapScales {
    CNormalisation ContrastMap;
    CNormalisation SaliencyMap;
    CNormalisation ColorContrastMap;
    CNormalisation SideMaps[4];
};

// pixels  three planes of 0..255
// The maps before their last normalisation, which the caller can apply in its next pass over them.
SaliencyMapScales MeasureSaliencyMaps(const CPlaneStack& pixels, const SaliencyMapBuffers& buffers);

// The finished maps.
// pixels  cols x rows pixels of three bytes, packed; cols and rows at least 1
void ComputeSaliencyMaps(const uint8_t* pixels, int32_t cols, int32_t rows,
                         const SaliencyMapBuffers& buffers);

// One single-plane view for each plane of stack, tables included. Views own nothing.
std::vector<CPlaneStack> SplitPlaneViews(const CPlaneStack& stack);

} // namespace vistaTrim

#endif
