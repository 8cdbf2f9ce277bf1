// The whole analysis of a picture, computed the slow way: plain loops over plain vectors,
// every index clamped where it is used, nothing shared with the library's own code.
//
// Arithmetic is in double, with one cast wherever a value becomes a float: where the order of
// additions is free, the double sum lies in the middle of all allowed results. Where order and
// rounding are fixed (float tables, thresholds, normalisation, row sums), the code follows them
// exactly.
//
// Planes are row-major without padding; element (x, y) is at y * cols + x.
#ifndef VISTATRIM_TESTS_ORACLE_SLOW_ANALYSIS_H
#define VISTATRIM_TESTS_ORACLE_SLOW_ANALYSIS_H

#include <cstdint>
#include <string>
#include <vector>

#include "oracle/picture.h"

namespace slowOracle {

using FloatPlane = std::vector<float>;
using DoublePlane = std::vector<double>;

// Lines written to the error stream, in order, without line ends.
using Messages = std::vector<std::string>;

struct PlaneStack {
    int Cols = 0;
    int Rows = 0;
    std::vector<FloatPlane> Planes;
    std::vector<FloatPlane> PlaneTables; // (Rows + 1) x (Cols + 1), or none
    std::vector<FloatPlane> PairTables;  // in the order (0,0), (0,1) .. (1,1) .. , or none
};
PlaneStack MakeStack(int planeCount, int cols, int rows); // planes of zeros
PlaneStack WrapPlane(int cols, int rows, const FloatPlane& plane);
PlaneStack StackFromBytes(const uint8_t* bytes, int planeCount, int cols, int rows);
PlaneStack PlaneView(const PlaneStack& stack, int plane); // a copy, with the plane's own tables

// ---- Vector primitives ---------------------------------------------------------------------

int IndexOfLargestMagnitude(const float* x, int count);  // the first if several are equal
int IndexOfSmallestMagnitude(const float* x, int count); // the first if several are equal
float LargestByMagnitude(const FloatPlane& x);           // the element itself, with its sign
void NormalisePlane(float* x, int count);
void NormalisePlane(FloatPlane& x);
void AddPlanes(FloatPlane& target, const FloatPlane& source, float alpha); // one rounding
void AddElements(FloatPlane& target, const FloatPlane& source);
void MultiplyElements(FloatPlane& target, const FloatPlane& source);
void CubeElements(FloatPlane& x);

// ---- Image kernels -------------------------------------------------------------------------

const char* StatusText(int status);
FloatPlane SobelRowDifference(const FloatPlane& src, int cols, int rows);
FloatPlane SobelColumnDifference(const FloatPlane& src, int cols, int rows);
FloatPlane GradientStrength(const FloatPlane& src, int cols, int rows);
FloatPlane GaussianTaps(int maskSize, float sigma);
FloatPlane GaussianSmooth(const FloatPlane& src, int cols, int rows, int maskSize, float sigma);
void SmoothStack(const PlaneStack& source, PlaneStack& target, double sigma);
std::vector<FloatPlane> BlurInterleavedPixels(const uint8_t* pixels, int cols, int rows,
                                              float sigma);
// A rejected source leaves `target` unchanged and adds one message per plane.
void ResizeStackLinear(const PlaneStack& source, PlaneStack& target, Messages& messages);
void ThresholdBelow(FloatPlane& map, float level, float value);
void ScaleColumns(FloatPlane& map, int cols, int rows, int firstCol, int width, float factor);
void ErodeBox(FloatPlane& map, int cols, int rows, int size);
void DilateBox(FloatPlane& map, int cols, int rows, int size);

// ---- Summed-area tables --------------------------------------------------------------------

DoublePlane BuildSummedAreaTable(const FloatPlane& map, int cols, int rows);
double RegionSum(const DoublePlane& table, int cols, int firstRow, int firstCol, int lastRow,
                 int lastCol);
double RegionMean(const DoublePlane& table, int cols, int firstRow, int firstCol, int lastRow,
                  int lastCol, double denominator);
FloatPlane BuildPlaneTable(const FloatPlane& plane, int cols, int rows);
FloatPlane BuildPairTable(const FloatPlane& a, const FloatPlane& b, int cols, int rows);
void BuildTables(PlaneStack& stack);

// ---- Multi-scale edges ---------------------------------------------------------------------

void NormaliseRowBySum(float* row, int length, float offset, float threshold);
void NormaliseRowsBySum(FloatPlane& plane, int cols, int rows);
// A picture's side at one scale. The product is truncated without rounding it to float first.
int ScaledSide(int side, float scale);
// Both scratch buffers start as zeros, so a scaled side of 1 is defined even at the first scale.
FloatPlane ComputeMultiScaleEdges(const PlaneStack& source, bool normaliseOutput,
                                  bool normaliseRows, const std::vector<float>& scales,
                                  Messages& messages);

// ---- Border strips -------------------------------------------------------------------------

enum Side { SideTop = 0, SideBottom = 1, SideLeft = 2, SideRight = 3 }; // every array of 4 sides

struct StripRect {
    int Left, Top, Right, Bottom; // inclusive
    int Area;
};
struct StripStatistics {
    FloatPlane Mean;       // n
    FloatPlane Covariance; // n x n, row-major
};
int StripBand(int cols, int rows, float fraction);
StripRect MakeStrip(Side side, int cols, int rows, int band);
StripStatistics ComputeStripStatistics(const PlaneStack& stack,
                                       const std::vector<StripRect>& group);

// ---- Distance maps -------------------------------------------------------------------------

// How to invert the covariance. The library uses a single-precision routine whose order of
// operations is unspecified: kSingle rounds each step of the textbook order to float, kDouble
// rounds only the results. Comparing a map under both shows how much of a difference from the
// library comes from this step.
enum class InversePrecision { kSingle, kDouble };

FloatPlane InvertRegularised(const FloatPlane& a, int n, float eps, InversePrecision precision);
FloatPlane ComputeMahalanobisMap(const PlaneStack& stack, const StripStatistics& model,
                                 bool normalise, InversePrecision precision);
FloatPlane ComputeScalarDistanceMap(const PlaneStack& stack, const StripStatistics& model,
                                    bool normalise);
FloatPlane ComputeTopContrast(const PlaneStack& stack, float fraction, InversePrecision precision);
FloatPlane ComputeBottomContrast(const PlaneStack& stack, float fraction,
                                 InversePrecision precision);
std::vector<FloatPlane> ComputeSideContrasts(const PlaneStack& stack, float fraction,
                                             InversePrecision precision);

// ---- Saliency ------------------------------------------------------------------------------

struct SaliencyStages {
    PlaneStack PixelStack;
    PlaneStack BlurredStack; // with its tables
    FloatPlane TopJoint;     // top-anchored contrast of the three planes together
    FloatPlane BottomJoint;
    FloatPlane TopEnriched; // with the planes' own contrasts added and normalised
    FloatPlane BottomEnriched;
    FloatPlane Edges; // multi-scale edges before they are multiplied

