#include "numeric/vector_ops.h"

#include <vector>

#include "bench_data.h"

namespace vistaTrim {
namespace {

int32_t PixelCount(const benchmark::State& state)
{
    return static_cast<int32_t>(state.range(0) * state.range(1));
}

// One source in place, the usual call.
void BenchOneSource(benchmark::State& state, void (*operation)(int32_t, const float*, float*))
{
    const int32_t count = PixelCount(state);
    std::vector<float> a(static_cast<size_t>(count));
    FillWithByteRange(a.data(), count);
    for (auto _ : state) {
        operation(count, a.data(), a.data());
        benchmark::ClobberMemory();
    }
    CountPixels(state);
}
BENCHMARK_CAPTURE(BenchOneSource, VectorAbs, &VectorAbs)->Apply(PictureSizes);
BENCHMARK_CAPTURE(BenchOneSource, VectorSqrt, &VectorSqrt)->Apply(PictureSizes);

void BenchTwoSources(benchmark::State& state,
                     void (*operation)(int32_t, const float*, const float*, float*))
{
    const int32_t count = PixelCount(state);
    std::vector<float> a(static_cast<size_t>(count));
    std::vector<float> b(static_cast<size_t>(count));
    FillWithByteRange(a.data(), count);
    // Ones keep a product in place from growing to infinity.
    b.assign(b.size(), 1.0f);
    for (auto _ : state) {
        operation(count, a.data(), b.data(), a.data());
        benchmark::ClobberMemory();
    }
    CountPixels(state);
}
BENCHMARK_CAPTURE(BenchTwoSources, VectorAdd, &VectorAdd)->Apply(PictureSizes);
BENCHMARK_CAPTURE(BenchTwoSources, VectorSub, &VectorSub)->Apply(PictureSizes);
BENCHMARK_CAPTURE(BenchTwoSources, VectorMul, &VectorMul)->Apply(PictureSizes);

void BenchPow(benchmark::State& state, float exponent)
{
    const int32_t count = PixelCount(state);
    std::vector<float> a(static_cast<size_t>(count));
    std::vector<float> y(static_cast<size_t>(count));
    FillWithByteRange(a.data(), count);
    for (auto _ : state) {
        VectorPowScalar(count, a.data(), exponent, y.data());
        benchmark::ClobberMemory();
    }
    CountPixels(state);
}
BENCHMARK_CAPTURE(BenchPow, Cube, 3.0f)->Apply(PictureSizes);
BENCHMARK_CAPTURE(BenchPow, AnyOther, 2.5f)->Apply(PictureSizes);

void BenchOffsetPlane(benchmark::State& state)
{
    const int32_t count = PixelCount(state);
    std::vector<float> src(static_cast<size_t>(count));
    std::vector<float> dst(static_cast<size_t>(count));
    FillWithByteRange(src.data(), count);
    for (auto _ : state) {
        OffsetPlane(src.data(), dst.data(), count, -127.5f);
        benchmark::ClobberMemory();
    }
    CountPixels(state);
}
BENCHMARK(BenchOffsetPlane)->Apply(PictureSizes);

// After the first round the plane is 0..1 already; the work is the same.
void BenchNormalisePlane(benchmark::State& state)
{
    const int32_t count = PixelCount(state);
    std::vector<float> x(static_cast<size_t>(count));
    FillWithByteRange(x.data(), count);
    for (auto _ : state) {
        NormalisePlane(x.data(), count);
        benchmark::ClobberMemory();
    }
    CountPixels(state);
}
BENCHMARK(BenchNormalisePlane)->Apply(PictureSizes);

} // namespace
} // namespace vistaTrim
