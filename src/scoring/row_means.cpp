#include "scoring/row_means.h"

#include <algorithm>

#include "numeric/isa_variants.h"

namespace vistaTrim {

namespace {

// above is null for the map's first row. Every corner is read, needed or not, so that the loop has
// no branches.
VISTATRIM_VARIANT_BODY void MeansBody(const double* above, const double* last, int32_t lastCol,
                                      const int32_t* firstCols, const int32_t* lastCols,
                                      size_t count, double denominator, double* __restrict__ means)
{
    if (above == nullptr) {
        VISTATRIM_INDEPENDENT_STEPS
        for (size_t i = 0; i < count; ++i) {
            const int32_t right = std::min(lastCols[i], lastCol);
            const int32_t left = firstCols[i] - 1;
            const double c = last[std::max(left, 0)];
            means[i] = (last[right] - (left < 0 ? 0.0 : c)) / denominator;
        }
        return;
    }
    VISTATRIM_INDEPENDENT_STEPS
    for (size_t i = 0; i < count; ++i) {
        const int32_t right = std::min(lastCols[i], lastCol);
        const int32_t left = firstCols[i] - 1;
        const double c = last[std::max(left, 0)];
        const double d = above[std::max(left, 0)];
        const double inside =
            ((last[right] - above[right]) - (left < 0 ? 0.0 : c)) + (left < 0 ? 0.0 : d);
        means[i] = inside / denominator;
    }
}

VISTATRIM_VARIANTS(Means,
                   (const double* above, const double* last, int32_t lastCol,
                    const int32_t* firstCols, const int32_t* lastCols, size_t count,
                    double denominator, double* __restrict__ means),
                   (above, last, lastCol, firstCols, lastCols, count, denominator, means))

} // namespace

void RowMeans(const CDoubleMatrix& table, int32_t firstRow, int32_t lastRow,
              const int32_t* firstCols, const int32_t* lastCols, size_t count, double denominator,
              double* means)
{
    const int64_t stride = table.Cols;
    const double* const above = firstRow < 1 ? nullptr : table.Data + (firstRow - 1) * stride;
    Means(above, table.Data + lastRow * stride, static_cast<int32_t>(table.Cols) - 1, firstCols,
          lastCols, count, denominator, means);
}

} // namespace vistaTrim
