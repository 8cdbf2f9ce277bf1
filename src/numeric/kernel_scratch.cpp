#include "numeric/aligned_memory.h"
#include "numeric/image_kernels.h"
#include "numeric/raw_kernels.h"

namespace vistaTrim {

namespace {

constexpr int64_t kLineBytes = 64;

} // namespace

int64_t RoundUpToLine(int64_t floats)
{
    constexpr int64_t kLineFloats = kLineBytes / static_cast<int64_t>(sizeof(float));
    return (floats + kLineFloats - 1) / kLineFloats * kLineFloats;
}

void* AllocateKernelBuffer(int32_t size)
{
    return size < 1 ? nullptr : AllocateAligned(static_cast<size_t>(size), kLineBytes);
}

void FreeKernelBuffer(void* pointer)
{
    FreeAligned(pointer);
}

} // namespace vistaTrim
