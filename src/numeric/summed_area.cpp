#include "numeric/summed_area.h"

#include <algorithm>

#include "numeric/aligned_memory.h"

namespace vistaTrim {

namespace {

constexpr size_t kTableAlignment = 64;

float* AllocateTable(const CPlaneStack& stack)
{
    const size_t elements =
        (static_cast<size_t>(stack.Rows) + 1) * (static_cast<size_t>(stack.Cols) + 1);
    return static_cast<float*>(AllocateAligned(elements * sizeof(float), kTableAlignment));
}

} // namespace

void BuildSummedAreaTable(const CFloatMatrix& map, CDoubleMatrix& table)
{
    const size_t rows = map.Rows;
    const size_t cols = map.Cols;
    const float* p = map.Data;
    double* t = table.Data;

    t[0] = p[0];
    for (size_t r = 1; r < rows; ++r)
        t[r * cols] = static_cast<double>(p[r * cols]) + t[(r - 1) * cols];
    for (size_t c = 1; c < cols; ++c)
        t[c] = static_cast<double>(p[c]) + t[c - 1];
    for (size_t r = 1; r < rows; ++r) {
        const float* row = p + r * cols;
        const double* above = t + (r - 1) * cols;
        double* out = t + r * cols;
        for (size_t c = 1; c < cols; ++c)
            out[c] = ((out[c - 1] + above[c]) - above[c - 1]) + static_cast<double>(row[c]);
    }
}

void BuildPlaneTable(const float* plane, float* table, int32_t cols, int32_t rows)
{
    const size_t stride = static_cast<size_t>(cols) + 1;
    std::fill_n(table, stride, 0.0f);
    for (int32_t r = 0; r < rows; ++r) {
        const float* src = plane + static_cast<size_t>(r) * static_cast<size_t>(cols);
        const float* above = table + static_cast<size_t>(r) * stride;
        float* out = table + (static_cast<size_t>(r) + 1) * stride;
        out[0] = 0.0f;
        float sum = 0.0f;
        for (int32_t c = 0; c < cols; ++c) {
            sum = sum + src[c];
            out[c + 1] = above[c + 1] + sum;
        }
    }
}

void BuildPairTable(const float* planeA, const float* planeB, float* table, int32_t cols,
                    int32_t rows)
{
    const size_t stride = static_cast<size_t>(cols) + 1;
    std::fill_n(table, stride, 0.0f);
    for (int32_t r = 0; r < rows; ++r) {
        const size_t start = static_cast<size_t>(r) * static_cast<size_t>(cols);
        const float* above = table + static_cast<size_t>(r) * stride;
        float* out = table + (static_cast<size_t>(r) + 1) * stride;
        out[0] = 0.0f;
        float sum = 0.0f;
        for (int32_t c = 0; c < cols; ++c) {
            const double product = static_cast<double>(planeA[start + static_cast<size_t>(c)]) *
                                   static_cast<double>(planeB[start + static_cast<size_t>(c)]);
            sum = static_cast<float>(product + static_cast<double>(sum));
            out[c + 1] = above[c + 1] + sum;
        }
    }
}

void BuildTables(CPlaneStack& stack)
{
    stack.TablesBuilt = true;
    for (float*& table : stack.PlaneTables)
        table = AllocateTable(stack);
    for (float*& table : stack.PairTables)
        table = AllocateTable(stack);

    const size_t n = stack.Planes.size();
    for (size_t k = 0; k < n; ++k)
        BuildPlaneTable(stack.Planes[k], stack.PlaneTables[k], stack.Cols, stack.Rows);
    size_t pair = 0;
    for (size_t i = 0; i < n; ++i)
        for (size_t j = i; j < n; ++j)
            BuildPairTable(stack.Planes[i], stack.Planes[j], stack.PairTables[pair++], stack.Cols,
                           stack.Rows);
}

} // namespace vistaTrim
