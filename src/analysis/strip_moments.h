// The sums over border strips without summed-area tables.
//
// The statistics of the strips read the float tables of the planes and of their products at a few
// corners only. This computes the same numbers, bit for bit, without storing a table.
#ifndef VISTATRIM_ANALYSIS_STRIP_MOMENTS_H
#define VISTATRIM_ANALYSIS_STRIP_MOMENTS_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "analysis/strip_contrast.h"
#include "numeric/plane_stack.h"

namespace vistaTrim {

class CStripMoments {
public:
    // planes  3, of which only the pixels are read
    // strips  every strip that a group may contain
    CStripMoments(const CPlaneStack& planes, const std::vector<CStripRect>& strips);

    // Mean (3 floats) and covariance (3 x 3) of the pixels of a group of these strips, with the
    // bits of ComputeStripStatistics.
    void Statistics(const std::vector<CStripRect>& group, float* means, float* covariances) const;

private:
    float StripSum(size_t table, const CStripRect& strip) const;
    float Corner(size_t table, int32_t row, int32_t col) const;

    // Rows and columns of a table where strips begin or end, ascending, without 0.
    std::vector<int32_t> CornerRows;
    std::vector<int32_t> CornerCols;
    // One block for each of the nine tables, CornerRows x CornerCols.
    std::vector<float> Corners;
};

} // namespace vistaTrim

#endif
