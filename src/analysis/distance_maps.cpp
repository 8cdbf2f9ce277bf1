#include "analysis/distance_maps.h"

#include <algorithm>
#include <cmath>

#include <cblas.h>
#include <lapacke.h>

#include "analysis/owned_stack.h"
#include "numeric/cpu_forms.h"
#include "numeric/vector_ops.h"

namespace vistaTrim {

namespace {

// Added to every variance, on the scale of the bytes: a flat border still gives finite
// distances.
constexpr float kRegulariser = 10.0f;

// Pixels measured at a time in the general form: two blocks of three planes lie in the first
// cache.
constexpr int32_t kBlock = 256;

VISTATRIM_FORM_BODY void DotThreeBody(const float* a, const float* b, int32_t count, float* result)
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
VISTATRIM_FORMS(DotThree, (const float* a, const float* b, int32_t count, float* result),
                (a, b, count, result))

// The last two steps of the general form in one pass; the sum is rounded before its root is.
VISTATRIM_FORM_BODY void RootOfDotThreeBody(const float* a, const float* b, int32_t count,
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
        result[i] = std::sqrt(static_cast<float>(sum));
    }
}
VISTATRIM_FORMS(RootOfDotThree, (const float* a, const float* b, int32_t count, float* result),
                (a, b, count, result))

// Rounded three times, as if in three passes.
VISTATRIM_FORM_BODY void ScalarDistanceBody(const float* x, int32_t count, float shift, float scale,
                                            float* distance)
{
    VISTATRIM_INDEPENDENT_STEPS
    for (int32_t i = 0; i < count; ++i) {
        const float offset = x[i] + shift;
        distance[i] = std::fabs(offset) * scale;
    }
}
VISTATRIM_FORMS(ScalarDistance,
                (const float* x, int32_t count, float shift, float scale, float* distance),
                (x, count, shift, scale, distance))

VISTATRIM_FORM_BODY void AccumulateProductBody(const float* a, const float* b, int32_t count,
                                               float* result)
{
    VISTATRIM_INDEPENDENT_STEPS
    for (int32_t i = 0; i < count; ++i) {
        const float product = a[i] * b[i];
        result[i] = result[i] + product;
    }
}
VISTATRIM_FORMS(AccumulateProduct, (const float* a, const float* b, int32_t count, float* result),
                (a, b, count, result))

// The regulariser joins the variance in double; variance, root and quotient are each rounded.
float InverseDeviation(float variance)
{
    const float regularised = static_cast<float>(static_cast<double>(variance) + 10.0);
    const float deviation = std::sqrt(regularised);
    return 1.0f / deviation;
}

} // namespace

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

    // A lower triangle in column-major order is the upper one of these rows; the matrix is
    // symmetric, so it goes in as it stands.
    if (LAPACKE_spotrf(LAPACK_COL_MAJOR, 'L', n, result, n) > 0) {
        // Not positive definite. The first plane stands for all, and eps is added to it a second
        // time: an indefinite model becomes one common scale, infinite if the sum is 0.
        std::fill_n(result, side * side, 0.0f);
        for (size_t i = 0; i < side; ++i)
            result[i * side + i] = 1.0f / (firstDiagonal + eps);
        return;
    }
    LAPACKE_spotri(LAPACK_COL_MAJOR, 'L', n, result, n);
    for (size_t i = 1; i < side; ++i)
        for (size_t j = 0; j < i; ++j)
            result[i * side + j] = result[j * side + i];
}

CDistanceModel::CDistanceModel(const CPlaneStack& mean, const CPlaneStack& covariance, bool scalar)
    : PlaneCount(mean.ElementCount), Scalar(scalar), Scale(0.0f),
      Means(mean.Planes[0], mean.Planes[0] + mean.ElementCount)
{
    if (scalar) {
        Scale = InverseDeviation(covariance.Planes[0][0]);
        return;
    }
    const size_t side = Means.size();
    Inverse.resize(side * side);
    Centred.resize(side * kBlock);
    Weighted.resize(side * kBlock);
    InvertRegularised(covariance.Planes[0], PlaneCount, kRegulariser, Inverse.data());
}

void CDistanceModel::Measure(const CPlaneStack& stack, int32_t first, int32_t count,
                             float* distance)
{
    if (Scalar) {
        // A variance below -10, which rounding can make of a bright flat strip, has no root. What
        // such a factor makes of a plane is the library's affair (some take it for 0), and has to
        // be the same here as in the plain form.
        const bool plain = std::isnan(Scale);
        ScalarDistance(stack.Planes[0] + first, count, -Means[0], plain ? 1.0f : Scale, distance);
        if (plain)
            cblas_sscal(count, Scale, distance, 1);
        return;
    }
    for (int32_t done = 0; done < count; done += kBlock)
        MeasureBlock(stack, first + done, std::min(count - done, kBlock), distance + done);
}

void CDistanceModel::MeasureBlock(const CPlaneStack& stack, int32_t first, int32_t count,
                                  float* distance)
{
    for (size_t k = 0; k < Means.size(); ++k)
        OffsetPlane(stack.Planes[k] + first, &Centred[k * static_cast<size_t>(count)], count,
                    -Means[k]);
    // The library's general product has a shorter way for matrices this narrow than its
    // symmetric one. That both give the same bits is measured, not promised by the library:
    // distance_maps_test holds them to it.
    cblas_sgemm(CblasColMajor, CblasNoTrans, CblasNoTrans, count, PlaneCount, PlaneCount, 1.0f,
                Centred.data(), count, Inverse.data(), PlaneCount, 0.0f, Weighted.data(), count);
    // Rounding can make a square negative; its root is not a number then, and stays so.
    if (PlaneCount == 3) {
        RootOfDotThree(Centred.data(), Weighted.data(), count, distance);
    } else {
        DotPlanes(Weighted.data(), Centred.data(), PlaneCount, count, distance);
        VectorSqrt(count, distance, distance);
    }
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
        OffsetPlane(stack.Planes[static_cast<size_t>(k)], blocks + int64_t(k) * count, count,
                    -mean.Planes[0][k]);
    cblas_ssymm(CblasColMajor, CblasRight, CblasLower, count, n, 1.0f, inverse.Planes[0], n, blocks,
                count, 0.0f, weighted.Planes[0], count);
    if (n == 3)
        DotThreePlanes(blocks, weighted.Planes[0], count, out.Planes[0]);
    else
        DotPlanes(weighted.Planes[0], blocks, n, count, out.Planes[0]);
    // Rounding can make a square negative; its root is not a number then, and stays so.
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
    cblas_sscal(stack.ElementCount, InverseDeviation(covariance.Planes[0][0]), distance, 1);
    if (normalise)
        NormalisePlane(distance, stack.ElementCount);
}

} // namespace vistaTrim
