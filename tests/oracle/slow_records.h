// The oracles' own records, so that they need nothing from the library, not even its
// constructors. Names and defaults match the public records; record_bridge.h converts.
#ifndef VISTATRIM_TESTS_ORACLE_SLOW_RECORDS_H
#define VISTATRIM_TESTS_ORACLE_SLOW_RECORDS_H

#include <cstdint>
#include <vector>

namespace slowOracle {

// As an aspect or scale index: the whole range.
constexpr uint32_t kNoIndex = 0xEFFFFFFFU;

// Kinds of a rectangle of interest. Other values have no effect.
constexpr int32_t kSoftInclude = 0;
constexpr int32_t kHardInclude = 1;
constexpr int32_t kSoftExclude = 2;
constexpr int32_t kHardExclude = 3;

// All four sides are inclusive.
struct Rect {
    int32_t Left = 0, Right = 0, Top = 0, Bottom = 0;
};

struct Crop {
    int32_t Left = 0, Right = 0, Top = 0, Bottom = 0;
    bool CoversContent = false;
    bool Scored = false;
    double CompositionScore = 0.0;
    double CoverageScore = 0.0;
    double BorderScore = 0.0;
    double PeakScore = 0.0;
    double CentrePeakScore = 0.0;
    double RoiScore = 1.0;
    double MergedScore = 0.0;
};

struct Roi {
    int32_t Left = 0, Right = 0, Top = 0, Bottom = 0;
    int32_t Kind = kSoftInclude;
    bool Enabled = true;
};

struct Ratio {
    double Value = 0.0;
    bool Enabled = true;
};

struct Weights {
    double Weight1 = 0.0, Weight2 = 0.0, Weight3 = 0.0, Weight4 = 0.0, Weight5 = 0.0;
};

using CropCell = std::vector<Crop>;
using CropRow = std::vector<CropCell>;
using CropGrid = std::vector<CropRow>;

} // namespace slowOracle

#endif
