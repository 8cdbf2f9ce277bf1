// Distance of every pixel from a colour model (mean and covariance): the Mahalanobis
// distance (P. C. Mahalanobis, On the generalised distance in statistics, 1936) with 10 added
// to the covariance's diagonal. Planes are on the 0..255 scale of the bytes.
#ifndef VISTATRIM_ANALYSIS_DISTANCE_MAPS_H
#define VISTATRIM_ANALYSIS_DISTANCE_MAPS_H

#include <cstdint>
#include <vector>

#include "numeric/plane_stack.h"

namespace vistaTrim {

// A colour model made ready to measure pixels by: the fast form of the two maps below, which a
// test holds to their bits. It measures any stretch of a stack, so that whoever needs the distances
// from several models can take them block by block, while the pixels are in the cache, with no
// plane for each.
class CDistanceModel {
public:
    // mean        one plane of n floats
    // covariance  one plane of n x n floats, row-major, symmetric
    // scalar      |x - mean| / sqrt(variance + 10), for a single plane; else the general form
    CDistanceModel(const CPlaneStack& mean, const CPlaneStack& covariance, bool scalar);

    // distance[i] = distance of pixel first + i of stack, for i below count.
    void Measure(const CPlaneStack& stack, int32_t first, int32_t count, float* distance);

private:
    void MeasureBlock(const CPlaneStack& stack, int32_t first, int32_t count, float* distance);

    int32_t PlaneCount;
    bool Scalar;
    float Scale;                 // scalar form: 1 / sqrt(variance + 10)
    std::vector<float> Means;    // of each plane
    std::vector<float> Inverse;  // general form: of the regularised covariance
    std::vector<float> Centred;  // general form, one block: pixels less the means
    std::vector<float> Weighted; // the same, times Inverse
};

// stack       n planes
// out         one plane of the same size
// mean        one plane of n floats
// covariance  one plane of n x n floats, row-major, symmetric
void ComputeMahalanobisMap(const CPlaneStack& stack, CPlaneStack& out, const CPlaneStack& mean,
                           const CPlaneStack& covariance, bool normalise);

// The form for a single plane: |x - mean| / sqrt(variance + 10).
void ComputeScalarDistanceMap(const CPlaneStack& stack, CPlaneStack& out, const CPlaneStack& mean,
                              const CPlaneStack& covariance, bool normalise);

// result = inverse of (a + eps I), n x n; a diagonal matrix if that is not positive definite.
void InvertRegularised(const float* a, int32_t n, float eps, float* result);

// result[i] = sum over three planes of a * b, rounded once. Planes stand count floats apart.
void DotThreePlanes(const float* a, const float* b, int32_t count, float* result);
// The same for any number of planes, rounded at each plane.
void DotPlanes(const float* a, const float* b, int32_t planes, int32_t count, float* result);

} // namespace vistaTrim

#endif
