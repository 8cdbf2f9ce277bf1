// Image operations on row-major float planes with a row stride of exactly cols floats.
//
// A pixel outside the image has the value of the nearest pixel inside. A failed call writes a
// message to the error stream and leaves its destination unchanged; nothing is returned or thrown
// (except by BlurInterleavedPixels when memory runs out): a failure degrades the analysis but never
// stops it.
#ifndef VISTATRIM_NUMERIC_IMAGE_KERNELS_H
#define VISTATRIM_NUMERIC_IMAGE_KERNELS_H

#include <cstddef>
#include <cstdint>

#include "numeric/matrix.h"
#include "numeric/plane_stack.h"

namespace vistaTrim {

// dst and src must not overlap. A target stack has at least as many planes as the source; the
// source's planes are processed.

// Row below minus row above, each smoothed with 1 2 1; no divisor.
void SobelRowDifference(const float* src, float* dst, int32_t cols, int32_t rows);
// Left column minus right one, each smoothed with 1 2 1; no divisor.
void SobelColumnDifference(const float* src, float* dst, int32_t cols, int32_t rows);
// |SobelRowDifference| + |SobelColumnDifference|.
void GradientStrength(const float* src, float* dst, int32_t cols, int32_t rows);
// The gradient strengths of all planes of a stack, added in their order.
void SumGradientStrengths(const CPlaneStack& planes, float* dst);

// maskSize taps in each direction, odd and at least 3, truncated there whatever sigma is. A
// constant plane stays constant, within rounding of the source's value.
void GaussianSmooth(const float* src, float* dst, int32_t cols, int32_t rows, int32_t maskSize,
                    float sigma);
// Every plane of source into the same plane of target, mask 7.
void SmoothStack(CPlaneStack source, CPlaneStack target, double sigma);
// Three planes of 0..255, smoothed with mask 15.
void BlurPlanes(const CPlaneStack& pixels, float sigma, float* const out[3]);
// The same from packed three-byte pixels.
void BlurInterleavedPixels(const uint8_t* pixels, int32_t cols, int32_t rows, float sigma,
                           float* const out[3]);

// Bilinear, half-pixel centres, no antialiasing. A source of fewer than 2 pixels in either
// direction is rejected.
void ResizeStackLinear(CPlaneStack source, CPlaneStack target);

// Elements below level, and NaN, become value.
void ThresholdBelow(CFloatMatrix& map, float level, float value);
// Columns firstCol .. firstCol + width - 1 of all rows, times factor. An empty width is ignored.
void ScaleColumns(CFloatMatrix& map, int32_t firstCol, int32_t width, float factor);
// Minimum or maximum over a size x size box, size odd, anchored at its centre; in place.
void ErodeBox(CFloatMatrix& map, int32_t size);
void DilateBox(CFloatMatrix& map, int32_t size);

// The message for a kernel status.
const char* StatusText(int32_t status);

// Scratch for one kernel call, 64-byte aligned; null for a size below 1 or if memory runs out.
void* AllocateKernelBuffer(int32_t size);
void FreeKernelBuffer(void* pointer);

} // namespace vistaTrim

#endif
