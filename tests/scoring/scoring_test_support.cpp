#include "scoring/scoring_test_support.h"

#include <algorithm>
#include <cstring>

#include "numeric/summed_area.h"
#include "scoring/composition_coefficients.h"

using namespace vistaTrim;

namespace scoringTests {

namespace {

void FillNoise(CFloatMatrix& map, CDoubleMatrix& table, std::mt19937& random)
{
    // Squared, so that most values are small and the tables are not plain ramps.
    std::uniform_real_distribution<float> unit(0.0f, 1.0f);
    for (uint32_t i = 0; i < map.Count; ++i) {
        const float value = unit(random);
        map.Data[i] = value * value;
    }
    BuildSummedAreaTable(map, table);
}

float TotalOf(const CDoubleMatrix& table)
{
    return std::max(static_cast<float>(table.Data[table.Count - 1]), 1e-10f);
}

std::vector<double> ListOf(const CDoubleMatrix& table)
{
    return std::vector<double>(table.Data, table.Data + table.Count);
}

std::shared_ptr<CPictureAnalysis> SizedAnalysis(int32_t rows, int32_t cols)
{
    auto analysis = std::make_shared<CPictureAnalysis>();
    analysis->WorkRows = rows;
    analysis->WorkCols = cols;
    analysis->SourceRows = rows;
    analysis->SourceCols = cols;
    analysis->ScaleFactor = 1.0f;
    analysis->BorderBand =
        std::max(1, static_cast<int32_t>(static_cast<float>(std::min(rows, cols)) * 0.15f));
    for (CFloatMatrix& map : analysis->Maps)
        map.Resize(static_cast<uint32_t>(rows), static_cast<uint32_t>(cols));
    for (CDoubleMatrix& table : analysis->Tables)
        table.Resize(static_cast<uint32_t>(rows), static_cast<uint32_t>(cols));
    return analysis;
}

void TakeTotals(CPictureAnalysis& analysis)
{
    for (int32_t k = 0; k < PictureMapCount; ++k)
        analysis.Totals[k] = TotalOf(analysis.Tables[k]);
}

} // namespace

std::unique_ptr<WritableAnalyzer> NoiseAnalyzer(int32_t rows, int32_t cols, uint32_t seed)
{
    const std::shared_ptr<CPictureAnalysis> analysis = SizedAnalysis(rows, cols);
    std::mt19937 random(seed);
    for (int32_t k = 0; k < PictureMapCount; ++k)
        FillNoise(analysis->Maps[k], analysis->Tables[k], random);
    TakeTotals(*analysis);
    for (int side = 0; side < 4; ++side)
        analysis->SideGain[side] = 0.25f + 0.5f * static_cast<float>(side);
    return std::make_unique<WritableAnalyzer>(analysis);
}

std::unique_ptr<WritableAnalyzer> ZeroAnalyzer(int32_t rows, int32_t cols)
{
    const std::shared_ptr<CPictureAnalysis> analysis = SizedAnalysis(rows, cols);
    for (int32_t k = 0; k < PictureMapCount; ++k)
        FillMap(*analysis, static_cast<PictureMap>(k), 0.0f);
    TakeTotals(*analysis);
    for (float& gain : analysis->SideGain)
        gain = static_cast<float>(1.0 / static_cast<double>(0.01f));
    return std::make_unique<WritableAnalyzer>(analysis);
}

void FillMap(CPictureAnalysis& analysis, PictureMap map, float value)
{
    FillMap(analysis, map, WorkingRect{0, 0, analysis.WorkRows - 1, analysis.WorkCols - 1}, value);
}

void FillMap(CPictureAnalysis& analysis, PictureMap map, const WorkingRect& where, float value)
{
    for (int32_t row = where.FirstRow; row <= where.LastRow; ++row)
        for (int32_t col = where.FirstCol; col <= where.LastCol; ++col)
            analysis.Maps[map].Data[row * analysis.WorkCols + col] = value;
    BuildSummedAreaTable(analysis.Maps[map], analysis.Tables[map]);
}

slowOracle::ScoringInput OracleInput(const CCropAnalyzer& analyzer)
{
    slowOracle::ScoringInput in;
    in.WorkCols = analyzer.WorkCols;
    in.WorkRows = analyzer.WorkRows;
    in.BorderBand = analyzer.BorderBand;
    in.ScaleFactor = analyzer.ScaleFactor;
    in.ContrastMaskTotal = analyzer.ContrastMaskTotal;
    in.ColorContrastTotal = analyzer.ColorContrastTotal;
    in.EdgeTotal = analyzer.EdgeTotal;
    in.PeakTotal = analyzer.PeakTotal;
    for (int side = 0; side < 4; ++side) {
        in.SideGain[side] = analyzer.SideGain[side];
        in.SideTables[side] = ListOf(analyzer.SideTables[side]);
    }
    in.ContrastTable = ListOf(analyzer.ContrastTable);
    in.SaliencyTable = ListOf(analyzer.SaliencyTable);
    in.ContrastMaskTable = ListOf(analyzer.ContrastMaskTable);
    in.ColorContrastTable = ListOf(analyzer.ColorContrastTable);
    in.EdgeTable = ListOf(analyzer.EdgeTable);
    in.PeakTable = ListOf(analyzer.PeakTable);
    in.DescriptorMean.assign(DescriptorMean, DescriptorMean + 304);
    in.DescriptorScale.assign(DescriptorScale, DescriptorScale + 304);
    in.DescriptorWeights.assign(DescriptorWeights, DescriptorWeights + 304);
    in.DescriptorBias = DescriptorBias;
    return in;
}

slowOracle::Crop OracleCrop(const CInt32CropRect& crop)
{
    slowOracle::Crop copy;
    copy.Left = crop.Left;
    copy.Right = crop.Right;
    copy.Top = crop.Top;
    copy.Bottom = crop.Bottom;
    copy.CoversContent = crop.CoversContent;
    copy.Scored = crop.Score.Scored;
    copy.CompositionScore = crop.Score.CompositionScore;
    copy.CoverageScore = crop.Score.CoverageScore;
    copy.BorderScore = crop.Score.BorderScore;
    copy.PeakScore = crop.Score.PeakScore;
    copy.CentrePeakScore = crop.Score.CentrePeakScore;
    copy.RoiScore = crop.Score.RoiScore;
    copy.MergedScore = crop.Score.MergedScore;
    return copy;
}

slowOracle::Roi OracleRoi(const CRectOfInterest& rect)
{
    slowOracle::Roi copy;
    copy.Left = rect.Left;
    copy.Right = rect.Right;
    copy.Top = rect.Top;
    copy.Bottom = rect.Bottom;
    copy.Kind = rect.Kind;
    copy.Enabled = rect.Enabled;
    return copy;
}

slowOracle::WorkRect OracleRect(const WorkingRect& rect)
{
    return {rect.FirstRow, rect.FirstCol, rect.LastRow, rect.LastCol};
}

WorkingRect RandomRect(std::mt19937& random, int32_t rows, int32_t cols)
{
    const auto stretch = [&random](int32_t size, int32_t& first, int32_t& last) {
        const auto below = [&random](int32_t n) {
            return static_cast<int32_t>(random() % static_cast<uint32_t>(n));
        };
        // One in four at most 14 long, one in eight the whole side, the rest of any length.
        int32_t extent = 1 + below(size);
        const int32_t kind = below(8);
        if (kind < 2)
            extent = 1 + below(std::min(size, 14));
        if (kind == 2)
            extent = size;
        first = below(size - extent + 1);
        last = first + extent - 1;
    };
    WorkingRect rect;
    stretch(rows, rect.FirstRow, rect.LastRow);
    stretch(cols, rect.FirstCol, rect.LastCol);
    return rect;
}

bool SameBits(float a, float b)
{
    return std::memcmp(&a, &b, sizeof(a)) == 0;
}

bool SameBits(double a, double b)
{
    return std::memcmp(&a, &b, sizeof(a)) == 0;
}

bool SameRecord(const CInt32CropRect& a, const CInt32CropRect& b)
{
    return a.Left == b.Left && a.Right == b.Right && a.Top == b.Top && a.Bottom == b.Bottom &&
           a.CoversContent == b.CoversContent && a.Score.Scored == b.Score.Scored &&
           SameBits(a.Score.CompositionScore, b.Score.CompositionScore) &&
           SameBits(a.Score.CoverageScore, b.Score.CoverageScore) &&
           SameBits(a.Score.BorderScore, b.Score.BorderScore) &&
           SameBits(a.Score.PeakScore, b.Score.PeakScore) &&
           SameBits(a.Score.CentrePeakScore, b.Score.CentrePeakScore) &&
           SameBits(a.Score.RoiScore, b.Score.RoiScore) &&
           SameBits(a.Score.MergedScore, b.Score.MergedScore);
}

} // namespace scoringTests
