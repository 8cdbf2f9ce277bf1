// Gaussian smoothing, one direction after the other.
//
// Columns first: each row of the result needs maskSize source rows, summed into a single row buffer
// whose ends are then repeated outwards, followed by a pass along that buffer. No intermediate
// plane exists, and the source rows in use stay in the first-level cache.
//
// Every pixel, at the border or not, in a vector or in its tail, is summed in the same order, so a
// constant plane stays constant. Taps are exactly symmetric, so the two pixels that share a tap are
// added first. This halves the multiplications, and a flipped picture gives the flipped result.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iostream>
#include <limits>
#include <memory>

#include "numeric/image_kernels.h"
#include "numeric/isa_variants.h"
#include "numeric/raw_kernels.h"

namespace vistaTrim {

namespace {

// Masks of up to this radius are summed in registers.
constexpr int32_t kMaxUnrolledRadius = 7;

// out[x] = the weighted sum of lines[0][x] .. lines[2 * radius][x], outermost pairs first. The
// caller passes a constant radius, so that the inner loop unrolls.
VISTATRIM_VARIANT_BODY void WeightedSum(const float* const* lines, const float* taps,
                                        int32_t radius, float* __restrict__ out, int32_t count)
{
    for (int32_t x = 0; x < count; ++x) {
        // The radius is at least 1. NOLINTNEXTLINE(clang-analyzer-core.NullDereference)
        float sum = taps[0] * (lines[0][x] + lines[2 * radius][x]);
        for (int32_t k = 1; k < radius; ++k)
            sum += taps[k] * (lines[k][x] + lines[2 * radius - k][x]);
        out[x] = sum + taps[radius] * lines[radius][x];
    }
}

// One step of the same sum for a mask of any radius: adds one pair (the first or a later one) or
// the centre to out[x].
VISTATRIM_VARIANT_BODY void StartPair(const float* a, const float* b, float tap,
                                      float* __restrict__ out, int32_t count)
{
    for (int32_t x = 0; x < count; ++x)
        out[x] = tap * (a[x] + b[x]);
}
VISTATRIM_VARIANT_BODY void AddPair(const float* a, const float* b, float tap,
                                    float* __restrict__ out, int32_t count)
{
    for (int32_t x = 0; x < count; ++x)
        out[x] += tap * (a[x] + b[x]);
}
VISTATRIM_VARIANT_BODY void AddCentre(const float* a, float tap, float* __restrict__ out,
                                      int32_t count)
{
    for (int32_t x = 0; x < count; ++x)
        out[x] += tap * a[x];
}

VISTATRIM_VARIANT_BODY const float* ClampedRow(const float* src, int64_t row, int32_t cols,
                                               int32_t rows)
{
    return src + std::min<int64_t>(std::max<int64_t>(row, 0), rows - 1) * cols;
}

VISTATRIM_VARIANT_BODY void RepeatEnds(float* buffer, int32_t cols, int32_t radius)
{
    for (int32_t k = 1; k <= radius; ++k) {
        buffer[-k] = buffer[0];
        buffer[cols - 1 + k] = buffer[cols - 1];
    }
}

VISTATRIM_VARIANT_BODY void SmoothFixed(const float* src, float* dst, int32_t cols, int32_t rows,
                                        const float* taps, int32_t radius, float* buffer)
{
    const float* lines[2 * kMaxUnrolledRadius + 1];
    for (int32_t y = 0; y < rows; ++y) {
        for (int32_t k = 0; k <= 2 * radius; ++k)
            lines[k] = ClampedRow(src, y + k - radius, cols, rows);
        WeightedSum(lines, taps, radius, buffer, cols);
        RepeatEnds(buffer, cols, radius);
        for (int32_t k = 0; k <= 2 * radius; ++k)
            lines[k] = buffer + k - radius;
        WeightedSum(lines, taps, radius, dst + static_cast<int64_t>(y) * cols, cols);
    }
}

VISTATRIM_VARIANT_BODY void SmoothAnyRadius(const float* src, float* dst, int32_t cols,
                                            int32_t rows, const float* taps, int32_t radius,
                                            float* buffer)
{
    for (int64_t y = 0; y < rows; ++y) {
        StartPair(ClampedRow(src, y - radius, cols, rows), ClampedRow(src, y + radius, cols, rows),
                  taps[0], buffer, cols);
        for (int32_t k = 1; k < radius; ++k)
            AddPair(ClampedRow(src, y - radius + k, cols, rows),
                    ClampedRow(src, y + radius - k, cols, rows), taps[k], buffer, cols);
        AddCentre(src + y * cols, taps[radius], buffer, cols);
        RepeatEnds(buffer, cols, radius);
        float* out = dst + y * cols;
        StartPair(buffer - radius, buffer + radius, taps[0], out, cols);
        for (int32_t k = 1; k < radius; ++k)
            AddPair(buffer - radius + k, buffer + radius - k, taps[k], out, cols);
        AddCentre(buffer, taps[radius], out, cols);
    }
}

VISTATRIM_VARIANT_BODY void SmoothPlaneBody(const float* src, float* dst, int32_t cols,
                                            int32_t rows, const float* taps, int32_t radius,
                                            float* buffer)
{
    if (radius == 3)
        SmoothFixed(src, dst, cols, rows, taps, 3, buffer);
    else if (radius == 7)
        SmoothFixed(src, dst, cols, rows, taps, 7, buffer);
    else
        SmoothAnyRadius(src, dst, cols, rows, taps, radius, buffer);
}
VISTATRIM_VARIANTS(SmoothPlane,
                   (const float* src, float* dst, int32_t cols, int32_t rows, const float* taps,
                    int32_t radius, float* buffer),
                   (src, dst, cols, rows, taps, radius, buffer))

int32_t CheckGaussian(int32_t cols, int32_t rows, int32_t maskSize)
{
    if (cols < 1 || rows < 1)
        return KernelBadSize;
    if (maskSize < 3 || maskSize % 2 == 0)
        return KernelBadArgument;
    return KernelSuccess;
}

} // namespace

void GaussianTaps(int32_t maskSize, float sigma, float* taps)
{
    const int32_t radius = maskSize / 2;
    const double wideSigma = sigma;
    const double spread = (wideSigma + wideSigma) * wideSigma;
    float sum = 0.0f;
    for (int32_t i = 0; i < maskSize; ++i) {
        const double distance = static_cast<float>(i - radius);
        taps[i] = static_cast<float>(std::exp(-(distance * distance) / spread));
        sum += taps[i];
    }
    for (int32_t i = 0; i < maskSize; ++i)
        taps[i] /= sum;
}

// The taps, then one row with its border on both sides, both at the start of a cache line.
int32_t GaussianBufferSize(int32_t cols, int32_t rows, int32_t maskSize, int32_t* size)
{
    const int32_t status = CheckGaussian(cols, rows, maskSize);
    if (status != KernelSuccess)
        return status;
    const int64_t radius = maskSize / 2;
    const int64_t bytes = (RoundUpToLine(maskSize) + RoundUpToLine(radius) + cols + radius) *
                          static_cast<int64_t>(sizeof(float));
    if (bytes > std::numeric_limits<int32_t>::max())
        return KernelBadSize;
    *size = static_cast<int32_t>(bytes);
    return KernelSuccess;
}

int32_t GaussianKernel(const float* src, float* dst, int32_t cols, int32_t rows, int32_t maskSize,
                       float sigma, void* buffer)
{
    if (!src || !dst || !buffer)
        return KernelNullPointer;
    const int32_t status = CheckGaussian(cols, rows, maskSize);
    if (status != KernelSuccess)
        return status;
    const int32_t radius = maskSize / 2;
    float* taps = static_cast<float*>(buffer);
    GaussianTaps(maskSize, sigma, taps);
    SmoothPlane(src, dst, cols, rows, taps, radius,
                taps + RoundUpToLine(maskSize) + RoundUpToLine(radius));
    return KernelSuccess;
}

// A rejected size leaves the scratch size at 0, so the same error is reported three times: each
// step ignores the status of the step before.
void GaussianSmooth(const float* src, float* dst, int32_t cols, int32_t rows, int32_t maskSize,
                    float sigma)
{
    int32_t size = 0;
    int32_t status = GaussianBufferSize(cols, rows, maskSize, &size);
    if (status != KernelSuccess)
        std::cerr << "Gaussian blur buffer allocation: " << StatusText(status) << std::endl;
    void* buffer = AllocateKernelBuffer(size);
    // The trailing blank is part of the message.
    if (!buffer)
        std::cerr << "Gaussian blur buffer allocation failure. " << std::endl;
    status = GaussianKernel(src, dst, cols, rows, maskSize, sigma, buffer);
    if (status != KernelSuccess)
        std::cerr << "Gaussian blur: " << StatusText(status) << std::endl;
    FreeKernelBuffer(buffer);
}

void SmoothStack(CPlaneStack source, CPlaneStack target, double sigma)
{
    for (size_t i = 0; i < static_cast<size_t>(std::max(source.PlaneCount, 0)); ++i)
        GaussianSmooth(source.Planes[i], target.Planes[i], source.Cols, source.Rows, 7,
                       static_cast<float>(sigma));
}

void BlurPlanes(const CPlaneStack& pixels, float sigma, float* const out[3])
{
    for (size_t c = 0; c < 3; ++c)
        GaussianSmooth(pixels.Planes[c], out[c], pixels.Cols, pixels.Rows, 15, sigma);
}

// Wraps the arrays in a stack, which can deinterleave the bytes.
void BlurInterleavedPixels(const uint8_t* pixels, int32_t cols, int32_t rows, float sigma,
                           float* const out[3])
{
    CPlaneStack view;
    view.PlaneCount = 3;
    view.ElementCount = cols < 1 || rows < 1 ? 0 : cols * rows;
    std::unique_ptr<float[]> planes[3];
    for (std::unique_ptr<float[]>& plane : planes) {
        plane.reset(new float[static_cast<size_t>(view.ElementCount)]);
        view.Planes.push_back(plane.get());
    }
    view.FillFromBytes(pixels);
    view.Cols = cols;
    view.Rows = rows;
    BlurPlanes(view, sigma, out);
}

} // namespace vistaTrim
