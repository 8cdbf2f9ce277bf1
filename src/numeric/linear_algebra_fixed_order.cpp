// The linear algebra in a fixed order of operations. Each product is rounded before it is added.
//
// The orders are those of the oldest x86-64 kernels of OpenBLAS, to the bit for matrices of three
// rows and the 304 values of the composition model, so that both forms give the same results there.
#include <cmath>

#include "numeric/isa_variants.h"
#include "numeric/linear_algebra.h"

namespace vistaTrim::fixedOrder {

namespace {

// Running sums of the dot product. They are independent, so registers of any width can hold them.
constexpr int32_t kDotSums = 16;

VISTATRIM_VARIANT_BODY void AddMultipleBody(int32_t n, float alpha, const float* x, float* y)
{
    VISTATRIM_INDEPENDENT_STEPS
    for (int32_t i = 0; i < n; ++i) {
        const float product = alpha * x[i];
        y[i] = y[i] + product;
    }
}
VISTATRIM_VARIANTS(AddMultiple, (int32_t n, float alpha, const float* x, float* y),
                   (n, alpha, x, y))

VISTATRIM_VARIANT_BODY void MultiplyBody(int32_t n, float alpha, float* x)
{
    for (int32_t i = 0; i < n; ++i)
        x[i] = alpha * x[i];
}
VISTATRIM_VARIANTS(Multiply, (int32_t n, float alpha, float* x), (n, alpha, x))

VISTATRIM_VARIANT_BODY void DotSumsBody(int32_t n, const float* x, const float* y,
                                        float* __restrict__ sums)
{
    for (int32_t i = 0; i < n; i += kDotSums)
        for (int32_t k = 0; k < kDotSums; ++k) {
            const float product = x[i + k] * y[i + k];
            sums[k] = sums[k] + product;
        }
}
VISTATRIM_VARIANTS(DotSums, (int32_t n, const float* x, const float* y, float* __restrict__ sums),
                   (n, x, y, sums))

// Column by column of the result: c(i, j) = sum over k of b(i, k) a(k, j), k ascending.
VISTATRIM_VARIANT_BODY void StartColumnBody(int32_t rows, float factor, const float* b, float* c)
{
    VISTATRIM_INDEPENDENT_STEPS
    for (int32_t i = 0; i < rows; ++i)
        c[i] = b[i] * factor;
}
VISTATRIM_VARIANTS(StartColumn, (int32_t rows, float factor, const float* b, float* c),
                   (rows, factor, b, c))

// Column-major; a symmetric matrix is read below its diagonal only.
float Lower(const float* a, int32_t n, int32_t row, int32_t col)
{
    return row >= col ? a[row + col * n] : a[col + row * n];
}

bool LowerHoldsNaN(const float* a, int32_t n)
{
    for (int32_t col = 0; col < n; ++col)
        for (int32_t row = col; row < n; ++row)
            if (std::isnan(a[row + col * n]))
                return true;
    return false;
}

// The inverse of the factor, overwriting the factor (LAPACK's strti2).
void InvertTriangle(int32_t n, float* a)
{
    for (int32_t j = n - 1; j >= 0; --j) {
        const float inverse = 1.0f / a[j + j * n];
        a[j + j * n] = inverse;
        // The lower right part is inverted already; it multiplies the column, bottom up.
        for (int32_t i = n - 1; i > j; --i) {
            float sum = 0.0f;
            for (int32_t k = j + 1; k <= i; ++k)
                sum = sum + a[i + k * n] * a[k + j * n];
            a[i + j * n] = sum;
        }
        for (int32_t i = j + 1; i < n; ++i)
            a[i + j * n] = a[i + j * n] * -inverse;
    }
}

// The lower triangle of L'L, stored over L (LAPACK's slauu2).
void MultiplyTransposed(int32_t n, float* a)
{
    for (int32_t i = 0; i < n; ++i) {
        const float diagonal = a[i + i * n];
        for (int32_t col = 0; col <= i; ++col)
            a[i + col * n] = a[i + col * n] * diagonal;
        for (int32_t col = 0; col <= i; ++col) {
            float sum = 0.0f;
            for (int32_t k = i + 1; k < n; ++k)
                sum = sum + a[k + col * n] * a[k + i * n];
            a[i + col * n] = a[i + col * n] + sum;
        }
    }
}

} // namespace

int32_t IndexOfLargest(int32_t n, const float* x)
{
    int32_t largest = 0;
    for (int32_t i = 1; i < n; ++i)
        if (std::fabs(x[i]) > std::fabs(x[largest]))
            largest = i;
    return largest;
}

int32_t IndexOfSmallest(int32_t n, const float* x)
{
    int32_t smallest = 0;
    for (int32_t i = 1; i < n; ++i)
        if (std::fabs(x[i]) < std::fabs(x[smallest]))
            smallest = i;
    return smallest;
}

void AddScaled(int32_t n, float alpha, const float* x, float* y)
{
    AddMultiple(n, alpha, x, y);
}

// Clearing follows older BLAS libraries. The engine relies on it for a model whose scale is NaN:
// such a plane shows no contrast, where NaN would spread over the whole map.
void ScaleArray(int32_t n, float alpha, float* x)
{
    if (alpha == 0.0f || std::isnan(alpha)) {
        for (int32_t i = 0; i < n; ++i)
            x[i] = 0.0f;
        return;
    }
    Multiply(n, alpha, x);
}

// Sixteen running sums, element i going to sum i % 16. They are then added in pairs: the four
// quarters, then the four sums that remain.
float DotProduct(int32_t n, const float* x, const float* y)
{
    float sums[kDotSums] = {};
    const int32_t whole = n - n % kDotSums;
    DotSums(whole, x, y, sums);
    for (int32_t i = whole; i < n; ++i) {
        const float product = x[i] * y[i];
        sums[i - whole] = sums[i - whole] + product;
    }
    float quarters[4];
    for (int32_t k = 0; k < 4; ++k)
        quarters[k] = (sums[k] + sums[4 + k]) + (sums[8 + k] + sums[12 + k]);
    return (quarters[0] + quarters[1]) + (quarters[2] + quarters[3]);
}

void MultiplyBySymmetric(int32_t rows, int32_t n, const float* a, const float* b, float* c)
{
    for (int32_t col = 0; col < n; ++col) {
        float* const out = c + static_cast<int64_t>(col) * rows;
        StartColumn(rows, Lower(a, n, 0, col), b, out);
        for (int32_t k = 1; k < n; ++k)
            AddMultiple(rows, Lower(a, n, k, col), b + static_cast<int64_t>(k) * rows, out);
    }
}

// LAPACK's spotf2, with LAPACKE's test for NaN in front.
int32_t FactorPositiveDefinite(int32_t n, float* a)
{
    if (LowerHoldsNaN(a, n))
        return -1;
    for (int32_t j = 0; j < n; ++j) {
        float sum = 0.0f;
        for (int32_t k = 0; k < j; ++k)
            sum = sum + a[j + k * n] * a[j + k * n];
        const float pivot = a[j + j * n] - sum;
        // Infinities can make it NaN.
        if (!(pivot > 0.0f)) {
            a[j + j * n] = pivot;
            return j + 1;
        }
        const float root = std::sqrt(pivot);
        a[j + j * n] = root;
        for (int32_t i = j + 1; i < n; ++i) {
            float rest = a[i + j * n];
            for (int32_t k = 0; k < j; ++k)
                rest = rest - a[i + k * n] * a[j + k * n];
            a[i + j * n] = rest * (1.0f / root);
        }
    }
    return 0;
}

void InvertFactored(int32_t n, float* a)
{
    if (LowerHoldsNaN(a, n))
        return;
    for (int32_t i = 0; i < n; ++i)
        if (a[i + i * n] == 0.0f)
            return;
    InvertTriangle(n, a);
    MultiplyTransposed(n, a);
}

} // namespace vistaTrim::fixedOrder
