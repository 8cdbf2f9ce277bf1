// Hands raw descriptors to the tool that fits the model of composition. It stands here and not
// beside the maps, because it needs the model's grids.
#include "analysis/crop_analyzer.h"
#include "analysis/map_access.h"
#include "scoring/composition_model.h"

namespace vistaTrim {

void CMapReader::ReadDescriptor(const CInt32CropRect& crop, float* descriptor) const
{
    ComputeCompositionDescriptor(Analyzer->ContrastTable, Analyzer->SaliencyTable, descriptor,
                                 Analyzer->ToWorkingRect(crop));
}

} // namespace vistaTrim
