// Selects the best crops the slow way: positions come from counting, not sorting, and every step
// keeps its result so that a failing test can show where two selections diverge.
#ifndef VISTATRIM_TESTS_ORACLE_SLOW_SELECTION_H
#define VISTATRIM_TESTS_ORACLE_SLOW_SELECTION_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "oracle/slow_scoring.h"

namespace slowOracle {

struct Selection {
    CropCell Survivors;                        // passed the hard filter, MergedScore written
    std::vector<float> Ranks[5];               // in the order of Score; empty if not needed
    std::vector<double> Keys;                  // by survivor
    std::vector<size_t> Order;                 // survivors by key, best first, before the cut
    size_t PoolSize = 0;                       // survivors that go on to clustering
    bool Clustered = false;                    // false: the pool was too small for n
    std::vector<std::vector<size_t>> Clusters; // survivor indices as formed, leader first
    std::vector<size_t> Served;                // survivor indices of Result
    CropCell Result;

    // A measure with weight has equal values or NaNs, or keys are equal: then the order depends on
    // the sort, and another order may be equally valid.
    bool DependsOnTies = false;
};

// Ascending positions as ranks (k + 1) / m, or 1 - k / m if higherIsBetter is false. Of equal
// values the one with the lower index gets the lower position. NaN sorts below everything.
std::vector<float> PercentileRanks(const std::vector<float>& values, bool higherIsBetter);

// Intersection over union.
float CropOverlap(const Crop& a, const Crop& b);

// The pool's size for m ranked candidates.
size_t PoolSizeOf(size_t m);

// Of equal keys the lower survivor index comes first; a NaN key comes after all others. Rows
// without cells hold no candidates.
Selection SelectTopCrops(int32_t n, const CropGrid& grid, int32_t rankingMode, uint32_t aspectIndex,
                         uint32_t scaleIndex, Weights weights,
                         const std::vector<Roi>& rectsOfInterest);

} // namespace slowOracle

#endif
