#include "suggest/engine_scores.h"

namespace vistaTrim::photo {

Scores ScoresOf(const vistaTrim::Score& score)
{
    Scores scores;
    scores.Composition = score.CompositionScore;
    scores.Coverage = score.CoverageScore;
    scores.Border = score.BorderScore;
    scores.Peak = score.PeakScore;
    scores.CentrePeak = score.CentrePeakScore;
    scores.Roi = score.RoiScore;
    scores.Merged = score.MergedScore;
    return scores;
}

} // namespace vistaTrim::photo
