#include "result.h"

namespace vistaTrim::host {

const char* NameOfMeasure(int measure)
{
    constexpr const char* kNames[kNumMeasures] = {"composition", "coverage", "border", "peak",
                                                  "centrePeak"};
    return kNames[measure];
}

double MeasureOf(const Score& score, int measure)
{
    const double values[kNumMeasures] = {score.CompositionScore, score.CoverageScore,
                                         score.BorderScore, score.PeakScore, score.CentrePeakScore};
    return values[measure];
}

} // namespace vistaTrim::host
