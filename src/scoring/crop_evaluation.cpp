// The measures of one crop, and the walk over the candidates that fills them.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <vector>

#include "numeric/isa_variants.h"
#include "numeric/linear_algebra.h"
#include "numeric/summed_area.h"
#include "scoring/composition_lanes.h"
#include "scoring/composition_model.h"
#include "scoring/crop_analyzer.h"
#include "scoring/descriptor_grids.h"
#include "scoring/measures.h"
#include "scoring/rects_of_interest.h"
#include "scoring/row_means.h"

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
// Sides in the order of the analyzer's arrays.
constexpr int kTop = 0;
constexpr int kBottom = 1;
constexpr int kLeft = 2;
constexpr int kRight = 3;

constexpr float kBandOutside = 1e10f; // drives BorderScore to 0

// Keeps coordinates far outside the picture within int32. None of them reaches a table: the map's
// limit replaces it, or the rectangle holds no pixel.
constexpr float kFarOutside = 1e9f;

float ScaledCoordinate(int32_t coordinate, float scaleFactor)
{
    const float scaled =
        static_cast<float>(static_cast<double>(coordinate) * static_cast<double>(scaleFactor));
    return std::min(std::max(scaled, -kFarOutside), kFarOutside);
}

// From shares of the totals to CoverageScore and to CoversContent.
VISTATRIM_VARIANT_BODY float Coverage(double mask, double color, double edges)
{
    return static_cast<float>(kMaskWeight * mask + kColorWeight * color + kEdgeWeight * edges);
}

VISTATRIM_VARIANT_BODY bool Covers(double mask, double color)
{
    return mask >= kContentShare && color >= kContentShare;
}

int32_t BandDepth(const CCropAnalyzer& analyzer)
{
    return std::max(1, static_cast<int32_t>(analyzer.BorderBand * 0.5));
}

// The band along the inside of one side of a crop.
WorkingRect BandOf(const WorkingRect& rect, int side, int32_t depth)
{
    WorkingRect band = rect;
    switch (side) {
    case kTop: band.LastRow = rect.FirstRow + depth - 1; break;
    case kBottom: band.FirstRow = rect.LastRow - depth + 1; break;
    case kLeft: band.LastCol = rect.FirstCol + depth - 1; break;
    default: band.FirstCol = rect.LastCol - depth + 1; break;
    }
    return band;
}

// Only the limits across a band are checked: in a crop smaller than its bands they may extend past
// its opposite side, as long as they stay on the map.
bool BandLeavesMap(const CCropAnalyzer& analyzer, int side, const WorkingRect& band)
{
    return side == kTop || side == kBottom
               ? band.FirstRow < 0 || band.LastRow > analyzer.WorkRows - 1
               : band.FirstCol < 0 || band.LastCol > analyzer.WorkCols - 1;
}

// The value of a side, rounded to float, times its gain. The product of two floats is exact in
// double and is not rounded here.
VISTATRIM_VARIANT_BODY double Gained(bool outside, double mean, float gain)
{
    const float value = outside ? kBandOutside : static_cast<float>(mean);
    return static_cast<double>(value) * static_cast<double>(gain);
}

// Means per pixel of edge: one for each direction, plus one for the whole perimeter.
VISTATRIM_VARIANT_BODY float CostOfSides(double width, double height, double top, double bottom,
                                         double left, double right)
{
    const float perDirection = static_cast<float>((left + right) / height + (top + bottom) / width);
    const float perimeter = static_cast<float>((top + bottom + left + right) / (width + height));
    return perDirection + perimeter;
}

float ScoreOfCost(float cost)
{
    return static_cast<float>(std::exp(cost / -10.0));
}

int32_t ShrunkCoordinate(int32_t coordinate, float centre, float fraction)
{
    const double keep = fraction;
    // Halves round up, and negative values truncate toward zero.
    // NOLINTNEXTLINE(bugprone-incorrect-roundings)
    return static_cast<int32_t>(coordinate * keep + centre * (1.0 - keep) + 0.5);
}

