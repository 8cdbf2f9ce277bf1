// How each crop ranks among all candidates, and which wish it meets or misses.
#ifndef VISTATRIM_PHOTO_SUGGEST_EXPLANATION_H
#define VISTATRIM_PHOTO_SUGGEST_EXPLANATION_H

#include <vector>

#include "ranking/engine_lists.h"
#include "regions/region_wishes.h"
#include "vistaTrimPhoto/photograph.h"
#include "vistaTrimPhoto/request.h"
#include "vistaTrimPhoto/result.h"

namespace vistaTrim::photo {

// Fills Explained in the result and in each of its crops; the list of crops must be complete.
//
// all     every candidate of the request
// wishes  clipped to the photograph; first those of the request, then those of `found`
// request the request itself
void Explain(const CropList& all, const std::vector<Wish>& wishes,
             const std::vector<RegionWish>& found, const WorkingPicture& picture,
             const Request& request, Suggestions& result);

} // namespace vistaTrim::photo

#endif
