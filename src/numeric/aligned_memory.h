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

// Frees what AllocateAligned returned; null is allowed.
void FreeAligned(void* pointer);

// Asks the system for large pages where the block contains whole ones, without needing them: a
// large block is then mapped in some twenty faults instead of thousands. A system without them
// ignores it.
void PreferLargePages(void* block, size_t bytes);

// While one exists, AllocateAligned on its thread takes memory from the given block until it is
// used up, and FreeAligned returns it there. A stage that creates and drops many planes then reuses
// mapped memory instead of faulting in fresh pages. Free everything allocated within a scope before
// the scope ends.
class CScratchScope {
public:
    // The caller owns the block; its contents are overwritten.
    CScratchScope(void* block, size_t bytes);
    ~CScratchScope();
    CScratchScope(const CScratchScope&) = delete;
    CScratchScope& operator=(const CScratchScope&) = delete;

private:
    friend void* AllocateAligned(size_t size, size_t alignment);
    friend void FreeAligned(void* pointer);

    void* Take(size_t size);
    bool GiveBack(void* pointer);

    CScratchScope* Outer; // the enclosing scope, or null
    char* Block;          // aligned to the smallest alignment
    size_t Size;
    size_t Last; // start of the uppermost piece in use; each piece knows the one below
    size_t Top;  // first free byte
};

} // namespace vistaTrim

#endif
