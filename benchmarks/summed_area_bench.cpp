#include "numeric/summed_area.h"

#include <vector>

#include "bench_data.h"
#include "numeric/aligned_memory.h"

namespace vistaTrim {
namespace {

void BenchDoubleTable(benchmark::State& state, void (*build)(const CFloatMatrix&, CDoubleMatrix&))
{
    const auto cols = static_cast<uint32_t>(state.range(0));
    const auto rows = static_cast<uint32_t>(state.range(1));
    CFloatMatrix map;
    map.Resize(rows, cols);
    FillWithByteRange(map.Data, static_cast<int32_t>(map.Count));
    CDoubleMatrix table;
    table.Resize(rows, cols);
    for (auto _ : state) {
        build(map, table);
        benchmark::DoNotOptimize(table.Data);
        benchmark::ClobberMemory();
    }
    CountPixels(state);
}
BENCHMARK_CAPTURE(BenchDoubleTable, Fast, &BuildSummedAreaTable)->Apply(PictureSizes);

void BenchPlaneTable(benchmark::State& state, void (*build)(const float*, float*, int32_t, int32_t))
{
    const auto cols = static_cast<int32_t>(state.range(0));
    const auto rows = static_cast<int32_t>(state.range(1));
    std::vector<float> plane(static_cast<size_t>(cols * rows));
    FillWithByteRange(plane.data(), cols * rows);
    std::vector<float> table(static_cast<size_t>((cols + 1) * (rows + 1)));
    for (auto _ : state) {
        build(plane.data(), table.data(), cols, rows);
        benchmark::ClobberMemory();
    }
    CountPixels(state);
}
BENCHMARK_CAPTURE(BenchPlaneTable, Fast, &BuildPlaneTable)->Apply(PictureSizes);

void BenchPairTable(benchmark::State& state,
                    void (*build)(const float*, const float*, float*, int32_t, int32_t))
{
    const auto cols = static_cast<int32_t>(state.range(0));
    const auto rows = static_cast<int32_t>(state.range(1));
    std::vector<float> plane(static_cast<size_t>(2 * cols * rows));
    FillWithByteRange(plane.data(), 2 * cols * rows);
    std::vector<float> table(static_cast<size_t>((cols + 1) * (rows + 1)));
    for (auto _ : state) {
        build(plane.data(), plane.data() + int64_t{cols} * rows, table.data(), cols, rows);
        benchmark::ClobberMemory();
    }
    CountPixels(state);
}
BENCHMARK_CAPTURE(BenchPairTable, Fast, &BuildPairTable)->Apply(PictureSizes);

// All nine tables of three planes, including their allocation, as for each picture.
void BenchStackTables(benchmark::State& state)
{
    const auto cols = static_cast<int32_t>(state.range(0));
    const auto rows = static_cast<int32_t>(state.range(1));
    CPlaneStack stack;
    stack.Create(3, cols, rows);
    for (float* plane : stack.Planes)
        FillWithByteRange(plane, stack.ElementCount);
    for (auto _ : state) {
        BuildTables(stack);
        benchmark::ClobberMemory();
        for (float* table : stack.PlaneTables)
            FreeAligned(table);
        for (float* table : stack.PairTables)
            FreeAligned(table);
    }
    CountPixels(state);
    stack.PlaneTables.assign(3, nullptr);
    stack.PairTables.assign(6, nullptr);
    stack.Release();
}
BENCHMARK(BenchStackTables)->Apply(PictureSizes);

} // namespace
} // namespace vistaTrim
