#include "numeric/matrix.h"

#include <algorithm>
#include <new>
#include <utility>

namespace vistaTrim {

namespace {

// 4 GiB either way.
constexpr uint32_t kFloatLimit = uint32_t{1} << 30;
constexpr uint32_t kDoubleLimit = uint32_t{1} << 29;

void RefuseOversized(uint32_t count, uint32_t limit)
{
    if (count >= limit)
        throw std::bad_alloc();
}

float* NewFloats(uint32_t count)
{
    RefuseOversized(count, kFloatLimit);
    return count != 0 ? new float[count] : nullptr;
}

double* NewDoubles(uint32_t count)
{
    RefuseOversized(count, kDoubleLimit);
    return count != 0 ? new double[count] : nullptr;
}

} // namespace

CFloatArray::CFloatArray(uint32_t count) : Count(count), Owned(NewFloats(count))
{
    Data = Owned.get();
}

void CFloatArray::View(uint32_t count, float* data)
{
    Count = count;
    Data = count != 0 ? data : nullptr;
    Owned.reset();
}

void CFloatArray::CopyFrom(const CFloatArray& other)
{
    if (this == &other)
        return;
    if (Count != other.Count) {
        CFloatArray fresh(other.Count);
        Swap(fresh);
    }
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDelete): the storage moves along in the swap
    std::copy_n(other.Data, Count, Data);
}

void CFloatArray::Swap(CFloatArray& other)
{
    std::swap(Count, other.Count);
    std::swap(Data, other.Data);
    std::swap(Owned, other.Owned);
}

void CFloatMatrix::Resize(uint32_t rows, uint32_t cols)
{
    CFloatArray fresh(rows * cols);
    const uint32_t commonRows = std::min(rows, Rows);
    const uint32_t commonCols = std::min(cols, Cols);
    for (uint32_t r = 0; r < commonRows; ++r)
        std::copy_n(Data + size_t{r} * Cols, commonCols, fresh.Data + size_t{r} * cols);
    Swap(fresh);
    Rows = rows;
    Cols = cols;
}

void CFloatMatrix::Borrow(uint32_t rows, uint32_t cols, float* data)
{
    RefuseOversized(rows * cols, kFloatLimit);
    View(rows * cols, data);
    Rows = rows;
    Cols = cols;
}

void CFloatMatrix::ResizeZeroed(uint32_t rows, uint32_t cols)
{
    if (rows * cols != Count) {
        CFloatArray fresh(rows * cols);
        Swap(fresh);
    }
    Rows = rows;
    Cols = cols;
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDelete): the storage moves along in the swap
    std::fill_n(Data, Count, 0.0f);
}

void CFloatMatrix::CopyFrom(const CFloatMatrix& other)
{
    // Allocate first: if that fails, the old shape still matches the old data.
    CFloatArray::CopyFrom(other);
    Rows = other.Rows;
    Cols = other.Cols;
}

CDoubleArray::CDoubleArray(uint32_t count) : Count(count), Owned(NewDoubles(count))
{
    Data = Owned.get();
}

void CDoubleArray::View(uint32_t count, double* data)
{
    Count = count;
    Data = count != 0 ? data : nullptr;
    Owned.reset();
}

void CDoubleArray::CopyFrom(const CDoubleArray& other)
{
    if (this == &other)
        return;
    if (Count != other.Count) {
        CDoubleArray fresh(other.Count);
        Swap(fresh);
    }
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDelete): the storage moves along in the swap
    std::copy_n(other.Data, Count, Data);
}

void CDoubleArray::Swap(CDoubleArray& other)
{
    std::swap(Count, other.Count);
    std::swap(Data, other.Data);
    std::swap(Owned, other.Owned);
}

void CDoubleMatrix::Resize(uint32_t rows, uint32_t cols)
{
    CDoubleArray fresh(rows * cols);
    const uint32_t commonRows = std::min(rows, Rows);
    const uint32_t commonCols = std::min(cols, Cols);
    for (uint32_t r = 0; r < commonRows; ++r)
        std::copy_n(Data + size_t{r} * Cols, commonCols, fresh.Data + size_t{r} * cols);
    Swap(fresh);
    Rows = rows;
    Cols = cols;
}

void CDoubleMatrix::Borrow(uint32_t rows, uint32_t cols, double* data)
{
    RefuseOversized(rows * cols, kDoubleLimit);
    View(rows * cols, data);
    Rows = rows;
    Cols = cols;
}

void CDoubleMatrix::CopyFrom(const CDoubleMatrix& other)
{
    CDoubleArray::CopyFrom(other);
    Rows = other.Rows;
    Cols = other.Cols;
}

} // namespace vistaTrim
