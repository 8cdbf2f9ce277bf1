#include "analysis/saliency_driver.h"

#include <algorithm>
#include <cstring>

#include "analysis/border_contrast.h"
#include "analysis/multi_scale_edges.h"
#include "numeric/image_kernels.h"
#include "numeric/isa_variants.h"
#include "numeric/owned_stack.h"
#include "numeric/vector_ops.h"

namespace vistaTrim {

namespace {

constexpr float kStripSigma = 0.7f; // smoothing ahead of the strip statistics

// edges times the normalised contrast, with its extremes.
VISTATRIM_VARIANT_BODY void MultiplyBody(float* edges, const float* contrast, int32_t count,
                                         float shift, float scale, CPlaneRange& range)
{
    uint32_t low = range.Lowest;
    uint32_t high = range.Highest;
    VISTATRIM_INDEPENDENT_STEPS
    for (int32_t i = 0; i < count; ++i) {
        const float shifted = contrast[i] + shift;
        const float normalised = shifted * scale;
        const float product = edges[i] * normalised;
        edges[i] = product;
        uint32_t bits;
        std::memcpy(&bits, &product, sizeof(bits));
        low = bits < low ? bits : low;
        high = bits > high ? bits : high;
    }
    range.Lowest = low;
    range.Highest = high;
}
VISTATRIM_VARIANTS(Multiply,
                   (float* edges, const float* contrast, int32_t count, float shift, float scale,
                    CPlaneRange& range),
                   (edges, contrast, count, shift, scale, range))

} // namespace

SaliencyMapScales MeasureSaliencyMaps(const CPlaneStack& pixels, const SaliencyMapBuffers& buffers)
{
    const int32_t cols = pixels.Cols;
    const int32_t rows = pixels.Rows;
    const int32_t count = pixels.ElementCount;
    SaliencyMapScales scales;
    {
        COwnedStack blurred;
        COwnedStack scratch;
        blurred.Create(3, cols, rows);
        scratch.Create(1, cols, rows);
        SmoothStack(pixels, blurred.Handle(), kStripSigma);
        BorderContrastMaps maps = {buffers.ContrastMap, buffers.ColorContrastMap, {}};
        std::copy_n(buffers.SideMaps, 4, maps.Sides);
        const BorderContrastScales borders =
            MeasureBorderContrasts(blurred.Handle(), scratch.Planes[0], maps);
        scales.ContrastMap = borders.Contrast;
        scales.ColorContrastMap = borders.ColorContrast;
        std::copy_n(borders.Sides, 4, scales.SideMaps);
    }

    // Edges at two coarse scales, where there is also contrast. They come from the unsmoothed
    // planes: downscaling picks single pixels, so fine texture and noise reach this map, and the
    // composition model was fitted on that.
    CPlaneStack saliency;
    saliency.WrapPlane(cols, rows, buffers.SaliencyMap);
    ComputeMultiScaleEdges(pixels, saliency, false, false, {0.04f, 0.2f});
    CPlaneRange range;
    Multiply(buffers.SaliencyMap, buffers.ContrastMap, count, scales.ContrastMap.Shift,
             scales.ContrastMap.Scale, range);
    if (range.IsOrdinary()) {
        scales.SaliencyMap = CNormalisation(range);
    } else {
        NormalisePlane(buffers.SaliencyMap, count);
        scales.SaliencyMap.Largest = LargestElement(buffers.SaliencyMap, count);
    }
    return scales;
}

void ComputeSaliencyMaps(const uint8_t* pixels, int32_t cols, int32_t rows,
                         const SaliencyMapBuffers& buffers)
{
    COwnedStack planes;
    planes.Create(3, cols, rows);
    planes.FillFromBytes(pixels);
    const SaliencyMapScales scales = MeasureSaliencyMaps(planes.Handle(), buffers);
    scales.ContrastMap.Apply(buffers.ContrastMap, planes.ElementCount);
    scales.SaliencyMap.Apply(buffers.SaliencyMap, planes.ElementCount);
    for (size_t side = 0; side < 4; ++side)
        scales.SideMaps[side].Apply(buffers.SideMaps[side], planes.ElementCount);
}

std::vector<CPlaneStack> SplitPlaneViews(const CPlaneStack& stack)
{
    const size_t n = static_cast<size_t>(stack.PlaneCount);
    std::vector<CPlaneStack> views(n);
    for (size_t plane = 0; plane < n; ++plane) {
        const size_t ownPair = (n + 1) * plane - plane * (plane + 1) / 2;
        CPlaneStack& view = views[plane];
        view.Planes = {stack.Planes[plane]};
        view.PlaneTables = {stack.PlaneTables[plane]};
        view.PairTables = {stack.PairTables[ownPair]};
        view.Cols = stack.Cols;
        view.Rows = stack.Rows;
        view.PlaneCount = 1;
        view.ElementCount = stack.ElementCount;
        view.TablesBuilt = stack.TablesBuilt;
    }
    return views;
}

} // namespace vistaTrim
