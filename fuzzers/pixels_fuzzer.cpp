// Analyses pictures of any content and any valid size. Every map and table must be finite, every
// map within 0..1, and the measures of the picture's crops within their ranges.
#include <cmath>
#include <memory>
#include <vector>

#include "fuzz_support.h"
#include "scoring/crop_analyzer.h"
#include "vistaTrim/functions.h"

using namespace fuzzing;
using namespace vistaTrim;

namespace {

// Shares of a total come from four corners of a table, whose sums round: the share of everything
// can exceed 1, and the share of nothing fall below 0, by this much.
constexpr double kShareSlack = 1e-6;

// Normalising a map to 0..1 divides by its range in float, so the maximum can exceed 1 by this
// much.
constexpr float kMapSlack = 1e-5f;

bool InRange(double value, double slack)
{
    return value >= -slack && value <= 1.0 + slack;
}

void CheckMap(const CFloatMatrix& map, const CDoubleMatrix* table)
{
    for (uint32_t i = 0; i < map.Count; ++i) {
        Demand(std::isfinite(map.Data[i]), "a map value is finite");
        Demand(map.Data[i] >= 0.0f && map.Data[i] <= 1.0f + kMapSlack, "a map value is in 0..1");
    }
    for (uint32_t i = 0; table != nullptr && i < table->Count; ++i)
        Demand(std::isfinite(table->Data[i]), "a table value is finite");
}

void CheckAnalyzer(const CCropAnalyzer& analyzer, const Size& size)
{
    Demand(analyzer.WorkCols == size.Cols && analyzer.WorkRows == size.Rows, "working size");
    Demand(analyzer.ScaleFactor == 1.0f, "scale of a picture of valid size");
    CheckMap(analyzer.ContrastMap, &analyzer.ContrastTable);
    CheckMap(analyzer.SaliencyMap, &analyzer.SaliencyTable);
    CheckMap(analyzer.ContrastMask, &analyzer.ContrastMaskTable);
    CheckMap(analyzer.ColorContrastMap, &analyzer.ColorContrastTable);
    CheckMap(analyzer.PeakMap, &analyzer.PeakTable);
    CheckMap(analyzer.EdgeMap, &analyzer.EdgeTable);
    for (int side = 0; side < 4; ++side) {
        CheckMap(analyzer.SideMaps[side], &analyzer.SideTables[side]);
        Demand(analyzer.SideGain[side] > 0.9f && analyzer.SideGain[side] < 100.1f, "side gain");
    }
    for (const float total : {analyzer.ContrastMaskTotal, analyzer.ColorContrastTotal,
                              analyzer.EdgeTotal, analyzer.PeakTotal})
        Demand(std::isfinite(total) && total >= 1e-10f, "total of a map");
}

void CheckScore(const Score& score)
{
    Demand(score.Scored, "a measured record is marked");
    Demand(InRange(score.CompositionScore, 0.0), "composition score");
    Demand(InRange(score.CoverageScore, kShareSlack), "coverage score");
    Demand(InRange(score.BorderScore, kShareSlack), "border score");
    Demand(InRange(score.PeakScore, kShareSlack), "peak score");
    Demand(InRange(score.CentrePeakScore, kShareSlack), "centre peak score");
    Demand(score.RoiScore == 1.0 && score.MergedScore == 0.0,
           "scores that only a request sets are unchanged");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    SilenceKernelMessages();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count)
{
    FuzzedDataProvider data(bytes, count);
    const Size size = PictureSize(data);
    CInt32CropRect crops[4];
    for (CInt32CropRect& crop : crops) {
        crop.Left = Whole(data, 0, size.Cols - 1);
        crop.Right = Whole(data, crop.Left, size.Cols - 1);
        crop.Top = Whole(data, 0, size.Rows - 1);
        crop.Bottom = Whole(data, crop.Top, size.Rows - 1);
    }
    const std::vector<uint8_t> pixels = Pixels(data, size);

    const int32_t offsets[4] = {0, 1, 2, 3};
    const std::unique_ptr<IImage, decltype(&DestroyImageObj)> image(
        CreateImageObj(static_cast<uint32_t>(size.Rows), static_cast<uint32_t>(size.Cols), 3,
                       offsets, pixels.data()),
        DestroyImageObj);
    CCropAnalyzer analyzer(image.get());
    CheckAnalyzer(analyzer, size);

    CInt32CropRect whole(0, size.Cols - 1, 0, size.Rows - 1);
    analyzer.EvaluateCropRect(whole);
    CheckScore(whole.Score);
    for (CInt32CropRect& crop : crops) {
        analyzer.EvaluateCropRect(crop);
        CheckScore(crop.Score);
        Demand(crop.Score.PeakScore <= whole.Score.PeakScore + kShareSlack, "a share of the whole");
    }
    return 0;
}
