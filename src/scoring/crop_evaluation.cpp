// The measures of one crop, and the walk over the candidates that fills them.
#include <algorithm>
#include <cmath>
#include <cstdint>

#include "analysis/crop_analyzer.h"
#include "numeric/summed_area.h"
#include "scoring/composition_model.h"
#include "scoring/descriptor_grids.h"
#include "scoring/rects_of_interest.h"

namespace vistaTrim {

namespace {

constexpr double kMaskWeight = 0.3f;
constexpr double kColorWeight = 0.3f;
constexpr double kEdgeWeight = 0.4f;
constexpr double kContentShare = 0.4f;
constexpr float kCentreFraction = 0.33f;
constexpr float kBandOutside = 1e10f; // drives BorderScore to 0

// Coordinates far outside the picture stay inside an int32 this way; none of them is ever read.
constexpr float kFarOutside = 1e9f;

float ScaledCoordinate(int32_t coordinate, float scaleFactor)
{
    const float scaled =
        static_cast<float>(static_cast<double>(coordinate) * static_cast<double>(scaleFactor));
    return std::min(std::max(scaled, -kFarOutside), kFarOutside);
}

// A stretch of nothing, or one that starts beyond the map. The first coordinates are at least
// 0 and the last ones inside the map, so this one test keeps every read inside the tables:
// each index lies between a first and a last coordinate, or is the neighbour below a first.
//
// Such rectangles come from very thin pictures, where a crop side can round to nothing, and
// from pictures whose analysis was refused and whose maps are empty.
bool HoldsNoPixel(const WorkingRect& rect)
{
    return rect.FirstRow > rect.LastRow || rect.FirstCol > rect.LastCol;
}

// Crops of one row of the lattice, measured together: they read the same few rows of every
// table and share their row limits. Each crop's measures are its own; company only saves time.
class CropBatch {
public:
    explicit CropBatch(CCropAnalyzer& analyzer) : Analyzer(analyzer)
    {
    }

    // Takes an unscored record; measures those before it first if they lie in other rows.
    // `column` says which of the kept column limits may fit.
    void Add(CInt32CropRect& crop, size_t column);
    // Measures what was added since the last time.
    void Measure();

private:
    void MeasureContent();
    void MeasureBorders();
    void MeasureComposition();

    static constexpr size_t kKeptColumns = 32;

