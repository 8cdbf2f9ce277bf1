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

// What the crop was asked to be: a ratio, or a size in pixels of the photograph.
struct CropShape {
    Ratio Aspect;
    std::optional<PixelSize> Size; // goes before the ratio
};

// The crop as pixels of the photograph, never outside it.
//
// Its shape is the asked size; or the asked ratio exactly, if that takes no more than a
// working pixel or 2 % of a side; else the ratio as near as whole pixels allow. A crop that
// touches a border of the working picture touches that border of the photograph; one that touches
// two opposite borders and has to give up pixels for its ratio lies in the middle.
//
// Every wish that the working crop meets is met by the result. If the shape and the wishes
// cannot both be had, the wishes stand and the shape gives way by a few pixels; an asked size
// never gives way, so then there is no crop.
std::optional<PixelRect> ToPhotograph(const CInt32Rect& crop, PixelSize working, PixelSize photo,
                                      const CropShape& shape, const std::vector<Wish>& wishes);

} // namespace vistaTrim::photo

#endif
