// The kernels beneath the operations of image_kernels.h.
//
// Each returns a status, prints nothing, and touches its destination only if it returns success.
// The operations add scratch and messages and ignore failures; tests call these kernels to see a
// status that an operation swallows or cannot provoke.
#ifndef VISTATRIM_NUMERIC_RAW_KERNELS_H
#define VISTATRIM_NUMERIC_RAW_KERNELS_H

#include <cstdint>

namespace vistaTrim {

enum KernelStatus : int32_t {
    KernelSuccess = 0,
    KernelNoOperation = 1,
    KernelBadArgument = -5,
    KernelBadSize = -6,
    KernelNullPointer = -8,
    KernelBadStep = -14,
    KernelBadMaskSize = -33,
    KernelBadAnchor = -34,
    KernelUnevenStep = -108
};

// Scratch sizes are bytes. A size function that fails leaves *size unchanged.

// Rounds a count of floats up to whole cache lines, where the next piece of scratch starts.
int64_t RoundUpToLine(int64_t floats);

// Above 0 for an invalid width, which the kernel rejects; 0 if the size does not fit 32 bits.
int32_t SobelBufferSize(int32_t cols);
int32_t SobelRowKernel(const float* src, float* dst, int32_t cols, int32_t rows, void* buffer);
int32_t SobelColumnKernel(const float* src, float* dst, int32_t cols, int32_t rows, void* buffer);

int32_t GaussianBufferSize(int32_t cols, int32_t rows, int32_t maskSize, int32_t* size);
int32_t GaussianKernel(const float* src, float* dst, int32_t cols, int32_t rows, int32_t maskSize,
                       float sigma, void* buffer);
// The maskSize taps of one direction; their sum is 1 up to rounding.
void GaussianTaps(int32_t maskSize, float sigma, float* taps);

int32_t ThresholdKernel(float* data, int32_t cols, int32_t rows, float level, float value);
// cols floats in each row; data is the first row, and rows start stride floats apart.
int32_t ScaleKernel(float* data, int64_t stride, int32_t cols, int32_t rows, float factor);

// anchor is the pixel's position within its mask, the same in both directions.
int32_t BoxBufferSize(int32_t cols, int32_t rows, int32_t maskSize, int32_t anchor, int32_t* size);
// In place. rowStep is bytes from row to row.
int32_t BoxKernel(float* data, int64_t rowStep, int32_t cols, int32_t rows, int32_t maskSize,
                  int32_t anchor, bool largest, void* buffer);

// GradientStrength computed one difference after the other, with a full scratch plane. It runs when
// the single pass, which gives the same bits, has no scratch, and reports what failed.
void GradientStrengthStepwise(const float* src, float* dst, int32_t cols, int32_t rows);

} // namespace vistaTrim

#endif
