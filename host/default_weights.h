// The weights that --weights stands at. Replace the five numbers here; nothing else of the
// host depends on them.
#ifndef VISTATRIM_HOST_DEFAULT_WEIGHTS_H
#define VISTATRIM_HOST_DEFAULT_WEIGHTS_H

namespace vistaTrim::host {

// Composition, coverage, border, peak, centre peak. They sum to 1, so that a crop that covers
// the content stays ahead of any that does not. Provisional: set by judgement, not yet fitted
// to rated crops.
constexpr double kDefaultWeights[5] = {0.3, 0.3, 0.2, 0.1, 0.1};

} // namespace vistaTrim::host

#endif