    FloatPlane ContrastMap;
    FloatPlane SaliencyMap;
    FloatPlane ColorContrastMap;
    FloatPlane SideMaps[4];
};
SaliencyStages ComputeSaliencyMaps(const uint8_t* pixels, int cols, int rows,
                                   InversePrecision precision, Messages& messages);

// ---- The edge map --------------------------------------------------------------------------

struct EdgeStages {
    FloatPlane Smoothed[3];
    FloatPlane Summed; // gradient strengths of the three planes
    float FirstLevel = 0.0F;
    FloatPlane Normalised;    // thresholded, then brought to 0..1
    FloatPlane RowNormalised; // rows divided by their sums
    float SecondLevel = 0.0F;
    FloatPlane Cleaned; // thresholded, eroded, dilated
    FloatPlane EdgeMap; // centre-weighted and normalised
};
float ThresholdLevel(const FloatPlane& map, float fraction);
float CentreWeight(int strip); // 0..4
void CentreWeightColumns(FloatPlane& map, int cols, int rows);
EdgeStages ComputeEdgeStages(const uint8_t* pixels, int cols, int rows);

// ---- The whole analysis --------------------------------------------------------------------

struct WorkingSize {
    float ScaleFactor;
    int WorkCols, WorkRows;
};
WorkingSize ComputeWorkingSize(int sourceCols, int sourceRows);
int ComputeBorderBand(int workCols, int workRows);
float BandMean(Side side, const DoublePlane& table, int cols, int rows, int band);
float BandGain(float mean);

struct Analysis {
    bool Built = false; // false: picture too narrow, all fields below WorkRows empty
    int SourceCols = 0;
    int SourceRows = 0;
    float ScaleFactor = 0.0F;
    int WorkCols = 0;
    int WorkRows = 0;
    int BorderBand = 0;
    float ContrastMaskTotal = 0.0F;
    float ColorContrastTotal = 0.0F;
    float EdgeTotal = 0.0F;
    float PeakTotal = 0.0F;
    float SideGain[4] = {0.0F, 0.0F, 0.0F, 0.0F}; // top, bottom, left, right

    FloatPlane ContrastMap;
    FloatPlane SaliencyMap;
    FloatPlane ContrastMask;
    FloatPlane ColorContrastMap;
    FloatPlane PeakMap;
    FloatPlane EdgeMap;
    FloatPlane SideMaps[4];

    DoublePlane ContrastTable;
    DoublePlane SaliencyTable;
    DoublePlane ContrastMaskTable;
    DoublePlane ColorContrastTable;
    DoublePlane PeakTable;
    DoublePlane EdgeTable;
    DoublePlane SideTables[4];

    // The maps before each threshold, and its level. Near a level, a last-bit difference decides
    // whether a value survives, and a comparison has to know where that can happen.
    SaliencyStages Saliency;
    EdgeStages Edge;
    float ColorContrastLevel = 0.0F;
    float ContrastMaskLevel = 0.0F;
    float PeakLevel = 0.0F;
    float SideLevels[4] = {0.0F, 0.0F, 0.0F, 0.0F};

    Messages ErrorLines;
};

// `picture` is at working size already; its size is also the source size.
Analysis AnalysePicture(const Picture& picture,
                        InversePrecision precision = InversePrecision::kSingle);

// Takes the source size separately from the bytes. Reads the first WorkCols x WorkRows pixels;
// throws std::invalid_argument if there are fewer.
Analysis AnalyseBytes(const std::vector<uint8_t>& bytes, int sourceCols, int sourceRows,
                      InversePrecision precision = InversePrecision::kSingle);

} // namespace slowOracle

#endif
