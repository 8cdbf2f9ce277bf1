// The measures of one crop, computed the slow way: plain loops over plain vectors, one cast
// wherever a value becomes a float, nothing shared with the library's own code.
//
// A read outside a table throws std::out_of_range, and a coordinate beyond int32 throws
// std::domain_error: such a crop has no defined measures.
#ifndef VISTATRIM_TESTS_ORACLE_SLOW_SCORING_H
#define VISTATRIM_TESTS_ORACLE_SLOW_SCORING_H

#include <cstdint>
#include <vector>

#include "oracle/slow_records.h"

namespace slowOracle {

// Inclusive at both ends, in pixels of the working maps.
struct WorkRect {
    int32_t FirstRow, FirstCol, LastRow, LastCol;
};
bool operator==(const WorkRect& a, const WorkRect& b);

// Everything scoring reads from an analysed picture. Tables are row-major, WorkRows x WorkCols,
// inclusive running sums with no zero row. Sides: top, bottom, left, right.
struct ScoringInput {
    int32_t WorkCols = 0;
    int32_t WorkRows = 0;
    int32_t BorderBand = 0;
    float ScaleFactor = 1.0F;
    float ContrastMaskTotal = 1e-10F;
    float ColorContrastTotal = 1e-10F;
    float EdgeTotal = 1e-10F;
    float PeakTotal = 1e-10F;
    float SideGain[4] = {1.0F, 1.0F, 1.0F, 1.0F};
    std::vector<double> ContrastTable;
    std::vector<double> SaliencyTable;
    std::vector<double> ContrastMaskTable;
    std::vector<double> ColorContrastTable;
    std::vector<double> EdgeTable;
    std::vector<double> PeakTable;
    std::vector<double> SideTables[4];
    std::vector<float> DescriptorMean;    // 304
    std::vector<float> DescriptorScale;   // 304
    std::vector<float> DescriptorWeights; // 304
    double DescriptorBias = 0.0;          // added to the dot product
};

// Shares of the four totals inside a rectangle. The first three keep their double precision.
struct Shares {
    double ContrastMask;
    double ColorContrast;
    double Edge;
    float Peak;
    float Coverage; // 0.3, 0.3 and 0.4 of the first three
};

// First and last index of one grid cell along one axis.
struct CellLimits {
    int32_t First, Last;
};

// The composition model on one rectangle. BLAS may sum a dot product in any order. This holds a
// double sum, a float sum from left to right, and the sum of the products' magnitudes, from
// which a test can bound the error of any order.
struct Composition {
    std::vector<float> Descriptor;   // 304 cell means
    std::vector<float> Standardised; // minus mean, times scale
    double Dot;                      // in double
    float DotLeftToRight;            // each product and each sum rounded to float
    double DotMagnitude;             // sum of |product|, in double
    float Score;                     // from Dot rounded to float
    float ScoreLeftToRight;          // from DotLeftToRight
};

WorkRect ToWorkingRect(const ScoringInput& in, const Crop& crop);
WorkRect ShrinkAboutCentre(const WorkRect& rect, float fraction);

double RegionSum(const ScoringInput& in, const std::vector<double>& table, const WorkRect& rect);
double RegionMean(const ScoringInput& in, const std::vector<double>& table, const WorkRect& rect,
                  double denominator);

Shares MeasureShares(const ScoringInput& in, const WorkRect& rect);
float CentrePeakShare(const ScoringInput& in, const WorkRect& rect);
bool ReachesContent(double contrastMaskShare, double colorContrastShare);

int32_t BandWidth(const ScoringInput& in);
// Mean depth of the band along one side (0 top .. 3 right), before its gain; 1e10 where the
// band leaves the picture.
float SideValue(const ScoringInput& in, const WorkRect& rect, int side);
float BorderCost(const ScoringInput& in, const WorkRect& rect);
float BorderScoreOfCost(float cost);

// Cell `index` of `cells` along an axis on which the crop covers first..last.
CellLimits FindCellLimits(int32_t first, int32_t last, int cells, int index);
std::vector<float> CompositionDescriptor(const ScoringInput& in, const WorkRect& rect);
float CompositionScoreOfDot(float dot, double bias);
Composition EvaluateComposition(const ScoringInput& in, const WorkRect& rect);

float RectCoverage(const Rect& crop, const Rect& rect);
std::vector<Roi> SoftRects(const std::vector<Roi>& rects);
std::vector<Roi> HardRects(const std::vector<Roi>& rects);
float RoiScore(const std::vector<Roi>& softRects, const Rect& crop);
bool PassesHardRects(const std::vector<Roi>& hardRects, const Rect& crop);

// Fills the five measures and CoversContent, unless the record is already Scored.
// CompositionScore comes from the double dot product.
void EvaluateCropRect(const ScoringInput& in, Crop& crop);
// The same for the chosen cells (kNoIndex: all), and RoiScore for every record in them. A row
// without cells holds no candidates.
void EvaluateCropRects(const ScoringInput& in, const std::vector<Roi>& rects, CropGrid& grid,
                       uint32_t aspectIndex, uint32_t scaleIndex);

} // namespace slowOracle

#endif
