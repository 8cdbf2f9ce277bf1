// The fitted coefficients of the composition model, one value per descriptor slot.
#ifndef VISTATRIM_SCORING_COMPOSITION_COEFFICIENTS_H
#define VISTATRIM_SCORING_COMPOSITION_COEFFICIENTS_H

namespace vistaTrim {

extern const float DescriptorMean[304];    // subtracted
extern const float DescriptorScale[304];   // multiplied after that: 1 / spread
extern const float DescriptorWeights[304]; // dot product
extern const double DescriptorBias;        // added to the dot product

} // namespace vistaTrim

#endif
