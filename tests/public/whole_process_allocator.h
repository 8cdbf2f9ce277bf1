// Replaces the C library's allocation functions in the whole program, including the libraries that
// it loads: counts the allocations of an operation and fails one on demand.
#ifndef VISTATRIM_TESTS_PUBLIC_WHOLE_PROCESS_ALLOCATOR_H
#define VISTATRIM_TESTS_PUBLIC_WHOLE_PROCESS_ALLOCATOR_H

#include <cstddef>

namespace wholeProcessAllocator {

// Allocations since StartCounting, in all threads.
struct Counts {
    size_t Requests = 0;
    size_t AlignedRequests = 0; // of those, through aligned_alloc and similar
    long LivePieces = 0;        // allocated and not freed; freeing an earlier piece counts too
    long LiveBytes = 0;
};

// Starts counting; the n-th allocation from here on fails, 0 fails none.
void StartCounting(size_t denied);
Counts StopCounting();

} // namespace wholeProcessAllocator

#endif
