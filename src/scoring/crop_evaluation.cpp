// The measures of one crop, and the walk over the candidates that fills them.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <vector>

#include "numeric/summed_area.h"
#include "scoring/composition_model.h"
#include "scoring/crop_analyzer.h"
#include "scoring/descriptor_grids.h"
#include "scoring/measures.h"
#include "scoring/rects_of_interest.h"

namespace vistaTrim {

namespace {

constexpr Measure kMeasures[] = {
    {&Score::CompositionScore, &WeightDistribution::Weight1, 1},
    {&Score::CoverageScore, &WeightDistribution::Weight2, 2},
    {&Score::BorderScore, &WeightDistribution::Weight3, 3},
    {&Score::PeakScore, &WeightDistribution::Weight4, 0},
    {&Score::CentrePeakScore, &WeightDistribution::Weight5, 0},
};

constexpr double kMaskWeight = 0.3f;
constexpr double kColorWeight = 0.3f;
constexpr double kEdgeWeight = 0.4f;
constexpr double kContentShare = 0.4f;
constexpr float kCentreFraction = 0.33f;
// Sides as the analyzer's lists have them.
constexpr int kTop = 0;
constexpr int kBottom = 1;
constexpr int kLeft = 2;
constexpr int kRight = 3;

constexpr float kBandOutside = 1e10f; // drives BorderScore to 0

// Coordinates far outside the picture stay inside an int32 this way. None of these reaches a
// table: the map's own limit replaces it, or the rectangle holds no pixel.
constexpr float kFarOutside = 1e9f;

float ScaledCoordinate(int32_t coordinate, float scaleFactor)
{
    const float scaled =
        static_cast<float>(static_cast<double>(coordinate) * static_cast<double>(scaleFactor));
    return std::min(std::max(scaled, -kFarOutside), kFarOutside);
}

// A record to be measured, and where it lies on the maps.
struct Item {
    CInt32CropRect* Crop;
    WorkingRect Rect;
    uint32_t Cols; // which of the kept column limits are its own
};

// Four lists of a double an item, for what is not stored yet.
struct MeasureScratch {
    double* Lists[4];
};

// Every measure is rounded to float and widened again as it is stored. All items read one table
// before the next is opened: what they share of it stays in the cache, and the ten tables
// together do not fit there.
void MeasureContent(const CCropAnalyzer& analyzer, const Item* items, size_t count,
                    const MeasureScratch& scratch)
{
    const auto share = [](const CDoubleMatrix& table, float total, const WorkingRect& rect) {
        return RegionMean(table, rect.FirstRow, rect.FirstCol, rect.LastRow, rect.LastCol, total);
    };
    double* mask = scratch.Lists[0];
    double* color = scratch.Lists[1];
    for (size_t i = 0; i < count; ++i)
        mask[i] = share(analyzer.ContrastMaskTable, analyzer.ContrastMaskTotal, items[i].Rect);
    for (size_t i = 0; i < count; ++i)
        color[i] = share(analyzer.ColorContrastTable, analyzer.ColorContrastTotal, items[i].Rect);
    for (size_t i = 0; i < count; ++i) {
        CInt32CropRect& crop = *items[i].Crop;
        const double edges = share(analyzer.EdgeTable, analyzer.EdgeTotal, items[i].Rect);
        crop.Score.CoverageScore = static_cast<float>(
            kMaskWeight * mask[i] + kColorWeight * color[i] + kEdgeWeight * edges);
        // Only ever set: a host may hand in a record that has it already.
        if (mask[i] >= kContentShare && color[i] >= kContentShare)
            crop.CoversContent = true;
    }
    for (size_t i = 0; i < count; ++i) {
        CInt32CropRect& crop = *items[i].Crop;
        crop.Score.PeakScore =
            static_cast<float>(share(analyzer.PeakTable, analyzer.PeakTotal, items[i].Rect));
        crop.Score.CentrePeakScore =
            static_cast<float>(share(analyzer.PeakTable, analyzer.PeakTotal,
                                     analyzer.ShrinkAboutCentre(items[i].Rect, kCentreFraction)));
    }
}

int32_t BandDepth(const CCropAnalyzer& analyzer)
{
    return std::max(1, static_cast<int32_t>(analyzer.BorderBand * 0.5));
}

// How much the band along one side of a crop differs from the picture's strip on that side,
// times the side's gain. A product of two floats is exact in double, and is not rounded here.
double GainedSide(const CCropAnalyzer& analyzer, int side, int32_t depth, const WorkingRect& rect)
{
    WorkingRect band = rect;
    switch (side) {
    case kTop: band.LastRow = rect.FirstRow + depth - 1; break;
    case kBottom: band.FirstRow = rect.LastRow - depth + 1; break;
    case kLeft: band.LastCol = rect.FirstCol + depth - 1; break;
    default: band.FirstCol = rect.LastCol - depth + 1; break;
    }
    // Only the limits across a band are tested: in a crop less deep than its bands they may
    // reach past its other side, as long as they stay on the map.
    const bool outside = side == kTop || side == kBottom
                             ? band.FirstRow < 0 || band.LastRow > analyzer.WorkRows - 1
                             : band.FirstCol < 0 || band.LastCol > analyzer.WorkCols - 1;
    float value = kBandOutside;
    if (!outside)
        value = static_cast<float>(RegionSum(analyzer.SideTables[side], band.FirstRow,
                                             band.FirstCol, band.LastRow, band.LastCol) /
                                   depth);
    return static_cast<double>(value) * static_cast<double>(analyzer.SideGain[side]);
}

// Means per pixel of edge: each direction's, and the whole perimeter's on top.
float CostOfSides(const WorkingRect& rect, double top, double bottom, double left, double right)
{
    const int32_t width = rect.LastCol - rect.FirstCol + 1;
    const int32_t height = rect.LastRow - rect.FirstRow + 1;
    const float perDirection = static_cast<float>((left + right) / height + (top + bottom) / width);
    const float perimeter = static_cast<float>((top + bottom + left + right) / (width + height));
    return perDirection + perimeter;
}

void MeasureBorders(const CCropAnalyzer& analyzer, const Item* items, size_t count,
                    const MeasureScratch& scratch)
{
    const int32_t depth = BandDepth(analyzer);
    for (int side = 0; side < 4; ++side)
        for (size_t i = 0; i < count; ++i)
            scratch.Lists[side][i] = GainedSide(analyzer, side, depth, items[i].Rect);
    for (size_t i = 0; i < count; ++i) {
        const double cost =
            CostOfSides(items[i].Rect, scratch.Lists[kTop][i], scratch.Lists[kBottom][i],
                        scratch.Lists[kLeft][i], scratch.Lists[kRight][i]);
        items[i].Crop->Score.BorderScore = static_cast<float>(std::exp(cost / -10.0));
    }
}

// Nothing can be measured where there is no pixel.
void LeaveUnmeasured(CInt32CropRect& crop)
{
    for (const Measure& measure : kMeasures)
        crop.Score.*measure.Value = 0.0;
    crop.Score.Scored = true;
}

// The unscored records of a walk, measured together. Records do not depend on one another, so
// the order in which they are measured shows nowhere but in time: the crops of a row of the
// lattice read the same few rows of a table and share their row limits, the crops of a column
// share their column limits.
class CandidateWalk {
public:
    explicit CandidateWalk(const CCropAnalyzer& analyzer) : Analyzer(analyzer)
    {
    }

