#include "oracle/slow_scoring.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace slowOracle {

namespace {

constexpr int kTop = 0;
constexpr int kBottom = 1;
constexpr int kLeft = 2;
constexpr int kRight = 3;

constexpr double kThreeTenths = 0.3F; // floats, widened
constexpr double kFourTenths = 0.4F;

int32_t TruncateToInt32(double value)
{
    if (!(value > -2147483649.0 && value < 2147483648.0))
        throw std::domain_error("coordinate outside 32 bits");
    return static_cast<int32_t>(value);
}

// One element of a table, 0 before its first row or column.
double At(const ScoringInput& in, const std::vector<double>& table, int64_t row, int64_t col)
{
    if (row < 0 || col < 0)
        return 0.0;
    if (row >= in.WorkRows || col >= in.WorkCols)
        throw std::out_of_range("rectangle beyond the table");
    return table.at(static_cast<size_t>(row * in.WorkCols + col));
}

// A source coordinate in working pixels. The product has at most 55 bits, so the long double
// holds it exactly and the cast is its only rounding.
float Scaled(const ScoringInput& in, int32_t coordinate)
{
    return static_cast<float>(static_cast<long double>(coordinate) *
                              static_cast<long double>(in.ScaleFactor));
}

Rect SidesOf(const Crop& crop)
{
    return Rect{crop.Left, crop.Right, crop.Top, crop.Bottom};
}

Rect SidesOf(const Roi& rect)
{
    return Rect{rect.Left, rect.Right, rect.Top, rect.Bottom};
}

std::vector<Roi> RectsOfKinds(const std::vector<Roi>& rects, int32_t kindA, int32_t kindB)
{
    std::vector<Roi> chosen;
    for (const Roi& rect : rects)
        if (rect.Enabled && (rect.Kind == kindA || rect.Kind == kindB))
            chosen.push_back(rect);
    return chosen;
}

} // namespace

bool operator==(const WorkRect& a, const WorkRect& b)
{
    return a.FirstRow == b.FirstRow && a.FirstCol == b.FirstCol && a.LastRow == b.LastRow &&
           a.LastCol == b.LastCol;
}

WorkRect ToWorkingRect(const ScoringInput& in, const Crop& crop)
{
    // Low ends are clamped from below only, high ends from above only.
    const float firstRow = std::max(0.0F, Scaled(in, crop.Top));
    const float firstCol = std::max(0.0F, Scaled(in, crop.Left));
    const float lastRow = std::min(static_cast<float>(in.WorkRows - 1), Scaled(in, crop.Bottom));
    const float lastCol = std::min(static_cast<float>(in.WorkCols - 1), Scaled(in, crop.Right));
    return {TruncateToInt32(firstRow), TruncateToInt32(firstCol), TruncateToInt32(lastRow),
            TruncateToInt32(lastCol)};
}

WorkRect ShrinkAboutCentre(const WorkRect& rect, float fraction)
{
    const float centreRow = static_cast<float>((rect.FirstRow + rect.LastRow) * 0.5);
    const float centreCol = static_cast<float>((rect.FirstCol + rect.LastCol) * 0.5);
    const double t = fraction;
    const auto pull = [t](int32_t x, float centre) {
        const double kept = x * t;
        const double added = static_cast<double>(centre) * (1.0 - t);
        return TruncateToInt32(kept + added + 0.5);
    };
    return {pull(rect.FirstRow, centreRow), pull(rect.FirstCol, centreCol),
            pull(rect.LastRow, centreRow), pull(rect.LastCol, centreCol)};
}

double RegionSum(const ScoringInput& in, const std::vector<double>& table, const WorkRect& rect)
{
    const int64_t firstRow = rect.FirstRow;
    const int64_t firstCol = rect.FirstCol;
    const double a = At(in, table, rect.LastRow, rect.LastCol);
    const double b = At(in, table, firstRow - 1, rect.LastCol);
    const double c = At(in, table, rect.LastRow, firstCol - 1);
    const double d = At(in, table, firstRow - 1, firstCol - 1);
    return ((a - b) - c) + d;
}

