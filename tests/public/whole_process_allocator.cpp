#include "whole_process_allocator.h"

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <malloc.h>

// The C library's own, under the names that it keeps for such replacements.
extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
void* __libc_memalign(size_t alignment, size_t size);
void __libc_free(void* block);
}

namespace wholeProcessAllocator {

namespace {

std::atomic<bool> counting{false};
std::atomic<size_t> requests{0};
std::atomic<size_t> alignedRequests{0};
std::atomic<size_t> deniedOne{0};
std::atomic<long> livePieces{0};
std::atomic<long> liveBytes{0};

bool Denied(bool aligned)
{
    if (!counting.load())
        return false;
    if (aligned)
        alignedRequests.fetch_add(1);
    return requests.fetch_add(1) + 1 == deniedOne.load();
}

void* Taken(void* block)
{
    if (block != nullptr && counting.load()) {
        livePieces.fetch_add(1);
        liveBytes.fetch_add(static_cast<long>(malloc_usable_size(block)));
    }
    return block;
}

void Given(void* block)
{
    if (block != nullptr && counting.load()) {
        livePieces.fetch_sub(1);
        liveBytes.fetch_sub(static_cast<long>(malloc_usable_size(block)));
    }
}

void* Aligned(size_t alignment, size_t size)
{
    return Denied(true) ? nullptr : Taken(__libc_memalign(alignment, size));
}

} // namespace

void StartCounting(size_t denied)
{
    requests.store(0);
    alignedRequests.store(0);
    livePieces.store(0);
    liveBytes.store(0);
    deniedOne.store(denied);
    counting.store(true);
}

Counts StopCounting()
{
    counting.store(false);
    return {requests.load(), alignedRequests.load(), livePieces.load(), liveBytes.load()};
}

} // namespace wholeProcessAllocator

using namespace wholeProcessAllocator;

extern "C" {

void* malloc(size_t size)
{
    return Denied(false) ? nullptr : Taken(__libc_malloc(size));
}

void* calloc(size_t count, size_t size)
{
    return Denied(false) ? nullptr : Taken(__libc_calloc(count, size));
}

void* realloc(void* block, size_t size)
{
    if (Denied(false))
        return nullptr;
    Given(block);
    return Taken(__libc_realloc(block, size));
}

void* memalign(size_t alignment, size_t size)
{
    return Aligned(alignment, size);
}

void* aligned_alloc(size_t alignment, size_t size)
{
    return Aligned(alignment, size);
}

int posix_memalign(void** block, size_t alignment, size_t size)
{
    *block = Aligned(alignment, size);
    return *block == nullptr ? ENOMEM : 0;
}

void free(void* block)
{
    Given(block);
    __libc_free(block);
}

} // extern "C"
