#include "failing_allocator.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace failingAllocator {

namespace {

// Above this size a sanitizer's malloc would abort the process.
constexpr size_t kMostBytes = size_t{1} << 36;

std::atomic<size_t> countdown{0};
std::atomic<bool> denied{false};
std::atomic<long> live{0};
std::atomic<size_t> largestRefused{0};
Denial denial = Denial::kThrow;

// Null if the allocation is denied or there is no memory.
void* Take(size_t size)
{
    if (countdown.load() != 0 && countdown.fetch_sub(1) == 1) {
        denied.store(true);
        largestRefused.store(size);
        return nullptr;
    }
    if (size > kMostBytes) {
        largestRefused.store(size);
        return nullptr;
    }
    void* const block = std::malloc(size == 0 ? 1 : size);
    if (block != nullptr)
        live.fetch_add(1);
    return block;
}

void Give(void* block)
{
    if (block == nullptr)
        return;
    live.fetch_sub(1);
    std::free(block);
}

void* TakeOrThrow(size_t size)
{
    void* const block = Take(size);
    if (block == nullptr && denial == Denial::kThrow)
        throw std::bad_alloc();
    return block;
}

} // namespace

void DenyAllocation(size_t n, Denial how)
{
    denial = how;
    denied.store(false);
    largestRefused.store(0);
    countdown.store(n);
}

bool Denied()
{
    return denied.load();
}

long Live()
{
    return live.load();
}

size_t LargestRefused()
{
    return largestRefused.load();
}

} // namespace failingAllocator

void* operator new(size_t size)
{
    return failingAllocator::TakeOrThrow(size);
}

void* operator new[](size_t size)
{
    return failingAllocator::TakeOrThrow(size);
}

void* operator new(size_t size, const std::nothrow_t&) noexcept
{
    return failingAllocator::Take(size);
}

void* operator new[](size_t size, const std::nothrow_t&) noexcept
{
    return failingAllocator::Take(size);
}

void operator delete(void* block) noexcept
{
    failingAllocator::Give(block);
}

void operator delete[](void* block) noexcept
{
    failingAllocator::Give(block);
}

void operator delete(void* block, size_t) noexcept
{
    failingAllocator::Give(block);
}

void operator delete[](void* block, size_t) noexcept
{
    failingAllocator::Give(block);
}

void operator delete(void* block, const std::nothrow_t&) noexcept
{
    failingAllocator::Give(block);
}

void operator delete[](void* block, const std::nothrow_t&) noexcept
{
    failingAllocator::Give(block);
}
