// ThresholdBelow and ScaleColumns: each pixel independently; errors are not reported.
#include "numeric/image_kernels.h"
#include "numeric/isa_variants.h"
#include "numeric/raw_kernels.h"

namespace vistaTrim {

namespace {

// Tests v >= level, not v < level, so that NaN is replaced too.
VISTATRIM_VARIANT_BODY void ReplaceBelowBody(float* data, int64_t count, float level, float value)
{
    for (int64_t i = 0; i < count; ++i)
        data[i] = data[i] >= level ? data[i] : value;
}
VISTATRIM_VARIANTS(ReplaceBelow, (float* data, int64_t count, float level, float value),
                   (data, count, level, value))

VISTATRIM_VARIANT_BODY void ScaleRowsBody(float* data, int64_t stride, int32_t cols, int32_t rows,
                                          float factor)
{
    for (int32_t y = 0; y < rows; ++y) {
        float* row = data + y * stride;
        for (int32_t x = 0; x < cols; ++x)
            row[x] *= factor;
    }
}
VISTATRIM_VARIANTS(ScaleRows,
                   (float* data, int64_t stride, int32_t cols, int32_t rows, float factor),
                   (data, stride, cols, rows, factor))

} // namespace

int32_t ThresholdKernel(float* data, int32_t cols, int32_t rows, float level, float value)
{
    if (!data)
        return KernelNullPointer;
    if (cols < 1 || rows < 1)
        return KernelBadSize;
    ReplaceBelow(data, static_cast<int64_t>(cols) * rows, level, value);
    return KernelSuccess;
}

int32_t ScaleKernel(float* data, int64_t stride, int32_t cols, int32_t rows, float factor)
{
    if (!data)
        return KernelNullPointer;
    if (cols < 1 || rows < 1)
        return KernelBadSize;
    ScaleRows(data, stride, cols, rows, factor);
    return KernelSuccess;
}

// An empty map is not an error: nothing happens and no message is printed.
void ThresholdBelow(CFloatMatrix& map, float level, float value)
{
    ThresholdKernel(map.Data, static_cast<int32_t>(map.Cols), static_cast<int32_t>(map.Rows), level,
                    value);
}

// A map with fewer columns than strips has empty strips; skip them.
void ScaleColumns(CFloatMatrix& map, int32_t firstCol, int32_t width, float factor)
{
    ScaleKernel(map.Data ? map.Data + firstCol : nullptr, map.Cols, width,
                static_cast<int32_t>(map.Rows), factor);
}

} // namespace vistaTrim
