#include <cstdint>
#include <cstring>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "numeric/aligned_memory.h"
#include "numeric/matrix.h"
#include "numeric/plane_stack.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VISTATRIM_HAS_ADDRESS_SANITIZER
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define VISTATRIM_HAS_ADDRESS_SANITIZER
#endif
#if defined(VISTATRIM_HAS_ADDRESS_SANITIZER)
#include <sanitizer/asan_interface.h>
#endif

namespace vistaTrim {
namespace {

class Block {
public:
    explicit Block(size_t bytes) : Bytes(bytes)
    {
    }
    bool Holds(const void* pointer) const
    {
        const char* const p = static_cast<const char*>(pointer);
        return p >= Bytes.data() && p < Bytes.data() + Bytes.size();
    }
    char* Data()
    {
        return Bytes.data();
    }
    size_t Size() const
    {
        return Bytes.size();
    }

private:
    std::vector<char> Bytes;
};

TEST(ScratchScope, GivesAlignedPiecesThatDoNotOverlap)
{
    Block block(1 << 16);
    // The block may start at any address.
    const CScratchScope scope(block.Data() + 3, block.Size() - 3);
    std::vector<char*> pieces;
    for (size_t size : {1u, 63u, 64u, 65u, 1000u, 4u}) {
        char* const piece = static_cast<char*>(AllocateAligned(size, 64));
        ASSERT_TRUE(block.Holds(piece) && block.Holds(piece + size - 1));
        EXPECT_EQ(reinterpret_cast<uintptr_t>(piece) % 64, 0u);
        std::memset(piece, int(size % 100), size);
        pieces.push_back(piece);
    }
    EXPECT_EQ(pieces[0][0], 1);
    EXPECT_EQ(pieces[1][62], 63);
    EXPECT_EQ(pieces[3][64], 65);
    for (char* piece : pieces)
        FreeAligned(piece);
}

TEST(ScratchScope, UsesFreedMemoryAgain)
{
    Block block(4096);
    const CScratchScope scope(block.Data(), block.Size());
    void* const first = AllocateAligned(1000, 64);
    void* const second = AllocateAligned(1000, 64);
    FreeAligned(second);
    EXPECT_EQ(AllocateAligned(1000, 64), second);
    // In any order: a freed piece is reclaimed once everything above it is freed.
    FreeAligned(first);
    FreeAligned(second);
    EXPECT_EQ(AllocateAligned(3000, 64), first);
    FreeAligned(first);
}

TEST(ScratchScope, AllocatesOnTheHeapWhatDoesNotFit)
{
    Block block(1024);
    const CScratchScope scope(block.Data(), block.Size());
    void* const tooLarge = AllocateAligned(1024, 64);
    EXPECT_FALSE(block.Holds(tooLarge));
    void* const fits = AllocateAligned(512, 64);
    EXPECT_TRUE(block.Holds(fits));
    void* const noMore = AllocateAligned(512, 64);
    EXPECT_FALSE(block.Holds(noMore));
    void* const wide = AllocateAligned(64, 4096);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(wide) % 4096, 0u);
    EXPECT_FALSE(block.Holds(wide));
    for (void* piece : {tooLarge, fits, noMore, wide})
        FreeAligned(piece);
    EXPECT_EQ(AllocateAligned(0, 64), nullptr);
}

TEST(ScratchScope, WorksWithoutABlockOrWithATinyOne)
{
    for (size_t bytes : {size_t{0}, size_t{10}}) {
        char tiny[16];
        const CScratchScope scope(bytes == 0 ? nullptr : tiny, bytes);
        void* const piece = AllocateAligned(8, 64);
        ASSERT_NE(piece, nullptr);
        std::memset(piece, 1, 8);
        FreeAligned(piece);
    }
}

TEST(ScratchScope, EndsWithItsLifetime)
{
    Block block(4096);
    {
        const CScratchScope scope(block.Data(), block.Size());
        void* const piece = AllocateAligned(64, 64);
        EXPECT_TRUE(block.Holds(piece));
        FreeAligned(piece);
    }
    void* const after = AllocateAligned(64, 64);
    EXPECT_FALSE(block.Holds(after));
    FreeAligned(after);
}

TEST(ScratchScope, InnerScopeAllocatesFirstAndBothAcceptFrees)
{
    Block outerBlock(4096);
    Block innerBlock(4096);
    const CScratchScope outer(outerBlock.Data(), outerBlock.Size());
    void* const outerPiece = AllocateAligned(64, 64);
    {
        const CScratchScope inner(innerBlock.Data(), innerBlock.Size());
        void* const innerPiece = AllocateAligned(64, 64);
        EXPECT_TRUE(innerBlock.Holds(innerPiece));
        FreeAligned(innerPiece);
        FreeAligned(outerPiece);
    }
    EXPECT_EQ(AllocateAligned(64, 64), outerPiece);
    FreeAligned(outerPiece);
}

TEST(ScratchScope, AffectsOnlyItsThread)
{
    Block block(4096);
    const CScratchScope scope(block.Data(), block.Size());
    bool held = true;
    std::thread other([&] {
        void* const piece = AllocateAligned(64, 64);
        held = block.Holds(piece);
        FreeAligned(piece);
    });
    other.join();
    EXPECT_FALSE(held);
}

TEST(ScratchScope, HoldsThePlanesOfAStack)
{
    Block block(1 << 16);
    const CScratchScope scope(block.Data(), block.Size());
    CPlaneStack stack;
    stack.Create(3, 16, 16);
    for (const float* plane : stack.Planes)
        EXPECT_TRUE(block.Holds(plane));
    const float* const first = stack.Planes[0];
    stack.Create(2, 16, 16); // releases the three before
    EXPECT_EQ(stack.Planes[0], first);
    stack.Release();
}

TEST(BorrowedMatrix, DoesNotFreeTheStorage)
{
    std::vector<float> storage(12, 3.0f);
    {
        CFloatMatrix matrix;
        matrix.Resize(2, 2); // its own storage
        matrix.Borrow(3, 4, storage.data());
        EXPECT_EQ(matrix.Rows, 3u);
        EXPECT_EQ(matrix.Cols, 4u);
        EXPECT_EQ(matrix.Count, 12u);
        EXPECT_EQ(matrix.Data, storage.data());
        matrix.Data[5] = 4.0f;
    } // a delete here would abort the test
    EXPECT_EQ(storage[5], 4.0f);

    std::vector<double> doubles(6, 1.0);
    CDoubleMatrix table;
    table.Borrow(2, 3, doubles.data());
    EXPECT_EQ(table.Data, doubles.data());
}

TEST(BorrowedMatrix, KeepsItsStorageWhileTheCountStays)
{
    std::vector<float> storage(12, 3.0f);
    CFloatMatrix matrix;
    matrix.Borrow(3, 4, storage.data());
    matrix.ResizeZeroed(4, 3);
    EXPECT_EQ(matrix.Data, storage.data());
    EXPECT_EQ(storage[11], 0.0f);

    CFloatMatrix other;
    other.ResizeZeroed(2, 6);
    other.Data[3] = 7.0f;
    matrix.CopyFrom(other);
    EXPECT_EQ(matrix.Data, storage.data());
    EXPECT_EQ(matrix.Rows, 2u);
    EXPECT_EQ(storage[3], 7.0f);
}

TEST(BorrowedMatrix, OwnsItsStorageOnceTheCountChanges)
{
    std::vector<float> storage = {1, 2, 3, 4};
    CFloatMatrix matrix;
    matrix.Borrow(2, 2, storage.data());
    matrix.Resize(3, 3);
    EXPECT_NE(matrix.Data, storage.data());
    EXPECT_EQ(matrix.Data[4], 4.0f);
    matrix.Resize(2, 2);
    matrix.Data[0] = 9.0f;
    EXPECT_EQ(storage[0], 1.0f);
}

TEST(BorrowedMatrix, OfNoElementsHasNoData)
{
    float one = 1.0f;
    CFloatMatrix matrix;
    matrix.Borrow(0, 5, &one);
    EXPECT_EQ(matrix.Data, nullptr);
    EXPECT_EQ(matrix.Count, 0u);
}

// With the address sanitizer each piece has its own bounds: neighbours, headers and freed pieces
// are out of bounds, and the caller may use the whole block again at the end.
TEST(ScratchScope, TheAddressSanitizerWatchesEachPiece)
{
#if defined(VISTATRIM_HAS_ADDRESS_SANITIZER)
    Block block(4096);
    {
        const CScratchScope scope(block.Data(), block.Size());
        char* const below = static_cast<char*>(AllocateAligned(100, 64));
        char* const above = static_cast<char*>(AllocateAligned(64, 64));
        EXPECT_FALSE(__asan_address_is_poisoned(below));
        EXPECT_FALSE(__asan_address_is_poisoned(below + 99));
        EXPECT_TRUE(__asan_address_is_poisoned(below + 100));
        EXPECT_TRUE(__asan_address_is_poisoned(below - 1));
        EXPECT_TRUE(__asan_address_is_poisoned(above - 1));
        EXPECT_TRUE(__asan_address_is_poisoned(above + 64));
        FreeAligned(below);
        EXPECT_TRUE(__asan_address_is_poisoned(below));
        EXPECT_FALSE(__asan_address_is_poisoned(above));
        FreeAligned(above);
        EXPECT_TRUE(__asan_address_is_poisoned(above));
    }
    for (size_t i = 0; i < block.Size(); ++i)
        ASSERT_FALSE(__asan_address_is_poisoned(block.Data() + i));
#else
    GTEST_SKIP() << "built without the address sanitizer";
#endif
}

} // namespace
} // namespace vistaTrim
