// What the choice network sees of a picture: its maps, colours and gradient, each averaged to a
// small square.
#ifndef VISTATRIM_PHOTO_RANKING_INPUT_GRID_H
#define VISTATRIM_PHOTO_RANKING_INPUT_GRID_H

#include <cstdint>
#include <vector>

#include "vistaTrimPhoto/pixels.h"

namespace vistaTrim::photo {

// Cells along each side of every plane.
constexpr int32_t kGridSide = 16;
constexpr int32_t kGridCells = kGridSide * kGridSide;

// The ten maps of the engine in its order, then red, green, blue and the gradient.
constexpr int32_t kNumMapInputs = 10;
constexpr int32_t kNumInputs = kNumMapInputs + 4;

// A borrowed map, row by row without padding.
struct InputMap {
    const float* Data = nullptr;
    int32_t Rows = 0;
    int32_t Cols = 0;
};

struct InputGrid {
    std::vector<float> Planes; // kNumInputs planes of kGridCells means
    bool Flat = false;         // no pixel differs from its neighbours
};

// maps     kNumMapInputs of them; a map without data counts as zeros
// picture  three channels, packed rows, at least one pixel
//
// Cell i of n along a side of s pixels covers the pixels from i s / n up to (i + 1) s / n, rounded
// down, and at least one. Maps are about 0 to 1; bytes are divided by 255. The gradient of a pixel
// is how far the sum of its channels lies from that of its right and its lower neighbour.
InputGrid AverageInputs(const std::vector<InputMap>& maps, const PixelImage& picture);

} // namespace vistaTrim::photo

#endif
