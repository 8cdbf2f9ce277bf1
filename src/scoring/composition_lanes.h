// The composition score of many crops at once, eight in the lanes of a register.
//
// No descriptor is stored: each cell mean is standardised, weighted and added to the running sums
// of the dot product as it is formed. A crop's score has the same bits as ComputeCompositionScore
// gives with the fixed-order linear algebra, whichever crops share its group.
#ifndef VISTATRIM_SCORING_COMPOSITION_LANES_H
#define VISTATRIM_SCORING_COMPOSITION_LANES_H

#include <cstdint>

#include "numeric/matrix.h"
#include "scoring/descriptor_grids.h"

namespace vistaTrim {

// Crops of one group. Neighbours in a lattice row are best: a row of a table is then read for all
// of them while it is in the first-level cache.
constexpr int32_t kScoredTogether = 32;

// rows, cols  limits of each crop along each axis, with Tiles true
// count       crops, 1 to kScoredTogether
// scores      one for each crop
void ScoreTogether(const CDoubleMatrix& contrastTable, const CDoubleMatrix& saliencyTable,
                   const GridLimits* const* rows, const GridLimits* const* cols, int32_t count,
                   float* scores);

} // namespace vistaTrim

#endif
