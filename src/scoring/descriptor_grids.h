// Where the cells of the descriptor's grids lie along one axis of a crop.
//
// The limits depend only on the crop's first pixel and extent along that axis, so crops of one
// lattice share them: a column of crops shares column limits, a row of crops shares row limits.
#ifndef VISTATRIM_SCORING_DESCRIPTOR_GRIDS_H
#define VISTATRIM_SCORING_DESCRIPTOR_GRIDS_H

#include <cstdint>

namespace vistaTrim {

// The cells of the 4-, 8- and 12-fold divisions follow one another.
constexpr int32_t kGridFirstCell[] = {0, 4, 12};
constexpr int32_t kGridCells = 24;

// First slot of each grid in the descriptor.
constexpr int32_t kContrast4Slot = 0;
constexpr int32_t kContrast8Slot = 16;
constexpr int32_t kSaliency4Slot = 80;
constexpr int32_t kSaliency8Slot = 96;
constexpr int32_t kSaliency12Slot = 160;

struct GridLimits {
    int32_t First = -1; // the inclusive pixel range the limits were computed for; none yet
    int32_t Last = -2;
    // Every cell starts where the one before it ends, and every second edge of the 8-fold division
    // is one of the 4-fold. This holds from 12 pixels on; below that, cells share pixels. Checked,
    // not assumed, because the limits come from rounded numbers.
    bool Tiles = false;
    int32_t Start[kGridCells]; // inclusive pixels of each cell
    int32_t End[kGridCells];
    float Length[kGridCells]; // End - Start + 1
    // When Tiles: the last pixel before each cell, then the last pixel of the last cell. The
    // first edge is -1 at the border of the map.
    int32_t Edges8[9];
    int32_t Edges12[13];
};

// first >= 0, last >= first.
void FillGridLimits(int32_t first, int32_t last, GridLimits& limits);

} // namespace vistaTrim

#endif