float CentreOf(int32_t first, int32_t last)
{
    return static_cast<float>((static_cast<double>(first) + last) * 0.5);
}

// Nothing can be measured where there is no pixel.
void LeaveUnmeasured(CInt32CropRect& crop)
{
    for (const Measure& measure : kMeasures)
        crop.Score.*measure.Value = 0.0;
    crop.Score.Scored = true;
}

VISTATRIM_VARIANT_BODY void CoverageOfListsBody(const double* mask, const double* color,
                                                const double* edges, size_t count, float* coverage,
                                                uint8_t* covers)
{
    VISTATRIM_INDEPENDENT_STEPS
    for (size_t i = 0; i < count; ++i) {
        coverage[i] = Coverage(mask[i], color[i], edges[i]);
        covers[i] = Covers(mask[i], color[i]);
    }
}
VISTATRIM_VARIANTS(CoverageOfLists,
                   (const double* mask, const double* color, const double* edges, size_t count,
                    float* coverage, uint8_t* covers),
                   (mask, color, edges, count, coverage, covers))

VISTATRIM_VARIANT_BODY void CostOfListsBody(const int32_t* firstCols, const int32_t* lastCols,
                                            int32_t height, const double* top, const double* bottom,
                                            const double* left, const double* right, size_t count,
                                            float* costs)
{
    VISTATRIM_INDEPENDENT_STEPS
    for (size_t i = 0; i < count; ++i)
        costs[i] = CostOfSides(lastCols[i] - firstCols[i] + 1, height, top[i], bottom[i], left[i],
                               right[i]);
}
VISTATRIM_VARIANTS(CostOfLists,
                   (const int32_t* firstCols, const int32_t* lastCols, int32_t height,
                    const double* top, const double* bottom, const double* left,
                    const double* right, size_t count, float* costs),
                   (firstCols, lastCols, height, top, bottom, left, right, count, costs))

// Crops of a walk that share their rows.
struct LatticeRow {
    int32_t FirstRow, LastRow;
    size_t Begin, End; // in the lists of the walk
    uint32_t Limits;
};

// The unscored records of a walk, measured together. Records do not depend on one another, so the
// order in which they are measured affects only speed: the crops of a lattice row read the same few
// rows of a table, and all crops read one table before the next is opened, because the ten tables
// together do not fit the cache.
class CandidateWalk {
public:
    explicit CandidateWalk(const CCropAnalyzer& analyzer) : Analyzer(analyzer)
    {
    }

    // Takes the unscored records of a cell. The next Measure scores them at the latest.
    void Add(CropCell& cell);
    void Measure();

private:
    void AddRecord(CInt32CropRect& crop, size_t column);
    void MeasureContent();
    void MeasureCentres();
    void MeasureBorders();
    void MeasureComposition();
    // Shares of the map that each crop holds.
    void SharesOf(const CDoubleMatrix& table, float total, std::vector<double>& shares) const;
    // One side of each crop, its gain included.
    void SidesOf(int side, int32_t depth, std::vector<double>& values);

    // Bounds the lists. The default tables give no picture more candidates.
    static constexpr size_t kMeasuredTogether = 16384;

    const CCropAnalyzer& Analyzer;
    std::vector<LatticeRow> Rows;
    std::vector<GridLimits> RowLimits;
    std::vector<GridLimits> ColLimits;
    std::vector<uint32_t> LimitsOfColumn; // of the current cell

    // One entry per crop.
    std::vector<CInt32CropRect*> Crops;
    std::vector<int32_t> FirstCols;
    std::vector<int32_t> LastCols;
    std::vector<uint32_t> LimitsOfCrop; // index of its column limits
    // The same for a part of each crop; scratch.
    std::vector<int32_t> PartFirstCols;
    std::vector<int32_t> PartLastCols;
    std::vector<double> Lists[4];
    std::vector<float> Values;
    std::vector<uint8_t> Flags;
};

