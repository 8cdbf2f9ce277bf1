#include "numeric/image_kernels.h"
#include "numeric/raw_kernels.h"

namespace vistaTrim {

namespace {

struct StatusEntry {
    int32_t Status;
    const char* Text;
};

// Only what the kernels here can return.
constexpr StatusEntry kStatusTexts[] = {
    {KernelNoOperation, "ippStsNoOperation: No operation has been executed."},
    {KernelBadArgument, "ippStsBadArgErr: Incorrect arg/param of the function."},
    {KernelBadSize, "ippStsSizeErr: Incorrect value for data size."},
    {KernelNullPointer, "ippStsNullPtrErr: Null pointer error."},
    {KernelBadStep, "ippStsStepErr: Step value is not valid."},
    {KernelBadMaskSize, "ippStsMaskSizeErr: Invalid mask size."},
    {KernelBadAnchor, "ippStsAnchorErr: Anchor point is outside the mask."},
    {KernelUnevenStep, "ippStsNotEvenStepErr: Step value is not pixel multiple."},
};

} // namespace

const char* StatusText(int32_t status)
{
    for (const StatusEntry& entry : kStatusTexts)
        if (entry.Status == status)
            return entry.Text;
    return "ippStsUnknownStatusCodeErr: Unknown status code.";
}

} // namespace vistaTrim
