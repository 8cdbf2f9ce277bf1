// The analysis of a 640 x 480 picture, whole and stage by stage. The stages allocate their own
// scratch, as they do in the analysis; what they read and write is allocated outside the loop. A
// stage alone finds its planes in the cache more often than in the whole, so the sum of the stages
// is less than the whole.
//
//     taskset -c 0 build/benchmarks/analysis_bench

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include "analysis/border_contrast.h"
#include "analysis/multi_scale_edges.h"
#include "analysis/saliency_driver.h"
#include "analysis/strip_contrast.h"
#include "analysis/strip_moments.h"
#include "numeric/aligned_memory.h"
#include "numeric/image_kernels.h"
#include "numeric/owned_stack.h"
#include "numeric/summed_area.h"
#include "numeric/vector_ops.h"
#include "scoring/crop_analyzer.h"
#include "vistaTrim/functions.h"

namespace vistaTrim {
namespace {

constexpr int32_t kCols = 640;
constexpr int32_t kRows = 480;
constexpr int32_t kCount = kCols * kRows;

// A soft disc on a gradient, with grain: neither flat nor noise.
std::vector<uint8_t> PictureBytes()
{
    std::vector<uint8_t> bytes(static_cast<size_t>(kCount) * 3);
    std::mt19937 random(1);
    for (int32_t r = 0; r < kRows; ++r)
        for (int32_t c = 0; c < kCols; ++c) {
            const double dx = c - 0.55 * kCols;
            const double dy = r - 0.6 * kRows;
            const double disc = 120 / (1 + std::exp((std::sqrt(dx * dx + dy * dy) - 90) / 4));
            for (int32_t p = 0; p < 3; ++p)
                bytes[static_cast<size_t>(r * kCols + c) * 3 + static_cast<size_t>(p)] =
                    static_cast<uint8_t>(30 + 40 * p + 60.0 * c / kCols +
                                         (p == 1 ? -disc / 4 : disc / 1.5) +
                                         static_cast<double>(random() >> 28));
        }
    return bytes;
}

// Everything that one stage passes to the next.
struct Stages {
    std::vector<uint8_t> Bytes = PictureBytes();
    COwnedStack Pixels, Blurred, Out, Sides, Planes;
    CFloatMatrix Map;
    CDoubleMatrix Table;