double RegionMean(const ScoringInput& in, const std::vector<double>& table, const WorkRect& rect,
                  double denominator)
{
    return RegionSum(in, table, rect) / denominator;
}

Shares MeasureShares(const ScoringInput& in, const WorkRect& rect)
{
    Shares shares;
    shares.ContrastMask = RegionMean(in, in.ContrastMaskTable, rect, in.ContrastMaskTotal);
    shares.ColorContrast = RegionMean(in, in.ColorContrastTable, rect, in.ColorContrastTotal);
    shares.Edge = RegionMean(in, in.EdgeTable, rect, in.EdgeTotal);
    shares.Peak = static_cast<float>(RegionMean(in, in.PeakTable, rect, in.PeakTotal));
    shares.Coverage =
        static_cast<float>(kThreeTenths * shares.ContrastMask +
                           kThreeTenths * shares.ColorContrast + kFourTenths * shares.Edge);
    return shares;
}

float CentrePeakShare(const ScoringInput& in, const WorkRect& rect)
{
    return static_cast<float>(
        RegionMean(in, in.PeakTable, ShrinkAboutCentre(rect, 0.33F), in.PeakTotal));
}

bool ReachesContent(double contrastMaskShare, double colorContrastShare)
{
    return contrastMaskShare >= kFourTenths && colorContrastShare >= kFourTenths;
}

int32_t BandWidth(const ScoringInput& in)
{
    return std::max(1, TruncateToInt32(in.BorderBand * 0.5));
}

float SideValue(const ScoringInput& in, const WorkRect& rect, int side)
{
    const int32_t h = BandWidth(in);
    WorkRect band = rect;
    if (side == kTop)
        band.LastRow = rect.FirstRow + h - 1;
    if (side == kBottom)
        band.FirstRow = rect.LastRow - h + 1;
    if (side == kLeft)
        band.LastCol = rect.FirstCol + h - 1;
    if (side == kRight)
        band.FirstCol = rect.LastCol - h + 1;

    // Checks only the limits across the band, and only against the picture.
    const bool alongRows = side == kTop || side == kBottom;
    const int32_t first = alongRows ? band.FirstRow : band.FirstCol;
    const int32_t last = alongRows ? band.LastRow : band.LastCol;
    const int32_t end = alongRows ? in.WorkRows : in.WorkCols;
    if (first < 0 || first > end - 1 || last < 0 || last > end - 1)
        return 1e10F;
    return static_cast<float>(RegionSum(in, in.SideTables[side], band) / h);
}

float BorderCost(const ScoringInput& in, const WorkRect& rect)
{
    // The products with the gains are not rounded to float.
    const auto gained = [&in, &rect](int side) {
        return static_cast<double>(SideValue(in, rect, side)) *
               static_cast<double>(in.SideGain[side]);
    };
    const double top = gained(kTop);
    const double bottom = gained(kBottom);
    const double left = gained(kLeft);
    const double right = gained(kRight);
    const int32_t w = rect.LastCol - rect.FirstCol + 1;
    const int32_t h = rect.LastRow - rect.FirstRow + 1;

    const float perDirection = static_cast<float>((left + right) / h + (top + bottom) / w);
    const float perimeter = static_cast<float>((top + bottom + left + right) / (w + h));
    return static_cast<float>(static_cast<double>(perDirection) + static_cast<double>(perimeter));
}

float BorderScoreOfCost(float cost)
{
    return static_cast<float>(std::exp(static_cast<double>(cost) / -10.0));
}

CellLimits FindCellLimits(int32_t first, int32_t last, int cells, int index)
{
    const float extent = static_cast<float>(last - first + 1);
    const float cell = static_cast<float>(static_cast<double>(extent) / cells);
    const double start = static_cast<float>(first);

    // The whole argument of floor is rounded to float, once. That can lift a limit onto the
    // next whole number: six cells of 10 / 12 pixels end at 5 exactly.
    const float low = static_cast<float>(index * static_cast<double>(cell) + start);
    const float high = static_cast<float>((index + 1) * static_cast<double>(cell) + start - 1.0);

    CellLimits limits;
    limits.First = TruncateToInt32(std::floor(static_cast<double>(low)));
    limits.Last = TruncateToInt32(std::floor(static_cast<double>(high)));
    if (limits.Last < limits.First)
        limits.Last = limits.First;
    return limits;
}

