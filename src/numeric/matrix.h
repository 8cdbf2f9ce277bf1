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
    // New storage, contents undefined. 2^30 elements or more: std::bad_alloc, nothing tried.
    explicit CFloatArray(uint32_t count);
    CFloatArray(const CFloatArray&) = delete;
    CFloatArray& operator=(const CFloatArray&) = delete;

    // Takes new storage before it frees the old, and none at all if the counts are equal.
    void CopyFrom(const CFloatArray& other);
    void Swap(CFloatArray& other);

    uint32_t Count = 0;
    float* Data = nullptr;

protected:
    // Count elements that somebody else keeps. Owned storage is given up.
    void View(uint32_t count, float* data);

private:
    std::unique_ptr<float[]> Owned; // empty if Data belongs to somebody else
};

class CFloatMatrix : public CMatrixSize, public CFloatArray {
public:
    // New storage; the rectangle that old and new have in common is copied, the rest is
    // undefined. std::bad_alloc leaves the matrix as it was.
    void Resize(uint32_t rows, uint32_t cols);
    // Takes a place of rows x cols elements in storage that belongs to somebody else, who keeps
    // it for as long as the matrix is used. What the matrix held is given up. The limit is that of
    // storage of its own: std::bad_alloc leaves the matrix as it was.
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
