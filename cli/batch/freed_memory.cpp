#include "batch/freed_memory.h"

#include <cstdlib> // defines __GLIBC__

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace vistaTrim::cli {

namespace {

bool kept = false;

} // namespace

// glibc maps larger requests directly from the system, and trims its heap when that much is free.
// The first value is the largest it accepts (a block of the analysis is 25 MB), the second more
// than a photograph needs.
void KeepFreedMemory()
{
    kept = true;
#ifdef __GLIBC__
    // NOLINTBEGIN(concurrency-mt-unsafe): before the program starts threads
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
