// Scoring and selection on the analysis of a picture.
#ifndef VISTATRIM_SCORING_CROP_ANALYZER_H
#define VISTATRIM_SCORING_CROP_ANALYZER_H

#include <cstdint>
#include <memory>
#include <vector>

#include "analysis/picture_analysis.h"
#include "analysis/working_rect.h"
#include "candidates/crop_grid.h"
#include "numeric/matrix.h"
#include "vistaTrim/records.h"

namespace vistaTrim {

// Slots of the composition descriptor, which is formed in the analyzer's scratch.
constexpr int32_t kDescriptorSize = 304;

// Scores and selects crops of one picture. Its maps, tables, totals and gains are read-only views
// of the analysis it holds; several analyzers may share one. Scoring one record writes into
// DescriptorBuffer, a selection into SelectedCrops: one thread at a time.
class CCropAnalyzer {
public:
    // Runs the whole analysis. Keeps no reference to the image.
    explicit CCropAnalyzer(IImage* image);
    // Uses an existing analysis.
    explicit CCropAnalyzer(std::shared_ptr<const CPictureAnalysis> analysis);
    CCropAnalyzer(const CCropAnalyzer&) = delete;
    CCropAnalyzer& operator=(const CCropAnalyzer&) = delete;

    // Fills the measures of the records in part of the grid; NoIndex means all.
    void EvaluateCropRects(CropGridRows& grid, uint32_t aspectIndex, uint32_t scaleIndex);
    // Fills the measures of one record inside the image, unless it is Scored.
    void EvaluateCropRect(CInt32CropRect& crop);
    // At most n of the candidates of the cells: one of each cluster in turn, or all that are kept
    // when those are fewer. The list belongs to the analyzer; the next call overwrites it.
    const std::vector<CInt32CropRect>& SelectTopCrops(int32_t n, const CropCells& cells,
                                                      int32_t rankingMode,
                                                      const WeightDistribution& weights);

    WorkingRect ToWorkingRect(const CInt32CropRect& crop) const;
    WorkingRect ShrinkAboutCentre(const WorkingRect& rect, float fraction) const;
    float BorderCost(const WorkingRect& rect) const;
    // The raw descriptor of a crop: kDescriptorSize cell means. Returns false and writes nothing
    // for a crop that contains no pixel.
    bool ReadDescriptor(const CInt32CropRect& crop, float* descriptor) const;
    // Returns 0..1 and leaves the standardised descriptor in DescriptorBuffer.
    float ComputeCompositionScore(const WorkingRect& rect);

private:
    const std::shared_ptr<const CPictureAnalysis> Analysis; // owns what the fields below refer to

public:
    const int32_t& WorkCols; // size of every working map
    const int32_t& WorkRows;
    const int32_t& SourceCols; // size of the image
    const int32_t& SourceRows;
    float DescriptorBuffer[kDescriptorSize] = {}; // scratch of ComputeCompositionScore
    const int32_t& BorderBand;      // working pixels, width of the band along each side
    const float& ScaleFactor;       // multiplies source coordinates to give working coordinates
    const float& ContrastMaskTotal; // sums of the maps, at least 1e-10; 0 for a rejected picture
    const float& ColorContrastTotal;
    const float& EdgeTotal;
    const float& PeakTotal;
    const float (&SideGain)[kPictureSides]; // of the sides in the order top, bottom, left, right
    const CFloatMatrix& ContrastMap;
    const CFloatMatrix& SaliencyMap;
    const CFloatMatrix& ContrastMask;
    const CFloatMatrix& ColorContrastMap;
    const CFloatMatrix& PeakMap;
    const CDoubleMatrix& ContrastTable;
    const CDoubleMatrix& SaliencyTable;
    const CDoubleMatrix& ContrastMaskTable;
    const CDoubleMatrix& ColorContrastTable;
    const CDoubleMatrix& PeakTable;
    const CFloatMatrix& EdgeMap;
    const CDoubleMatrix& EdgeTable;
    const CFloatMatrix* const SideMaps; // four
    const CDoubleMatrix* const SideTables;
    std::vector<CRectOfInterest> RectsOfInterest;
    std::vector<CInt32CropRect> SelectedCrops;
};

} // namespace vistaTrim

#endif
