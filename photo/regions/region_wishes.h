// What found regions ask of the crops.
#ifndef VISTATRIM_PHOTO_REGIONS_REGION_WISHES_H
#define VISTATRIM_PHOTO_REGIONS_REGION_WISHES_H

#include <cstddef>
#include <optional>
#include <vector>

#include "vistaTrimPhoto/found_region.h"

namespace vistaTrim::photo {

// The head that belongs to a face from brows to chin: with hair, chin and ears. Clipped to the
// photograph.
PixelRect HeadOf(const PixelRect& face, PixelSize photo);

// The face with a margin of a tenth of its width and height, since finders are often off by that
// much. Clipped to the photograph.
PixelRect CoreOf(const PixelRect& face, PixelSize photo);

struct RegionWish {
    photo::Wish Wish;
    size_t Region = 0; // index of the region that it comes from
    // For a face to keep: what must not be cut even where the whole head does not fit.
    std::optional<PixelRect> Core;
};

// One wish for each region that has one, clipped to the photograph. A face asks for room for its
// head. A region to keep that fills the photograph asks for nothing: it would only forbid cropping.
std::vector<RegionWish> WishesOf(const std::vector<FoundRegion>& regions, PixelSize photo);

} // namespace vistaTrim::photo

#endif
