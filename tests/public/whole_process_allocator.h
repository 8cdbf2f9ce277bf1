// Takes the place of the C library's allocation functions in the whole program, in the libraries
// that it loads too: counts what an operation takes, and denies an allocation on demand.
#ifndef VISTATRIM_TESTS_PUBLIC_WHOLE_PROCESS_ALLOCATOR_H
#define VISTATRIM_TESTS_PUBLIC_WHOLE_PROCESS_ALLOCATOR_H

#include <cstddef>

namespace wholeProcessAllocator {

// What was asked for since StartCounting, by all threads.
struct Counts {
    size_t Asked = 0;
    size_t AskedAligned = 0; // of those, through aligned_alloc or its kin
    long LivePieces = 0;     // given and not given back; pieces from before count when they go
    long LiveBytes = 0;
};

// From now on counts; the n-th allocation from here on is denied, 0 denies none.
void StartCounting(size_t denied);
Counts StopCounting();

} // namespace wholeProcessAllocator

#endif
