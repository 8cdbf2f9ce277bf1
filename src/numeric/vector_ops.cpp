#include "numeric/vector_ops.h"

#include <cmath>
#include <cstring>

#include "numeric/isa_variants.h"
#include "numeric/linear_algebra.h"

namespace vistaTrim {

namespace {

// A plane with a smaller range counts as flat: only noise is left, which must not be stretched.
constexpr float kSmallestRange = 1e-05f;

// Larger bit patterns are NaN or negative.
constexpr uint32_t kInfinityBits = 0x7f800000;

VISTATRIM_VARIANT_BODY void AbsBody(int32_t n, const float* a, float* y)
{
    VISTATRIM_INDEPENDENT_STEPS
    for (int32_t i = 0; i < n; ++i)
        y[i] = std::fabs(a[i]);
}
VISTATRIM_VARIANTS(Abs, (int32_t n, const float* a, float* y), (n, a, y))

VISTATRIM_VARIANT_BODY void AddBody(int32_t n, const float* a, const float* b, float* y)
{
    VISTATRIM_INDEPENDENT_STEPS
    for (int32_t i = 0; i < n; ++i)
        y[i] = a[i] + b[i];
}
VISTATRIM_VARIANTS(Add, (int32_t n, const float* a, const float* b, float* y), (n, a, b, y))

VISTATRIM_VARIANT_BODY void SubBody(int32_t n, const float* a, const float* b, float* y)
{
    VISTATRIM_INDEPENDENT_STEPS
    for (int32_t i = 0; i < n; ++i)
        y[i] = a[i] - b[i];
}
VISTATRIM_VARIANTS(Sub, (int32_t n, const float* a, const float* b, float* y), (n, a, b, y))

VISTATRIM_VARIANT_BODY void MulBody(int32_t n, const float* a, const float* b, float* y)
{
    VISTATRIM_INDEPENDENT_STEPS
    for (int32_t i = 0; i < n; ++i)
        y[i] = a[i] * b[i];
}
VISTATRIM_VARIANTS(Mul, (int32_t n, const float* a, const float* b, float* y), (n, a, b, y))

VISTATRIM_VARIANT_BODY void SqrtBody(int32_t n, const float* a, float* y)
{
    VISTATRIM_INDEPENDENT_STEPS
    for (int32_t i = 0; i < n; ++i)
        y[i] = std::sqrt(a[i]);
}
VISTATRIM_VARIANTS(Sqrt, (int32_t n, const float* a, float* y), (n, a, y))

// The square of a float is exact in double, so the cube is rounded only twice: to double, then to
// float.
VISTATRIM_VARIANT_BODY void CubeBody(int32_t n, const float* a, float* y)
{
    VISTATRIM_INDEPENDENT_STEPS
    for (int32_t i = 0; i < n; ++i) {
        const double value = a[i];
        y[i] = static_cast<float>(value * value * value);
    }
}
VISTATRIM_VARIANTS(Cube, (int32_t n, const float* a, float* y), (n, a, y))

VISTATRIM_VARIANT_BODY void OffsetBody(const float* src, float* dst, int32_t count, float value)
{
    VISTATRIM_INDEPENDENT_STEPS
    for (int32_t i = 0; i < count; ++i)
        dst[i] = src[i] + value;
}
VISTATRIM_VARIANTS(Offset, (const float* src, float* dst, int32_t count, float value),
                   (src, dst, count, value))

// Non-negative floats other than NaN sort by their bits, and an integer reduction gives the same
// result at every register width.
VISTATRIM_VARIANT_BODY void BitExtremesBody(const float* x, int32_t n, uint32_t* extremes)
{
    uint32_t low = extremes[0];
    uint32_t high = extremes[1];
    for (int32_t i = 0; i < n; ++i) {
        uint32_t bits;
        std::memcpy(&bits, x + i, sizeof(bits));
        low = bits < low ? bits : low;
        high = bits > high ? bits : high;
    }
    extremes[0] = low;
    extremes[1] = high;
}
VISTATRIM_VARIANTS(BitExtremes, (const float* x, int32_t n, uint32_t* extremes), (x, n, extremes))

float FloatOfBits(uint32_t bits)
{
    float x;
    std::memcpy(&x, &bits, sizeof(x));
    return x;
}

// Two roundings, as if in two passes.
VISTATRIM_VARIANT_BODY void ShiftAndScaleBody(float* x, int32_t n, float shift, float scale)
{
    VISTATRIM_INDEPENDENT_STEPS
    for (int32_t i = 0; i < n; ++i) {
        const float shifted = x[i] + shift;
        x[i] = shifted * scale;
    }
}
VISTATRIM_VARIANTS(ShiftAndScale, (float* x, int32_t n, float shift, float scale),
                   (x, n, shift, scale))

// Two roundings, then the threshold. Tests >= level, not < level, so that NaN is cleared too.
VISTATRIM_VARIANT_BODY void ShiftScaleAndClearBody(const float* x, int32_t n, float shift,
                                                   float scale, float level, float* y)
{
    VISTATRIM_INDEPENDENT_STEPS
    for (int32_t i = 0; i < n; ++i) {
        const float shifted = x[i] + shift;
        const float scaled = shifted * scale;
        y[i] = scaled >= level ? scaled : 0.0f;
    }
}
VISTATRIM_VARIANTS(ShiftScaleAndClear,
                   (const float* x, int32_t n, float shift, float scale, float level, float* y),
                   (x, n, shift, scale, level, y))

VISTATRIM_VARIANT_BODY void CopyOrClearBody(const float* x, int32_t n, float level, float* y)
{
    VISTATRIM_INDEPENDENT_STEPS
    for (int32_t i = 0; i < n; ++i)
        y[i] = x[i] >= level ? x[i] : 0.0f;
}
VISTATRIM_VARIANTS(CopyOrClear, (const float* x, int32_t n, float level, float* y),
                   (x, n, level, y))

} // namespace

void CPlaneRange::Include(const float* x, int32_t n)
{
    uint32_t extremes[2] = {Lowest, Highest};
    BitExtremes(x, n, extremes);
    Lowest = extremes[0];
    Highest = extremes[1];
}

float LargestElement(const float* x, int32_t n)
{
    CPlaneRange seen;
    seen.Include(x, n);
    if (n < 1 || seen.Highest > kInfinityBits)
        return x[linearAlgebra::IndexOfLargest(n, x)];
    return seen.Largest();
}

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
    // The only exponent the analysis uses.
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

namespace {

// 1 / range, as a float. The floor keeps a flat array from dividing by 0.
float ScaleOfRange(float range)
{
    if (range < kSmallestRange)
        range = kSmallestRange;
    return static_cast<float>(1.0 / static_cast<double>(range));
}

// Both extremes by absolute value and both before the array changes. Data of mixed sign does not
// map to 0..1.
void NormaliseIrregularPlane(float* x, int32_t n)
{
    const int32_t iMax = linearAlgebra::IndexOfLargest(n, x);
    const int32_t iMin = linearAlgebra::IndexOfSmallest(n, x);
    AddConstant(x, n, -x[iMin]);
    linearAlgebra::ScaleArray(n, ScaleOfRange(x[iMax] - x[iMin]), x);
}

} // namespace

bool CPlaneRange::IsOrdinary() const
{
    return Highest < kInfinityBits;
}

float CPlaneRange::Largest() const
{
    return FloatOfBits(Highest);
}

void CPlaneRange::ClearBelow(float level)
{
    if (FloatOfBits(Lowest) < level)
        Lowest = 0;
}

CNormalisation::CNormalisation(const CPlaneRange& seen)
{
    const float smallest = FloatOfBits(seen.Lowest);
    Shift = -smallest;
    const float shifted = seen.Largest() + Shift;
    Scale = ScaleOfRange(shifted - (smallest + Shift));
    Largest = shifted * Scale;
}

void CNormalisation::Apply(float* x, int32_t n) const
{
    if (Shift != 0.0f || Scale != 1.0f)
        ShiftAndScale(x, n, Shift, Scale);
}

void CNormalisation::ApplyAndClear(const float* x, int32_t n, float level, float* y) const
{
    if (Shift != 0.0f || Scale != 1.0f)
        ShiftScaleAndClear(x, n, Shift, Scale, level, y);
    else
        CopyOrClear(x, n, level, y);
}

void NormalisePlane(float* x, int32_t n)
{
    CPlaneRange seen;
    seen.Include(x, n);
    if (n < 1 || !seen.IsOrdinary()) {
        NormaliseIrregularPlane(x, n);
        return;
    }
    CNormalisation(seen).Apply(x, n);
}

void AddPlanes(CPlaneStack& target, const CPlaneStack& source, float alpha)
{
    linearAlgebra::AddScaled(source.ElementCount, alpha, source.Planes[0], target.Planes[0]);
}

void MultiplyPlanes(CPlaneStack& target, const CPlaneStack& a, const CPlaneStack& b)
{
    VectorMul(target.ElementCount, a.Planes[0], b.Planes[0], target.Planes[0]);
}

} // namespace vistaTrim
