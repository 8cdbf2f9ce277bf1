#include "analysis/border_contrast.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "analysis/distance_maps.h"
#include "analysis/saliency_driver.h"
#include "analysis/strip_contrast.h"
#include "analysis/strip_moments.h"
#include "numeric/isa_variants.h"
#include "numeric/linear_algebra.h"
#include "numeric/owned_stack.h"
#include "numeric/summed_area.h"
#include "numeric/vector_ops.h"

namespace vistaTrim {

namespace {

constexpr float kAnchorFraction = 0.25f;    // strips of the anchored contrasts
constexpr float kSideFraction = 0.2f;       // strips of the side maps
constexpr float kPlaneWeight = 0.33333334f; // of each plane's own contrast; the joint one has 1
constexpr size_t kPlanes = 3;

// Pixels that stay in the first-level cache while all models measure them.
constexpr int32_t kBlock = 1024;

// |x + Shift| times Scale.
struct ScalarModel {
    float Shift;
    float Scale;
};

// The background model of one group of strips: the three planes jointly, and each alone.
struct BorderModel {
    float Shift[kPlanes];
    float Inverse[kPlanes * kPlanes];
    ScalarModel Plane[kPlanes];
};

BorderModel ModelOfGroup(const CStripMoments& moments, const std::vector<CStripRect>& group)
{
    BorderModel model;
    float means[kPlanes];
    float covariances[kPlanes * kPlanes];
    moments.Statistics(group, means, covariances);
    InvertRegularised(covariances, static_cast<int32_t>(kPlanes), kRegulariser, model.Inverse);
    for (size_t k = 0; k < kPlanes; ++k) {
        model.Shift[k] = -means[k];
        model.Plane[k] = {-means[k], InverseDeviation(covariances[k * kPlanes + k])};
    }
    return model;
}

// The three planes, starting at one pixel.
struct PixelBlock {
    const float* Plane[kPlanes];
};

uint32_t BitsOf(float x)
{
    uint32_t bits;
    std::memcpy(&bits, &x, sizeof(bits));
    return bits;
}

// Each step is rounded as ComputeMahalanobisMap rounds it: the shifted pixel, the three terms of
// each element of its product with the inverse, one after the other, and the dot product of both,
// which is formed in double.
VISTATRIM_VARIANT_BODY float JointDistance(float x, float y, float z, const BorderModel& model)
{
    const float* const inverse = model.Inverse;
    const float cx = x + model.Shift[0];
    const float cy = y + model.Shift[1];
    const float cz = z + model.Shift[2];
    const float wx = (cx * inverse[0] + cy * inverse[1]) + cz * inverse[2];
    const float wy = (cx * inverse[3] + cy * inverse[4]) + cz * inverse[5];
    const float wz = (cx * inverse[6] + cy * inverse[7]) + cz * inverse[8];
    const double square = static_cast<double>(cx) * static_cast<double>(wx) +
                          static_cast<double>(cy) * static_cast<double>(wy) +
                          static_cast<double>(cz) * static_cast<double>(wz);
    return std::sqrt(static_cast<float>(square));
}

VISTATRIM_VARIANT_BODY float ScalarDistance(float x, const ScalarModel& model)
{
    return std::fabs(x + model.Shift) * model.Scale;
}

VISTATRIM_VARIANT_BODY void MeasureSide(const PixelBlock& pixels, int32_t count,
                                        const BorderModel& sharedModel, float* __restrict__ out,
                                        CPlaneRange& range)
{
    const BorderModel model = sharedModel; // a copy, because stores cannot alias it
    uint32_t low = range.Lowest;
    uint32_t high = range.Highest;
    for (int32_t i = 0; i < count; ++i) {
        const float distance =
            JointDistance(pixels.Plane[0][i], pixels.Plane[1][i], pixels.Plane[2][i], model);
        out[i] = distance;
        const uint32_t bits = BitsOf(distance);
        low = bits < low ? bits : low;
        high = bits > high ? bits : high;
    }
    range.Lowest = low;
    range.Highest = high;
}

// Distance to the anchor plus distance to the rest.
VISTATRIM_VARIANT_BODY void MeasureAnchored(const PixelBlock& pixels, int32_t count,
                                            const BorderModel& sharedAnchor,
                                            const BorderModel& sharedRest, float* __restrict__ out,
                                            CPlaneRange& range)
{
    const BorderModel anchor = sharedAnchor;
    const BorderModel rest = sharedRest;
    uint32_t low = range.Lowest;
    uint32_t high = range.Highest;
    for (int32_t i = 0; i < count; ++i) {
        const float x = pixels.Plane[0][i];
        const float y = pixels.Plane[1][i];
        const float z = pixels.Plane[2][i];
        const float distance = JointDistance(x, y, z, anchor) + JointDistance(x, y, z, rest);
        out[i] = distance;
        const uint32_t bits = BitsOf(distance);
        low = bits < low ? bits : low;
        high = bits > high ? bits : high;
    }
    range.Lowest = low;
    range.Highest = high;
}

// The extremes only: the second sweep computes these distances again.
VISTATRIM_VARIANT_BODY void MeasurePlane(const float* x, int32_t count, const ScalarModel& anchor,
                                         const ScalarModel& rest, CPlaneRange& range)
{
    uint32_t low = range.Lowest;
    uint32_t high = range.Highest;
    for (int32_t i = 0; i < count; ++i) {
        const uint32_t bits = BitsOf(ScalarDistance(x[i], anchor) + ScalarDistance(x[i], rest));
        low = bits < low ? bits : low;
        high = bits > high ? bits : high;
    }
    range.Lowest = low;
    range.Highest = high;
}

// The two anchors, each with the extremes of its contrasts.
enum AnchorIndex { kTop, kBottom, kAnchors };

struct Anchor {
    BorderModel Own;
    BorderModel Rest;
    CPlaneRange Joint;
    CPlaneRange Plane[kPlanes];
};

struct Side {
    BorderModel Own;
    CPlaneRange Range;
};

VISTATRIM_VARIANT_BODY void MeasureBlockBody(const PixelBlock& pixels, int32_t count,
                                             Anchor (&anchors)[kAnchors], Side (&sides)[4],
                                             float* const* joint, float* const* sideMaps)
{
    for (size_t a = 0; a < kAnchors; ++a) {
        Anchor& anchor = anchors[a];
        MeasureAnchored(pixels, count, anchor.Own, anchor.Rest, joint[a], anchor.Joint);
        for (size_t k = 0; k < kPlanes; ++k)
            MeasurePlane(pixels.Plane[k], count, anchor.Own.Plane[k], anchor.Rest.Plane[k],
                         anchor.Plane[k]);
    }
    for (size_t side = 0; side < 4; ++side)
        MeasureSide(pixels, count, sides[side].Own, sideMaps[side], sides[side].Range);
}
VISTATRIM_VARIANTS(MeasureBlock,
                   (const PixelBlock& pixels, int32_t count, Anchor (&anchors)[kAnchors],
                    Side (&sides)[4], float* const* joint, float* const* sideMaps),
                   (pixels, count, anchors, sides, joint, sideMaps))

// What it takes to normalise one anchor's contrasts and to add them.
struct AnchorScales {
    explicit AnchorScales(const Anchor& anchor)
        : Joint(anchor.Joint), Plane{CNormalisation(anchor.Plane[0]),
                                     CNormalisation(anchor.Plane[1]),
                                     CNormalisation(anchor.Plane[2])}
    {
        for (size_t k = 0; k < kPlanes; ++k) {
            Own[k] = anchor.Own.Plane[k];
            Rest[k] = anchor.Rest.Plane[k];
        }
    }

