// The candidates of every pair of ratios: grid[aspect row][scale row] is a list of crops.
#ifndef VISTATRIM_CANDIDATES_CROP_GRID_H
#define VISTATRIM_CANDIDATES_CROP_GRID_H

#include <vector>

#include "vistaTrim/records.h"

namespace vistaTrim {

using CropCell = std::vector<CInt32CropRect>;
using CropRow = std::vector<CropCell>;
using CropGridRows = std::vector<CropRow>;
// Pointers to cells of a grid.
using CropCells = std::vector<const CropCell*>;

} // namespace vistaTrim

#endif
