#include "numeric/plane_stack.h"

#include <algorithm>
#include <cstddef>

#include "numeric/aligned_memory.h"
#include "numeric/isa_variants.h"

namespace vistaTrim {

namespace {

constexpr size_t kPlaneAlignment = 64;

VISTATRIM_VARIANT_BODY void WidenBytesBody(const uint8_t* __restrict__ bytes,
                                           float* __restrict__ plane, int32_t count)
{
    for (int32_t i = 0; i < count; ++i)
        plane[i] = bytes[i];
}
VISTATRIM_VARIANTS(WidenBytes,
                   (const uint8_t* __restrict__ bytes, float* __restrict__ plane, int32_t count),
                   (bytes, plane, count))

VISTATRIM_VARIANT_BODY void WidenPixelsBody(const uint8_t* __restrict__ bytes,
                                            float* __restrict__ plane0, float* __restrict__ plane1,
                                            float* __restrict__ plane2, int32_t count)
{
    // Three times the pixel count can exceed 32 bits.
    const ptrdiff_t pixels = count;
    for (ptrdiff_t i = 0; i < pixels; ++i) {
        plane0[i] = bytes[3 * i];
        plane1[i] = bytes[3 * i + 1];
        plane2[i] = bytes[3 * i + 2];
    }
}
VISTATRIM_VARIANTS(WidenPixels,
                   (const uint8_t* __restrict__ bytes, float* __restrict__ plane0,
                    float* __restrict__ plane1, float* __restrict__ plane2, int32_t count),
                   (bytes, plane0, plane1, plane2, count))

} // namespace

void CPlaneStack::WrapPlane(int32_t cols, int32_t rows, float* plane)
{
    WrapPlaneOnly(cols, rows, plane);
    PlaneTables.assign(1, nullptr);
    PairTables.assign(1, nullptr);
}

void CPlaneStack::WrapPlaneOnly(int32_t cols, int32_t rows, float* plane)
{
    Planes.assign(1, plane);
    PlaneTables.clear();
    PairTables.clear();
    Cols = cols;
    Rows = rows;
    PlaneCount = 1;
    ElementCount = cols * rows;
    TablesBuilt = false;
}

void CPlaneStack::Create(int32_t planeCount, int32_t cols, int32_t rows)
{
    Release();
    Cols = cols;
    Rows = rows;
    PlaneCount = planeCount;
    ElementCount = cols * rows;
    // Grow the lists first: a list that fails to grow must not leak a plane.
    const size_t n = planeCount > 0 ? static_cast<size_t>(planeCount) : 0;
    Planes.reserve(n);
    PlaneTables.assign(n, nullptr);
    PairTables.assign(n * (n + 1) / 2, nullptr);
    const size_t planeBytes = static_cast<size_t>(ElementCount) * sizeof(float);
    for (size_t k = 0; k < n; ++k)
        Planes.push_back(static_cast<float*>(AllocateAligned(planeBytes, kPlaneAlignment)));
}

void CPlaneStack::Release()
{
    // A stack released earlier still has its sizes, but no planes.
    const size_t planes = std::min(static_cast<size_t>(PlaneCount), Planes.size());
    for (size_t k = 0; k < planes; ++k)
        FreeAligned(Planes[k]);
    Planes.clear();
    for (float* table : PlaneTables)
        FreeAligned(table);
    PlaneTables.clear();
    for (float* table : PairTables)
        FreeAligned(table);
    PairTables.clear();
    TablesBuilt = false;
}

std::vector<float*> CPlaneStack::PlanePointers() const
{
    return Planes;
}

void CPlaneStack::FillFromBytes(const uint8_t* bytes)
{
    if (PlaneCount == 1)
        WidenBytes(bytes, Planes[0], ElementCount);
    else
        WidenPixels(bytes, Planes[0], Planes[1], Planes[2], ElementCount);
}

} // namespace vistaTrim
