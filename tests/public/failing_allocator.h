// Takes the place of operator new and delete in the test program: counts what lives, and denies
// an allocation on demand.
#ifndef VISTATRIM_TESTS_PUBLIC_FAILING_ALLOCATOR_H
#define VISTATRIM_TESTS_PUBLIC_FAILING_ALLOCATOR_H

#include <cstddef>

namespace failingAllocator {

enum class Denial {
    kThrow,     // std::bad_alloc, as the language has it
    kReturnNull // as some hosts' own allocators do
};

// Denies the n-th allocation from now on, counting from 1, and none after it. 0 denies none.
void DenyAllocation(size_t n, Denial how = Denial::kThrow);
// True if the denied allocation has been reached.
bool Denied();
// Allocations that were not given back yet.
long Live();
// The size that was asked for last by an allocation that was denied or too large to grant.
size_t LargestRefused();

} // namespace failingAllocator

#endif
