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

// While one lives, AllocateAligned on its thread cuts from the given block, as long as it
// lasts, and FreeAligned gives back to it. So a stage that makes and drops many planes can run
// in memory that stands ready, where fresh planes would come from the system page by page.
// What is allocated while a scope lives is freed while it lives.
class CScratchScope {
public:
    // The block is the caller's and its contents are lost.
    CScratchScope(void* block, size_t bytes);
    ~CScratchScope();
    CScratchScope(const CScratchScope&) = delete;
    CScratchScope& operator=(const CScratchScope&) = delete;

private:
    friend void* AllocateAligned(size_t size, size_t alignment);
    friend void FreeAligned(void* pointer);

    void* Take(size_t size);
    bool GiveBack(void* pointer);

    CScratchScope* Outer; // the scope that it stands in for, or null
    char* Block;          // on the smallest alignment
    size_t Size;
    size_t Last; // start of the uppermost piece in use; each piece knows the one below
    size_t Top;  // first byte that is free
};

} // namespace vistaTrim

#endif
