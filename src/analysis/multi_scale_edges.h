// Edge strength at coarse scales, and the damping of rows that are full of edges.
#ifndef VISTATRIM_ANALYSIS_MULTI_SCALE_EDGES_H
#define VISTATRIM_ANALYSIS_MULTI_SCALE_EDGES_H

#include <cstdint>
#include <vector>

#include "numeric/plane_stack.h"

namespace vistaTrim {

// source  any number of planes; only read
// out     one plane of the same size; receives the sum over the scales
// scales  each above 0 and at most 1, not checked; a scale that leaves no pixel is skipped
void ComputeMultiScaleEdges(const CPlaneStack& source, CPlaneStack& out, bool normaliseOutput,
                            bool normaliseRows, std::vector<float> scales);

// Divides every row of the first plane by the sum of its values above 0.05f plus 0.01f x Cols.
void NormaliseRowsBySum(CPlaneStack& stack);
void NormaliseRowBySum(float* row, int32_t length, float offset, float threshold);

} // namespace vistaTrim

#endif
