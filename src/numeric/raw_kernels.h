// The kernels beneath the operations of image_kernels.h.
//
// Each returns a status, prints nothing, and touches its destination only if it returns
// success. The operations add scratch, messages and indifference to failure; tests come here
// to see a status that an operation swallows or cannot provoke.
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

// Scratch sizes are bytes. A size function that returns a failure leaves *size alone.

// Floats up to a whole number of cache lines, where the next piece of scratch starts.
int64_t RoundUpToLine(int64_t floats);

// Above 0 for a bad width, which the kernel refuses; 0 for one whose scratch 32 bits cannot count.
int32_t SobelBufferSize(int32_t cols);
int32_t SobelRowKernel(const float* src, float* dst, int32_t cols, int32_t rows, void* buffer);
int32_t SobelColumnKernel(const float* src, float* dst, int32_t cols, int32_t rows, void* buffer);

int32_t GaussianBufferSize(int32_t cols, int32_t rows, int32_t maskSize, int32_t* size);
int32_t GaussianKernel(const float* src, float* dst, int32_t cols, int32_t rows, int32_t maskSize,
                       float sigma, void* buffer);
// The maskSize taps of one direction; their sum is 1 up to rounding.
void GaussianTaps(int32_t maskSize, float sigma, float* taps);

int32_t ThresholdKernel(float* data, int32_t cols, int32_t rows, float level, float value);
// cols floats from data on in each of the rows; row starts are stride floats apart.
int32_t ScaleKernel(float* data, int64_t stride, int32_t cols, int32_t rows, float factor);

// anchor is the place of the pixel within its mask, the same across and down.
int32_t BoxBufferSize(int32_t cols, int32_t rows, int32_t maskSize, int32_t anchor, int32_t* size);
// In place. rowStep is bytes from row to row.
int32_t BoxKernel(float* data, int64_t rowStep, int32_t cols, int32_t rows, int32_t maskSize,
                  int32_t anchor, bool largest, void* buffer);

// GradientStrength one difference after the other, through a whole plane of scratch:
// the plain form that its single pass must equal, and the one that reports.
void GradientStrengthStepwise(const float* src, float* dst, int32_t cols, int32_t rows);

} // namespace vistaTrim

#endif
