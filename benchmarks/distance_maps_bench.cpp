#include "analysis/distance_maps.h"

#include <algorithm>

#include "bench_data.h"

namespace vistaTrim {
namespace {

// A plausible colour model of n planes: correlated, well away from singular.
void FillModel(int32_t n, CPlaneStack& mean, CPlaneStack& covariance)
{
    mean.Create(1, n, 1);
    covariance.Create(1, n, n);
    std::fill_n(mean.Planes[0], n, 120.0f);
    for (int32_t i = 0; i < n; ++i)
        for (int32_t j = 0; j < n; ++j)
            covariance.Planes[0][i * n + j] = i == j ? 900.0f : 600.0f;
}

void BenchDistanceMap(benchmark::State& state, int32_t planes,
                      void (*compute)(const CPlaneStack&, CPlaneStack&, const CPlaneStack&,
                                      const CPlaneStack&, bool),
                      bool normalise)
{
    CPlaneStack stack;
    stack.Create(planes, static_cast<int32_t>(state.range(0)),
                 static_cast<int32_t>(state.range(1)));
    for (float* plane : stack.Planes)
        FillWithByteRange(plane, stack.ElementCount);
    CPlaneStack out;
    out.Create(1, stack.Cols, stack.Rows);
    CPlaneStack mean;
    CPlaneStack covariance;
    FillModel(planes, mean, covariance);
    for (auto _ : state) {
        compute(stack, out, mean, covariance, normalise);
        benchmark::ClobberMemory();
    }
    CountPixels(state);
    covariance.Release();
    mean.Release();
    out.Release();
    stack.Release();
}
BENCHMARK_CAPTURE(BenchDistanceMap, Mahalanobis, 3, &ComputeMahalanobisMap, false)
    ->Apply(PictureSizes);
BENCHMARK_CAPTURE(BenchDistanceMap, MahalanobisNormalised, 3, &ComputeMahalanobisMap, true)
    ->Apply(PictureSizes);
BENCHMARK_CAPTURE(BenchDistanceMap, Scalar, 1, &ComputeScalarDistanceMap, false)
    ->Apply(PictureSizes);
BENCHMARK_CAPTURE(BenchDistanceMap, ScalarNormalised, 1, &ComputeScalarDistanceMap, true)
    ->Apply(PictureSizes);

} // namespace
} // namespace vistaTrim
