// Candidates beside those of the engine's lattice: of the same sizes, at places between
// its steps.
#ifndef VISTATRIM_PHOTO_RANKING_MOVED_CROPS_H
#define VISTATRIM_PHOTO_RANKING_MOVED_CROPS_H

#include <vector>

#include "ranking/engine_lists.h"
#include "ranking/wished_regions.h"
#include "vistaTrimPhoto/geometry.h"

namespace vistaTrim::photo {

// Each crop that is large enough for all regions with Moves set but does not hold them, moved as
// little as possible until it does; then the same for those with a CutCost, such as bare faces.
// No duplicates, and none of `crops`. Not scored yet.
CropList MovedToHold(const CropList& crops, const std::vector<WishedRegion>& regions);

// The largest crops, moved to the centre of the picture, one for each of their shapes. None of
// `crops`. Not scored yet.
CropList CentredLargest(const CropList& crops, PixelSize picture);

} // namespace vistaTrim::photo

#endif
