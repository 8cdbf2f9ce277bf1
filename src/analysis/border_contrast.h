// Every contrast of a picture against its borders: the joint contrasts of the three planes, those
// of each plane alone, and the distances from the four sides.
#ifndef VISTATRIM_ANALYSIS_BORDER_CONTRAST_H
#define VISTATRIM_ANALYSIS_BORDER_CONTRAST_H

#include "numeric/plane_stack.h"
#include "numeric/vector_ops.h"

namespace vistaTrim {

// Planes of the picture's size, owned by the caller and written in full.
struct BorderContrastMaps {
    float* Contrast;      // joint and plane by plane, the smaller of the two anchors, 0..1
    float* ColorContrast; // joint alone, the smaller of the two anchors
    float* Sides[4];      // distance from the top, bottom, left and right strip, 0..1
};

// What is left to do to each map: x = (x + Shift) * Scale, and its largest element after that. The
// colour contrast needs no scale.
struct BorderContrastScales {
    CNormalisation Contrast;
    CNormalisation ColorContrast;
    CNormalisation Sides[4];
};

// blurred  3 planes, without tables
// scratch  one plane
//
// The fast form: a few sweeps over the picture, with no table and no plane in between. False, and
// nothing but scratch in the maps, if some distance is NaN, infinite or negative, which takes a
// covariance that rounding has made indefinite; the stepwise form knows what to make of it.
bool SweepBorderContrasts(const CPlaneStack& blurred, float* scratch,
                          const BorderContrastMaps& maps, BorderContrastScales& scales);

// One operation of strip_contrast.h after the other, with the bits of the fast form and nothing
// left to do. blurred is a stack made by Create and gets its tables.
void ComputeBorderContrastsStepwise(CPlaneStack& blurred, float* scratch,
                                    const BorderContrastMaps& maps);

// The fast form where it can be had; with BLAS, whose products are its own affair, the stepwise.
BorderContrastScales MeasureBorderContrasts(CPlaneStack& blurred, float* scratch,
                                            const BorderContrastMaps& maps);

} // namespace vistaTrim

#endif
