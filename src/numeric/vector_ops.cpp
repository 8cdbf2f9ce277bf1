#include "numeric/vector_ops.h"

#include <cmath>

#include <cblas.h>

#include "numeric/cpu_forms.h"

namespace vistaTrim {

namespace {

// Below this a plane counts as flat: what is left in it is noise, and is not to be stretched.
constexpr float kSmallestRange = 1e-05f;

VISTATRIM_FORM_BODY void AbsBody(int32_t n, const float* a, float* y)
{
    VISTATRIM_INDEPENDENT_STEPS
    for (int32_t i = 0; i < n; ++i)
        y[i] = std::fabs(a[i]);
}
VISTATRIM_FORMS(Abs, (int32_t n, const float* a, float* y), (n, a, y))

VISTATRIM_FORM_BODY void AddBody(int32_t n, const float* a, const float* b, float* y)
{
    VISTATRIM_INDEPENDENT_STEPS
    for (int32_t i = 0; i < n; ++i)
        y[i] = a[i] + b[i];
}
VISTATRIM_FORMS(Add, (int32_t n, const float* a, const float* b, float* y), (n, a, b, y))

VISTATRIM_FORM_BODY void SubBody(int32_t n, const float* a, const float* b, float* y)
{
    VISTATRIM_INDEPENDENT_STEPS
    for (int32_t i = 0; i < n; ++i)
        y[i] = a[i] - b[i];
}
VISTATRIM_FORMS(Sub, (int32_t n, const float* a, const float* b, float* y), (n, a, b, y))

VISTATRIM_FORM_BODY void MulBody(int32_t n, const float* a, const float* b, float* y)
{
    VISTATRIM_INDEPENDENT_STEPS
    for (int32_t i = 0; i < n; ++i)
        y[i] = a[i] * b[i];
}
VISTATRIM_FORMS(Mul, (int32_t n, const float* a, const float* b, float* y), (n, a, b, y))

VISTATRIM_FORM_BODY void SqrtBody(int32_t n, const float* a, float* y)
{
    VISTATRIM_INDEPENDENT_STEPS
    for (int32_t i = 0; i < n; ++i)
        y[i] = std::sqrt(a[i]);
}
VISTATRIM_FORMS(Sqrt, (int32_t n, const float* a, float* y), (n, a, y))

// The square of a float is exact in double, so the cube is rounded twice in all, once of that
// at the 53rd bit.
VISTATRIM_FORM_BODY void CubeBody(int32_t n, const float* a, float* y)
{
    VISTATRIM_INDEPENDENT_STEPS
    for (int32_t i = 0; i < n; ++i) {
        const double value = a[i];
        y[i] = static_cast<float>(value * value * value);
    }
}
VISTATRIM_FORMS(Cube, (int32_t n, const float* a, float* y), (n, a, y))

VISTATRIM_FORM_BODY void OffsetBody(const float* src, float* dst, int32_t count, float value)
{
    VISTATRIM_INDEPENDENT_STEPS
    for (int32_t i = 0; i < count; ++i)
        dst[i] = src[i] + value;
}
VISTATRIM_FORMS(Offset, (const float* src, float* dst, int32_t count, float value),
                (src, dst, count, value))

} // namespace

void VectorAbs(int32_t n, const float* a, float* y)
{
    if (a != nullptr && y != nullptr)
        Abs(n, a, y);
}

void VectorAdd(int32_t n, const float* a, const float* b, float* y)
{
    if (a != nullptr && b != nullptr && y != nullptr)
        Add(n, a, b, y);
}

void VectorSub(int32_t n, const float* a, const float* b, float* y)
{
    if (a != nullptr && b != nullptr && y != nullptr)
        Sub(n, a, b, y);
}

void VectorMul(int32_t n, const float* a, const float* b, float* y)
{
    if (a != nullptr && b != nullptr && y != nullptr)
        Mul(n, a, b, y);
}

void VectorSqrt(int32_t n, const float* a, float* y)
{
    if (a != nullptr && y != nullptr)
        Sqrt(n, a, y);
}

void VectorPowScalar(int32_t n, const float* a, float b, float* y)
{
    if (a == nullptr || y == nullptr)
        return;
    // The one power the analysis takes.
    if (b == 3.0f) {
        Cube(n, a, y);
        return;
    }
    const double exponent = b;
    for (int32_t i = 0; i < n; ++i)
        y[i] = static_cast<float>(std::pow(static_cast<double>(a[i]), exponent));
}

void AddConstant(float* x, int32_t n, float c)
{
    Offset(x, x, n, c);
}

void OffsetPlane(const float* src, float* dst, int32_t count, float value)
{
    Offset(src, dst, count, value);
}

void NormalisePlane(float* x, int32_t n)
{
    // Both by absolute value: for the non-negative maps of the analysis the true extremes. Data
    // of mixed sign does not come out as 0..1.
    const size_t iMax = cblas_isamax(n, x, 1);
    const size_t iMin = cblas_isamin(n, x, 1);
    AddConstant(x, n, -x[iMin]);
    float range = x[iMax] - x[iMin];
    if (range < kSmallestRange)
        range = kSmallestRange;
    cblas_sscal(n, static_cast<float>(1.0 / static_cast<double>(range)), x, 1);
}

void AddPlanes(CPlaneStack& target, const CPlaneStack& source, float alpha)
{
    cblas_saxpy(source.ElementCount, alpha, source.Planes[0], 1, target.Planes[0], 1);
}

void MultiplyPlanes(CPlaneStack& target, const CPlaneStack& a, const CPlaneStack& b)
{
    VectorMul(target.ElementCount, a.Planes[0], b.Planes[0], target.Planes[0]);
}

} // namespace vistaTrim
