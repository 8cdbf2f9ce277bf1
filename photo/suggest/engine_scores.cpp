#include "suggest/engine_scores.h"

namespace vistaTrim::photo {

Scores ScoresOf(const vistaTrim::Score& score)
{
    return {score.CompositionScore, score.CoverageScore, score.BorderScore, score.PeakScore,
            score.CentrePeakScore,  score.RoiScore,      score.MergedScore};
}

} // namespace vistaTrim::photo
