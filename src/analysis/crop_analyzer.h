// The per-image analysis: built once, then read for every crop.
#ifndef VISTATRIM_ANALYSIS_CROP_ANALYZER_H
#define VISTATRIM_ANALYSIS_CROP_ANALYZER_H

#include <cstdint>
#include <memory>
#include <vector>

#include "analysis/working_rect.h"
#include "candidates/crop_grid.h"
#include "numeric/matrix.h"
#include "vistaTrim/image.h"
#include "vistaTrim/records.h"

namespace vistaTrim {

// Slots of the composition descriptor, which is formed in the analyzer's scratch.
constexpr int32_t kDescriptorSize = 304;

// What BuildMaps sees of an image.
struct CImageView {
    int32_t Cols;
    int32_t Rows;
    const uint8_t* Pixels; // three bytes each, packed
    int32_t Height;        // Rows once more, unread
};

// Holds every map, table, total and gain by which a crop is judged. After construction the
// maps never change. Scoring one record writes into DescriptorBuffer, a selection into
// SelectedCrops: one thread at a time. A picture so thin that one side rounds to nothing is
// refused: the maps stay empty.
class CCropAnalyzer {
public:
    // Runs the whole analysis. Keeps no reference to the image.
    explicit CCropAnalyzer(IImage* image);
    ~CCropAnalyzer();
    CCropAnalyzer(const CCropAnalyzer&) = delete;
    CCropAnalyzer& operator=(const CCropAnalyzer&) = delete;

    // Fills the measures of the records of a stretch of the grid; NoIndex means all.
    void EvaluateCropRects(CropGridRows& grid, uint32_t aspectIndex, uint32_t scaleIndex);
    // Fills the measures of one record inside the image, unless it is Scored.
    void EvaluateCropRect(CInt32CropRect& crop);
    // At most n crops: one of each cluster in turn, or all in key order when fewer are there. The
    // list is the analyzer's and is overwritten by the next call.
    const std::vector<CInt32CropRect>& SelectTopCrops(int32_t n, const CropGridRows& grid,
                                                      int32_t rankingMode, uint32_t aspectIndex,
                                                      uint32_t scaleIndex,
                                                      WeightDistribution weights);

    // The same from a list of cells, so that a request needs no grid of its own.
    const std::vector<CInt32CropRect>&
    SelectTopCropsOfCells(int32_t n, const std::vector<const CropCell*>& cells, int32_t rankingMode,
                          const WeightDistribution& weights);

    WorkingRect ToWorkingRect(const CInt32CropRect& crop) const;
    WorkingRect ShrinkAboutCentre(const WorkingRect& rect, float fraction) const;
    float BorderCost(const WorkingRect& rect) const;
    // 0..1; leaves the standardised descriptor in DescriptorBuffer.
    float ComputeCompositionScore(const WorkingRect& rect);

    bool Unused;
    int32_t WorkCols; // size of every working map
    int32_t WorkRows;
    int32_t SourceCols; // size of the image
    int32_t SourceRows;
    float* DescriptorBuffer; // kDescriptorSize floats, owned; see ComputeCompositionScore
    int32_t BorderBand;      // working pixels, width of the band along each side
    float ScaleFactor;       // source coordinates times this are working coordinates
    float ContrastMaskTotal; // sums of the maps, at least 1e-10; 0 for a refused picture
    float ColorContrastTotal;
    float EdgeTotal;
    float PeakTotal;
    float SideGain[4]; // top, bottom, left, right: 1 / (mean of that side's map in its band + 0.01)
    CFloatMatrix ContrastMap;
    CFloatMatrix SaliencyMap;
    CFloatMatrix ContrastMask;
    CFloatMatrix ColorContrastMap;
    CFloatMatrix PeakMap;
    CDoubleMatrix ContrastTable;
    CDoubleMatrix SaliencyTable;
    CDoubleMatrix ContrastMaskTable;
    CDoubleMatrix ColorContrastTable;
    CDoubleMatrix PeakTable;
    CFloatMatrix EdgeMap;
    CDoubleMatrix EdgeTable;
    CFloatMatrix SideMaps[4];
    CDoubleMatrix SideTables[4];
    std::vector<CRectOfInterest> RectsOfInterest;
    std::vector<CInt32CropRect> SelectedCrops;

private:
    void BuildMaps(const CImageView& view);
    void GiveMatricesTheirSize();

    // The matrices above borrow from these: ten maps and ten tables, one after the other.
    std::unique_ptr<float[]> MapStorage;
    std::unique_ptr<double[]> TableStorage;
};

} // namespace vistaTrim

#endif
