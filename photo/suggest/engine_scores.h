// Converts the engine's scores to those of a result.
#ifndef VISTATRIM_PHOTO_SUGGEST_ENGINE_SCORES_H
#define VISTATRIM_PHOTO_SUGGEST_ENGINE_SCORES_H

#include "vistaTrim/records.h"
#include "vistaTrimPhoto/measures.h"

namespace vistaTrim::photo {

Scores ScoresOf(const vistaTrim::Score& score);

} // namespace vistaTrim::photo

#endif
