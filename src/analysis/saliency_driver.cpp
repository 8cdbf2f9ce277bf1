#include "analysis/saliency_driver.h"

#include "analysis/multi_scale_edges.h"
#include "analysis/owned_stack.h"
#include "analysis/strip_contrast.h"
#include "numeric/cpu_forms.h"
#include "numeric/image_kernels.h"
#include "numeric/summed_area.h"
#include "numeric/vector_ops.h"

namespace vistaTrim {

namespace {

constexpr float kStripSigma = 0.7f;         // smoothing ahead of the strip statistics
constexpr float kAnchorFraction = 0.25f;    // strips of the anchored contrasts
constexpr float kSideFraction = 0.2f;       // strips of the side maps
constexpr float kPlaneWeight = 0.33333334f; // one plane's own contrast beside the joint one

VISTATRIM_FORM_BODY void MinimumBody(const float* b, const float* t, int32_t count, float* out)
{
    VISTATRIM_INDEPENDENT_STEPS
    for (int32_t i = 0; i < count; ++i)
        out[i] = b[i] > t[i] ? t[i] : b[i];
}
VISTATRIM_FORMS(Minimum, (const float* b, const float* t, int32_t count, float* out),
                (b, t, count, out))

// The bottom value unless it is greater; a pixel is salient only under both anchors. out may
// be either plane.
void TakeMinimum(const CPlaneStack& bottom, const CPlaneStack& top, float* out)
{
    Minimum(bottom.Planes[0], top.Planes[0], top.ElementCount, out);
}

} // namespace

void ComputeSaliencyMaps(const uint8_t* pixels, int32_t cols, int32_t rows,
                         SaliencyMapBuffers& buffers)
{
    CPlaneStack contrastStack;
    COwnedStack pixelStack;
    COwnedStack bottomStack;
    COwnedStack blurredStack;
    contrastStack.WrapPlane(cols, rows, buffers.ContrastMap);
    pixelStack.Create(3, cols, rows);
    pixelStack.FillFromBytes(pixels);
    bottomStack.Create(1, cols, rows);
    blurredStack.Create(3, cols, rows);

    // The one place where tables are built; all strip statistics below read these.
    SmoothStack(pixelStack, blurredStack, kStripSigma);
    BuildTables(blurredStack);

    // The three planes jointly, against the top and against the bottom of the picture.
    ComputeTopContrast(blurredStack, contrastStack, kAnchorFraction);
    ComputeBottomContrast(blurredStack, bottomStack, kAnchorFraction);

    // The colour contrast is the joint one alone, so it is taken before the planes come in. It
    // is not normalised again: where the anchors disagree everywhere, its peak stays below 1.
    TakeMinimum(bottomStack, contrastStack, buffers.ColorContrastMap);

    // Each plane by itself, on top of the joint contrast.
    COwnedStack planeStack;
    planeStack.Create(1, cols, rows);
    for (const CPlaneStack& view : SplitPlaneViews(blurredStack)) {
        ComputeTopContrast(view, planeStack, kAnchorFraction);
        AddPlanes(contrastStack, planeStack, kPlaneWeight);
        ComputeBottomContrast(view, planeStack, kAnchorFraction);
        AddPlanes(bottomStack, planeStack, kPlaneWeight);
    }
    MeasureAndNormalise(bottomStack.Planes[0], bottomStack.ElementCount);
    MeasureAndNormalise(contrastStack.Planes[0], contrastStack.ElementCount);
    TakeMinimum(bottomStack, contrastStack, contrastStack.Planes[0]);
    MeasureAndNormalise(contrastStack.Planes[0], contrastStack.ElementCount);

    // Edges at two coarse scales, where there is contrast too. They come from the planes as
    // they were before smoothing: shrinking picks single pixels, so fine texture and noise
    // reach this map, which the fitted model of composition expects.
    CPlaneStack saliencyStack;
    saliencyStack.WrapPlane(cols, rows, buffers.SaliencyMap);
    ComputeMultiScaleEdges(pixelStack, saliencyStack, false, false, {0.04f, 0.2f});
    MultiplyPlanes(saliencyStack, saliencyStack, contrastStack);
    MeasureAndNormalise(saliencyStack.Planes[0], saliencyStack.ElementCount);

    CPlaneStack sideStacks[4];
    for (int side = 0; side < 4; ++side)
        sideStacks[side].WrapPlane(cols, rows, buffers.SideMaps[side]);
    ComputeSideContrasts(blurredStack, sideStacks, kSideFraction);
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
