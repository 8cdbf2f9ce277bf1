#include "batch/freed_memory.h"

#include <cstdlib> // tells which library of C this is

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace vistaTrim::cli {

namespace {

bool kept = false;

} // namespace

// glibc serves larger requests straight from the system, and gives the end of its heap back
// when that much of it is free. The first number is the largest that it takes (a block of the
// analysis is 25 MB), the second more than a photograph needs.
void KeepFreedMemory()
{
    kept = true;
#ifdef __GLIBC__
    // NOLINTBEGIN(concurrency-mt-unsafe): before the program has threads of its own
    mallopt(M_MMAP_THRESHOLD, 32 * 1024 * 1024);
    mallopt(M_TRIM_THRESHOLD, 512 * 1024 * 1024);
    // NOLINTEND(concurrency-mt-unsafe)
#endif
}

void ReturnFreedMemory()
{
#ifdef __GLIBC__
    if (!kept)
        malloc_trim(0);
#endif
}

} // namespace vistaTrim::cli
