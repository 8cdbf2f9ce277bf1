// What --weights, --scale and --density stand at. Replace the numbers here; nothing else of the
// host depends on them.
#ifndef VISTATRIM_HOST_DEFAULT_WEIGHTS_H
#define VISTATRIM_HOST_DEFAULT_WEIGHTS_H

#include <cstdint>

namespace vistaTrim::host {

// Composition, coverage, border, peak, centre peak. They sum to 1, so that a crop that covers
// the content stays ahead of any that does not. Chosen with tools/evaluate_crops on rated crops;
// docs/composition_model.md tells what else was tried.
constexpr double kDefaultWeights[5] = {0.1, 0.7, 0.0, 0.2, 0.0};

// Fewer positions than the library's 25: the best few then differ more, and agree better with
// what people chose. Measured with the weights.
constexpr uint32_t kDefaultDensity = 8;

// Finer steps than the library's own table and no crop of less than half a side: people cut
// deeper in 8 of 972 photographs. Measured with the weights.
constexpr double kDefaultScales[] = {0.5, 0.55, 0.6, 0.65, 0.7, 0.75, 0.8, 0.85, 0.9, 0.95, 1.0};

} // namespace vistaTrim::host

#endif
