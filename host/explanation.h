// How each crop stands among all candidates, and which wish was met or missed.
#ifndef VISTATRIM_HOST_EXPLANATION_H
#define VISTATRIM_HOST_EXPLANATION_H

#include <vector>

#include "result.h"
#include "working_picture.h"

namespace vistaTrim::host {

// all     every candidate of the request
// best    the records from which result.Crops were made, in the same order
// asked   how many crops were asked for
void Explain(const std::vector<CInt32CropRect>& all, const std::vector<CInt32CropRect>& best,
             const std::vector<Wish>& wishes, const WorkingPicture& picture, int32_t asked,
             PhotoResult& result);

} // namespace vistaTrim::host

#endif
