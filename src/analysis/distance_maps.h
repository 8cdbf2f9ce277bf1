// Distance of every pixel from a colour model (mean and covariance): the Mahalanobis
// distance (P. C. Mahalanobis, On the generalised distance in statistics, 1936) with 10 added
// to the covariance's diagonal. Planes are on the 0..255 scale of the bytes.
#ifndef VISTATRIM_ANALYSIS_DISTANCE_MAPS_H
#define VISTATRIM_ANALYSIS_DISTANCE_MAPS_H

#include <cstdint>

#include "numeric/plane_stack.h"

namespace vistaTrim {

// Added to every variance, on the scale of the bytes: a flat border still gives finite
// distances.
constexpr float kRegulariser = 10.0f;

// The joint distance of n planes. Every build runs it when the fast sweeps of border_contrast.h
// meet an indefinite covariance; with BLAS it always runs.
//
// stack       n planes
// out         one plane of the same size
// mean        one plane of n floats
// covariance  one plane of n x n floats, row-major, symmetric
void ComputeMahalanobisMap(const CPlaneStack& stack, CPlaneStack& out, const CPlaneStack& mean,
                           const CPlaneStack& covariance, bool normalise);

// The form for a single plane: |x - mean| / sqrt(variance + 10).
void ComputeScalarDistanceMap(const CPlaneStack& stack, CPlaneStack& out, const CPlaneStack& mean,
                              const CPlaneStack& covariance, bool normalise);

// The factor of the scalar form; NaN for a variance below -10.
float InverseDeviation(float variance);

// result = inverse of (a + eps I), n x n; a diagonal matrix if that is not positive definite.
void InvertRegularised(const float* a, int32_t n, float eps, float* result);

// result[i] = sum over three planes of a * b, rounded once. Planes are count floats apart.
void DotThreePlanes(const float* a, const float* b, int32_t count, float* result);
// The same for any number of planes, rounded at each plane.
void DotPlanes(const float* a, const float* b, int32_t planes, int32_t count, float* result);

} // namespace vistaTrim

#endif