// A cell is stored column by column but processed row by row.
void CandidateWalk::Add(CropCell& cell)
{
    size_t perColumn = 1;
    while (perColumn < cell.size() && cell[perColumn].Left == cell[0].Left)
        ++perColumn;
    LimitsOfColumn.clear();
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
    if (Crops.size() == kMeasuredTogether)
        Measure();

    if (Rows.empty() || Rows.back().FirstRow != rect.FirstRow ||
        Rows.back().LastRow != rect.LastRow) {
        Rows.push_back({rect.FirstRow, rect.LastRow, Crops.size(), Crops.size(),
                        static_cast<uint32_t>(RowLimits.size())});
        RowLimits.emplace_back();
        FillGridLimits(rect.FirstRow, rect.LastRow, RowLimits.back());
    }
    if (column >= LimitsOfColumn.size())
        LimitsOfColumn.resize(column + 1, UINT32_MAX);
    uint32_t& limits = LimitsOfColumn[column];
    if (limits == UINT32_MAX || ColLimits[limits].First != rect.FirstCol ||
        ColLimits[limits].Last != rect.LastCol) {
        limits = static_cast<uint32_t>(ColLimits.size());
        ColLimits.emplace_back();
        FillGridLimits(rect.FirstCol, rect.LastCol, ColLimits.back());
    }
    Crops.push_back(&crop);
    FirstCols.push_back(rect.FirstCol);
    LastCols.push_back(rect.LastCol);
    LimitsOfCrop.push_back(limits);
    Rows.back().End = Crops.size();
}

void CandidateWalk::Measure()
{
    for (std::vector<double>& list : Lists)
        list.resize(Crops.size());
    Values.resize(Crops.size());
    Flags.resize(Crops.size());
    PartFirstCols.resize(Crops.size());
    PartLastCols.resize(Crops.size());
    MeasureContent();
    MeasureCentres();
    MeasureBorders();
    MeasureComposition();
    for (CInt32CropRect* crop : Crops)
        crop->Score.Scored = true;

    Rows.clear();
    RowLimits.clear();
    ColLimits.clear();
    LimitsOfColumn.clear();
    Crops.clear();
    FirstCols.clear();
    LastCols.clear();
    LimitsOfCrop.clear();
}

void CandidateWalk::SharesOf(const CDoubleMatrix& table, float total,
                             std::vector<double>& shares) const
{
    for (const LatticeRow& row : Rows)
        RowMeans(table, row.FirstRow, row.LastRow, &FirstCols[row.Begin], &LastCols[row.Begin],
                 row.End - row.Begin, total, &shares[row.Begin]);
}

void CandidateWalk::MeasureContent()
{
    std::vector<double>& mask = Lists[0];
    std::vector<double>& color = Lists[1];
    std::vector<double>& edges = Lists[2];
    std::vector<double>& peaks = Lists[3];
    SharesOf(Analyzer.ContrastMaskTable, Analyzer.ContrastMaskTotal, mask);
    SharesOf(Analyzer.ColorContrastTable, Analyzer.ColorContrastTotal, color);
    SharesOf(Analyzer.EdgeTable, Analyzer.EdgeTotal, edges);
    SharesOf(Analyzer.PeakTable, Analyzer.PeakTotal, peaks);
    CoverageOfLists(mask.data(), color.data(), edges.data(), Crops.size(), Values.data(),
                    Flags.data());
    for (size_t i = 0; i < Crops.size(); ++i) {
        CInt32CropRect& crop = *Crops[i];
        crop.Score.CoverageScore = Values[i];
        crop.Score.PeakScore = static_cast<float>(peaks[i]);
        // Set, never cleared: a host may pass a record in which it is already set.
        if (Flags[i] != 0)
            crop.CoversContent = true;
    }
}

