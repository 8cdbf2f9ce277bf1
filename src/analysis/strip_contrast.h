// The background model: mean and covariance of the strips along the image's borders, and the
// contrast of every pixel against them.
#ifndef VISTATRIM_ANALYSIS_STRIP_CONTRAST_H
#define VISTATRIM_ANALYSIS_STRIP_CONTRAST_H

#include <cstdint>
#include <vector>

#include "numeric/plane_stack.h"

namespace vistaTrim {

// A strip, inclusive on all sides, with its number of pixels.
struct CStripRect {
    int32_t Left, Top, Right, Bottom;
    int32_t Area;
};

// The four strips of an image. They overlap in its corners.
struct BorderStrips {
    CStripRect Top, Bottom, Left, Right;
};

// fraction  of the shorter side; the width is truncated to whole pixels, at least 1, and every
//           strip is clipped to the image
BorderStrips MakeBorderStrips(int32_t cols, int32_t rows, float fraction);

// Distance to the top strip plus distance to the other three, normalised to 0..1. stack has
// its tables built; fraction is the strips' width over the shorter side.
void ComputeTopContrast(const CPlaneStack& stack, CPlaneStack& out, float fraction);
// The same with the bottom strip as the anchor.
void ComputeBottomContrast(const CPlaneStack& stack, CPlaneStack& out, float fraction);
// Distance to each strip alone: top, bottom, left, right; each normalised to 0..1.
void ComputeSideContrasts(const CPlaneStack& stack, CPlaneStack outs[4], float fraction);

// Mean and covariance of the pixels of a group of strips. A pixel counts once for each strip that
// contains it, so the image's corners count double.
void ComputeStripStatistics(const CPlaneStack& stack, CPlaneStack& mean, CPlaneStack& covariance,
                            std::vector<CStripRect> group);

// The last step of ComputeStripStatistics: the mean and covariance of a group from its sums.
// sums         of each plane, then of the products (0,0), (0,1) .. (0,n-1), (1,1) .. (n-1,n-1)
// area         pixels of the group
// means        planes floats
// covariances  planes x planes floats, row-major, symmetric
void StatisticsOfSums(int32_t planes, const float* sums, float area, float* means,
                      float* covariances);

} // namespace vistaTrim

#endif
