// Hands raw descriptors to the tool that fits the model of composition. It stands here and not
// beside the maps, because it needs the model's grids.
#include "analysis/crop_analyzer.h"
#include "analysis/map_access.h"
#include "scoring/composition_model.h"

namespace vistaTrim {

bool CMapReader::ReadDescriptor(const CInt32CropRect& crop, float* descriptor) const
{
    const WorkingRect rect = Analyzer->ToWorkingRect(crop);
    if (HoldsNoPixel(rect))
        return false;
    ComputeCompositionDescriptor(Analyzer->ContrastTable, Analyzer->SaliencyTable, descriptor,
                                 rect);
    return true;
}

} // namespace vistaTrim
