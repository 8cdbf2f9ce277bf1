#include "numeric/matrix.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <vector>

#include <gtest/gtest.h>

namespace {

// Heap requests for arrays. Only the matrices allocate arrays in this program.
bool denyArrays = false;
size_t arrayRequests = 0;
size_t lastArrayBytes = 0;
long liveArrays = 0;

} // namespace

void* operator new[](size_t size)
{
    ++arrayRequests;
    lastArrayBytes = size;
    void* block = denyArrays ? nullptr : std::malloc(size);
    if (block == nullptr)
        throw std::bad_alloc();
    ++liveArrays;
    return block;
}

void operator delete[](void* block) noexcept
{
    liveArrays -= block != nullptr ? 1 : 0;
    std::free(block);
}

void operator delete[](void* block, size_t) noexcept
{
    liveArrays -= block != nullptr ? 1 : 0;
    std::free(block);
}

namespace vistaTrim {
namespace {

// While one exists, array allocations fail.
class NoMemory {
public:
    NoMemory()
    {
        denyArrays = true;
        arrayRequests = 0;
    }
    ~NoMemory()
    {
        denyArrays = false;
    }
    NoMemory(const NoMemory&) = delete;
    NoMemory& operator=(const NoMemory&) = delete;
};

// False if a sanitizer replaces this file's allocator with its own.
bool CountsArrays()
{
    arrayRequests = 0;
    const CFloatArray probe(1);
    return arrayRequests == 1;
}

// Element (r, c) = 100 r + c + start.
void Number(CFloatMatrix& matrix, float start = 0.0f)
{
    for (uint32_t r = 0; r < matrix.Rows; ++r)
        for (uint32_t c = 0; c < matrix.Cols; ++c)
            matrix.Data[r * matrix.Cols + c] = start + static_cast<float>(100 * r + c);
}

void Number(CDoubleMatrix& matrix)
{
    for (uint32_t r = 0; r < matrix.Rows; ++r)
        for (uint32_t c = 0; c < matrix.Cols; ++c)
            matrix.Data[r * matrix.Cols + c] = 100 * r + c;
}

TEST(FloatMatrix, FieldsAreInOrder)
{
    const CFloatMatrix matrix;
    const auto* base = reinterpret_cast<const unsigned char*>(&matrix);
    EXPECT_EQ(reinterpret_cast<const unsigned char*>(&matrix.Rows) - base, 0);
    EXPECT_EQ(reinterpret_cast<const unsigned char*>(&matrix.Cols) - base, 4);
    EXPECT_EQ(reinterpret_cast<const unsigned char*>(&matrix.Count) - base, 8);
    EXPECT_EQ(reinterpret_cast<const unsigned char*>(&matrix.Data) - base, 16);
}

TEST(FloatMatrix, StartsEmpty)
{
    const CFloatMatrix matrix;
    EXPECT_EQ(matrix.Rows, 0u);
    EXPECT_EQ(matrix.Cols, 0u);
    EXPECT_EQ(matrix.Count, 0u);
    EXPECT_EQ(matrix.Data, nullptr);
}

TEST(FloatMatrix, ResizeToNothingKeepsTheOtherSideAndHoldsNoStorage)
{
    for (bool sizedBefore : {false, true}) {
        CFloatMatrix matrix;
        if (sizedBefore)
            matrix.Resize(3, 4);
        matrix.Resize(0, 7);
        EXPECT_EQ(matrix.Rows, 0u);
        EXPECT_EQ(matrix.Cols, 7u);
        EXPECT_EQ(matrix.Count, 0u);
        EXPECT_EQ(matrix.Data, nullptr);
        matrix.Resize(9, 0);
        EXPECT_EQ(matrix.Rows, 9u);
        EXPECT_EQ(matrix.Cols, 0u);
        EXPECT_EQ(matrix.Count, 0u);
        EXPECT_EQ(matrix.Data, nullptr);
        matrix.Resize(2, 2);
        EXPECT_EQ(matrix.Count, 4u);
        EXPECT_NE(matrix.Data, nullptr);
    }
}

TEST(FloatMatrix, ResizeToItsOwnSizeKeepsTheContentInNewStorage)
{
    CFloatMatrix matrix;
    matrix.Resize(5, 3);
    Number(matrix);
    const float* before = matrix.Data;
    const std::vector<float> content(before, before + 15);

    matrix.Resize(5, 3);

    EXPECT_NE(matrix.Data, before);
    EXPECT_EQ(std::vector<float>(matrix.Data, matrix.Data + matrix.Count), content);
}

TEST(FloatMatrix, ResizeCopiesTheCommonRectangle)
{
    const uint32_t sides[] = {1, 2, 5, 8};
    for (uint32_t rows : sides)
        for (uint32_t cols : sides) {
            SCOPED_TRACE(testing::Message() << rows << " x " << cols);
            CFloatMatrix matrix;
            matrix.Resize(4, 6);
            Number(matrix);

            matrix.Resize(rows, cols);

            ASSERT_EQ(matrix.Rows, rows);
            ASSERT_EQ(matrix.Cols, cols);
            ASSERT_EQ(matrix.Count, rows * cols);
            for (uint32_t r = 0; r < std::min(rows, 4u); ++r)
                for (uint32_t c = 0; c < std::min(cols, 6u); ++c)
                    EXPECT_EQ(matrix.Data[r * cols + c], static_cast<float>(100 * r + c));
        }
}

TEST(FloatMatrix, TwoToTheThirtyElementsThrowWithoutAllocating)
{
    if (!CountsArrays())
        GTEST_SKIP() << "a sanitizer replaces the allocator";
    CFloatMatrix matrix;
    matrix.Resize(2, 3);
    Number(matrix);
    const float* before = matrix.Data;
    arrayRequests = 0;

    EXPECT_THROW(matrix.Resize(1u << 15, 1u << 15), std::bad_alloc);
    EXPECT_THROW(matrix.Resize(1, 0xFFFFFFFFu), std::bad_alloc);
    EXPECT_THROW(matrix.ResizeZeroed(1u << 30, 1), std::bad_alloc);
    EXPECT_THROW(CFloatArray(1u << 30), std::bad_alloc);

    EXPECT_EQ(arrayRequests, 0u);
    EXPECT_EQ(matrix.Rows, 2u);
    EXPECT_EQ(matrix.Cols, 3u);
    EXPECT_EQ(matrix.Data, before);
    EXPECT_EQ(matrix.Data[5], 102.0f);
}

TEST(FloatMatrix, OneElementBelowTheLimitIsAllocated)
{
    if (!CountsArrays())
        GTEST_SKIP() << "a sanitizer replaces the allocator";
    CFloatMatrix matrix;
    const NoMemory none;
    EXPECT_THROW(matrix.Resize(1, (1u << 30) - 1), std::bad_alloc);
    EXPECT_EQ(arrayRequests, 1u);
    EXPECT_EQ(lastArrayBytes, size_t{4} * ((1u << 30) - 1));
    EXPECT_EQ(matrix.Count, 0u);
}

TEST(FloatMatrix, TheElementCountWrapsAt32Bits)
{
    CFloatMatrix matrix;
    matrix.Resize(65536, 65536);
    EXPECT_EQ(matrix.Count, 0u);
    EXPECT_EQ(matrix.Data, nullptr);
    matrix.ResizeZeroed(65537, 65536); // 2^32 + 2^16
    EXPECT_EQ(matrix.Count, 65536u);
    EXPECT_EQ(matrix.Rows, 65537u);
}

TEST(FloatMatrix, KeepsEverythingWhenMemoryRunsOut)
{
    if (!CountsArrays())
        GTEST_SKIP() << "a sanitizer replaces the allocator";
    CFloatMatrix matrix;
    matrix.Resize(2, 3);
    Number(matrix);
    CFloatMatrix other;
    other.Resize(4, 4);
    const float* before = matrix.Data;
    {
        const NoMemory none;
        EXPECT_THROW(matrix.Resize(7, 7), std::bad_alloc);
        EXPECT_THROW(matrix.ResizeZeroed(7, 7), std::bad_alloc);
        EXPECT_THROW(matrix.CopyFrom(other), std::bad_alloc);
    }
    EXPECT_EQ(matrix.Rows, 2u);
    EXPECT_EQ(matrix.Cols, 3u);
    EXPECT_EQ(matrix.Count, 6u);
    EXPECT_EQ(matrix.Data, before);
    for (uint32_t r = 0; r < 2; ++r)
        for (uint32_t c = 0; c < 3; ++c)
            EXPECT_EQ(matrix.Data[r * 3 + c], static_cast<float>(100 * r + c));
}

TEST(FloatMatrix, ResizeZeroedKeepsStorageOfTheSameCountAndClearsIt)
{
    CFloatMatrix matrix;
    matrix.Resize(4, 6);
    Number(matrix, 1.0f);
    const float* before = matrix.Data;

    matrix.ResizeZeroed(8, 3);

    EXPECT_EQ(matrix.Data, before);
    EXPECT_EQ(matrix.Rows, 8u);
    EXPECT_EQ(matrix.Cols, 3u);
    EXPECT_EQ(std::vector<float>(matrix.Data, matrix.Data + 24), std::vector<float>(24, 0.0f));
}

TEST(FloatMatrix, ResizeZeroedReallocatesForAnotherCount)
{
    CFloatMatrix matrix;
    matrix.Resize(4, 6);
    Number(matrix, 1.0f);

    matrix.ResizeZeroed(5, 5);
    ASSERT_EQ(matrix.Count, 25u);
    EXPECT_EQ(std::vector<float>(matrix.Data, matrix.Data + 25), std::vector<float>(25, 0.0f));

    matrix.ResizeZeroed(5, 0);
    EXPECT_EQ(matrix.Count, 0u);
    EXPECT_EQ(matrix.Data, nullptr);
    EXPECT_EQ(matrix.Rows, 5u);
}

TEST(FloatMatrix, CopyFromTakesTheShapeAndKeepsStorageOfTheSameCount)
{
    CFloatMatrix source;
    source.Resize(6, 4);
    Number(source);
    CFloatMatrix target;
    target.Resize(3, 8);
    const float* before = target.Data;

    target.CopyFrom(source);

    EXPECT_EQ(target.Data, before);
    EXPECT_EQ(target.Rows, 6u);
    EXPECT_EQ(target.Cols, 4u);
    EXPECT_EQ(std::vector<float>(target.Data, target.Data + 24),
              std::vector<float>(source.Data, source.Data + 24));
}

TEST(FloatMatrix, CopyFromReallocatesForAnotherCountAndSharesNothing)
{
    CFloatMatrix source;
    source.Resize(6, 4);
    Number(source);
    CFloatMatrix target;
    target.Resize(1, 1);

    target.CopyFrom(source);
    source.Data[23] = -1.0f;

    ASSERT_EQ(target.Count, 24u);
    EXPECT_EQ(target.Data[23], 503.0f);

    target.CopyFrom(CFloatMatrix());
    EXPECT_EQ(target.Count, 0u);
    EXPECT_EQ(target.Data, nullptr);
}

TEST(FloatMatrix, CopyFromItselfDoesNothing)
{
    if (!CountsArrays())
        GTEST_SKIP() << "a sanitizer replaces the allocator";
    CFloatMatrix matrix;
    matrix.Resize(2, 2);
    Number(matrix);
    const float* before = matrix.Data;
    arrayRequests = 0;

    matrix.CopyFrom(matrix);

    EXPECT_EQ(arrayRequests, 0u);
    EXPECT_EQ(matrix.Data, before);
    EXPECT_EQ(matrix.Data[3], 101.0f);
}

TEST(FloatArray, SwapExchangesStorage)
{
    CFloatArray two(2);
    two.Data[1] = 5.0f;
    CFloatArray none;
    const float* before = two.Data;

    two.Swap(none);

    EXPECT_EQ(two.Count, 0u);
    EXPECT_EQ(two.Data, nullptr);
    EXPECT_EQ(none.Count, 2u);
    EXPECT_EQ(none.Data, before);
    EXPECT_EQ(none.Data[1], 5.0f);
}

TEST(FloatMatrix, FreesItsOwnStorage)
{
    if (!CountsArrays())
        GTEST_SKIP() << "a sanitizer replaces the allocator";
    const long before = liveArrays;
    {
        CFloatMatrix matrix;
        matrix.Resize(3, 5);
        EXPECT_EQ(liveArrays, before + 1);
        matrix.Resize(7, 2); // frees the first
        EXPECT_EQ(liveArrays, before + 1);
        CFloatMatrix copy;
        copy.CopyFrom(matrix);
        EXPECT_EQ(liveArrays, before + 2);
    }
    EXPECT_EQ(liveArrays, before);
}

TEST(DoubleMatrix, FreesItsOwnStorage)
{
    if (!CountsArrays())
        GTEST_SKIP() << "a sanitizer replaces the allocator";
    const long before = liveArrays;
    {
        CDoubleMatrix matrix;
        matrix.Resize(3, 5);
        EXPECT_EQ(liveArrays, before + 1);
        matrix.Resize(7, 2); // frees the first
        EXPECT_EQ(liveArrays, before + 1);
        CDoubleMatrix copy;
        copy.CopyFrom(matrix);
        EXPECT_EQ(liveArrays, before + 2);
    }
    EXPECT_EQ(liveArrays, before);
}

TEST(FloatMatrix, BorrowedStorageIsUsedButNotFreed)
{
    float storage[8] = {};
    storage[6] = -6.0f;
    {
        CFloatMatrix matrix;
        matrix.Resize(5, 5);
        matrix.Borrow(2, 3, storage);
        EXPECT_EQ(matrix.Rows, 2u);
        EXPECT_EQ(matrix.Cols, 3u);
        EXPECT_EQ(matrix.Count, 6u);
        ASSERT_EQ(matrix.Data, storage);
        Number(matrix);
    }
    EXPECT_EQ(storage[5], 102.0f);
    EXPECT_EQ(storage[6], -6.0f);

    CFloatMatrix matrix;
    matrix.Borrow(2, 3, storage);
    matrix.Resize(3, 3); // its own storage, with the common rectangle
    EXPECT_NE(matrix.Data, storage);
    EXPECT_EQ(matrix.Data[5], 102.0f);
    matrix.Borrow(0, 3, storage);
    EXPECT_EQ(matrix.Cols, 3u);
    EXPECT_EQ(matrix.Data, nullptr);
}

TEST(FloatMatrix, BorrowsNoMoreThanItCouldOwn)
{
    float storage[6] = {};
    CFloatMatrix matrix;
    matrix.Borrow(2, 3, storage);
    EXPECT_THROW(matrix.Borrow(1u << 15, 1u << 15, storage), std::bad_alloc);
    EXPECT_EQ(matrix.Rows, 2u);
    EXPECT_EQ(matrix.Cols, 3u);
    EXPECT_EQ(matrix.Count, 6u);
    EXPECT_EQ(matrix.Data, storage);
    matrix.Borrow((1u << 30) - 1, 1, storage); // accesses no element
    EXPECT_EQ(matrix.Count, (1u << 30) - 1);
}

TEST(DoubleMatrix, BorrowsNoMoreThanItCouldOwn)
{
    double storage[6] = {};
    CDoubleMatrix matrix;
    matrix.Borrow(2, 3, storage);
    EXPECT_THROW(matrix.Borrow(1u << 14, 1u << 15, storage), std::bad_alloc);
    EXPECT_EQ(matrix.Rows, 2u);
    EXPECT_EQ(matrix.Count, 6u);
    EXPECT_EQ(matrix.Data, storage);
    matrix.Borrow((1u << 29) - 1, 1, storage);
    EXPECT_EQ(matrix.Count, (1u << 29) - 1);
}

TEST(DoubleMatrix, ResizeToNothingKeepsTheOtherSideAndHoldsNoStorage)
{
    for (bool sizedBefore : {false, true}) {
        CDoubleMatrix matrix;
        if (sizedBefore)
            matrix.Resize(3, 4);
        matrix.Resize(0, 7);
        EXPECT_EQ(matrix.Rows, 0u);
        EXPECT_EQ(matrix.Cols, 7u);
        EXPECT_EQ(matrix.Count, 0u);
        EXPECT_EQ(matrix.Data, nullptr);
        matrix.Resize(9, 0);
        EXPECT_EQ(matrix.Rows, 9u);
        EXPECT_EQ(matrix.Cols, 0u);
        EXPECT_EQ(matrix.Count, 0u);
        EXPECT_EQ(matrix.Data, nullptr);
        matrix.Resize(2, 2);
        EXPECT_EQ(matrix.Count, 4u);
        EXPECT_NE(matrix.Data, nullptr);
    }
}

TEST(DoubleMatrix, ResizeToItsOwnSizeKeepsTheContentInNewStorage)
{
    CDoubleMatrix matrix;
    matrix.Resize(5, 3);
    Number(matrix);
    const double* before = matrix.Data;
    const std::vector<double> content(before, before + 15);

    matrix.Resize(5, 3);

    EXPECT_NE(matrix.Data, before);
    EXPECT_EQ(std::vector<double>(matrix.Data, matrix.Data + matrix.Count), content);
}

TEST(DoubleMatrix, ResizeCopiesTheCommonRectangle)
{
    CDoubleMatrix matrix;
    matrix.Resize(4, 6);
    Number(matrix);
    matrix.Resize(6, 5);
    ASSERT_EQ(matrix.Count, 30u);
    for (uint32_t r = 0; r < 4; ++r)
        for (uint32_t c = 0; c < 5; ++c)
            EXPECT_EQ(matrix.Data[r * 5 + c], 100 * r + c);

    matrix.Resize(0, 5);
    EXPECT_EQ(matrix.Data, nullptr);
    EXPECT_EQ(matrix.Cols, 5u);
}

TEST(DoubleMatrix, TwoToTheTwentyNinthElementsThrowWithoutAllocating)
{
    if (!CountsArrays())
        GTEST_SKIP() << "a sanitizer replaces the allocator";
    CDoubleMatrix matrix;
    arrayRequests = 0;
    EXPECT_THROW(matrix.Resize(1u << 14, 1u << 15), std::bad_alloc);
    EXPECT_EQ(arrayRequests, 0u);

    const NoMemory none;
    EXPECT_THROW(matrix.Resize((1u << 29) - 1, 1), std::bad_alloc);
    EXPECT_EQ(arrayRequests, 1u);
    EXPECT_EQ(lastArrayBytes, size_t{8} * ((1u << 29) - 1));
    EXPECT_EQ(matrix.Rows, 0u);
}

TEST(DoubleMatrix, CopyFromKeepsStorageOfTheSameCount)
{
    if (!CountsArrays())
        GTEST_SKIP() << "a sanitizer replaces the allocator";
    CDoubleMatrix source;
    source.Resize(2, 3);
    Number(source);
    CDoubleMatrix target;
    target.Resize(3, 2);
    const double* before = target.Data;

    target.CopyFrom(source);
    EXPECT_EQ(target.Data, before);
    EXPECT_EQ(target.Rows, 2u);
    EXPECT_EQ(target.Data[5], 102.0);

    arrayRequests = 0;
    target.CopyFrom(target);
    EXPECT_EQ(arrayRequests, 0u);
    {
        CDoubleMatrix larger;
        larger.Resize(4, 4);
        const NoMemory none;
        EXPECT_THROW(target.CopyFrom(larger), std::bad_alloc);
    }
    EXPECT_EQ(target.Rows, 2u);
    EXPECT_EQ(target.Count, 6u);
    EXPECT_EQ(target.Data, before);
}

TEST(DoubleMatrix, CopyFromReallocatesForAnotherCountAndSharesNothing)
{
    CDoubleMatrix source;
    source.Resize(2, 3);
    Number(source);
    CDoubleMatrix target;
    target.Resize(4, 4);
    target.CopyFrom(source);
    EXPECT_EQ(target.Rows, 2u);
    EXPECT_EQ(target.Count, 6u);
    EXPECT_NE(target.Data, source.Data);
    source.Data[5] = 0;
    EXPECT_EQ(target.Data[5], 102.0);
    target.CopyFrom(CDoubleMatrix());
    EXPECT_EQ(target.Count, 0u);
    EXPECT_EQ(target.Data, nullptr);
}

} // namespace
} // namespace vistaTrim
