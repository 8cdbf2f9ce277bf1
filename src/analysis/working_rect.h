// A rectangle in the coordinates of the working maps.
#ifndef VISTATRIM_ANALYSIS_WORKING_RECT_H
#define VISTATRIM_ANALYSIS_WORKING_RECT_H

#include <cstdint>

namespace vistaTrim {

// Rows before columns; all four are inside.
struct WorkingRect {
    int32_t FirstRow, FirstCol, LastRow, LastCol;
};

// True for a rectangle without rows or columns, or one that starts beyond the map. A crop's
// rectangle never starts below 0 and never ends beyond the map, so where this is false the whole
// rectangle lies on the map.
//
// It is true in very thin pictures, where a crop side can round to 0, for records that a host
// places outside the picture, and for every record of a picture that the analysis rejected: its
// maps are empty.
inline bool HoldsNoPixel(const WorkingRect& rect)
{
    return rect.FirstRow > rect.LastRow || rect.FirstCol > rect.LastCol;
}

} // namespace vistaTrim

#endif
