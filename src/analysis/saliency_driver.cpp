#include "analysis/saliency_driver.h"

#include <algorithm>

#include "analysis/border_contrast.h"
#include "analysis/multi_scale_edges.h"
#include "analysis/owned_stack.h"
#include "numeric/image_kernels.h"
#include "numeric/vector_ops.h"

namespace vistaTrim {

namespace {

constexpr float kStripSigma = 0.7f; // smoothing ahead of the strip statistics

} // namespace

void ComputeSaliencyMaps(const uint8_t* pixels, int32_t cols, int32_t rows,
                         SaliencyMapBuffers& buffers)
{
    COwnedStack pixelStack;
    pixelStack.Create(3, cols, rows);
    pixelStack.FillFromBytes(pixels);
    {
        COwnedStack blurredStack;
        COwnedStack bottomStack;
        blurredStack.Create(3, cols, rows);
        bottomStack.Create(1, cols, rows);
        SmoothStack(pixelStack, blurredStack, kStripSigma);
        BorderContrastMaps maps = {buffers.ContrastMap, buffers.ColorContrastMap, {}};
        std::copy_n(buffers.SideMaps, 4, maps.Sides);
        ComputeBorderContrasts(blurredStack, bottomStack.Planes[0], maps);
    }

    // Edges at two coarse scales, where there is contrast too. They come from the planes as
    // they were before smoothing: shrinking picks single pixels, so fine texture and noise
    // reach this map, which the fitted model of composition expects.
    CPlaneStack contrastStack;
    CPlaneStack saliencyStack;
    contrastStack.WrapPlane(cols, rows, buffers.ContrastMap);
    saliencyStack.WrapPlane(cols, rows, buffers.SaliencyMap);
    ComputeMultiScaleEdges(pixelStack, saliencyStack, false, false, {0.04f, 0.2f});
    MultiplyPlanes(saliencyStack, saliencyStack, contrastStack);
    NormalisePlane(saliencyStack.Planes[0], saliencyStack.ElementCount);
}

std::vector<CPlaneStack> SplitPlaneViews(const CPlaneStack& stack)
{
    const size_t n = size_t(stack.PlaneCount);
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
