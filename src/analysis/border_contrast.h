// Every contrast of a picture against its borders: the joint contrasts of the three planes, those
// of each plane alone, and the distances from the four sides.
#ifndef VISTATRIM_ANALYSIS_BORDER_CONTRAST_H
#define VISTATRIM_ANALYSIS_BORDER_CONTRAST_H

#include "numeric/plane_stack.h"
#include "numeric/vector_ops.h"

namespace vistaTrim {

// Planes of the picture's size, owned by the caller and written in full.
struct BorderContrastMaps {
    float* Contrast;      // joint plus each plane's own, the smaller of the two anchors, 0..1
    float* ColorContrast; // joint only, the smaller of the two anchors
    float* Sides[4];      // distance from the top, bottom, left and right strip, 0..1
};

// The normalisation that each map still needs, and its largest element afterwards. The colour
// contrast needs none.
struct BorderContrastScales {
    CNormalisation Contrast;
    CNormalisation ColorContrast;
    CNormalisation Sides[4];
};

// blurred  3 planes, without tables
// scratch  one plane
//
// The fast form: a few sweeps over the picture, with no tables and no intermediate planes. Returns
// false and leaves the maps undefined if a distance is NaN, infinite or negative, which happens
// only when rounding has made a covariance indefinite; the stepwise form handles that.
bool SweepBorderContrasts(const CPlaneStack& blurred, float* scratch,
                          const BorderContrastMaps& maps, BorderContrastScales& scales);

// Runs the operations of strip_contrast.h one after the other. Same bits as the fast form after its
// normalisation. blurred is a stack made by Create; its tables are built here.
void ComputeBorderContrastsStepwise(CPlaneStack& blurred, float* scratch,
                                    const BorderContrastMaps& maps);

// The fast form if it succeeds, else the stepwise one. With BLAS, which rounds its products in an
// order of its own, always the stepwise one.
BorderContrastScales MeasureBorderContrasts(CPlaneStack& blurred, float* scratch,
                                            const BorderContrastMaps& maps);

} // namespace vistaTrim

#endif
