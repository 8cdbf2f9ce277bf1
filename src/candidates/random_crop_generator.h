// The lazy enumeration of candidates on a lattice for each pair of aspect and scale ratio.
#ifndef VISTATRIM_CANDIDATES_RANDOM_CROP_GENERATOR_H
#define VISTATRIM_CANDIDATES_RANDOM_CROP_GENERATOR_H

#include <cstdint>
#include <vector>

#include "candidates/crop_grid.h"
#include "vistaTrim/records.h"

namespace vistaTrim {

// Nothing in it is random, whatever the name says: the same tables and size always give the
// same candidates in the same order. Rows and cells come into being on demand, in index
// order, and a cell that holds candidates is never enumerated again, so that scores written
// into them stay. Table rows are never removed: an index stays valid.
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

    // Each fills what it names and returns a copy of it. The Fill forms below do the same
    // without the copy, for the driver, which reads the grid instead.
    CropCell GenerateCell(uint32_t aspectIndex, uint32_t scaleIndex);
    CropRow GenerateAspectRow(uint32_t aspectIndex);
    CropGridRows GenerateAll();
    CropRow GenerateForAspectRatio(double ratio, uint32_t& aspectIndex);
    CropCell GenerateForCropSize(double width, double height, uint32_t& aspectIndex,
                                 uint32_t& scaleIndex);

    void FillAll();
    void FillForAspectRatio(double ratio, uint32_t& aspectIndex);
    void FillForCropSize(double width, double height, uint32_t& aspectIndex, uint32_t& scaleIndex);

    // Enabled candidates in grid order, of one aspect row or of all (NoIndex). The list is the
    // generator's and is overwritten by the next call.
    const std::vector<CInt32CropRect>& GetEnabledCropRects(uint32_t aspectIndex);
    // The same as a grid of its own; its indices do not correspond to the tables'.
    CropGridRows GetEnabledGrid(uint32_t aspectIndex) const;

    bool AspectRatioEnabled(uint32_t aspectIndex) const;
    bool CropRectScaleRatioEnabled(uint32_t scaleIndex) const;

    CropGridRows CropGrid; // scored in place by the analyzer

private:
    void FillCell(uint32_t aspectIndex, uint32_t scaleIndex);
    void FillAspectRow(uint32_t aspectIndex);
    void FindAspectRow(double ratio, uint32_t& aspectIndex);
    uint64_t FlatCapacity() const;

    uint32_t ImageWidth = 0;
    uint32_t ImageHeight = 0;
    std::vector<DoubleInfo> AspectTable;
    std::vector<DoubleInfo> ScaleTable;
    std::vector<CInt32CropRect> FlatCropRects;
    double RatioTolerance = 0.0; // ratios closer than this are the same row
    uint32_t NumMaxCropRectsPerSide = 0;
};

} // namespace vistaTrim

#endif
