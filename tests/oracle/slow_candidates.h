// The candidates of one picture size, computed the slow way, and a model of the generator's
// tables and grid that a test can drive alongside the real one through any sequence of calls.
#ifndef VISTATRIM_TESTS_ORACLE_SLOW_CANDIDATES_H
#define VISTATRIM_TESTS_ORACLE_SLOW_CANDIDATES_H

#include <cstdint>
#include <vector>

#include "oracle/slow_records.h"

namespace slowOracle {

struct CellResult {
    bool Error = false; // the crop does not fit the picture; no rectangles then
    CropCell Crops;     // unscored, in the order of enumeration
};

// All crops of one aspect ratio (width over height) and one scale. `maxPerSide` limits the axis
// with more free room. Every ratio, even NaN, gives a defined result.
CellResult EnumerateCell(uint32_t width, uint32_t height, double aspect, double scale,
                         uint32_t maxPerSide);

// The state the generator must have after any sequence of its operations. An operation that
// reaches a cell whose crop does not fit throws the generator's own message as a const char* and
// leaves the tables and the grid as the generator must leave them.
class GeneratorModel {
public:
    GeneratorModel(uint32_t width, uint32_t height, const std::vector<Ratio>& aspectRows,
                   const std::vector<Ratio>& scaleRows, uint32_t maxPerSide);

    void SetAspectRatioEnabled(double value, bool enabled);
    void SetCropRectScaleRatioEnabled(double value, bool enabled);

    CropCell GenerateCell(uint32_t aspectIndex, uint32_t scaleIndex);
    CropRow GenerateAspectRow(uint32_t aspectIndex);
    CropGrid GenerateAll();
    CropRow GenerateForAspectRatio(double ratio, uint32_t& aspectIndex);
    CropCell GenerateForCropSize(double width, double height, uint32_t& aspectIndex,
                                 uint32_t& scaleIndex);

    // kNoIndex: all rows. A row that does not exist yet throws std::out_of_range.
    CropCell GetEnabledCropRects(uint32_t aspectIndex) const;
    CropGrid GetEnabledGrid(uint32_t aspectIndex) const;

    // Public, so that a test can compare them and a scorer can write into the grid.
    std::vector<Ratio> Aspects;
    std::vector<Ratio> Scales;
    CropGrid Grid;

private:
    bool SameRatio(double a, double b) const;
    uint32_t FindAspect(double ratio);

    uint32_t imageWidth;
    uint32_t imageHeight;
    uint32_t maxCropRectsPerSide;
    double tolerance;
};

} // namespace slowOracle

#endif
