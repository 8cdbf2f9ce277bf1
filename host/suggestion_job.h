// Asks the library for the best crops of one photograph.
#ifndef VISTATRIM_HOST_SUGGESTION_JOB_H
#define VISTATRIM_HOST_SUGGESTION_JOB_H

#include "request.h"
#include "result.h"
#include "working_picture.h"

namespace vistaTrim::host {

// Fills Size, Crops, Explained and two of the Times of the result. Throws PhotoError for a
// request that this photograph cannot meet: a size that does not fit, a region outside.
void SuggestCrops(const WorkingPicture& picture, const Request& request, PhotoResult& result);

} // namespace vistaTrim::host

#endif