void CandidateWalk::MeasureCentres()
{
    for (size_t i = 0; i < Crops.size(); ++i) {
        const float centre = CentreOf(FirstCols[i], LastCols[i]);
        PartFirstCols[i] = ShrunkCoordinate(FirstCols[i], centre, kCentreFraction);
        PartLastCols[i] = ShrunkCoordinate(LastCols[i], centre, kCentreFraction);
    }
    std::vector<double>& shares = Lists[0];
    for (const LatticeRow& row : Rows) {
        const float centre = CentreOf(row.FirstRow, row.LastRow);
        RowMeans(Analyzer.PeakTable, ShrunkCoordinate(row.FirstRow, centre, kCentreFraction),
                 ShrunkCoordinate(row.LastRow, centre, kCentreFraction), &PartFirstCols[row.Begin],
                 &PartLastCols[row.Begin], row.End - row.Begin, Analyzer.PeakTotal,
                 &shares[row.Begin]);
    }
    for (size_t i = 0; i < Crops.size(); ++i)
        Crops[i]->Score.CentrePeakScore = static_cast<float>(shares[i]);
}

void CandidateWalk::SidesOf(int side, int32_t depth, std::vector<double>& values)
{
    const CDoubleMatrix& table = Analyzer.SideTables[side];
    const float gain = Analyzer.SideGain[side];
    const int32_t* firstCols = FirstCols.data();
    const int32_t* lastCols = LastCols.data();
    if (side == kLeft) {
        for (size_t i = 0; i < Crops.size(); ++i)
            PartLastCols[i] = FirstCols[i] + depth - 1;
        lastCols = PartLastCols.data();
    } else if (side == kRight) {
        for (size_t i = 0; i < Crops.size(); ++i)
            PartFirstCols[i] = LastCols[i] - depth + 1;
        firstCols = PartFirstCols.data();
    }
    for (const LatticeRow& row : Rows) {
        // Rows of the band are the same for all crops of the row, and its columns are not used.
        const WorkingRect band = BandOf({row.FirstRow, 0, row.LastRow, 0}, side, depth);
        const bool rowsLeave = (side == kTop || side == kBottom) &&
                               (band.FirstRow < 0 || band.LastRow > Analyzer.WorkRows - 1);
        if (!rowsLeave)
            RowMeans(table, band.FirstRow, band.LastRow, firstCols + row.Begin,
                     lastCols + row.Begin, row.End - row.Begin, depth, &values[row.Begin]);
        for (size_t i = row.Begin; i < row.End; ++i) {
            const bool colsLeave = firstCols[i] < 0 || Analyzer.WorkCols - 1 < lastCols[i];
            values[i] = Gained(rowsLeave || colsLeave, values[i], gain);
        }
    }
}

void CandidateWalk::MeasureBorders()
{
    const int32_t depth = BandDepth(Analyzer);
    for (int side = 0; side < 4; ++side)
        SidesOf(side, depth, Lists[side]);
    for (const LatticeRow& row : Rows)
        CostOfLists(&FirstCols[row.Begin], &LastCols[row.Begin], row.LastRow - row.FirstRow + 1,
                    &Lists[kTop][row.Begin], &Lists[kBottom][row.Begin], &Lists[kLeft][row.Begin],
                    &Lists[kRight][row.Begin], row.End - row.Begin, &Values[row.Begin]);
    for (size_t i = 0; i < Crops.size(); ++i)
        Crops[i]->Score.BorderScore = ScoreOfCost(Values[i]);
}

