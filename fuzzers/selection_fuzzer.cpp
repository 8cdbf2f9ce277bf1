// Compares the selection with the slow one on arbitrary sets of scored records, including ties
// and NaN.
#include <cstdint>
#include <memory>
#include <vector>

#include "candidates/cells_of_grid.h"
#include "fuzz_support.h"
#include "oracle/record_bridge.h"
#include "oracle/slow_selection.h"
#include "scoring/crop_analyzer.h"
#include "vistaTrim/functions.h"

using namespace fuzzing;
using namespace vistaTrim;

namespace {

// Selection reads no map, so one analyzer of the smallest picture serves all inputs.
CCropAnalyzer& AnyAnalyzer()
{
    static const int32_t offsets[4] = {0, 1, 2, 3};
    static const std::unique_ptr<IImage, decltype(&DestroyImageObj)> image(
        CreateImageObj(1, 640, 3, offsets, nullptr), DestroyImageObj);
    static CCropAnalyzer analyzer(image.get());
    return analyzer;
}

// A measure as scoring writes it, or anything a host may have written into a record.
double Measure(FuzzedDataProvider& data)
{
    return Whole(data, 0, 3) == 0 ? Number(data) : static_cast<float>(Whole(data, 0, 255)) / 255.0f;
}

// May lie far outside any picture, but areas stay exact in a double, as do those of the
// generator's crops.
int32_t Coordinate(FuzzedDataProvider& data)
{
    constexpr int32_t kFar = 1 << 25;
    return Whole(data, 0, 15) == 0 ? Whole(data, -kFar, kFar) : Whole(data, -8, 80);
}

CInt32CropRect Record(FuzzedDataProvider& data)
{
    CInt32CropRect record;
    record.Left = Coordinate(data);
    record.Top = Coordinate(data);
    // Rarely, with sides swapped or empty.
    const bool crossed = Whole(data, 0, 15) == 0;
    record.Right = crossed ? Coordinate(data) : record.Left + Whole(data, 0, 60);
    record.Bottom = crossed ? Coordinate(data) : record.Top + Whole(data, 0, 60);
    record.CoversContent = Whole(data, 0, 1) != 0;
    record.Score.Scored = true;
    record.Score.CompositionScore = Measure(data);
    record.Score.CoverageScore = Measure(data);
    record.Score.BorderScore = Measure(data);
    record.Score.PeakScore = Measure(data);
    record.Score.CentrePeakScore = Measure(data);
    record.Score.RoiScore = Whole(data, 0, 1) != 0 ? 1.0 : Measure(data);
    return record;
}

CRectOfInterest Rectangle(FuzzedDataProvider& data)
{
    CRectOfInterest rect(Coordinate(data), Coordinate(data), Coordinate(data), Coordinate(data),
                         false);
    rect.Kind = Whole(data, -1, 4);
    rect.Enabled = Whole(data, 0, 7) != 0;
    return rect;
}

// Up to 1300 records derived from a few: enough to cut the pool, few enough for the slow
// selection, which takes quadratic time. Each is a copy with a measure or position moved a
// little, which makes many ties, near-ties and near-duplicates.
CropGridRows Grid(FuzzedDataProvider& data)
{
    std::vector<CInt32CropRect> kinds;
    const int32_t kindCount = Whole(data, 1, 12);
    kinds.reserve(static_cast<size_t>(kindCount));
    for (int32_t i = 0; i < kindCount; ++i)
        kinds.push_back(Record(data));
    const int32_t count = Whole(data, 0, 15) == 0 ? Whole(data, 0, 1300) : Whole(data, 0, 60);
    uint32_t state = static_cast<uint32_t>(Whole(data, 0, INT32_MAX));
    const int32_t spread = Whole(data, 0, 3);
    const int32_t rows = Whole(data, 1, 3);

    CropGridRows grid(static_cast<size_t>(rows));
    grid[0].emplace_back();
    for (int32_t i = 0; i < count; ++i) {
        state = state * 1664525U + 1013904223U;
        CInt32CropRect record = kinds[(state >> 8) % kinds.size()];
        if (spread > 0) {
            record.Score.CompositionScore += ((state >> 12) % 64U) / 64.0;
            record.Score.BorderScore -= ((state >> 18) % 16U) / 16.0;
        }
        if (spread > 1) {
            const int32_t shift = static_cast<int32_t>((state >> 22) % 16U);
            record.Left += shift;
            record.Right += shift;
        }
        // Rows end up with different lengths; some cells and some rows stay empty.
        CropRow& row = grid[(state >> 26) % grid.size()];
        if (row.empty() || (state >> 28) == 0)
            row.emplace_back();
        row.back().push_back(record);
    }
    return grid;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count)
{
    FuzzedDataProvider data(bytes, count);
    CCropAnalyzer& analyzer = AnyAnalyzer();
    analyzer.RectsOfInterest.clear();
    const int32_t n =
        Whole(data, 0, 3) == 0 ? Whole(data, INT32_MIN, INT32_MAX) : Whole(data, -1, 70);
    const int32_t mode = Whole(data, -1, 4);
    const WeightDistribution weights(Number(data), Number(data), Number(data), Number(data),
                                     Number(data));
    const int32_t rects = Whole(data, 0, 7) == 0 ? Whole(data, 0, 4) : 0;
    for (int32_t i = 0; i < rects; ++i)
        analyzer.RectsOfInterest.push_back(Rectangle(data));
    const bool oneCell = Whole(data, 0, 3) == 0;
    const CropGridRows grid = Grid(data);
    const uint32_t index = oneCell ? 0 : NoIndex;

    const slowOracle::Selection expected = slowOracle::SelectTopCrops(
        n, slowOracle::FromRecords(grid), mode, index, index, slowOracle::FromRecord(weights),
        slowOracle::FromRecords(analyzer.RectsOfInterest));
    const std::vector<CInt32CropRect>& found =
        analyzer.SelectTopCrops(n, CellsOf(grid, index, index), mode, weights);

    Demand(found.size() == expected.Result.size(), "as many crops as the slow selection");
    for (size_t i = 0; i < found.size(); ++i)
        Demand(slowOracle::SameCrop(slowOracle::FromRecord(found[i]), expected.Result[i]),
               "the crops of the slow selection, in its order");
    return 0;
}
