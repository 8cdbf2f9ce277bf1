#include "scoring/composition_lanes.h"

#include "numeric/isa_variants.h"
#include "scoring/composition_coefficients.h"
#include "scoring/composition_model.h"

namespace vistaTrim {

namespace {

constexpr int32_t kLanes = 8;
constexpr int32_t kBlocks = kScoredTogether / kLanes;

// Eight numbers, one of each crop. The compiler splits them where registers are narrower.
// Typedefs, because that is what the attribute is documented for.
// NOLINTBEGIN(modernize-use-using)
typedef double Doubles __attribute__((vector_size(kLanes * sizeof(double)), may_alias));
typedef float Floats __attribute__((vector_size(kLanes * sizeof(float)), may_alias));
// NOLINTEND(modernize-use-using)

// Running sums of the fixed-order dot product: slot i goes to sum i % 16, in ascending order.
constexpr int32_t kDotSums = 16;
static_assert(kDescriptorSize % kDotSums == 0, "no slots are left over");

// The crops of a group. A last block that is not full repeats the first crop.
struct Group {
    const GridLimits* Rows[kScoredTogether];
    const GridLimits* Cols[kScoredTogether];
    int32_t Blocks;
    Floats RowLengths[kBlocks][kGridCells];
    Floats ColLengths[kBlocks][kGridCells];
    Floats Sums[kBlocks][kDotSums];
};

VISTATRIM_VARIANT_BODY void StartGroup(const GridLimits* const* rows, const GridLimits* const* cols,
                                       int32_t count, Group& group)
{
    group.Blocks = (count + kLanes - 1) / kLanes;
    for (int32_t crop = 0; crop < group.Blocks * kLanes; ++crop) {
        group.Rows[crop] = rows[crop < count ? crop : 0];
        group.Cols[crop] = cols[crop < count ? crop : 0];
    }
    for (int32_t block = 0; block < group.Blocks; ++block) {
        for (int32_t cell = 0; cell < kGridCells; ++cell)
            for (int32_t lane = 0; lane < kLanes; ++lane) {
                const int32_t crop = block * kLanes + lane;
                // The loop above has set both for every crop of the block.
                // NOLINTNEXTLINE(clang-analyzer-core.NullDereference)
                group.RowLengths[block][cell][lane] = group.Rows[crop]->Length[cell];
                group.ColLengths[block][cell][lane] = group.Cols[crop]->Length[cell];
            }
        for (int32_t k = 0; k < kDotSums; ++k)
            group.Sums[block][k] = Floats{};
    }
}

// Rows of corners of a crop, in its lane: corner k = row[edge k], 0 left of the map. The first row
// is separate because it may be above the map, where all corners are 0; the others are read four at
// a time.
VISTATRIM_VARIANT_BODY void GatherFirstRow(const double* table, int64_t stride, int32_t rowEdge,
                                           const int32_t* edges, int32_t points, double* lane)
{
    if (rowEdge < 0) {
        for (int32_t k = 0; k < points; ++k)
            lane[k * kLanes] = 0.0;
        return;
    }
    const double* const row = table + rowEdge * stride;
    lane[0] = edges[0] < 0 ? 0.0 : row[edges[0]];
    for (int32_t k = 1; k < points; ++k)
        lane[k * kLanes] = row[edges[k]];
}

VISTATRIM_VARIANT_BODY void GatherFourRows(const double* table, int64_t stride,
                                           const int32_t* rowEdges, const int32_t* edges,
                                           int32_t points, double* lane, int64_t laneStride)
{
    const double* const rows[4] = {table + rowEdges[0] * stride, table + rowEdges[1] * stride,
                                   table + rowEdges[2] * stride, table + rowEdges[3] * stride};
    for (int32_t r = 0; r < 4; ++r)
        lane[r * laneStride] = edges[0] < 0 ? 0.0 : rows[r][edges[0]];
    for (int32_t k = 1; k < points; ++k) {
        const int64_t edge = edges[k];
        double* const out = lane + k * kLanes;
        out[0] = rows[0][edge];
        out[laneStride] = rows[1][edge];
        out[2 * laneStride] = rows[2][edge];
        out[3 * laneStride] = rows[3][edge];
    }
}

// The weighted mean of each cell of a row of cells, whose corners are `step` apart, goes to its
// running sum. The terms of a cell are those of RegionSum in its order. Lengths are at least 1, and
// so is an area.
VISTATRIM_VARIANT_BODY void AddCells(const Doubles* upper, const Doubles* lower, int32_t step,
                                     int32_t cells, const Floats& rowLength,
                                     const Floats* colLengths, int32_t firstSlot, Floats* sums)
{
    for (int32_t j = 0; j < cells; ++j, upper += step, lower += step) {
        const int32_t slot = firstSlot + j;
        const Doubles inside = ((lower[step] - upper[step]) - lower[0]) + upper[0];
        const Floats value = __builtin_convertvector(inside, Floats) / (rowLength * colLengths[j]);
        const Floats product =
            ((value - DescriptorMean[slot]) * DescriptorScale[slot]) * DescriptorWeights[slot];
        sums[slot % kDotSums] += product;
    }
}

// The 4-fold and the 8-fold grid of a table. The 4-fold grid uses every second corner of the 8-fold
// one.
VISTATRIM_VARIANT_BODY void AddCoarseGrids(const double* table, int64_t stride, int32_t slot4,
                                           int32_t slot8, Group& group)
{
    Doubles corners[9][kBlocks][9];
    constexpr int64_t kRow =
        int64_t{kBlocks} * 9 * kLanes; // doubles from one row of corners to the next
    const auto laneOf = [&corners](int32_t i, int32_t crop) {
        return reinterpret_cast<double*>(corners[i][crop / kLanes]) + crop % kLanes;
    };
    for (int32_t crop = 0; crop < group.Blocks * kLanes; ++crop)
        GatherFirstRow(table, stride, group.Rows[crop]->Edges8[0], group.Cols[crop]->Edges8, 9,
                       laneOf(0, crop));
    for (int32_t i = 1; i < 9; i += 4)
        for (int32_t crop = 0; crop < group.Blocks * kLanes; ++crop)
            GatherFourRows(table, stride, group.Rows[crop]->Edges8 + i, group.Cols[crop]->Edges8, 9,
                           laneOf(i, crop), kRow);
    for (int32_t block = 0; block < group.Blocks; ++block) {
        const Floats* const rowLengths = group.RowLengths[block];
        const Floats* const colLengths = group.ColLengths[block];
        Floats* const sums = group.Sums[block];
        for (int32_t i = 0; i < 4; ++i)
            AddCells(corners[2 * i][block], corners[2 * i + 2][block], 2, 4,
                     rowLengths[kGridFirstCell[0] + i], colLengths + kGridFirstCell[0],
                     slot4 + i * 4, sums);
        for (int32_t i = 0; i < 8; ++i)
            AddCells(corners[i][block], corners[i + 1][block], 1, 8,
                     rowLengths[kGridFirstCell[1] + i], colLengths + kGridFirstCell[1],
                     slot8 + i * 8, sums);
    }
}

VISTATRIM_VARIANT_BODY void AddFineGrid(const double* table, int64_t stride, int32_t slot12,
                                        Group& group)
{
    // The first row of a group of four is the last of the group before.
    Doubles corners[5][kBlocks][13];
    constexpr int64_t kRow = int64_t{kBlocks} * 13 * kLanes;
    const auto laneOf = [&corners](int32_t i, int32_t crop) {
        return reinterpret_cast<double*>(corners[i][crop / kLanes]) + crop % kLanes;
    };
    for (int32_t crop = 0; crop < group.Blocks * kLanes; ++crop)
        GatherFirstRow(table, stride, group.Rows[crop]->Edges12[0], group.Cols[crop]->Edges12, 13,
                       laneOf(0, crop));
    for (int32_t i = 0; i < 12; i += 4) {
        for (int32_t crop = 0; crop < group.Blocks * kLanes; ++crop)
            GatherFourRows(table, stride, group.Rows[crop]->Edges12 + i + 1,
                           group.Cols[crop]->Edges12, 13, laneOf(1, crop), kRow);
        for (int32_t block = 0; block < group.Blocks; ++block) {
            for (int32_t r = 0; r < 4; ++r)
                AddCells(corners[r][block], corners[r + 1][block], 1, 12,
                         group.RowLengths[block][kGridFirstCell[2] + i + r],
                         group.ColLengths[block] + kGridFirstCell[2], slot12 + (i + r) * 12,
                         group.Sums[block]);
            for (int32_t k = 0; k < 13; ++k)
                corners[0][block][k] = corners[4][block][k];
        }
    }
}

VISTATRIM_VARIANT_BODY void DotProductsBody(const double* contrast, const double* saliency,
                                            int64_t stride, const GridLimits* const* rows,
                                            const GridLimits* const* cols, int32_t count,
                                            float* dots)
{
    Group group;
    StartGroup(rows, cols, count, group);
    AddCoarseGrids(contrast, stride, kContrast4Slot, kContrast8Slot, group);
    AddCoarseGrids(saliency, stride, kSaliency4Slot, kSaliency8Slot, group);
    AddFineGrid(saliency, stride, kSaliency12Slot, group);
    for (int32_t crop = 0; crop < count; ++crop) {
        const Floats* const sums = group.Sums[crop / kLanes];
        const int32_t lane = crop % kLanes;
        float quarters[4];
        // StartGroup has zeroed the sums.
        // NOLINTBEGIN(clang-analyzer-core.UndefinedBinaryOperatorResult)
        for (int32_t k = 0; k < 4; ++k)
            quarters[k] =
                (sums[k][lane] + sums[4 + k][lane]) + (sums[8 + k][lane] + sums[12 + k][lane]);
        // NOLINTEND(clang-analyzer-core.UndefinedBinaryOperatorResult)
        dots[crop] = (quarters[0] + quarters[1]) + (quarters[2] + quarters[3]);
    }
}

VISTATRIM_VARIANTS(DotProducts,
                   (const double* contrast, const double* saliency, int64_t stride,
                    const GridLimits* const* rows, const GridLimits* const* cols, int32_t count,
                    float* dots),
                   (contrast, saliency, stride, rows, cols, count, dots))

} // namespace

void ScoreTogether(const CDoubleMatrix& contrastTable, const CDoubleMatrix& saliencyTable,
                   const GridLimits* const* rows, const GridLimits* const* cols, int32_t count,
                   float* scores)
{
    DotProducts(contrastTable.Data, saliencyTable.Data, contrastTable.Cols, rows, cols, count,
                scores);
    for (int32_t crop = 0; crop < count; ++crop)
        scores[crop] = MapModelOutput(scores[crop]);
}

} // namespace vistaTrim
