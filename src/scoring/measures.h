// The measures of Score that are filled by evaluation and ranked by selection.
#ifndef VISTATRIM_SCORING_MEASURES_H
#define VISTATRIM_SCORING_MEASURES_H

#include <cstdint>

#include "vistaTrim/records.h"

namespace vistaTrim {

struct Measure {
    double Score::*Value;
    double WeightDistribution::*Weight; // of its rank
    // 1 or more: the ranking mode that keeps only this weight, which counts whatever its sign. 0:
    // no mode keeps it, and it counts only when above 0.
    int32_t RankingMode;
};

// In the order in which their ranks are added. The table is in crop_evaluation.cpp, beside
// the code that computes the values: a new measure is a field and a weight in records.h, which
// breaks their published layout, and a row and its arithmetic there.
struct MeasureTable {
    const Measure* First;
    const Measure* End;
};
MeasureTable Measures();
inline const Measure* begin(const MeasureTable& table)
{
    return table.First;
}
inline const Measure* end(const MeasureTable& table)
{
    return table.End;
}

} // namespace vistaTrim

#endif
