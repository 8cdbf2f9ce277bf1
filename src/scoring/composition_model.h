// The fitted model of composition: 304 cell means of two maps under five grids.
#ifndef VISTATRIM_SCORING_COMPOSITION_MODEL_H
#define VISTATRIM_SCORING_COMPOSITION_MODEL_H

#include <cstdint>

#include "analysis/working_rect.h"
#include "numeric/matrix.h"
#include "scoring/crop_analyzer.h"
#include "scoring/descriptor_grids.h"

namespace vistaTrim {

// The grids laid over each table, in descriptor order.
constexpr int32_t ContrastGridSizes[] = {4, 8};
constexpr int32_t SaliencyGridSizes[] = {4, 8, 12};

// descriptor  304 floats: the contrast grids, then the saliency grids, each row by row
// rect        inside the tables
void ComputeCompositionDescriptor(const CDoubleMatrix& contrastTable,
                                  const CDoubleMatrix& saliencyTable, float* descriptor,
                                  const WorkingRect& rect);

// The score of a crop whose limits are known.
float ScoreOnGrids(const CDoubleMatrix& contrastTable, const CDoubleMatrix& saliencyTable,
                   const GridLimits& rows, const GridLimits& cols);

// The model's score, 0..1, of a descriptor, which is left standardised.
float ScoreDescriptor(float* descriptor);

// From the dot product of standardised descriptor and weights to 0..1.
float MapModelOutput(float dot);

} // namespace vistaTrim

#endif
