// The sums over border strips without summed-area tables.
//
// The statistics of the strips read the float tables of the planes and of their products at a few
// corners only. These are the same numbers, to the bit, with no table in memory.
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
    // strips  all rectangles that sums will be asked for
    CStripMoments(const CPlaneStack& planes, const std::vector<CStripRect>& strips);

    // Mean (3 floats) and covariance (3 x 3) of the pixels of a group of these strips, as
    // ComputeStripStatistics has them.
    void Statistics(const std::vector<CStripRect>& group, float* means, float* covariances) const;

private:
    float StripSum(size_t table, const CStripRect& strip) const;
    float Corner(size_t table, int32_t row, int32_t col) const;

    // Where the strips begin and end, ascending: rows and columns of a table, 0 left out.
    std::vector<int32_t> CornerRows;
    std::vector<int32_t> CornerCols;
    // One block for each of the nine tables, CornerRows x CornerCols.
    std::vector<float> Corners;
};

} // namespace vistaTrim

#endif
