#include "ranking/engine_lists.h"

#include <algorithm>
#include <iterator>

namespace vistaTrim::photo {

namespace {

// Leaves out crops that hold no pixel: in a very thin picture the engine also lays out crops with a
// side rounded to zero, which it does not measure.
CropList CopyAndRelease(ICropRects* list)
{
    SmartPtr<CCropRects> held(static_cast<CCropRects*>(list), false);
    CropList crops;
    std::copy_if(held->Data(), held->Data() + held->Count(), std::back_inserter(crops),
                 [](const CInt32CropRect& crop) {
                     return crop.Left <= crop.Right && crop.Top <= crop.Bottom;
                 });
    return crops;
}

WeightDistribution EngineWeights(const Weights& weights)
{
    WeightDistribution engine(0, 0, 0);
    engine.Weight1 = weights.Composition;
    engine.Weight2 = weights.Coverage;
    engine.Weight3 = weights.Border;
    engine.Weight4 = weights.Peak;
    engine.Weight5 = weights.CentrePeak;
    return engine;
}

} // namespace

CropList BestOf(IVistaTrim& driver, const Weights& weights, int32_t wanted,
                const SuggestionParameters& engineRequest)
{
    constexpr int32_t kAllMeasures = 0; // ranking mode
    ICropRects* list = nullptr;
    GetNTopCropSuggestions(&driver, wanted, &list, &engineRequest, kAllMeasures,
                           EngineWeights(weights));
    return CopyAndRelease(list);
}

CropList AllOf(IVistaTrim& driver, const SuggestionParameters& engineRequest)
{
    ICropRects* list = nullptr;
    ComputeCropSuggestions(&driver, &list, &engineRequest);
    return CopyAndRelease(list);
}

} // namespace vistaTrim::photo
