#include "numeric/aligned_memory.h"

#include <cstdint>
#include <cstdlib>

namespace vistaTrim {

namespace {

// A cache line, and the widest vector register there is.
constexpr size_t kSmallestAlignment = 64;

} // namespace

void* AllocateAligned(size_t size, size_t alignment)
{
    if (size == 0)
        return nullptr;
    const bool isPowerOfTwo = (alignment & (alignment - 1)) == 0;
    if (alignment < kSmallestAlignment || !isPowerOfTwo)
        alignment = kSmallestAlignment;
    // The allocation must be a whole number of alignments; near the top that would wrap.
    if (size > SIZE_MAX - (alignment - 1))
        return nullptr;
    return std::aligned_alloc(alignment, (size + alignment - 1) & ~(alignment - 1));
}

void FreeAligned(void* pointer)
{
    std::free(pointer);
}

} // namespace vistaTrim