    // Takes the unscored records of a cell. They are Scored by the next Measure at the latest.
    void Add(CropCell& cell);
    void Measure();

private:
    void AddRecord(CInt32CropRect& crop, size_t column);
    void MeasureComposition();

    // Bounds the scratch. The default tables give no picture more candidates.
    static constexpr size_t kMeasuredTogether = 16384;

    const CCropAnalyzer& Analyzer;
    std::vector<Item> Items;
    std::vector<GridLimits> Cols;
    std::vector<uint32_t> ColsOfColumn; // of the cell in hand
};

// A cell stands column by column; it is taken row by row.
void CandidateWalk::Add(CropCell& cell)
{
    size_t perColumn = 1;
    while (perColumn < cell.size() && cell[perColumn].Left == cell[0].Left)
        ++perColumn;
    ColsOfColumn.clear();
    for (size_t j = 0; j < perColumn; ++j) {
        size_t column = 0;
        for (size_t i = j; i < cell.size(); i += perColumn, ++column)
            if (!cell[i].Score.Scored)
                AddRecord(cell[i], column);
    }
}

void CandidateWalk::AddRecord(CInt32CropRect& crop, size_t column)
{
    const WorkingRect rect = Analyzer.ToWorkingRect(crop);
    if (HoldsNoPixel(rect)) {
        LeaveUnmeasured(crop);
        return;
    }
    if (Items.size() == kMeasuredTogether)
        Measure();
    if (column >= ColsOfColumn.size())
        ColsOfColumn.resize(column + 1, UINT32_MAX);
    uint32_t& cols = ColsOfColumn[column];
    if (cols == UINT32_MAX || Cols[cols].First != rect.FirstCol ||
        Cols[cols].Last != rect.LastCol) {
        cols = static_cast<uint32_t>(Cols.size());
        Cols.emplace_back();
        FillGridLimits(rect.FirstCol, rect.LastCol, Cols.back());
    }
    Items.push_back({&crop, rect, cols});
}

void CandidateWalk::Measure()
{
    std::vector<double> lists(4 * Items.size());
    MeasureScratch scratch;
    for (size_t i = 0; i < 4; ++i)
        scratch.Lists[i] = lists.data() + i * Items.size();
    MeasureContent(Analyzer, Items.data(), Items.size(), scratch);
    MeasureBorders(Analyzer, Items.data(), Items.size(), scratch);
    MeasureComposition();
    for (const Item& item : Items)
        item.Crop->Score.Scored = true;
    Items.clear();
    Cols.clear();
    ColsOfColumn.clear();
}

// By runs of items that share their rows.
void CandidateWalk::MeasureComposition()
{
    GridLimits rows;
    const GridLimits* cols[kDescribedTogether];
    float descriptors[kDescribedTogether * kDescriptorSize];
    for (size_t first = 0; first < Items.size();) {
        const WorkingRect& rect = Items[first].Rect;
        int32_t count = 0;
        for (size_t i = first;
             i < Items.size() && count < kDescribedTogether &&
             Items[i].Rect.FirstRow == rect.FirstRow && Items[i].Rect.LastRow == rect.LastRow;
             ++i)
            cols[count++] = &Cols[Items[i].Cols];
        if (rows.First != rect.FirstRow || rows.Last != rect.LastRow)
            FillGridLimits(rect.FirstRow, rect.LastRow, rows);
        ComputeDescriptorsOnGrids(Analyzer.ContrastTable, Analyzer.SaliencyTable, rows, cols, count,
                                  descriptors);
        for (int32_t i = 0; i < count; ++i, ++first)
            Items[first].Crop->Score.CompositionScore =
                ScoreDescriptor(descriptors + i * kDescriptorSize);
    }
}

} // namespace

MeasureTable Measures()
{
    return {std::begin(kMeasures), std::end(kMeasures)};
}

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
        // A half goes up, and what is negative is cut toward zero.
        // NOLINTNEXTLINE(bugprone-incorrect-roundings)
        return static_cast<int32_t>(coordinate * keep + centre * pull + 0.5);
    };
    return {toward(rect.FirstRow, centreRow), toward(rect.FirstCol, centreCol),
            toward(rect.LastRow, centreRow), toward(rect.LastCol, centreCol)};
}

