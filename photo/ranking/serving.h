// Which candidates are served, and in what order.
#ifndef VISTATRIM_PHOTO_RANKING_SERVING_H
#define VISTATRIM_PHOTO_RANKING_SERVING_H

#include <vector>

#include "ranking/turns.h"
#include "vistaTrim/vistaTrim.h"
#include "vistaTrimPhoto/request.h"

namespace vistaTrim::photo {

// At most request.Top crops of the working picture, best first.
//
// ratios         the aspect table of the driver
// engineRequest  the size, if one is asked for
CropList Serve(IVistaTrim& driver, const Request& request, const std::vector<Ratio>& ratios,
               PixelSize photo, const SuggestionParameters& engineRequest);

} // namespace vistaTrim::photo

#endif
