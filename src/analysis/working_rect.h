// A rectangle in the coordinates of the working maps.
#ifndef VISTATRIM_ANALYSIS_WORKING_RECT_H
#define VISTATRIM_ANALYSIS_WORKING_RECT_H

#include <cstdint>

namespace vistaTrim {

// Rows before columns, both ends inclusive.
struct WorkingRect {
    int32_t FirstRow, FirstCol, LastRow, LastCol;
};

// A stretch of nothing, or one that starts beyond the map. Of a crop's rectangle the first
// coordinates are never below 0 and the last ones never beyond the map, so one that passes this
// test lies wholly on the map.
//
// Such rectangles come from very thin pictures, where a crop side can round to nothing, from
// records that a host places beside the picture, and from pictures whose analysis was refused and
// whose maps are empty.
inline bool HoldsNoPixel(const WorkingRect& rect)
{
    return rect.FirstRow > rect.LastRow || rect.FirstCol > rect.LastCol;
}

} // namespace vistaTrim

#endif
