// The working container of the saliency stages: a stack of equally sized float planes.
#ifndef VISTATRIM_NUMERIC_PLANE_STACK_H
#define VISTATRIM_NUMERIC_PLANE_STACK_H

#include <cstdint>
#include <vector>

namespace vistaTrim {

// Ownership is by convention, because one plane is routinely seen through several stacks:
// a copy is a shallow handle, and only whoever made a stack with Create calls Release on it.
// A wrapper or a view is simply dropped.
class CPlaneStack {
public:
    CPlaneStack() = default;

    // One plane, owned by the caller, with empty slots for its tables.
    void WrapPlane(int32_t cols, int32_t rows, float* plane);
    // The same without slots for tables.
    void WrapPlaneOnly(int32_t cols, int32_t rows, float* plane);
    // Releases the old planes, then allocates planeCount planes, 64-byte aligned and uninitialised.
    void Create(int32_t planeCount, int32_t cols, int32_t rows);
    // Frees planes and tables. Only for a stack made by Create. The size fields stay.
    void Release();

    std::vector<float*> PlanePointers() const;
    // One plane: element i = bytes[i]. Otherwise planes 0..2: element i = bytes[3i + plane].
    void FillFromBytes(const uint8_t* bytes);

    std::vector<float*> Planes;      // each ElementCount floats, row-major, row stride Cols
    std::vector<float*> PlaneTables; // (Rows + 1) x (Cols + 1) floats each, or null
    // Tables of the products of planes (0,0), (0,1) .. (0,n-1), (1,1) .. (n-1,n-1), or null.
    std::vector<float*> PairTables;
    int32_t Cols = 0;
    int32_t Rows = 0;
    int32_t PlaneCount = 0;
    int32_t ElementCount = 0;
    bool TablesBuilt = false;
};

} // namespace vistaTrim

#endif
