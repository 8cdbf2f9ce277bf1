#include "scoring/composition_model.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "numeric/linear_algebra.h"
#include "numeric/summed_area.h"
#include "numeric/vector_ops.h"
#include "scoring/composition_coefficients.h"
#include "scoring/descriptor_grids.h"

namespace vistaTrim {

namespace {

// The loops below name each grid; these assertions tie them to the published sizes.
constexpr int32_t Cells(int32_t gridSize)
{
    return gridSize * gridSize;
}
static_assert(std::size(ContrastGridSizes) == 2 && std::size(SaliencyGridSizes) == 3 &&
                  ContrastGridSizes[0] == 4 && ContrastGridSizes[1] == 8 &&
                  SaliencyGridSizes[0] == 4 && SaliencyGridSizes[1] == 8 &&
                  SaliencyGridSizes[2] == 12,
              "grids of the descriptor");
static_assert(kContrast8Slot == kContrast4Slot + Cells(ContrastGridSizes[0]) &&
                  kSaliency4Slot == kContrast8Slot + Cells(ContrastGridSizes[1]) &&
                  kSaliency8Slot == kSaliency4Slot + Cells(SaliencyGridSizes[0]) &&
                  kSaliency12Slot == kSaliency8Slot + Cells(SaliencyGridSizes[1]) &&
                  kDescriptorSize == kSaliency12Slot + Cells(SaliencyGridSizes[2]),
              "slots of the descriptor");

// One grid: every cell by its own four corners.
void GridMeans(const CDoubleMatrix& table, const GridLimits& rows, const GridLimits& cols,
               int32_t firstCell, int32_t cells, float* means)
{
    for (int32_t i = firstCell; i < firstCell + cells; ++i)
        for (int32_t j = firstCell; j < firstCell + cells; ++j) {
            const float sum = static_cast<float>(
                RegionSum(table, rows.Start[i], cols.Start[j], rows.End[i], cols.End[j]));
            // The limits make every area at least 1; std::max only guards the division.
            *means++ = sum / std::max(1.0f, rows.Length[i] * cols.Length[j]);
        }
}

void DescribeOnGrids(const CDoubleMatrix& contrastTable, const CDoubleMatrix& saliencyTable,
                     const GridLimits& rows, const GridLimits& cols, float* descriptor)
{
    GridMeans(contrastTable, rows, cols, kGridFirstCell[0], 4, descriptor + kContrast4Slot);
    GridMeans(contrastTable, rows, cols, kGridFirstCell[1], 8, descriptor + kContrast8Slot);
    GridMeans(saliencyTable, rows, cols, kGridFirstCell[0], 4, descriptor + kSaliency4Slot);
    GridMeans(saliencyTable, rows, cols, kGridFirstCell[1], 8, descriptor + kSaliency8Slot);
    GridMeans(saliencyTable, rows, cols, kGridFirstCell[2], 12, descriptor + kSaliency12Slot);
}

} // namespace

void ComputeCompositionDescriptor(const CDoubleMatrix& contrastTable,
                                  const CDoubleMatrix& saliencyTable, float* descriptor,
                                  const WorkingRect& rect)
{
    GridLimits rows;
    GridLimits cols;
    FillGridLimits(rect.FirstRow, rect.LastRow, rows);
    FillGridLimits(rect.FirstCol, rect.LastCol, cols);
    DescribeOnGrids(contrastTable, saliencyTable, rows, cols, descriptor);
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

float ScoreOnGrids(const CDoubleMatrix& contrastTable, const CDoubleMatrix& saliencyTable,
                   const GridLimits& rows, const GridLimits& cols)
{
    float descriptor[kDescriptorSize];
    DescribeOnGrids(contrastTable, saliencyTable, rows, cols, descriptor);
    return ScoreDescriptor(descriptor);
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
