#include "numeric/aligned_memory.h"
#include "numeric/image_kernels.h"

namespace vistaTrim {

void* AllocateKernelBuffer(int32_t size)
{
    return size < 1 ? nullptr : AllocateAligned(static_cast<size_t>(size), 64);
}

void FreeKernelBuffer(void* pointer)
{
    FreeAligned(pointer);
}

} // namespace vistaTrim
