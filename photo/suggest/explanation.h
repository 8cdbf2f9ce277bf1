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

// Fills Explained of the result, whose crops are complete, and of each of its crops.
//
// all     every candidate of the request
// wishes  clipped to the photograph; the first ones are of the request, the others are those of
//         `found`
// request what was asked
void Explain(const CropList& all, const std::vector<Wish>& wishes,
             const std::vector<RegionWish>& found, const WorkingPicture& picture,
             const Request& request, Suggestions& result);

} // namespace vistaTrim::photo

#endif
