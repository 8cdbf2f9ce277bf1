#include "numeric/aligned_memory.h"

#include <cstdint>
#include <cstdlib>
#include <memory>

#include <sys/mman.h>

// The address sanitizer knows the block but not the pieces cut from it. So this marks the whole
// block as out of bounds except the pieces in use and their headers. Without the sanitizer the
// macros expand to nothing.
#if __has_include(<sanitizer/asan_interface.h>)
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(address, size) ((void)(address), (void)(size))
#define ASAN_UNPOISON_MEMORY_REGION(address, size) ((void)(address), (void)(size))
#endif

// For functions that read the piece headers.
#define VISTATRIM_NOT_WATCHED __attribute__((no_sanitize("address")))

namespace vistaTrim {

namespace {

// The size of a cache line and of the widest vector register.
constexpr size_t kSmallestAlignment = 64;

// Precedes every piece of a scratch block.
struct PieceHeader {
    size_t PreviousLast; // start of the piece below
    size_t PreviousTop;  // where the free bytes begin once this piece is gone
    size_t Bytes;        // of the piece
    bool Free;           // freed while a piece above it was in use
};
static_assert(sizeof(PieceHeader) <= kSmallestAlignment, "a header is one step of alignment");

constexpr size_t kNoPiece = SIZE_MAX;

// One per thread: concurrent analyses share nothing.
thread_local CScratchScope* currentScope = nullptr;

constexpr size_t kLargePage = size_t{2} << 20; // bytes, on x86-64

size_t RoundUp(size_t value, size_t alignment)
{
    return (value + (alignment - 1)) & ~(alignment - 1);
}

} // namespace

void* AllocateAligned(size_t size, size_t alignment)
{
    if (size == 0)
        return nullptr;
    const bool isPowerOfTwo = (alignment & (alignment - 1)) == 0;
    if (alignment < kSmallestAlignment || !isPowerOfTwo)
        alignment = kSmallestAlignment;
    // A larger alignment is allocated on the heap.
    if (currentScope != nullptr && alignment == kSmallestAlignment) {
        void* const piece = currentScope->Take(size);
        if (piece != nullptr)
            return piece;
    }
    // std::aligned_alloc takes a multiple of the alignment; close to SIZE_MAX, rounding up would
    // wrap.
    if (size > SIZE_MAX - (alignment - 1))
        return nullptr;
    return std::aligned_alloc(alignment, RoundUp(size, alignment));
}

void FreeAligned(void* pointer)
{
    for (CScratchScope* scope = currentScope; scope != nullptr; scope = scope->Outer)
        if (scope->GiveBack(pointer))
            return;
    std::free(pointer);
}

void PreferLargePages(void* block, size_t bytes)
{
    if (std::align(kLargePage, kLargePage, block, bytes) != nullptr)
        madvise(block, bytes / kLargePage * kLargePage, MADV_HUGEPAGE);
}

CScratchScope::CScratchScope(void* block, size_t bytes)
    : Outer(currentScope), Block(static_cast<char*>(block)), Size(bytes), Last(kNoPiece), Top(0)
{
    if (std::align(kSmallestAlignment, kSmallestAlignment, block, Size) != nullptr)
        Block = static_cast<char*>(block);
    else
        Size = 0;
    ASAN_POISON_MEMORY_REGION(Block, Size);
    currentScope = this;
}

CScratchScope::~CScratchScope()
{
    ASAN_UNPOISON_MEMORY_REGION(Block, Size);
    currentScope = Outer;
}

// Null when the block is used up.
VISTATRIM_NOT_WATCHED void* CScratchScope::Take(size_t size)
{
    const size_t start = Top + kSmallestAlignment;
    if (start > Size || size > Size - start)
        return nullptr;
    PieceHeader* const header = reinterpret_cast<PieceHeader*>(Block + Top);
    header->PreviousLast = Last;
    header->PreviousTop = Top;
    header->Bytes = size;
    header->Free = false;
    Last = start;
    Top = RoundUp(start + size, kSmallestAlignment);
    ASAN_UNPOISON_MEMORY_REGION(Block + start, size);
    return Block + start;
}

VISTATRIM_NOT_WATCHED bool CScratchScope::GiveBack(void* pointer)
{
    const uintptr_t address = reinterpret_cast<uintptr_t>(pointer);
    const uintptr_t block = reinterpret_cast<uintptr_t>(Block);
    if (address < block || address >= block + Size)
        return false;
    PieceHeader* const given =
        reinterpret_cast<PieceHeader*>(static_cast<char*>(pointer) - kSmallestAlignment);
    given->Free = true;
    ASAN_POISON_MEMORY_REGION(pointer, given->Bytes);
    // Removes free pieces from the top; stages mostly free in reverse order of allocation.
    while (Last != kNoPiece) {
        const PieceHeader* const header =
            reinterpret_cast<const PieceHeader*>(Block + Last - kSmallestAlignment);
        if (!header->Free)
            break;
        Top = header->PreviousTop;
        Last = header->PreviousLast;
    }
    return true;
}

} // namespace vistaTrim