    Stages()
    {
        Pixels.Create(3, kCols, kRows);
        Blurred.Create(3, kCols, kRows);
        Out.Create(1, kCols, kRows);
        Sides.Create(4, kCols, kRows);
        Planes.Create(3, kCols, kRows);
        Pixels.FillFromBytes(Bytes.data());
        SmoothStack(Pixels.Handle(), Blurred.Handle(), static_cast<double>(0.7f));
        Map.Resize(kRows, kCols);
        Table.Resize(kRows, kCols);
        const BorderContrastMaps maps = {
            Map.Data,
            Out.Planes[0],
            {Sides.Planes[0], Sides.Planes[1], Sides.Planes[2], Sides.Planes[3]}};
        MeasureBorderContrasts(Blurred.Handle(), Planes.Planes[0], maps)
            .Contrast.Apply(Map.Data, kCount);
        BuildSummedAreaTable(Map, Table);
    }
};

Stages& Shared()
{
    static Stages stages;
    return stages;
}

void CountPixels(benchmark::State& state)
{
    state.counters["pixels"] = benchmark::Counter(static_cast<double>(kCount),
                                                  benchmark::Counter::kIsIterationInvariantRate);
}

void WholeAnalysis(benchmark::State& state)
{
    const std::vector<uint8_t> bytes = PictureBytes();
    const int32_t offsets[4] = {0, 1, 2, 3};
    IImage* const image = CreateImageObj(kRows, kCols, 3, offsets, bytes.data());
    for (auto _ : state) {
        const CCropAnalyzer analyzer(image);
        benchmark::DoNotOptimize(analyzer.SideGain[3]);
    }
    DestroyImageObj(image);
    CountPixels(state);
}
BENCHMARK(WholeAnalysis)->Name("WholeAnalysis/640x480")->Unit(benchmark::kMillisecond);

void SaliencyMaps(benchmark::State& state)
{
    Stages& s = Shared();
    CFloatMatrix maps[7];
    for (CFloatMatrix& map : maps)
        map.Resize(kRows, kCols);
    SaliencyMapBuffers buffers = {maps[0].Data,
                                  maps[1].Data,
                                  maps[2].Data,
                                  {maps[3].Data, maps[4].Data, maps[5].Data, maps[6].Data}};
    // In the analysis the stages use the memory of its tables as scratch.
    std::vector<double> block(static_cast<size_t>(kCount) * 10);
    for (auto _ : state) {
        const CScratchScope scratch(block.data(), block.size() * sizeof(double));
        ComputeSaliencyMaps(s.Bytes.data(), kCols, kRows, buffers);
    }
    CountPixels(state);
}
BENCHMARK(SaliencyMaps)->Name("SaliencyMaps/640x480")->Unit(benchmark::kMillisecond);

void FillAndSmooth(benchmark::State& state)
{
    Stages& s = Shared();
    for (auto _ : state) {
        s.Pixels.FillFromBytes(s.Bytes.data());
        SmoothStack(s.Pixels.Handle(), s.Planes.Handle(), static_cast<double>(0.7f));
    }
    CountPixels(state);
}
BENCHMARK(FillAndSmooth)->Name("FillAndSmooth/3planes")->Unit(benchmark::kMillisecond);

void StripMoments(benchmark::State& state)
{
    const Stages& s = Shared();
    const BorderStrips wide = MakeBorderStrips(kCols, kRows, 0.25f);
    const BorderStrips narrow = MakeBorderStrips(kCols, kRows, 0.2f);
    for (auto _ : state) {
        const CStripMoments moments(s.Blurred.Handle(),
                                    {wide.Top, wide.Bottom, wide.Left, wide.Right, narrow.Top,
                                     narrow.Bottom, narrow.Left, narrow.Right});
        benchmark::DoNotOptimize(&moments);
    }
    CountPixels(state);
}
BENCHMARK(StripMoments)->Name("StripMoments/3planes_6pairs")->Unit(benchmark::kMillisecond);

void BorderContrasts(benchmark::State& state)
{
    Stages& s = Shared();
    const BorderContrastMaps maps = {
        s.Planes.Planes[0],
        s.Planes.Planes[1],
        {s.Sides.Planes[0], s.Sides.Planes[1], s.Sides.Planes[2], s.Sides.Planes[3]}};
    for (auto _ : state)
        MeasureBorderContrasts(s.Blurred.Handle(), s.Out.Planes[0], maps);
    CountPixels(state);
}
BENCHMARK(BorderContrasts)
    ->Name("BorderContrasts/moments_and_sweeps")
    ->Unit(benchmark::kMillisecond);

void MultiScaleEdges(benchmark::State& state)
{
    Stages& s = Shared();
    for (auto _ : state)
        ComputeMultiScaleEdges(s.Pixels.Handle(), s.Out.Handle(), false, false, {0.04f, 0.2f});
    CountPixels(state);
}
BENCHMARK(MultiScaleEdges)->Name("MultiScaleEdges/2scales")->Unit(benchmark::kMillisecond);

void ColourBlur(benchmark::State& state)
{
    Stages& s = Shared();
    for (auto _ : state)
        BlurPlanes(s.Pixels.Handle(), 2.0f, s.Planes.Planes.data());
    CountPixels(state);
}
BENCHMARK(ColourBlur)->Name("ColourBlur/mask15_3planes")->Unit(benchmark::kMillisecond);

void Gradients(benchmark::State& state)
{
    const Stages& s = Shared();
    for (auto _ : state)
        SumGradientStrengths(s.Blurred.Handle(), s.Out.Planes[0]);
    CountPixels(state);
}
BENCHMARK(Gradients)->Name("Gradients/3planes")->Unit(benchmark::kMillisecond);

void RowNormalisation(benchmark::State& state)
{
    Stages& s = Shared();
    CPlaneStack stack;
    stack.WrapPlane(kCols, kRows, s.Out.Planes[0]);
    for (auto _ : state) {
        // Normalising its own result would shrink it in every round.
        std::copy_n(s.Map.Data, kCount, s.Out.Planes[0]);
        NormaliseRowsBySum(stack);
    }
    CountPixels(state);
}
BENCHMARK(RowNormalisation)->Name("RowNormalisation/1plane")->Unit(benchmark::kMillisecond);

void ErodeAndDilate(benchmark::State& state)
{
    CFloatMatrix map;
    map.CopyFrom(Shared().Map);
    for (auto _ : state) {
        ErodeBox(map, 5);
        DilateBox(map, 7);
    }
    CountPixels(state);
}
BENCHMARK(ErodeAndDilate)->Name("ErodeAndDilate/5_7")->Unit(benchmark::kMillisecond);

void ScoringTable(benchmark::State& state)
{
    Stages& s = Shared();
    for (auto _ : state)
        BuildSummedAreaTable(s.Map, s.Table);
    CountPixels(state);
}
BENCHMARK(ScoringTable)->Name("ScoringTable/one_of_10")->Unit(benchmark::kMillisecond);

// In bands of rows, as the analysis does it; one by one, and together.
void ScoringTables(benchmark::State& state, bool together)
{
    constexpr size_t kMaps = 10;
    CFloatMatrix maps[kMaps];
    CDoubleMatrix tables[kMaps];
    for (size_t k = 0; k < kMaps; ++k) {
        maps[k].CopyFrom(Shared().Map);
        tables[k].Resize(kRows, kCols);
    }
    for (auto _ : state) {
        uint32_t rows = 0;
        for (uint32_t first = 0; first < kRows; first += rows) {
            rows = std::min<uint32_t>(kRows - first, 2 * kTableBand + (first == 0 ? 1 : 0));
            if (together)
                ExtendSummedAreaTables(maps, tables, kMaps, first, rows);
            else
                for (size_t k = 0; k < kMaps; ++k)
                    ExtendSummedAreaTable(maps[k], tables[k], first, rows);
        }
    }
    CountPixels(state);
}
BENCHMARK_CAPTURE(ScoringTables, one_by_one, false)
    ->Name("ScoringTables/10_one_by_one")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ScoringTables, together, true)
    ->Name("ScoringTables/10_together")
    ->Unit(benchmark::kMillisecond);

void ScoringTableFreshMemory(benchmark::State& state)
{
    const Stages& s = Shared();
    for (auto _ : state) {
        CDoubleMatrix table;
        table.Resize(kRows, kCols);
        BuildSummedAreaTable(s.Map, table);
    }
    CountPixels(state);
}
BENCHMARK(ScoringTableFreshMemory)
    ->Name("ScoringTable/one_of_10_fresh_memory")
    ->Unit(benchmark::kMillisecond);

void Normalisation(benchmark::State& state)
{
    Stages& s = Shared();
    for (auto _ : state)
        NormalisePlane(s.Map.Data, kCount);
    CountPixels(state);
}
BENCHMARK(Normalisation)->Name("Normalisation/1plane")->Unit(benchmark::kMillisecond);

} // namespace
} // namespace vistaTrim
