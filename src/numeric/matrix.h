// The long-lived maps and tables: row-major, element (r, c) at r * Cols + c, no row padding.
#ifndef VISTATRIM_NUMERIC_MATRIX_H
#define VISTATRIM_NUMERIC_MATRIX_H

#include <cstdint>
#include <memory>

namespace vistaTrim {

struct CMatrixSize {
    uint32_t Rows = 0;
    uint32_t Cols = 0;
};

// Count floats at Data, which is null when Count is 0.
class CFloatArray {
public:
    CFloatArray() = default;
    // New storage, contents undefined. Throws std::bad_alloc for 2^30 elements or more, without
    // trying.
    explicit CFloatArray(uint32_t count);
    CFloatArray(const CFloatArray&) = delete;
    CFloatArray& operator=(const CFloatArray&) = delete;

    // Allocates new storage before freeing the old; reuses it if the counts are equal.
    void CopyFrom(const CFloatArray& other);
    void Swap(CFloatArray& other);

    uint32_t Count = 0;
    float* Data = nullptr;

protected:
    // Count elements owned elsewhere. Frees the storage owned before.
    void View(uint32_t count, float* data);

private:
    std::unique_ptr<float[]> Owned; // empty if Data is owned elsewhere
};

class CFloatMatrix : public CMatrixSize, public CFloatArray {
public:
    // Allocates new storage; copies the common rectangle and leaves the rest undefined. If it
    // throws std::bad_alloc, the matrix is unchanged.
    void Resize(uint32_t rows, uint32_t cols);
    // Uses rows x cols elements of storage owned elsewhere, which must outlive the use of this
    // matrix. Releases what the matrix held. The size limit is that of owned storage; if it throws
    // std::bad_alloc, the matrix is unchanged.
    void Borrow(uint32_t rows, uint32_t cols, float* data);
    // Every element 0; storage is kept when the element count stays the same.
    void ResizeZeroed(uint32_t rows, uint32_t cols);
    // Shape and contents of other; storage is kept when the element counts are equal.
    void CopyFrom(const CFloatMatrix& other);
};

// The same in double precision; the limit is 2^29 elements.
class CDoubleArray {
public:
    CDoubleArray() = default;
    explicit CDoubleArray(uint32_t count);
    CDoubleArray(const CDoubleArray&) = delete;
    CDoubleArray& operator=(const CDoubleArray&) = delete;

    void CopyFrom(const CDoubleArray& other);
    void Swap(CDoubleArray& other);

    uint32_t Count = 0;
    double* Data = nullptr;

protected:
    void View(uint32_t count, double* data);

private:
    std::unique_ptr<double[]> Owned;
};

class CDoubleMatrix : public CMatrixSize, public CDoubleArray {
public:
    void Resize(uint32_t rows, uint32_t cols);
    void Borrow(uint32_t rows, uint32_t cols, double* data);
    void CopyFrom(const CDoubleMatrix& other);
};

} // namespace vistaTrim

#endif