    CNormalisation Joint;
    CNormalisation Plane[kPlanes];
    ScalarModel Own[kPlanes];
    ScalarModel Rest[kPlanes];
};

VISTATRIM_VARIANT_BODY float Normalised(float x, const CNormalisation& normalisation)
{
    const float shifted = x + normalisation.Shift;
    return shifted * normalisation.Scale;
}

// The smaller of both anchors: a pixel is salient only if it is under both. NaN in either gives the
// bottom value.
VISTATRIM_VARIANT_BODY float Smaller(float bottom, float top)
{
    return bottom > top ? top : bottom;
}

VISTATRIM_VARIANT_BODY float WithPlane(float sum, float x, const AnchorScales& scales, size_t k)
{
    const float distance = ScalarDistance(x, scales.Own[k]) + ScalarDistance(x, scales.Rest[k]);
    const float weighted = kPlaneWeight * Normalised(distance, scales.Plane[k]);
    return sum + weighted;
}

// top and bottom hold the joint distances and get the sums of all contrasts.
VISTATRIM_VARIANT_BODY void CombineBlockBody(const PixelBlock& pixels, int32_t count,
                                             const AnchorScales (&shared)[kAnchors], float* top,
                                             float* bottom, float* color,
                                             CPlaneRange (&ranges)[kAnchors],
                                             CPlaneRange& colorRange)
{
    const AnchorScales topScales = shared[kTop];
    const AnchorScales bottomScales = shared[kBottom];
    uint32_t topLow = ranges[kTop].Lowest;
    uint32_t topHigh = ranges[kTop].Highest;
    uint32_t bottomLow = ranges[kBottom].Lowest;
    uint32_t bottomHigh = ranges[kBottom].Highest;
    uint32_t colorHigh = colorRange.Highest;
    VISTATRIM_INDEPENDENT_STEPS
    for (int32_t i = 0; i < count; ++i) {
        float t = Normalised(top[i], topScales.Joint);
        float b = Normalised(bottom[i], bottomScales.Joint);
        // Of the joint contrasts alone, and not normalised again: where the anchors disagree
        // everywhere, its peak stays below 1.
        const float joint = Smaller(b, t);
        color[i] = joint;
        const uint32_t jointBits = BitsOf(joint);
        colorHigh = jointBits > colorHigh ? jointBits : colorHigh;
        t = WithPlane(t, pixels.Plane[0][i], topScales, 0);
        b = WithPlane(b, pixels.Plane[0][i], bottomScales, 0);
        t = WithPlane(t, pixels.Plane[1][i], topScales, 1);
        b = WithPlane(b, pixels.Plane[1][i], bottomScales, 1);
        t = WithPlane(t, pixels.Plane[2][i], topScales, 2);
        b = WithPlane(b, pixels.Plane[2][i], bottomScales, 2);
        top[i] = t;
        bottom[i] = b;
        const uint32_t topBits = BitsOf(t);
        const uint32_t bottomBits = BitsOf(b);
        topLow = topBits < topLow ? topBits : topLow;
        topHigh = topBits > topHigh ? topBits : topHigh;
        bottomLow = bottomBits < bottomLow ? bottomBits : bottomLow;
        bottomHigh = bottomBits > bottomHigh ? bottomBits : bottomHigh;
    }
    ranges[kTop].Lowest = topLow;
    ranges[kTop].Highest = topHigh;
    ranges[kBottom].Lowest = bottomLow;
    ranges[kBottom].Highest = bottomHigh;
    colorRange.Highest = colorHigh;
}
VISTATRIM_VARIANTS(CombineBlock,
                   (const PixelBlock& pixels, int32_t count, const AnchorScales (&shared)[kAnchors],
                    float* top, float* bottom, float* color, CPlaneRange (&ranges)[kAnchors],
                    CPlaneRange& colorRange),
                   (pixels, count, shared, top, bottom, color, ranges, colorRange))

VISTATRIM_VARIANT_BODY void TakeSmallerBody(const float* bottom, float* top, int32_t count,
                                            const CNormalisation& sharedBottom,
                                            const CNormalisation& sharedTop, CPlaneRange& range)
{
    const CNormalisation ofBottom = sharedBottom;
    const CNormalisation ofTop = sharedTop;
    uint32_t low = range.Lowest;
    uint32_t high = range.Highest;
    VISTATRIM_INDEPENDENT_STEPS
    for (int32_t i = 0; i < count; ++i) {
        const float smaller = Smaller(Normalised(bottom[i], ofBottom), Normalised(top[i], ofTop));
        top[i] = smaller;
        const uint32_t bits = BitsOf(smaller);
        low = bits < low ? bits : low;
        high = bits > high ? bits : high;
    }
    range.Lowest = low;
    range.Highest = high;
}
VISTATRIM_VARIANTS(TakeSmaller,
                   (const float* bottom, float* top, int32_t count,
                    const CNormalisation& sharedBottom, const CNormalisation& sharedTop,
                    CPlaneRange& range),
                   (bottom, top, count, sharedBottom, sharedTop, range))

VISTATRIM_VARIANT_BODY void MinimumBody(const float* bottom, const float* top, int32_t count,
                                        float* out)
{
    VISTATRIM_INDEPENDENT_STEPS
    for (int32_t i = 0; i < count; ++i)
        out[i] = Smaller(bottom[i], top[i]);
}
VISTATRIM_VARIANTS(Minimum, (const float* bottom, const float* top, int32_t count, float* out),
                   (bottom, top, count, out))

bool AllOrdinary(const Anchor (&anchors)[kAnchors], const Side (&sides)[4])
{
    bool ordinary = true;
    for (const Anchor& anchor : anchors) {
        ordinary = ordinary && anchor.Joint.IsOrdinary();
        for (const CPlaneRange& range : anchor.Plane)
            ordinary = ordinary && range.IsOrdinary();
    }
    for (const Side& side : sides)
        ordinary = ordinary && side.Range.IsOrdinary();
    return ordinary;
}

} // namespace

bool SweepBorderContrasts(const CPlaneStack& blurred, float* scratch,
                          const BorderContrastMaps& maps, BorderContrastScales& scales)
{
    const BorderStrips wide = MakeBorderStrips(blurred.Cols, blurred.Rows, kAnchorFraction);
    const BorderStrips narrow = MakeBorderStrips(blurred.Cols, blurred.Rows, kSideFraction);
    const CStripMoments moments(blurred, {wide.Top, wide.Bottom, wide.Left, wide.Right, narrow.Top,
                                          narrow.Bottom, narrow.Left, narrow.Right});
    // The groups name their strips in the order in which the sums are added.
    Anchor anchors[kAnchors];
    anchors[kTop].Own = ModelOfGroup(moments, {wide.Top});
    anchors[kTop].Rest = ModelOfGroup(moments, {wide.Left, wide.Right, wide.Bottom});
    anchors[kBottom].Own = ModelOfGroup(moments, {wide.Bottom});
    anchors[kBottom].Rest = ModelOfGroup(moments, {wide.Left, wide.Right, wide.Top});
    Side sides[4];
    sides[0].Own = ModelOfGroup(moments, {narrow.Top});
    sides[1].Own = ModelOfGroup(moments, {narrow.Bottom});
    sides[2].Own = ModelOfGroup(moments, {narrow.Left});
    sides[3].Own = ModelOfGroup(moments, {narrow.Right});

    // First sweep: all distances, and the extremes of all contrasts.
    float* const top = maps.Contrast;
    float* const bottom = scratch;
    const int32_t count = blurred.ElementCount;
    const auto pixelsFrom = [&](int32_t first) -> PixelBlock {
        return {{blurred.Planes[0] + first, blurred.Planes[1] + first, blurred.Planes[2] + first}};
    };
    for (int32_t first = 0; first < count; first += kBlock) {
        float* const joint[kAnchors] = {top + first, bottom + first};
        float* const sideMaps[4] = {maps.Sides[0] + first, maps.Sides[1] + first,
                                    maps.Sides[2] + first, maps.Sides[3] + first};
        MeasureBlock(pixelsFrom(first), std::min(count - first, kBlock), anchors, sides, joint,
                     sideMaps);
    }
    if (!AllOrdinary(anchors, sides))
        return false;

    // Second sweep: the joint contrasts, with those of each plane on top.
    const AnchorScales anchorScales[kAnchors] = {AnchorScales(anchors[kTop]),
                                                 AnchorScales(anchors[kBottom])};
    CPlaneRange sums[kAnchors];
    CPlaneRange color;
    for (int32_t first = 0; first < count; first += kBlock)
        CombineBlock(pixelsFrom(first), std::min(count - first, kBlock), anchorScales, top + first,
                     bottom + first, maps.ColorContrast + first, sums, color);

    CPlaneRange smaller;
    TakeSmaller(bottom, top, count, CNormalisation(sums[kBottom]), CNormalisation(sums[kTop]),
                smaller);
    scales.Contrast = CNormalisation(smaller);
    scales.ColorContrast = CNormalisation();
    scales.ColorContrast.Largest = color.Largest();
    for (size_t side = 0; side < 4; ++side)
        scales.Sides[side] = CNormalisation(sides[side].Range);
    return true;
}

void ComputeBorderContrastsStepwise(CPlaneStack& blurred, float* scratch,
                                    const BorderContrastMaps& maps)
{
    const int32_t cols = blurred.Cols;
    const int32_t rows = blurred.Rows;
    const int32_t count = blurred.ElementCount;
    CPlaneStack topStack;
    CPlaneStack bottomStack;
    topStack.WrapPlane(cols, rows, maps.Contrast);
    bottomStack.WrapPlane(cols, rows, scratch);

    // The one place where tables are built; all strip statistics below read these.
    BuildTables(blurred);

    // The three planes together, against the top and the bottom of the picture.
    ComputeTopContrast(blurred, topStack, kAnchorFraction);
    ComputeBottomContrast(blurred, bottomStack, kAnchorFraction);

    // The colour contrast is the joint one alone, so it is taken before the planes' own are added.
    Minimum(scratch, maps.Contrast, count, maps.ColorContrast);

    // Adds each plane's own contrast to the joint contrast.
    COwnedStack planeStack;
    planeStack.Create(1, cols, rows);
    for (const CPlaneStack& view : SplitPlaneViews(blurred)) {
        ComputeTopContrast(view, planeStack.Handle(), kAnchorFraction);
        AddPlanes(topStack, planeStack.Handle(), kPlaneWeight);
        ComputeBottomContrast(view, planeStack.Handle(), kAnchorFraction);
        AddPlanes(bottomStack, planeStack.Handle(), kPlaneWeight);
    }
    NormalisePlane(scratch, count);
    NormalisePlane(maps.Contrast, count);
    Minimum(scratch, maps.Contrast, count, maps.Contrast);
    NormalisePlane(maps.Contrast, count);

    CPlaneStack sideStacks[4];
    for (size_t side = 0; side < 4; ++side)
        sideStacks[side].WrapPlane(cols, rows, maps.Sides[side]);
    ComputeSideContrasts(blurred, sideStacks, kSideFraction);
}

BorderContrastScales MeasureBorderContrasts(CPlaneStack& blurred, float* scratch,
                                            const BorderContrastMaps& maps)
{
    BorderContrastScales scales;
    if (kFixedOrder && SweepBorderContrasts(blurred, scratch, maps, scales))
        return scales;
    ComputeBorderContrastsStepwise(blurred, scratch, maps);
    scales = BorderContrastScales();
    scales.Contrast.Largest = LargestElement(maps.Contrast, blurred.ElementCount);
    scales.ColorContrast.Largest = LargestElement(maps.ColorContrast, blurred.ElementCount);
    for (size_t side = 0; side < 4; ++side)
        scales.Sides[side].Largest = LargestElement(maps.Sides[side], blurred.ElementCount);
    return scales;
}

} // namespace vistaTrim
