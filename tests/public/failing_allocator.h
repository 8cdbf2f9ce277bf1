// Replaces operator new and delete in the test program: counts live allocations and fails one on
// demand.
#ifndef VISTATRIM_TESTS_PUBLIC_FAILING_ALLOCATOR_H
#define VISTATRIM_TESTS_PUBLIC_FAILING_ALLOCATOR_H

#include <cstddef>

namespace failingAllocator {

enum class Denial {
    kThrow,     // std::bad_alloc, as the standard requires
    kReturnNull // as some hosts' own allocators do
};

// Fails the n-th allocation from now on, counting from 1, and none after it. 0 fails none.
void DenyAllocation(size_t n, Denial how = Denial::kThrow);
// True if that allocation has been reached.
bool Denied();
// Allocations not yet freed.
long Live();
// The size of the last allocation that was failed or too large.
size_t LargestRefused();

} // namespace failingAllocator

#endif
