// The lazy enumeration of candidates on a lattice for each pair of aspect and scale ratio.
#ifndef VISTATRIM_CANDIDATES_RANDOM_CROP_GENERATOR_H
#define VISTATRIM_CANDIDATES_RANDOM_CROP_GENERATOR_H

#include <cstdint>
#include <vector>

#include "candidates/crop_grid.h"
#include "vistaTrim/records.h"

namespace vistaTrim {

// Despite the name nothing is random: the same tables and size always give the same candidates in
// the same order. Rows and cells are created on demand, in index order, and a cell with candidates
// is never enumerated again, so scores written into them persist. Table rows are never removed: an
// index stays valid.
//
// Throws the char pointer "RandomCropGenerator: error\n" when a crop does not fit the image,
// std::length_error "vector<T> too long", std::bad_alloc.
class RandomCropGenerator {
public:
    void Initialize(uint32_t width, uint32_t height, const std::vector<DoubleInfo>& aspectRows,
                    const std::vector<DoubleInfo>& scaleRows, uint32_t numMaxCropRectsPerSide);

    std::vector<DoubleInfo> GetAspectRatios() const;
    std::vector<DoubleInfo> GetCropRectScaleRatios() const;
    // Sets the flag of the first row within the tolerance, or appends a row.
    void SetAspectRatioEnabled(double value, bool enabled);
    void SetCropRectScaleRatioEnabled(double value, bool enabled);

    // Each fills what it names and returns a reference into CropGrid, valid until the next such
    // call. The last two find the row of a ratio, or append one, and write its index.
    const CropCell& GenerateCell(uint32_t aspectIndex, uint32_t scaleIndex);
    const CropRow& GenerateAspectRow(uint32_t aspectIndex);
    const CropGridRows& GenerateAll();
    const CropRow& GenerateForAspectRatio(double ratio, uint32_t& aspectIndex);
    const CropCell& GenerateForCropSize(double width, double height, uint32_t& aspectIndex,
                                        uint32_t& scaleIndex);

    // The cells whose aspect row and scale row are both enabled, in grid order, of one aspect row
    // or of all (NoIndex).
    CropCells GetEnabledCropRects(uint32_t aspectIndex) const;

    bool AspectRatioEnabled(uint32_t aspectIndex) const;
    bool CropRectScaleRatioEnabled(uint32_t scaleIndex) const;

    CropGridRows CropGrid; // scored in place by the analyzer

private:
    void FindAspectRow(double ratio, uint32_t& aspectIndex);

    uint32_t ImageWidth = 0;
    uint32_t ImageHeight = 0;
    std::vector<DoubleInfo> AspectTable;
    std::vector<DoubleInfo> ScaleTable;
    double RatioTolerance = 0.0; // closer ratios count as the same row
    uint32_t NumMaxCropRectsPerSide = 0;
};

} // namespace vistaTrim

#endif
