// The answers of the engine's driver as plain lists.
#ifndef VISTATRIM_PHOTO_RANKING_ENGINE_LISTS_H
#define VISTATRIM_PHOTO_RANKING_ENGINE_LISTS_H

#include <vector>

#include "vistaTrim/vistaTrim.h"
#include "vistaTrimPhoto/measures.h"

namespace vistaTrim::photo {

using CropList = std::vector<CInt32CropRect>;

// The engine's own ranking: the `wanted` best crops of one request, best first.
CropList BestOf(IVistaTrim& driver, const Weights& weights, int32_t wanted,
                const SuggestionParameters& engineRequest);

// Every candidate of the request, scored.
CropList AllOf(IVistaTrim& driver, const SuggestionParameters& engineRequest);

} // namespace vistaTrim::photo

#endif
