// Element-wise operations on contiguous float arrays, stride 1.
//
// Counts are elements; a count of 0 does nothing (NormalisePlane needs at least 1). A
// destination may be the same array as a source. Each element-wise result is rounded once.
#ifndef VISTATRIM_NUMERIC_VECTOR_OPS_H
#define VISTATRIM_NUMERIC_VECTOR_OPS_H

#include <cstdint>

#include "numeric/plane_stack.h"

namespace vistaTrim {

void VectorAbs(int32_t n, const float* a, float* y);
void VectorAdd(int32_t n, const float* a, const float* b, float* y);
void VectorSub(int32_t n, const float* a, const float* b, float* y);
void VectorMul(int32_t n, const float* a, const float* b, float* y);
void VectorSqrt(int32_t n, const float* a, float* y);
void VectorPowScalar(int32_t n, const float* a, float b, float* y);

void AddConstant(float* x, int32_t n, float c);
void OffsetPlane(const float* src, float* dst, int32_t count, float value);

// The element of largest absolute value, the first of equal ones; x[0] if n is below 1.
float LargestElement(const float* x, int32_t n);

// Moves x in place so that its smallest element becomes 0 and its largest 1; a range below
// 1e-5f counts as 1e-5f, so that a flat array becomes 0. Meant for non-negative data.
void NormalisePlane(float* x, int32_t n);

// The extremes of a plane computed piece by piece, taken while each piece is in the cache.
struct CPlaneRange {
    void Include(const float* x, int32_t n);

    // As if all elements below level had been 0.
    void ClearBelow(float level);
    float Largest() const;

    // False if a sign, a NaN or an infinity was among what was included.
    bool IsOrdinary() const;

    // Bits of floats: non-negative floats sort by their bits.
    uint32_t Lowest = UINT32_MAX;
    uint32_t Highest = 0;
};
// What NormalisePlane does to each element: x = (x + Shift) * Scale, rounded twice.
struct CNormalisation {
    CNormalisation() = default;                       // changes nothing
    explicit CNormalisation(const CPlaneRange& seen); // which is ordinary

    void Apply(float* x, int32_t n) const;
    // Apply, then a threshold, from x to y: what ends up below level, or NaN, becomes 0. x and y
    // are identical or disjoint.
    void ApplyAndClear(const float* x, int32_t n, float level, float* y) const;

    float Shift = 0.0f;
    float Scale = 1.0f;
    float Largest = 0.0f; // what the largest element becomes
};

// First plane of target += alpha * first plane of source.
void AddPlanes(CPlaneStack& target, const CPlaneStack& source, float alpha);
// First plane of target = first plane of a * first plane of b.
void MultiplyPlanes(CPlaneStack& target, const CPlaneStack& a, const CPlaneStack& b);

} // namespace vistaTrim

#endif
