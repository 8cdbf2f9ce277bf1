#include "analysis/distance_maps.h"

#include <algorithm>
#include <cmath>

#include "numeric/isa_variants.h"
#include "numeric/linear_algebra.h"
#include "numeric/owned_stack.h"
#include "numeric/vector_ops.h"

namespace vistaTrim {

namespace {

VISTATRIM_VARIANT_BODY void DotThreeBody(const float* a, const float* b, int32_t count,
                                         float* result)
{
    const size_t plane = static_cast<size_t>(count);
    const float* a1 = a + plane;
    const float* a2 = a1 + plane;
    const float* b1 = b + plane;
    const float* b2 = b1 + plane;
    VISTATRIM_INDEPENDENT_STEPS
    for (int32_t i = 0; i < count; ++i) {
        const double sum = static_cast<double>(a[i]) * static_cast<double>(b[i]) +
                           static_cast<double>(a1[i]) * static_cast<double>(b1[i]) +
                           static_cast<double>(a2[i]) * static_cast<double>(b2[i]);
        result[i] = static_cast<float>(sum);
    }
}
VISTATRIM_VARIANTS(DotThree, (const float* a, const float* b, int32_t count, float* result),
                   (a, b, count, result))

VISTATRIM_VARIANT_BODY void AccumulateProductBody(const float* a, const float* b, int32_t count,
                                                  float* result)
{
    VISTATRIM_INDEPENDENT_STEPS
    for (int32_t i = 0; i < count; ++i) {
        const float product = a[i] * b[i];
        result[i] = result[i] + product;
    }
}
VISTATRIM_VARIANTS(AccumulateProduct,
                   (const float* a, const float* b, int32_t count, float* result),
                   (a, b, count, result))

} // namespace

// The regulariser is added in double; variance, root and quotient are each rounded to float.
float InverseDeviation(float variance)
{
    const float regularised = static_cast<float>(static_cast<double>(variance) + 10.0);
    const float deviation = std::sqrt(regularised);
    return 1.0f / deviation;
}

void DotThreePlanes(const float* a, const float* b, int32_t count, float* result)
{
    DotThree(a, b, count, result);
}

void DotPlanes(const float* a, const float* b, int32_t planes, int32_t count, float* result)
{
    VectorMul(count, a, b, result);
    for (int32_t k = 1; k < planes; ++k) {
        const size_t start = static_cast<size_t>(k) * static_cast<size_t>(count);
        AccumulateProduct(a + start, b + start, count, result);
    }
}

void InvertRegularised(const float* a, int32_t n, float eps, float* result)
{
    if (n == 1) {
        result[0] = 1.0f / (a[0] + eps);
        return;
    }
    const size_t side = static_cast<size_t>(n);
    std::copy_n(a, side * side, result);
    for (size_t i = 0; i < side; ++i)
        result[i * side + i] = result[i * side + i] + eps;
    const float firstDiagonal = result[0];

    // The lower triangle in column-major order is the upper one in row-major order; the matrix is
    // symmetric, so pass it unchanged.
    if (linearAlgebra::FactorPositiveDefinite(n, result) > 0) {
        // Not positive definite. The first plane's variance is used for all, with eps added a
        // second time: an indefinite model becomes one common scale, infinite if the sum is 0.
        std::fill_n(result, side * side, 0.0f);
        for (size_t i = 0; i < side; ++i)
            result[i * side + i] = 1.0f / (firstDiagonal + eps);
        return;
    }
    linearAlgebra::InvertFactored(n, result);
    for (size_t i = 1; i < side; ++i)
        for (size_t j = 0; j < i; ++j)
            result[i * side + j] = result[j * side + i];
}

void ComputeMahalanobisMap(const CPlaneStack& stack, CPlaneStack& out, const CPlaneStack& mean,
                           const CPlaneStack& covariance, bool normalise)
{
    const int32_t n = stack.PlaneCount;
    const int32_t count = stack.ElementCount;
    COwnedStack inverse;
    COwnedStack centred;
    COwnedStack weighted;
    inverse.Create(1, n, n);
    centred.Create(1, count, n); // n blocks, one after the other
    weighted.Create(1, count, n);
    float* const blocks = centred.Planes[0];

    InvertRegularised(covariance.Planes[0], n, kRegulariser, inverse.Planes[0]);
    for (int32_t k = 0; k < n; ++k)
        OffsetPlane(stack.Planes[static_cast<size_t>(k)], blocks + static_cast<int64_t>(k) * count,
                    count, -mean.Planes[0][k]);
    linearAlgebra::MultiplyBySymmetric(count, n, inverse.Planes[0], blocks, weighted.Planes[0]);
    if (n == 3)
        DotThreePlanes(blocks, weighted.Planes[0], count, out.Planes[0]);
    else
        DotPlanes(weighted.Planes[0], blocks, n, count, out.Planes[0]);
    // Rounding can make a square negative; its root is then NaN and stays NaN.
    VectorSqrt(count, out.Planes[0], out.Planes[0]);
    if (normalise)
        NormalisePlane(out.Planes[0], count);
}

void ComputeScalarDistanceMap(const CPlaneStack& stack, CPlaneStack& out, const CPlaneStack& mean,
                              const CPlaneStack& covariance, bool normalise)
{
    float* const distance = out.Planes[0];
    OffsetPlane(stack.Planes[0], distance, stack.ElementCount, -mean.Planes[0][0]);
    VectorAbs(stack.ElementCount, distance, distance);
    linearAlgebra::ScaleArray(stack.ElementCount, InverseDeviation(covariance.Planes[0][0]),
                              distance);
    if (normalise)
        NormalisePlane(distance, stack.ElementCount);
}

} // namespace vistaTrim
