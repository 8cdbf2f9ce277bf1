// Turns grids into the lists of cells that requests work on.
#ifndef VISTATRIM_TESTS_CANDIDATES_CELLS_OF_GRID_H
#define VISTATRIM_TESTS_CANDIDATES_CELLS_OF_GRID_H

#include "candidates/crop_grid.h"

namespace vistaTrim {

// The chosen cells of a grid, all by default.
inline CropCells CellsOf(const CropGridRows& grid, uint32_t aspectIndex = NoIndex,
                         uint32_t scaleIndex = NoIndex)
{
    CropCells cells;
    for (size_t a = 0; a < grid.size(); ++a)
        for (size_t s = 0; s < grid[a].size(); ++s)
            if ((aspectIndex == NoIndex || aspectIndex == a) &&
                (scaleIndex == NoIndex || scaleIndex == s))
                cells.push_back(&grid[a][s]);
    return cells;
}

// The candidates of all cells in one list.
inline CropCell CandidatesOf(const CropCells& cells)
{
    CropCell all;
    for (const CropCell* cell : cells)
        all.insert(all.end(), cell->begin(), cell->end());
    return all;
}

} // namespace vistaTrim

#endif
