// Inputs shared by the benchmarks.
#ifndef VISTATRIM_BENCHMARKS_BENCH_DATA_H
#define VISTATRIM_BENCHMARKS_BENCH_DATA_H

#include <cstdint>
#include <random>

#include <benchmark/benchmark.h>

namespace vistaTrim {

// Fractions in 0..255, as in a smoothed picture.
inline void FillWithByteRange(float* data, int32_t count)
{
    std::mt19937 random(12345);
    std::uniform_real_distribution<float> value(0.0f, 255.0f);
    for (int32_t i = 0; i < count; ++i)
        data[i] = value(random);
}

// Cols and rows: a whole working picture, and one whose planes stay in the first-level cache.
inline void PictureSizes(benchmark::internal::Benchmark* bench)
{
    bench->Args({640, 480})->Args({64, 48})->ArgNames({"cols", "rows"});
}

// Makes the report show pixels per second.
inline void CountPixels(benchmark::State& state)
{
    state.SetItemsProcessed(state.iterations() * state.range(0) * state.range(1));
}

} // namespace vistaTrim

#endif
