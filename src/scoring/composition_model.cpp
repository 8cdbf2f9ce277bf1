#include "scoring/composition_model.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "numeric/cpu_forms.h"
#include "numeric/linear_algebra.h"
#include "numeric/summed_area.h"
#include "numeric/vector_ops.h"
#include "scoring/composition_coefficients.h"
#include "scoring/descriptor_grids.h"

namespace vistaTrim {

namespace {

// Slots of the descriptor: contrast 4 and 8, saliency 4, 8 and 12.
constexpr int32_t kContrast4 = 0;
constexpr int32_t kContrast8 = 16;
constexpr int32_t kSaliency4 = 80;
constexpr int32_t kSaliency8 = 96;
constexpr int32_t kSaliency12 = 160;

// The loops below name their grids one by one; these hold them to the published sizes.
constexpr int32_t Cells(int32_t gridSize)
{
    return gridSize * gridSize;
}
static_assert(std::size(ContrastGridSizes) == 2 && std::size(SaliencyGridSizes) == 3 &&
                  ContrastGridSizes[0] == 4 && ContrastGridSizes[1] == 8 &&
                  SaliencyGridSizes[0] == 4 && SaliencyGridSizes[1] == 8 &&
                  SaliencyGridSizes[2] == 12,
              "grids of the descriptor");
static_assert(kContrast8 == kContrast4 + Cells(ContrastGridSizes[0]) &&
                  kSaliency4 == kContrast8 + Cells(ContrastGridSizes[1]) &&
                  kSaliency8 == kSaliency4 + Cells(SaliencyGridSizes[0]) &&
                  kSaliency12 == kSaliency8 + Cells(SaliencyGridSizes[1]) &&
                  kDescriptorSize == kSaliency12 + Cells(SaliencyGridSizes[2]),
              "slots of the descriptor");

// A cell's size is fractional and a float; its limits are formed in double and rounded to
// float once, before the floor.
VISTATRIM_FORM_BODY void FillDivisionBody(float first, float extent, int32_t cells, int32_t* starts,
                                          int32_t* ends, float* lengths)
{
    const double size = extent / static_cast<float>(cells);
    const double origin = first;
    for (int32_t i = 0; i < cells; ++i) {
        const float startAt = static_cast<float>(i * size + origin);
        const float endAt = static_cast<float>((i + 1) * size + origin - 1.0);
        const int32_t start = static_cast<int32_t>(std::floor(static_cast<double>(startAt)));
        // A cell thinner than a pixel takes the pixel that it starts in.
        const int32_t end =
            std::max(static_cast<int32_t>(std::floor(static_cast<double>(endAt))), start);
        starts[i] = start;
        ends[i] = end;
        lengths[i] = static_cast<float>(end - start + 1);
    }
}

VISTATRIM_FORM_BODY void FillDivisionsBody(float first, float extent, int32_t* starts,
                                           int32_t* ends, float* lengths)
{
    FillDivisionBody(first, extent, 4, starts, ends, lengths);
    FillDivisionBody(first, extent, 8, starts + 4, ends + 4, lengths + 4);
    FillDivisionBody(first, extent, 12, starts + 12, ends + 12, lengths + 12);
}

VISTATRIM_FORMS(FillDivisions,
                (float first, float extent, int32_t* starts, int32_t* ends, float* lengths),
                (first, extent, starts, ends, lengths))

bool TakeEdges(const int32_t* starts, const int32_t* ends, int32_t cells, int32_t* edges)
{
    edges[0] = starts[0] - 1;
    bool tiles = true;
    for (int32_t i = 0; i < cells; ++i) {
        tiles = tiles && starts[i] == edges[i] + 1;
        edges[i + 1] = ends[i];
    }
    return tiles;
}

// The plain form of one grid: every cell by its own four corners.
void GridMeans(const CDoubleMatrix& table, const GridLimits& rows, const GridLimits& cols,
               int32_t firstCell, int32_t cells, float* means)
{
    for (int32_t i = firstCell; i < firstCell + cells; ++i)
        for (int32_t j = firstCell; j < firstCell + cells; ++j) {
            const float sum = static_cast<float>(
                RegionSum(table, rows.Start[i], cols.Start[j], rows.End[i], cols.End[j]));
            // The limits make every area at least 1; the floor only guards the division.
            *means++ = sum / std::max(1.0f, rows.Length[i] * cols.Length[j]);
        }
}

// Corners of one table row for every crop: out[k] = row[edge k], 0 left of the map. A crop's
// rows of corners stand `points` apart, the crops' corners points x points.
VISTATRIM_FORM_BODY void GatherRowBody(const double* row, const int32_t* const* colEdges,
                                       int32_t count, int32_t points, double* __restrict out)
{
    for (int32_t crop = 0; crop < count; ++crop, out += points * points) {
        const int32_t* edges = colEdges[crop];
        out[0] = edges[0] < 0 ? 0.0 : row[edges[0]];
        for (int32_t k = 1; k < points; ++k)
            out[k] = row[edges[k]];
    }
}

// The same of four table rows: each edge is looked up once for four corners.
VISTATRIM_FORM_BODY void GatherFourRowsBody(const double* table, int64_t stride,
                                            const int32_t* rowEdges, const int32_t* const* colEdges,
                                            int32_t count, int32_t points, double* __restrict out)
{
    const double* rowA = table + rowEdges[0] * stride;
    const double* rowB = table + rowEdges[1] * stride;
    const double* rowC = table + rowEdges[2] * stride;
    const double* rowD = table + rowEdges[3] * stride;
    for (int32_t crop = 0; crop < count; ++crop, out += points * points) {
        const int32_t* edges = colEdges[crop];
        const bool border = edges[0] < 0;
        out[0] = border ? 0.0 : rowA[edges[0]];
        out[points] = border ? 0.0 : rowB[edges[0]];
        out[2 * points] = border ? 0.0 : rowC[edges[0]];
        out[3 * points] = border ? 0.0 : rowD[edges[0]];
        for (int32_t k = 1; k < points; ++k) {
            const int64_t edge = edges[k];
            out[k] = rowA[edge];
            out[k + points] = rowB[edge];
            out[k + 2 * points] = rowC[edge];
            out[k + 3 * points] = rowD[edge];
        }
    }
}

// The corners of the tiling grids of crops in a row, each read once: corner (i, k) of a crop =
// table(rowEdges[i], its colEdges[k]), 0 above and left of the map. Table rows outside, crops
// inside, so that all crops find a row in the nearest cache. points is 9 or 13.
VISTATRIM_FORM_BODY void GatherCornersBody(const double* table, int64_t stride,
                                           const int32_t* rowEdges, const int32_t* const* colEdges,
                                           int32_t count, int32_t points,
                                           double* __restrict corners)
{
    if (rowEdges[0] >= 0)
        GatherRowBody(table + rowEdges[0] * stride, colEdges, count, points, corners);
    else
        for (int32_t crop = 0; crop < count; ++crop)
            std::fill_n(corners + crop * points * points, points, 0.0);
    for (int32_t i = 1; i < points; i += 4)
        GatherFourRowsBody(table, stride, rowEdges + i, colEdges, count, points,
                           corners + i * points);
}

// Means of cells x cells cells from corners that stand `step` apart: the terms of RegionSum in
// its order, and the division of the plain form. Lengths are at least 1, and so is an area.
VISTATRIM_FORM_BODY void MeansFromCornersBody(const double* __restrict corners, int32_t points,
                                              int32_t step, int32_t cells,
                                              const float* __restrict rowLengths,
                                              const float* __restrict colLengths,
                                              float* __restrict means)
{
    for (int32_t i = 0; i < cells; ++i) {
        const double* upper = corners + i * step * points;
        const double* lower = upper + step * points;
        const float rowLength = rowLengths[i];
        for (int32_t j = 0; j < cells; ++j) {
            const double a = lower[(j + 1) * step];
            const double b = upper[(j + 1) * step];
            const double c = lower[j * step];
            const double d = upper[j * step];
            const float sum = static_cast<float>(((a - b) - c) + d);
            means[i * cells + j] = sum / (rowLength * colLengths[j]);
        }
    }
}

VISTATRIM_FORM_BODY void TilingDescriptorsBody(const double* contrast, const double* saliency,
                                               int64_t stride, const GridLimits& rows,
                                               const GridLimits* const* cols, int32_t count,
                                               float* descriptors)
{
    const int32_t* edges8[kDescribedTogether];
    const int32_t* edges12[kDescribedTogether];
    for (int32_t crop = 0; crop < count; ++crop) {
        edges8[crop] = cols[crop]->Edges8;
        edges12[crop] = cols[crop]->Edges12;
    }

    // The corners of the 4-fold grids are every second one of the 8-fold grids.
    double corners[kDescribedTogether * 13 * 13];
    GatherCornersBody(contrast, stride, rows.Edges8, edges8, count, 9, corners);
    for (int32_t crop = 0; crop < count; ++crop) {
        const float* lengths = cols[crop]->Length;
        const double* own = corners + crop * 9 * 9;
        float* descriptor = descriptors + crop * kDescriptorSize;
        MeansFromCornersBody(own, 9, 2, 4, rows.Length, lengths, descriptor + kContrast4);
        MeansFromCornersBody(own, 9, 1, 8, rows.Length + 4, lengths + 4, descriptor + kContrast8);
    }
    GatherCornersBody(saliency, stride, rows.Edges8, edges8, count, 9, corners);
    for (int32_t crop = 0; crop < count; ++crop) {
        const float* lengths = cols[crop]->Length;
        const double* own = corners + crop * 9 * 9;
        float* descriptor = descriptors + crop * kDescriptorSize;
        MeansFromCornersBody(own, 9, 2, 4, rows.Length, lengths, descriptor + kSaliency4);
        MeansFromCornersBody(own, 9, 1, 8, rows.Length + 4, lengths + 4, descriptor + kSaliency8);
    }
    GatherCornersBody(saliency, stride, rows.Edges12, edges12, count, 13, corners);
    for (int32_t crop = 0; crop < count; ++crop)
        MeansFromCornersBody(corners + crop * 13 * 13, 13, 1, 12, rows.Length + 12,
                             cols[crop]->Length + 12,
                             descriptors + crop * kDescriptorSize + kSaliency12);
}

VISTATRIM_FORMS(TilingDescriptors,
                (const double* contrast, const double* saliency, int64_t stride,
                 const GridLimits& rows, const GridLimits* const* cols, int32_t count,
                 float* descriptors),
                (contrast, saliency, stride, rows, cols, count, descriptors))

// The plain form: any limits, every cell by itself.
void PlainDescriptor(const CDoubleMatrix& contrastTable, const CDoubleMatrix& saliencyTable,
                     const GridLimits& rows, const GridLimits& cols, float* descriptor)
{
    GridMeans(contrastTable, rows, cols, kGridFirstCell[0], 4, descriptor + kContrast4);
    GridMeans(contrastTable, rows, cols, kGridFirstCell[1], 8, descriptor + kContrast8);
    GridMeans(saliencyTable, rows, cols, kGridFirstCell[0], 4, descriptor + kSaliency4);
    GridMeans(saliencyTable, rows, cols, kGridFirstCell[1], 8, descriptor + kSaliency8);
    GridMeans(saliencyTable, rows, cols, kGridFirstCell[2], 12, descriptor + kSaliency12);
}

} // namespace

void FillGridLimits(int32_t first, int32_t last, GridLimits& limits)
{
    limits.First = first;
    limits.Last = last;
    FillDivisions(static_cast<float>(first), static_cast<float>(last - first + 1), limits.Start,
                  limits.End, limits.Length);

    limits.Tiles = TakeEdges(limits.Start + 4, limits.End + 4, 8, limits.Edges8);
    limits.Tiles =
        TakeEdges(limits.Start + 12, limits.End + 12, 12, limits.Edges12) && limits.Tiles;
    for (int32_t i = 0; i < 4; ++i)
        limits.Tiles = limits.Tiles && limits.Start[i] == limits.Edges8[2 * i] + 1 &&
                       limits.End[i] == limits.Edges8[2 * i + 2];
}

void ComputeDescriptorsOnGrids(const CDoubleMatrix& contrastTable,
                               const CDoubleMatrix& saliencyTable, const GridLimits& rows,
                               const GridLimits* const* cols, int32_t count, float* descriptors)
{
    bool tiles = rows.Tiles && contrastTable.Cols == saliencyTable.Cols;
    for (int32_t crop = 0; crop < count; ++crop)
        tiles = tiles && cols[crop]->Tiles;
    if (tiles) {
        TilingDescriptors(contrastTable.Data, saliencyTable.Data, contrastTable.Cols, rows, cols,
                          count, descriptors);
        return;
    }
    for (int32_t crop = 0; crop < count; ++crop)
        PlainDescriptor(contrastTable, saliencyTable, rows, *cols[crop],
                        descriptors + crop * kDescriptorSize);
}

void ComputeCompositionDescriptor(const CDoubleMatrix& contrastTable,
                                  const CDoubleMatrix& saliencyTable, float* descriptor,
                                  const WorkingRect& rect)
{
    GridLimits rows;
    GridLimits cols;
    FillGridLimits(rect.FirstRow, rect.LastRow, rows);
    FillGridLimits(rect.FirstCol, rect.LastCol, cols);
    const GridLimits* const onlyCols = &cols;
    ComputeDescriptorsOnGrids(contrastTable, saliencyTable, rows, &onlyCols, 1, descriptor);
}

float MapModelOutput(float dot)
{
    float output = static_cast<float>(dot + DescriptorBias);
    if (output > 3.0f)
        output = 3.0f;
    if (output < -3.0f)
        output = -3.0f;
    return static_cast<float>((3.0 + output) / 6.0);
}

float ScoreDescriptor(float* descriptor)
{
    VectorSub(kDescriptorSize, descriptor, DescriptorMean, descriptor);
    VectorMul(kDescriptorSize, descriptor, DescriptorScale, descriptor);
    return MapModelOutput(
        linearAlgebra::DotProduct(kDescriptorSize, descriptor, DescriptorWeights));
}

bool CCropAnalyzer::ReadDescriptor(const CInt32CropRect& crop, float* descriptor) const
{
    const WorkingRect rect = ToWorkingRect(crop);
    if (HoldsNoPixel(rect))
        return false;
    ComputeCompositionDescriptor(ContrastTable, SaliencyTable, descriptor, rect);
    return true;
}

float CCropAnalyzer::ComputeCompositionScore(const WorkingRect& rect)
{
    ComputeCompositionDescriptor(ContrastTable, SaliencyTable, DescriptorBuffer, rect);
    return ScoreDescriptor(DescriptorBuffer);
}

} // namespace vistaTrim
