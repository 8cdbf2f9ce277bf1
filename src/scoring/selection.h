// Self-contained parts of top-N selection.
#ifndef VISTATRIM_SCORING_SELECTION_H
#define VISTATRIM_SCORING_SELECTION_H

#include <cstdint>
#include <vector>

#include "vistaTrim/records.h"

namespace vistaTrim {

struct RankEntry {
    float Value;
    int32_t Index; // of the survivor
};

// Rank of each survivor by its value: the k-th smallest of m gets (k + 1) / m, or 1 - k / m
// when lower is better. Equal values get adjacent ranks in index order.
std::vector<float> PercentileRanks(std::vector<RankEntry> entries, bool higherIsBetter);

// Intersection over union, inclusive source pixels. One pair of what clustering computes for its
// whole pool with the same arithmetic.
float CropOverlap(const CInt32CropRect& a, const CInt32CropRect& b);

} // namespace vistaTrim

#endif