std::vector<float> CompositionDescriptor(const ScoringInput& in, const WorkRect& rect)
{
    struct Grid {
        const std::vector<double>& Table;
        int Size;
    };
    const Grid grids[] = {{in.ContrastTable, 4},
                          {in.ContrastTable, 8},
                          {in.SaliencyTable, 4},
                          {in.SaliencyTable, 8},
                          {in.SaliencyTable, 12}};
    std::vector<float> descriptor;
    for (const Grid& grid : grids)
        for (int i = 0; i < grid.Size; ++i)
            for (int j = 0; j < grid.Size; ++j) {
                const CellLimits rows = FindCellLimits(rect.FirstRow, rect.LastRow, grid.Size, i);
                const CellLimits cols = FindCellLimits(rect.FirstCol, rect.LastCol, grid.Size, j);
                const float area =
                    static_cast<float>((rows.Last - rows.First + 1) * (cols.Last - cols.First + 1));
                const float sum = static_cast<float>(
                    RegionSum(in, grid.Table, {rows.First, cols.First, rows.Last, cols.Last}));
                descriptor.push_back(static_cast<float>(static_cast<double>(sum) /
                                                        std::max(1.0, static_cast<double>(area))));
            }
    return descriptor;
}

float CompositionScoreOfDot(float dot, double bias)
{
    float s = static_cast<float>(static_cast<double>(dot) + bias);
    if (s > 3.0F)
        s = 3.0F;
    if (s < -3.0F)
        s = -3.0F;
    return static_cast<float>((3.0 + static_cast<double>(s)) / 6.0);
}

Composition EvaluateComposition(const ScoringInput& in, const WorkRect& rect)
{
    Composition result;
    result.Descriptor = CompositionDescriptor(in, rect);
    result.Dot = 0.0;
    result.DotLeftToRight = 0.0F;
    result.DotMagnitude = 0.0;
    for (size_t i = 0; i < result.Descriptor.size(); ++i) {
        const float centred = static_cast<float>(static_cast<double>(result.Descriptor[i]) -
                                                 static_cast<double>(in.DescriptorMean.at(i)));
        const float standardised = static_cast<float>(
            static_cast<double>(centred) * static_cast<double>(in.DescriptorScale.at(i)));
        result.Standardised.push_back(standardised);

        const double product =
            static_cast<double>(standardised) * static_cast<double>(in.DescriptorWeights.at(i));
        result.Dot += product;
        result.DotMagnitude += std::fabs(product);
        result.DotLeftToRight =
            static_cast<float>(static_cast<double>(result.DotLeftToRight) +
                               static_cast<double>(static_cast<float>(product)));
    }
    result.Score = CompositionScoreOfDot(static_cast<float>(result.Dot), in.DescriptorBias);
    result.ScoreLeftToRight = CompositionScoreOfDot(result.DotLeftToRight, in.DescriptorBias);
    return result;
}

float RectCoverage(const Rect& crop, const Rect& rect)
{
    const auto common = [](int64_t firstA, int64_t lastA, int64_t firstB, int64_t lastB) {
        return std::max<int64_t>(0, std::min(lastA, lastB) - std::max(firstA, firstB) + 1);
    };
    const int64_t inside = common(crop.Left, crop.Right, rect.Left, rect.Right) *
                           common(crop.Top, crop.Bottom, rect.Top, rect.Bottom);
    const int64_t area = (static_cast<int64_t>(rect.Right) - rect.Left + 1) *
                         (static_cast<int64_t>(rect.Bottom) - rect.Top + 1);
    // No pixels: 0 / 0 is NaN, which fails every comparison.
    return static_cast<float>(static_cast<double>(inside) / static_cast<double>(area));
}

std::vector<Roi> SoftRects(const std::vector<Roi>& rects)
{
    return RectsOfKinds(rects, kSoftInclude, kSoftExclude);
}

