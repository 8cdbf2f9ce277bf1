// Candidates beside those of the engine's lattice: of the same sizes, at places that its steps
// miss.
#ifndef VISTATRIM_PHOTO_RANKING_MOVED_CROPS_H
#define VISTATRIM_PHOTO_RANKING_MOVED_CROPS_H

#include <vector>

#include "ranking/engine_lists.h"
#include "ranking/wished_regions.h"
#include "vistaTrimPhoto/geometry.h"

namespace vistaTrim::photo {

// Each crop that is large enough for all regions that move crops and does not hold them, moved as
// little as it takes; and the same for those of them that must not be cut, such as faces without
// their hair. None twice and none of `crops`. Not scored yet.
CropList MovedToHold(const CropList& crops, const std::vector<WishedRegion>& regions);

// The largest of the crops in the very middle of the picture, in each of the shapes that the
// largest have. None of `crops`. Not scored yet.
CropList CentredLargest(const CropList& crops, PixelSize picture);

} // namespace vistaTrim::photo

#endif