float CCropAnalyzer::BorderCost(const WorkingRect& rect) const
{
    const int32_t depth = BandDepth(*this);
    return CostOfSides(
        rect, GainedSide(*this, kTop, depth, rect), GainedSide(*this, kBottom, depth, rect),
        GainedSide(*this, kLeft, depth, rect), GainedSide(*this, kRight, depth, rect));
}

void CCropAnalyzer::EvaluateCropRect(CInt32CropRect& crop)
{
    if (crop.Score.Scored)
        return;
    const Item item{&crop, ToWorkingRect(crop), 0};
    if (HoldsNoPixel(item.Rect)) {
        LeaveUnmeasured(crop);
        return;
    }
    double values[4];
    const MeasureScratch scratch{{&values[0], &values[1], &values[2], &values[3]}};
    MeasureContent(*this, &item, 1, scratch);
    MeasureBorders(*this, &item, 1, scratch);
    crop.Score.CompositionScore = ComputeCompositionScore(item.Rect);
    crop.Score.Scored = true;
}

void CCropAnalyzer::EvaluateCropRects(CropGridRows& grid, uint32_t aspectIndex, uint32_t scaleIndex)
{
    const std::vector<CRectOfInterest> softRects = SoftRects(RectsOfInterest);
    CandidateWalk walk(*this);

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
            walk.Add(cell);
    };
    const auto walkRow = [&](CropRow& row) {
        if (scaleIndex != NoIndex) {
            walkCell(row[scaleIndex]);
            return;
        }
        for (CropCell& cell : row)
            walkCell(cell);
    };
    if (aspectIndex != NoIndex)
        walkRow(grid[aspectIndex]);
    else
        for (CropRow& row : grid)
            walkRow(row);
    walk.Measure();
}

} // namespace vistaTrim