std::vector<Roi> HardRects(const std::vector<Roi>& rects)
{
    return RectsOfKinds(rects, kHardInclude, kHardExclude);
}

float RoiScore(const std::vector<Roi>& softRects, const Rect& crop)
{
    if (softRects.empty())
        return 1.0F;

    const double n = static_cast<double>(softRects.size());
    float covered = 0.0F;
    float met = 0.0F;
    double nearness = 0.0;
    for (const Roi& rect : softRects) {
        const float f = RectCoverage(crop, SidesOf(rect));
        if (rect.Kind == kSoftInclude) {
            covered = static_cast<float>(static_cast<double>(covered) + static_cast<double>(f));
            if (f == 1.0F)
                met = met + 1.0F;
            const int64_t rows =
                std::abs(static_cast<int64_t>(crop.Top) + crop.Bottom - rect.Top - rect.Bottom);
            const int64_t cols =
                std::abs(static_cast<int64_t>(crop.Left) + crop.Right - rect.Left - rect.Right);
            const int64_t sides = (static_cast<int64_t>(rect.Right) - rect.Left + 1) +
                                  (static_cast<int64_t>(rect.Bottom) - rect.Top + 1);
            const double e =
                std::exp(-(static_cast<double>(rows + cols) / static_cast<double>(sides)));
            if (e > nearness)
                nearness = e;
        } else if (rect.Kind == kSoftExclude) {
            // 1 - f is not rounded on its own; the accumulator is.
            covered =
                static_cast<float>(static_cast<double>(covered) + (1.0 - static_cast<double>(f)));
            if (f == 0.0F)
                met = met + 1.0F;
        }
    }
    if (static_cast<double>(met) == n)
        return 1.0F;

    const double x = (static_cast<double>(met) + static_cast<double>(covered) / n) / n;
    const double near = static_cast<float>(nearness);
    const float y = static_cast<float>(x + near * static_cast<double>(0.01F));
    return static_cast<float>(static_cast<double>(y) * static_cast<double>(0.1F));
}

bool PassesHardRects(const std::vector<Roi>& hardRects, const Rect& crop)
{
    for (const Roi& rect : hardRects) {
        const float f = RectCoverage(crop, SidesOf(rect));
        if (rect.Kind == kHardInclude && !(f == 1.0F))
            return false;
        if (rect.Kind == kHardExclude && !(f == 0.0F))
            return false;
    }
    return true;
}

void EvaluateCropRect(const ScoringInput& in, Crop& crop)
{
    if (crop.Scored)
        return;

    const WorkRect rect = ToWorkingRect(in, crop);
    const Shares shares = MeasureShares(in, rect);
    crop.CoverageScore = shares.Coverage;
    crop.PeakScore = shares.Peak;
    crop.CentrePeakScore = CentrePeakShare(in, rect);
    crop.BorderScore = BorderScoreOfCost(BorderCost(in, rect));
    crop.CompositionScore = EvaluateComposition(in, rect).Score;
    crop.Scored = true;
    if (ReachesContent(shares.ContrastMask, shares.ColorContrast))
        crop.CoversContent = true;
}

void EvaluateCropRects(const ScoringInput& in, const std::vector<Roi>& rects, CropGrid& grid,
                       uint32_t aspectIndex, uint32_t scaleIndex)
{
    const std::vector<Roi> softRects = SoftRects(rects);
    const auto walkCell = [&in, &softRects](CropCell& cell) {
        for (Crop& crop : cell) {
            EvaluateCropRect(in, crop);
            crop.RoiScore = RoiScore(softRects, SidesOf(crop));
        }
    };
    const auto walkRow = [&walkCell, scaleIndex](CropRow& row) {
        if (scaleIndex != kNoIndex)
            walkCell(row.at(scaleIndex));
        else
            for (CropCell& cell : row)
                walkCell(cell);
    };
    if (aspectIndex != kNoIndex)
        walkRow(grid.at(aspectIndex));
    else
        for (CropRow& row : grid)
            walkRow(row);
}

} // namespace slowOracle
