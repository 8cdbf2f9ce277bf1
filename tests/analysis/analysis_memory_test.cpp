// How much heap an analysis uses: what the analyzer keeps, and the peak during construction. Every
// allocation of the library goes through operator new, aligned_alloc or malloc; the linker sends
// all three here, with free.
//
// Sizes are what the allocator reserved, not what was requested. Buffers that BLAS keeps for the
// whole process are not counted.

#include <cstdio>
#include <cstdlib>
#include <malloc.h>
#include <memory>
#include <new>

#include <gtest/gtest.h>

#include "numeric/linear_algebra.h"
#include "test_pictures.h"

namespace {

// Only one thread allocates while these are read.
size_t heldBytes = 0;
size_t peakBytes = 0;

void* Counted(void* pointer)
{
    heldBytes += malloc_usable_size(pointer);
    if (heldBytes > peakBytes)
        peakBytes = heldBytes;
    return pointer;
}

} // namespace

// The linker's --wrap fixes these names.
extern "C" {
void* __real_aligned_alloc(size_t alignment, size_t size);
void* __real_malloc(size_t size);
void __real_free(void* pointer);

void* __wrap_aligned_alloc(size_t alignment, size_t size)
{
    return Counted(__real_aligned_alloc(alignment, size));
}
void* __wrap_malloc(size_t size)
{
    return Counted(__real_malloc(size));
}
void __wrap_free(void* pointer)
{
    heldBytes -= malloc_usable_size(pointer);
    __real_free(pointer);
}
}

// Never inlined: seeing both, the compiler would warn of a mismatched pair.
__attribute__((noinline)) void* operator new(size_t size)
{
    void* const pointer = std::malloc(size == 0 ? 1 : size);
    if (pointer == nullptr)
        throw std::bad_alloc();
    return pointer;
}
__attribute__((noinline)) void* operator new[](size_t size)
{
    return operator new(size);
}
__attribute__((noinline)) void operator delete(void* pointer) noexcept
{
    std::free(pointer);
}
__attribute__((noinline)) void operator delete[](void* pointer) noexcept
{
    std::free(pointer);
}
__attribute__((noinline)) void operator delete(void* pointer, size_t) noexcept
{
    std::free(pointer);
}
__attribute__((noinline)) void operator delete[](void* pointer, size_t) noexcept
{
    std::free(pointer);
}

namespace vistaTrim {
namespace {

using namespace testPictures;

constexpr double kMegabyte = 1e6;

struct Usage {
    size_t Peak; // on top of the image
    size_t Kept;
};

Usage Measure(int32_t cols, int32_t rows)
{
    const ImageHolder image = MakeImage(Blobs(cols, rows, 1));
    {
        const CCropAnalyzer warm(image.get()); // lets libraries allocate what they keep for good
    }
    const size_t before = heldBytes;
    peakBytes = heldBytes;
    const CCropAnalyzer analyzer(image.get());
    const Usage usage = {peakBytes - before, heldBytes - before};
    std::printf("%4d x %-4d  peak %7.3f MB  kept %7.3f MB\n", cols, rows,
                double(usage.Peak) / kMegabyte, double(usage.Kept) / kMegabyte);
    return usage;
}

TEST(AnalysisMemory, OfAnOrdinaryPictureStaysWithinLimits)
{
    for (const auto& [cols, rows] : {std::pair(640, 480), std::pair(480, 640)}) {
        const Usage usage = Measure(cols, rows);
        // The maps and tables alone take 36.86 MB. With BLAS the border contrasts are computed
        // step by step, on planes and tables that do not all fit into the memory lent to them.
        EXPECT_LE(double(usage.Peak), (vistaTrim::kFixedOrder ? 37 : 45) * kMegabyte);
        EXPECT_LE(double(usage.Kept), 37 * kMegabyte);
    }
}

// Ten float maps and ten double tables: 120 bytes per pixel; nothing else grows with the picture.
TEST(AnalysisMemory, KeptMemoryIsMapsAndTables)
{
    for (const auto& [cols, rows] :
         {std::pair(640, 480), std::pair(640, 640), std::pair(640, 100)}) {
        const Usage usage = Measure(cols, rows);
        const size_t pixels = size_t(cols) * size_t(rows);
        EXPECT_GE(usage.Kept, 120 * pixels);
        EXPECT_LE(usage.Kept, 120 * pixels + 16384);
    }
}

TEST(AnalysisMemory, IsFreedCompletely)
{
    const ImageHolder image = MakeImage(Blobs(640, 300, 2));
    {
        const CCropAnalyzer warm(image.get());
    }
    const size_t before = heldBytes;
    {
        const CCropAnalyzer analyzer(image.get());
        EXPECT_GT(heldBytes, before);
    }
    EXPECT_EQ(heldBytes, before);
}

} // namespace
} // namespace vistaTrim
