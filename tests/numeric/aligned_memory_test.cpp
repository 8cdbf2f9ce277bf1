#include "numeric/aligned_memory.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

// The address sanitizer's allocator aborts on a huge request unless configured otherwise.
extern "C" const char* __asan_default_options();
extern "C" __attribute__((visibility("default"))) const char* __asan_default_options()
{
    return "allocator_may_return_null=1";
}

namespace vistaTrim {
namespace {

bool IsAligned(const void* pointer, size_t alignment)
{
    return reinterpret_cast<uintptr_t>(pointer) % alignment == 0;
}

TEST(AlignedMemory, HonoursEveryPowerOfTwoFrom64Up)
{
    // Two at a time: one address may be aligned by chance.
    for (size_t alignment = 64; alignment <= 65536; alignment *= 2) {
        void* first = AllocateAligned(24, alignment);
        void* second = AllocateAligned(24, alignment);
        EXPECT_TRUE(first != nullptr && IsAligned(first, alignment)) << alignment;
        EXPECT_TRUE(second != nullptr && IsAligned(second, alignment)) << alignment;
        FreeAligned(second);
        FreeAligned(first);
    }
}

TEST(AlignedMemory, TreatsAnyOtherAlignmentAs64)
{
    for (size_t alignment : {size_t{0}, size_t{1}, size_t{3}, size_t{8}, size_t{32}, size_t{63},
                             size_t{65}, size_t{96}, size_t{1000}, SIZE_MAX})
        for (size_t size : {1u, 24u, 64u, 1000u}) {
            void* first = AllocateAligned(size, alignment);
            void* second = AllocateAligned(size, alignment);
            EXPECT_TRUE(first != nullptr && IsAligned(first, 64)) << alignment;
            EXPECT_TRUE(second != nullptr && IsAligned(second, 64)) << alignment;
            FreeAligned(second);
            FreeAligned(first);
        }
}

TEST(AlignedMemory, EveryRequestedByteIsWritable)
{
    for (size_t size : {1u, 63u, 64u, 65u, 4097u, 1u << 20}) {
        void* block = AllocateAligned(size, 64);
        ASSERT_NE(block, nullptr);
        std::memset(block, 0xA5, size);
        EXPECT_EQ(static_cast<unsigned char*>(block)[size - 1], 0xA5);
        FreeAligned(block);
    }
}

TEST(AlignedMemory, ZeroBytesGiveNull)
{
    EXPECT_EQ(AllocateAligned(0, 64), nullptr);
    EXPECT_EQ(AllocateAligned(0, 0), nullptr);
    EXPECT_EQ(AllocateAligned(0, 4096), nullptr);
}

TEST(AlignedMemory, OutOfMemoryGivesNullWithoutThrowing)
{
    // The last sizes would wrap when rounded up to a multiple of the alignment.
    for (size_t size : {SIZE_MAX / 2, SIZE_MAX - 4096, SIZE_MAX - 63, SIZE_MAX - 1, SIZE_MAX}) {
        EXPECT_EQ(AllocateAligned(size, 64), nullptr) << size;
        EXPECT_EQ(AllocateAligned(size, 4096), nullptr) << size;
    }
}

// The flags of the mapping that holds the address, such as "rd wr mr"; empty if it is not listed.
std::string MappingFlags(const void* address)
{
    const uintptr_t wanted = reinterpret_cast<uintptr_t>(address);
    std::ifstream maps("/proc/self/smaps");
    bool inside = false;
    for (std::string line; std::getline(maps, line);) {
        uintptr_t first = 0;
        uintptr_t end = 0;
        char dash = 0;
        std::istringstream range(line);
        if (range >> std::hex >> first >> dash >> end && dash == '-')
            inside = first <= wanted && wanted < end;
        else if (inside && line.rfind("VmFlags:", 0) == 0)
            return line.substr(8);
    }
    return "";
}

TEST(AlignedMemory, LargePagesAreRequestedForABlockThatContainsOne)
{
    if (!std::ifstream("/sys/kernel/mm/transparent_hugepage/enabled").good())
        GTEST_SKIP() << "this kernel has no large pages";
    const size_t size = size_t{8} << 20;
    const std::unique_ptr<char[]> block(new char[size]);
    PreferLargePages(block.get(), size);
    EXPECT_NE(MappingFlags(block.get() + size / 2).find(" hg"), std::string::npos);
}

TEST(AlignedMemory, LargePagesLeaveTheBytesUnchanged)
{
    for (size_t size : {size_t{0}, size_t{1}, size_t{1} << 20, size_t{9'000'001}}) {
        std::vector<char> block(size, 0x5A);
        PreferLargePages(block.data(), size);
        EXPECT_EQ(std::count(block.begin(), block.end(), 0x5A), static_cast<ptrdiff_t>(size));
    }
}

TEST(AlignedMemory, FreeingNullIsHarmless)
{
    FreeAligned(nullptr);
}

} // namespace
} // namespace vistaTrim
