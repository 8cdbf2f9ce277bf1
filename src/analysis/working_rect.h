// A rectangle in the coordinates of the working maps.
#ifndef VISTATRIM_ANALYSIS_WORKING_RECT_H
#define VISTATRIM_ANALYSIS_WORKING_RECT_H

#include <cstdint>

namespace vistaTrim {

// Rows before columns, both ends inclusive.
struct WorkingRect {
    int32_t FirstRow, FirstCol, LastRow, LastCol;
};

} // namespace vistaTrim

#endif
