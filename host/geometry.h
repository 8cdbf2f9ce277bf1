// Rectangles of a photograph, and where they lie in the working picture that the library sees.
#ifndef VISTATRIM_HOST_GEOMETRY_H
#define VISTATRIM_HOST_GEOMETRY_H

#include <cstdint>

#include "vistaTrim/vistaTrim.h"

namespace vistaTrim::host {

struct PixelSize {
    int32_t Width = 0;
    int32_t Height = 0;
};

// Whole pixels of the photograph as displayed; X, Y is the top left one. Width and Height
// count pixels, so the last column is X + Width - 1.
struct PixelRect {
    int32_t X = 0;
    int32_t Y = 0;
    int32_t Width = 0;
    int32_t Height = 0;
};

bool operator==(const PixelSize& a, const PixelSize& b);
bool operator==(const PixelRect& a, const PixelRect& b);

bool Contains(const PixelRect& outer, const PixelRect& inner);
bool Overlaps(const PixelRect& a, const PixelRect& b);
// What of the rectangle lies inside the photograph; width or height 0 if nothing does.
PixelRect ClippedTo(const PixelRect& rect, PixelSize photo);

// The working picture has its longer side at exactly this, whatever the photograph's size.
constexpr int32_t kWorkingLongSide = 640;

// The other side is rounded to the nearest pixel and is never less than one.
PixelSize WorkingSize(PixelSize photo);

// Every working pixel that the rectangle touches. Outward is the right way for all wishes: a
// crop that holds all of these pixels holds the rectangle itself, and a crop that keeps clear
// of them keeps clear of the rectangle.
CInt32Rect ToWorkingOutward(const PixelRect& rect, PixelSize photo, PixelSize working);

} // namespace vistaTrim::host

#endif
