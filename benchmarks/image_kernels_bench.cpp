#include "numeric/image_kernels.h"

#include <vector>

#include "bench_data.h"
#include "numeric/raw_kernels.h"

namespace vistaTrim {
namespace {

int32_t Cols(const benchmark::State& state)
{
    return static_cast<int32_t>(state.range(0));
}

int32_t Rows(const benchmark::State& state)
{
    return static_cast<int32_t>(state.range(1));
}

// A source filled with fractions of 0..255 and a destination of the same size.
struct Planes {
    explicit Planes(const benchmark::State& state)
    {
        Source.Create(1, Cols(state), Rows(state));
        Target.Create(1, Cols(state), Rows(state));
        FillWithByteRange(Source.Planes[0], Source.ElementCount);
        FillWithByteRange(Target.Planes[0], Target.ElementCount);
    }
    ~Planes()
    {
        Source.Release();
        Target.Release();
    }
    Planes(const Planes&) = delete;
    Planes& operator=(const Planes&) = delete;

    CPlaneStack Source;
    CPlaneStack Target;
};

void BenchGradient(benchmark::State& state,
                   void (*operation)(const float*, float*, int32_t, int32_t))
{
    const Planes planes(state);
    for (auto _ : state) {
        operation(planes.Source.Planes[0], planes.Target.Planes[0], Cols(state), Rows(state));
        benchmark::ClobberMemory();
    }
    CountPixels(state);
}
BENCHMARK_CAPTURE(BenchGradient, RowDifference, &SobelRowDifference)->Apply(PictureSizes);
BENCHMARK_CAPTURE(BenchGradient, ColumnDifference, &SobelColumnDifference)->Apply(PictureSizes);
BENCHMARK_CAPTURE(BenchGradient, Strength, &GradientStrength)->Apply(PictureSizes);
BENCHMARK_CAPTURE(BenchGradient, StrengthStepwise, &GradientStrengthStepwise)->Apply(PictureSizes);

// One plane. Mask 9 takes the general path.
void BenchSmooth(benchmark::State& state, int32_t maskSize, float sigma)
{
    const Planes planes(state);
    for (auto _ : state) {
        GaussianSmooth(planes.Source.Planes[0], planes.Target.Planes[0], Cols(state), Rows(state),
                       maskSize, sigma);
        benchmark::ClobberMemory();
    }
    CountPixels(state);
}
BENCHMARK_CAPTURE(BenchSmooth, Mask7, 7, 0.7f)->Apply(PictureSizes);
BENCHMARK_CAPTURE(BenchSmooth, Mask15, 15, 2.0f)->Apply(PictureSizes);
BENCHMARK_CAPTURE(BenchSmooth, Mask9, 9, 1.5f)->Apply(PictureSizes);

// Three planes, from the bytes; a pixel is counted once.
void BenchBlurInterleaved(benchmark::State& state)
{
    CPlaneStack out;
    out.Create(3, Cols(state), Rows(state));
    std::vector<uint8_t> pixels(3 * static_cast<size_t>(out.ElementCount));
    for (size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = static_cast<uint8_t>(i * 2654435761u >> 13);
    for (auto _ : state) {
        BlurInterleavedPixels(pixels.data(), Cols(state), Rows(state), 2.0f, out.Planes.data());
        benchmark::ClobberMemory();
    }
    CountPixels(state);
    out.Release();
}
BENCHMARK(BenchBlurInterleaved)->Apply(PictureSizes);

// One plane to a fifth of each side and back to full size; pixels are those of the full size.
void BenchShrinkToAFifth(benchmark::State& state)
{
    const Planes planes(state);
    CPlaneStack small;
    small.Create(1, Cols(state) / 5, Rows(state) / 5);
    for (auto _ : state) {
        ResizeStackLinear(planes.Source, small);
        benchmark::ClobberMemory();
    }
    CountPixels(state);
    small.Release();
}
BENCHMARK(BenchShrinkToAFifth)->Apply(PictureSizes);

void BenchEnlargeFromAFifth(benchmark::State& state)
{
    const Planes planes(state);
    CPlaneStack small;
    small.Create(1, Cols(state) / 5, Rows(state) / 5);
    FillWithByteRange(small.Planes[0], small.ElementCount);
    for (auto _ : state) {
        ResizeStackLinear(small, planes.Target);
        benchmark::ClobberMemory();
    }
    CountPixels(state);
    small.Release();
}
BENCHMARK(BenchEnlargeFromAFifth)->Apply(PictureSizes);

// In place, repeatedly: the map goes flat, but the work stays the same.
void BenchMap(benchmark::State& state, void (*operation)(CFloatMatrix&))
{
    CFloatMatrix map;
    map.Resize(static_cast<uint32_t>(Rows(state)), static_cast<uint32_t>(Cols(state)));
    FillWithByteRange(map.Data, static_cast<int32_t>(map.Count));
    for (auto _ : state) {
        operation(map);
        benchmark::ClobberMemory();
    }
    CountPixels(state);
}
BENCHMARK_CAPTURE(BenchMap, ErodeBox5, [](CFloatMatrix& map) {
    ErodeBox(map, 5);
})->Apply(PictureSizes);
BENCHMARK_CAPTURE(BenchMap, DilateBox7, [](CFloatMatrix& map) {
    DilateBox(map, 7);
})->Apply(PictureSizes);
BENCHMARK_CAPTURE(BenchMap, DilateBox9, [](CFloatMatrix& map) {
    DilateBox(map, 9);
})->Apply(PictureSizes);
BENCHMARK_CAPTURE(BenchMap, ThresholdBelow, [](CFloatMatrix& map) {
    ThresholdBelow(map, 25.5f, 0.0f);
})->Apply(PictureSizes);
BENCHMARK_CAPTURE(BenchMap, ScaleAllColumns, [](CFloatMatrix& map) {
    ScaleColumns(map, 0, static_cast<int32_t>(map.Cols), 1.0f);
})->Apply(PictureSizes);

} // namespace
} // namespace vistaTrim
