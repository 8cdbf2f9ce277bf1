// Aligned storage for planes, tables and scratch.
#ifndef VISTATRIM_NUMERIC_ALIGNED_MEMORY_H
#define VISTATRIM_NUMERIC_ALIGNED_MEMORY_H

#include <cstddef>

namespace vistaTrim {

// size       bytes; 0 gives null
// alignment  bytes; anything that is not a power of two of at least 64 counts as 64
//
// Null when memory is exhausted: nothing is thrown.
void* AllocateAligned(size_t size, size_t alignment);

// Gives back what AllocateAligned returned; null is accepted.
void FreeAligned(void* pointer);

} // namespace vistaTrim

#endif
