// The linear algebra through CBLAS and LAPACKE.
#include <cblas.h>
#include <lapacke.h>

#include "numeric/linear_algebra.h"

namespace vistaTrim::blas {

int32_t IndexOfLargest(int32_t n, const float* x)
{
    return static_cast<int32_t>(cblas_isamax(n, x, 1));
}

int32_t IndexOfSmallest(int32_t n, const float* x)
{
    return static_cast<int32_t>(cblas_isamin(n, x, 1));
}

void AddScaled(int32_t n, float alpha, const float* x, float* y)
{
    cblas_saxpy(n, alpha, x, 1, y, 1);
}

void ScaleArray(int32_t n, float alpha, float* x)
{
    cblas_sscal(n, alpha, x, 1);
}

float DotProduct(int32_t n, const float* x, const float* y)
{
    return cblas_sdot(n, x, 1, y, 1);
}

void MultiplyBySymmetric(int32_t rows, int32_t n, const float* a, const float* b, float* c)
{
    cblas_ssymm(CblasColMajor, CblasRight, CblasLower, rows, n, 1.0f, a, n, b, rows, 0.0f, c, rows);
}

int32_t FactorPositiveDefinite(int32_t n, float* a)
{
    return LAPACKE_spotrf(LAPACK_COL_MAJOR, 'L', n, a, n);
}

void InvertFactored(int32_t n, float* a)
{
    LAPACKE_spotri(LAPACK_COL_MAJOR, 'L', n, a, n);
}

} // namespace vistaTrim::blas
