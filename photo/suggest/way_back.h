// The way back: from a crop of the working picture to whole pixels of the photograph.
#ifndef VISTATRIM_PHOTO_SUGGEST_WAY_BACK_H
#define VISTATRIM_PHOTO_SUGGEST_WAY_BACK_H

#include <optional>
#include <vector>

#include "vistaTrim/records.h"
#include "vistaTrimPhoto/geometry.h"
#include "vistaTrimPhoto/ratio.h"
#include "vistaTrimPhoto/region.h"

namespace vistaTrim::photo {

// The requested shape: a ratio, or a size in pixels of the photograph.
struct CropShape {
    Ratio Aspect;
    std::optional<PixelSize> Size; // takes precedence over the ratio
};

// The crop as pixels of the photograph, never outside it.
//
// Its shape is the requested size; or exactly the requested ratio, if that costs at most one
// working pixel or 2 % of a side; otherwise the nearest ratio in whole pixels. A crop that touches
// a border of the working picture touches that border of the photograph; one that touches two
// opposite borders and must give up pixels for its ratio is centred.
//
// The result meets every wish that the working crop meets. If shape and wishes conflict, the wishes
// win and the shape changes by a few pixels; a requested size never changes, so then there is no
// crop.
std::optional<PixelRect> ToPhotograph(const CInt32Rect& crop, PixelSize working, PixelSize photo,
                                      const CropShape& shape, const std::vector<Wish>& wishes);

} // namespace vistaTrim::photo

#endif
