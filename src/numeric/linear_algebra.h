// The linear algebra that the engine needs, in two forms.
//
// The form in use is chosen when the project is configured: fixedOrder by default, blas with
// -DVISTATRIM_LINEAR_ALGEBRA=blas. Callers go through the namespace linearAlgebra.
//
// Arrays are contiguous floats. Matrices are column-major; of a symmetric one only the lower
// triangle is read, the diagonal included.
#ifndef VISTATRIM_NUMERIC_LINEAR_ALGEBRA_H
#define VISTATRIM_NUMERIC_LINEAR_ALGEBRA_H

#include <cstdint>

namespace vistaTrim {

// Our own routines. Every sum has one order of additions, and nothing is contracted, so the bits
// are the same on every processor and in every ISA variant.
namespace fixedOrder {

// Index of the first element of largest (smallest) absolute value; 0 if n is below 1.
int32_t IndexOfLargest(int32_t n, const float* x);
int32_t IndexOfSmallest(int32_t n, const float* x);

// y += alpha x, the product rounded before the sum.
void AddScaled(int32_t n, float alpha, const float* x, float* y);

// x = alpha x. An alpha of 0 or NaN clears x, whatever it holds.
void ScaleArray(int32_t n, float alpha, float* x);

// Sum of x[i] y[i]: see the source for the order.
float DotProduct(int32_t n, const float* x, const float* y);

// c = b a; a symmetric n x n, b and c rows x n. c must not overlap the others.
void MultiplyBySymmetric(int32_t rows, int32_t n, const float* a, const float* b, float* c);

// Cholesky factor of a, in its lower triangle. 0, or k if the leading minor of order k is not
// positive, or below 0 if the triangle holds NaN. On failure a is partly overwritten, or untouched
// for NaN.
int32_t FactorPositiveDefinite(int32_t n, float* a);

// The inverse, in the lower triangle, of the matrix whose factor a holds. NaN in the triangle or a
// zero on the diagonal leaves a unchanged.
void InvertFactored(int32_t n, float* a);

} // namespace fixedOrder

// The same through CBLAS and LAPACKE, whose kernels sum in an order that depends on the processor.
namespace blas {

int32_t IndexOfLargest(int32_t n, const float* x);
int32_t IndexOfSmallest(int32_t n, const float* x);
void AddScaled(int32_t n, float alpha, const float* x, float* y);
void ScaleArray(int32_t n, float alpha, float* x);
float DotProduct(int32_t n, const float* x, const float* y);
void MultiplyBySymmetric(int32_t rows, int32_t n, const float* a, const float* b, float* c);
int32_t FactorPositiveDefinite(int32_t n, float* a);
void InvertFactored(int32_t n, float* a);

} // namespace blas

#if defined(VISTATRIM_LINEAR_ALGEBRA_BLAS)
namespace linearAlgebra = blas;
constexpr bool kFixedOrder = false;
#else
namespace linearAlgebra = fixedOrder;
constexpr bool kFixedOrder = true;
#endif

} // namespace vistaTrim

#endif
