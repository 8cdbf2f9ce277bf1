// What the engine's driver answers, as plain lists.
#ifndef VISTATRIM_PHOTO_RANKING_ENGINE_LISTS_H
#define VISTATRIM_PHOTO_RANKING_ENGINE_LISTS_H

#include "ranking/turns.h"
#include "vistaTrim/vistaTrim.h"
#include "vistaTrimPhoto/request.h"

namespace vistaTrim::photo {

// The engine's own ranking: the `wanted` best crops of one request, best first.
CropList BestOf(IVistaTrim& driver, const Request& request, int32_t wanted,
                const SuggestionParameters& engineRequest);

// Every candidate of the request.
CropList AllOf(IVistaTrim& driver, const SuggestionParameters& engineRequest);

} // namespace vistaTrim::photo

#endif