void CandidateWalk::MeasureComposition()
{
    const GridLimits* rowsOf[kScoredTogether];
    const GridLimits* colsOf[kScoredTogether];
    CInt32CropRect* crops[kScoredTogether];
    float scores[kScoredTogether];
    int32_t count = 0;
    const auto scoreGroup = [&] {
        if (count > 0)
            ScoreTogether(Analyzer.ContrastTable, Analyzer.SaliencyTable, rowsOf, colsOf, count,
                          scores);
        for (int32_t i = 0; i < count; ++i)
            crops[i]->Score.CompositionScore = scores[i];
        count = 0;
    };
    for (const LatticeRow& row : Rows)
        for (size_t i = row.Begin; i < row.End; ++i) {
            const GridLimits& rows = RowLimits[row.Limits];
            const GridLimits& cols = ColLimits[LimitsOfCrop[i]];
            if (!kFixedOrder || !rows.Tiles || !cols.Tiles) {
                Crops[i]->Score.CompositionScore =
                    ScoreOnGrids(Analyzer.ContrastTable, Analyzer.SaliencyTable, rows, cols);
                continue;
            }
            rowsOf[count] = &rows;
            colsOf[count] = &cols;
            crops[count] = Crops[i];
            if (++count == kScoredTogether)
                scoreGroup();
        }
    scoreGroup();
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
    const float row = CentreOf(rect.FirstRow, rect.LastRow);
    const float col = CentreOf(rect.FirstCol, rect.LastCol);
    return {ShrunkCoordinate(rect.FirstRow, row, fraction),
            ShrunkCoordinate(rect.FirstCol, col, fraction),
            ShrunkCoordinate(rect.LastRow, row, fraction),
            ShrunkCoordinate(rect.LastCol, col, fraction)};
}

float CCropAnalyzer::BorderCost(const WorkingRect& rect) const
{
    const int32_t depth = BandDepth(*this);
    double sides[4];
    for (int side = 0; side < 4; ++side) {
        const WorkingRect band = BandOf(rect, side, depth);
        const bool outside = BandLeavesMap(*this, side, band);
        const double mean = outside ? 0.0
                                    : RegionMean(SideTables[side], band.FirstRow, band.FirstCol,
                                                 band.LastRow, band.LastCol, depth);
        sides[side] = Gained(outside, mean, SideGain[side]);
    }
    return CostOfSides(rect.LastCol - rect.FirstCol + 1, rect.LastRow - rect.FirstRow + 1,
                       sides[kTop], sides[kBottom], sides[kLeft], sides[kRight]);
}

void CCropAnalyzer::EvaluateCropRect(CInt32CropRect& crop)
{
    if (crop.Score.Scored)
        return;
    const WorkingRect rect = ToWorkingRect(crop);
    if (HoldsNoPixel(rect)) {
        LeaveUnmeasured(crop);
        return;
    }
    // Every measure is rounded to float and widened again as it is stored.
    const auto share = [](const CDoubleMatrix& table, float total, const WorkingRect& part) {
        return RegionMean(table, part.FirstRow, part.FirstCol, part.LastRow, part.LastCol, total);
    };
    const double mask = share(ContrastMaskTable, ContrastMaskTotal, rect);
    const double color = share(ColorContrastTable, ColorContrastTotal, rect);
    const double edges = share(EdgeTable, EdgeTotal, rect);
    crop.Score.CoverageScore = Coverage(mask, color, edges);
    crop.Score.PeakScore = static_cast<float>(share(PeakTable, PeakTotal, rect));
    crop.Score.CentrePeakScore =
        static_cast<float>(share(PeakTable, PeakTotal, ShrinkAboutCentre(rect, kCentreFraction)));
    crop.Score.BorderScore = ScoreOfCost(BorderCost(rect));
    crop.Score.CompositionScore = ComputeCompositionScore(rect);
    crop.Score.Scored = true;
    // Set, never cleared: a host may pass a record in which it is already set.
    if (Covers(mask, color))
        crop.CoversContent = true;
}

void CCropAnalyzer::EvaluateCropRects(CropGridRows& grid, uint32_t aspectIndex, uint32_t scaleIndex)
{
    const std::vector<CRectOfInterest> softRects = SoftRects(RectsOfInterest);
    CandidateWalk walk(*this);

    // The rectangles of interest may have changed since the last walk: RoiScore is rewritten for
    // every record, scored or not.
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
