// Means of a map over rectangles that share their rows, as the crops of a lattice row do.
#ifndef VISTATRIM_SCORING_ROW_MEANS_H
#define VISTATRIM_SCORING_ROW_MEANS_H

#include <cstddef>
#include <cstdint>

#include "numeric/matrix.h"

namespace vistaTrim {

// means[i] = RegionMean of rows firstRow..lastRow and columns firstCols[i]..lastCols[i], bit for
// bit. Columns beyond the map are read as the map's last one; the caller discards such means.
void RowMeans(const CDoubleMatrix& table, int32_t firstRow, int32_t lastRow,
              const int32_t* firstCols, const int32_t* lastCols, size_t count, double denominator,
              double* means);

} // namespace vistaTrim

#endif
