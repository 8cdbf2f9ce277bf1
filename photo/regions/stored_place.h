// Places in a photograph as it is stored, and as it is displayed.
#ifndef VISTATRIM_PHOTO_REGIONS_STORED_PLACE_H
#define VISTATRIM_PHOTO_REGIONS_STORED_PLACE_H

#include "vistaTrimPhoto/geometry.h"

namespace vistaTrim::photo {

// In shares of the picture's width and height; X, Y is the top left corner.
struct RelativeRect {
    double X = 0;
    double Y = 0;
    double Width = 0;
    double Height = 0;
};

// orientation  1 to 8 as in EXIF; any other value counts as 1
PixelSize StoredSize(PixelSize displayed, int orientation);
RelativeRect ToDisplayed(const RelativeRect& stored, int orientation);

// The smallest rectangle of whole pixels that holds it, clipped to the picture; width or height
// 0 if it lies outside or its numbers are not finite.
PixelRect ToPixelsOutward(const RelativeRect& rect, PixelSize picture);

} // namespace vistaTrim::photo

#endif