    CCropAnalyzer& Analyzer;
    int32_t Count = 0;
    CInt32CropRect* Crops[kDescribedTogether];
    WorkingRect Rects[kDescribedTogether];
    const GridLimits* Cols[kDescribedTogether];
    GridLimits Rows;
    GridLimits KeptCols[kKeptColumns];
    float Descriptors[kDescribedTogether * kDescriptorSize];
};

void CropBatch::Add(CInt32CropRect& crop, size_t column)
{
    const WorkingRect rect = Analyzer.ToWorkingRect(crop);
    crop.Score.Scored = true;
    if (HoldsNoPixel(rect)) {
        // Nothing can be measured where there is no pixel.
        crop.Score.CompositionScore = 0.0;
        crop.Score.CoverageScore = 0.0;
        crop.Score.BorderScore = 0.0;
        crop.Score.PeakScore = 0.0;
        crop.Score.CentrePeakScore = 0.0;
        return;
    }

    if (Count == kDescribedTogether || Rows.First != rect.FirstRow || Rows.Last != rect.LastRow)
        Measure();
    if (Rows.First != rect.FirstRow || Rows.Last != rect.LastRow)
        FillGridLimits(rect.FirstRow, rect.LastRow, Rows);
    GridLimits& cols = KeptCols[column % kKeptColumns];
    if (cols.First != rect.FirstCol || cols.Last != rect.LastCol) {
        // A crop that waits to be measured may still need what stands there.
        if (std::find(Cols, Cols + Count, &cols) != Cols + Count)
            Measure();
        FillGridLimits(rect.FirstCol, rect.LastCol, cols);
    }
    Crops[Count] = &crop;
    Rects[Count] = rect;
    Cols[Count] = &cols;
    ++Count;
}

void CropBatch::Measure()
{
    if (Count == 0)
        return;
    MeasureContent();
    MeasureBorders();
    MeasureComposition();
    Count = 0;
}

// Every measure is rounded to float and widened again as it is stored. Table by table, so that
// the rows that the crops share stay in the nearest cache.
void CropBatch::MeasureContent()
{
    double mask[kDescribedTogether];
    double color[kDescribedTogether];
    double edges[kDescribedTogether];
    const auto share = [this](const CDoubleMatrix& table, float total, double* shares) {
        for (int32_t i = 0; i < Count; ++i)
            shares[i] = RegionMean(table, Rects[i].FirstRow, Rects[i].FirstCol, Rects[i].LastRow,
                                   Rects[i].LastCol, total);
    };
    share(Analyzer.ContrastMaskTable, Analyzer.ContrastMaskTotal, mask);
    share(Analyzer.ColorContrastTable, Analyzer.ColorContrastTotal, color);
    share(Analyzer.EdgeTable, Analyzer.EdgeTotal, edges);
    for (int32_t i = 0; i < Count; ++i) {
        CInt32CropRect& crop = *Crops[i];
        crop.Score.CoverageScore = static_cast<float>(
            kMaskWeight * mask[i] + kColorWeight * color[i] + kEdgeWeight * edges[i]);
        // Only ever set: a host may hand in a record that has it already.
        if (mask[i] >= kContentShare && color[i] >= kContentShare)
            crop.CoversContent = true;
    }

    double peaks[kDescribedTogether];
    share(Analyzer.PeakTable, Analyzer.PeakTotal, peaks);
    for (int32_t i = 0; i < Count; ++i) {
        const WorkingRect centre = Analyzer.ShrinkAboutCentre(Rects[i], kCentreFraction);
        Crops[i]->Score.PeakScore = static_cast<float>(peaks[i]);
        Crops[i]->Score.CentrePeakScore =
            static_cast<float>(RegionMean(Analyzer.PeakTable, centre.FirstRow, centre.FirstCol,
                                          centre.LastRow, centre.LastCol, Analyzer.PeakTotal));
    }
}

void CropBatch::MeasureBorders()
{
    for (int32_t i = 0; i < Count; ++i)
        Crops[i]->Score.BorderScore = static_cast<float>(
            std::exp(static_cast<double>(Analyzer.BorderCost(Rects[i])) / -10.0));
}

void CropBatch::MeasureComposition()
{
    ComputeDescriptorsOnGrids(Analyzer.ContrastTable, Analyzer.SaliencyTable, Rows, Cols, Count,
                              Descriptors);
    for (int32_t i = 0; i < Count; ++i)
        Crops[i]->Score.CompositionScore = ScoreDescriptor(Descriptors + i * kDescriptorSize);
}

// Scores the unscored records of a cell, row of crops by row of crops. A cell stands column by
// column; records do not depend on one another, so the order shows nowhere but in time.
void MeasureCell(CropBatch& batch, CropCell& cell)
{
    size_t perColumn = 1;
    while (perColumn < cell.size() && cell[perColumn].Left == cell[0].Left)
        ++perColumn;
    for (size_t j = 0; j < perColumn; ++j) {
        size_t column = 0;
        for (size_t i = j; i < cell.size(); i += perColumn, ++column)
            if (!cell[i].Score.Scored)
                batch.Add(cell[i], column);
    }
    batch.Measure();
}

} // namespace

WorkingRect CCropAnalyzer::ToWorkingRect(const CInt32CropRect& crop) const
{
    const float lastRow = static_cast<float>(WorkRows - 1);
    const float lastCol = static_cast<float>(WorkCols - 1);
    WorkingRect rect;
    rect.FirstRow = static_cast<int32_t>(std::max(0.0f, ScaledCoordinate(crop.Top, ScaleFactor)));
    rect.FirstCol = static_cast<int32_t>(std::max(0.0f, ScaledCoordinate(crop.Left, ScaleFactor)));
    rect.LastRow =
        static_cast<int32_t>(std::min(lastRow, ScaledCoordinate(crop.Bottom, ScaleFactor)));
    rect.LastCol =
        static_cast<int32_t>(std::min(lastCol, ScaledCoordinate(crop.Right, ScaleFactor)));
    return rect;
}

WorkingRect CCropAnalyzer::ShrinkAboutCentre(const WorkingRect& rect, float fraction) const
{
    const double keep = fraction;
    const double pull = 1.0 - keep;
    const float centreRow =
        static_cast<float>((static_cast<double>(rect.FirstRow) + rect.LastRow) * 0.5);
    const float centreCol =
        static_cast<float>((static_cast<double>(rect.FirstCol) + rect.LastCol) * 0.5);
    const auto toward = [keep, pull](int32_t coordinate, float centre) {
        return static_cast<int32_t>(coordinate * keep + centre * pull + 0.5);
    };
    return {toward(rect.FirstRow, centreRow), toward(rect.FirstCol, centreCol),
            toward(rect.LastRow, centreRow), toward(rect.LastCol, centreCol)};
}

float CCropAnalyzer::BorderCost(const WorkingRect& rect) const
{
    const int32_t depth = std::max(1, static_cast<int32_t>(BorderBand * 0.5));

    // Only the limits across a band are tested: a crop less deep than its bands may have them
    // reach past its other side, as long as they stay on the map.
    const auto rowBand = [&](const CDoubleMatrix& table, int32_t first, int32_t last) {
        if (first < 0 || last > WorkRows - 1)
            return kBandOutside;
        return static_cast<float>(RegionSum(table, first, rect.FirstCol, last, rect.LastCol) /
                                  depth);
    };
    const auto colBand = [&](const CDoubleMatrix& table, int32_t first, int32_t last) {
        if (first < 0 || last > WorkCols - 1)
            return kBandOutside;
        return static_cast<float>(RegionSum(table, rect.FirstRow, first, rect.LastRow, last) /
                                  depth);
    };
    // A product of two floats is exact in double, and is not rounded here.
    const double top =
        static_cast<double>(rowBand(SideTables[0], rect.FirstRow, rect.FirstRow + depth - 1)) *
        SideGain[0];
    const double bottom =
        static_cast<double>(rowBand(SideTables[1], rect.LastRow - depth + 1, rect.LastRow)) *
        SideGain[1];
    const double left =
        static_cast<double>(colBand(SideTables[2], rect.FirstCol, rect.FirstCol + depth - 1)) *
        SideGain[2];
    const double right =
        static_cast<double>(colBand(SideTables[3], rect.LastCol - depth + 1, rect.LastCol)) *
        SideGain[3];

    // Means per pixel of edge: each direction's, and the whole perimeter's on top.
    const int32_t width = rect.LastCol - rect.FirstCol + 1;
    const int32_t height = rect.LastRow - rect.FirstRow + 1;
    const float perDirection = static_cast<float>((left + right) / height + (top + bottom) / width);
    const float perimeter = static_cast<float>((top + bottom + left + right) / (width + height));
    return perDirection + perimeter;
}

void CCropAnalyzer::EvaluateCropRect(CInt32CropRect& crop)
{
    if (crop.Score.Scored)
        return;
    CropBatch batch(*this);
    batch.Add(crop, 0);
    batch.Measure();
}

void CCropAnalyzer::EvaluateCropRects(CropGridRows& grid, uint32_t aspectIndex, uint32_t scaleIndex)
{
    const std::vector<CRectOfInterest> softRects = SoftRects(RectsOfInterest);
    CropBatch batch(*this);

    // The rectangles of interest may have changed since the last walk: RoiScore is written
    // anew for every record, scored or not.
    const auto walkCell = [&](CropCell& cell) {
        bool scored = true;
        for (CInt32CropRect& crop : cell) {
            scored = scored && crop.Score.Scored;
            crop.Score.RoiScore = 1.0;
            if (!softRects.empty())
                crop.Score.RoiScore = ComputeRoiScore(
                    softRects, CInt32Rect(crop.Left, crop.Right, crop.Top, crop.Bottom));
        }
        if (!scored)
            MeasureCell(batch, cell);
    };
    const auto walkRow = [&](CropRow& row) {
        if (scaleIndex != NoIndex) {
            walkCell(row[scaleIndex]);
            return;
        }
        for (CropCell& cell : row)
            walkCell(cell);
    };
    if (aspectIndex != NoIndex) {
        walkRow(grid[aspectIndex]);
        return;
    }
    for (CropRow& row : grid)
        walkRow(row);
}

} // namespace vistaTrim
