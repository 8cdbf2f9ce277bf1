// Shared by the fuzzers: turns the fuzzer's bytes into numbers and pictures, and provides a check
// that stops the run.
//
// Every number is read through ConsumeIntegralInRange, so that seeds, which are written without
// the fuzzer, can express any input (see fuzz_seeds.cpp).
#ifndef VISTATRIM_FUZZERS_FUZZ_SUPPORT_H
#define VISTATRIM_FUZZERS_FUZZ_SUPPORT_H

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <limits>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>

namespace fuzzing {

// If `holds` is false, stops the process; the fuzzer then keeps the input.
inline void Demand(bool holds, const char* what)
{
    if (holds)
        return;
    std::fprintf(stderr, "check failed: %s\n", what);
    std::abort();
}

// Very thin pictures make the kernels write to the error stream, as they should; a fuzzer's log
// is for unexpected output.
inline void SilenceKernelMessages()
{
    std::cerr.rdbuf(nullptr);
}

inline int32_t Whole(FuzzedDataProvider& data, int32_t lowest, int32_t highest)
{
    return data.ConsumeIntegralInRange<int32_t>(lowest, highest);
}

// Any bit pattern: denormals, huge numbers, infinities, various NaNs.
inline double AnyBits(FuzzedDataProvider& data)
{
    const uint64_t bits = data.ConsumeIntegralInRange<uint64_t>(0, UINT64_MAX);
    double value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

// A ratio, size or weight from a host: mostly plausible, sometimes any value a double can hold.
inline double Number(FuzzedDataProvider& data)
{
    using Limits = std::numeric_limits<double>;
    static const double special[] = {0.0,
                                     -0.0,
                                     1.0,
                                     -1.0,
                                     0.5,
                                     1.0 + 0.0009 / 640,
                                     1.0 - 0.0011 / 640,
                                     64.0 / 27.0,
                                     2.0 / 3.0,
                                     1e-300,
                                     1e300,
                                     4294967296.0,
                                     -4294967295.0,
                                     1.5e19,
                                     Limits::quiet_NaN(),
                                     Limits::infinity(),
                                     -Limits::infinity(),
                                     Limits::denorm_min(),
                                     Limits::max(),
                                     Limits::epsilon()};
    constexpr int32_t kLast = static_cast<int32_t>(sizeof special / sizeof special[0]) - 1;
    switch (Whole(data, 0, 7)) {
    case 0: return special[Whole(data, 0, kLast)];
    case 1: return AnyBits(data);
    case 2: return Whole(data, -1000, 1000) / 64.0;
    case 3: return Whole(data, 1, 640);
    default: return Whole(data, 1, 255) / 64.0;
    }
}

// Longer side 640, as the library requires. Mostly thin pictures: the analysis takes time
// proportional to the area, and thin pictures exercise every border case.
struct Size {
    int32_t Cols, Rows;
};
inline Size PictureSize(FuzzedDataProvider& data)
{
    const bool portrait = Whole(data, 0, 1) != 0;
    const int32_t side = Whole(data, 0, 31) == 0 ? Whole(data, 1, 640) : Whole(data, 1, 32);
    return portrait ? Size{side, 640} : Size{640, side};
}

// Three bytes per pixel: a background, then rectangles of flat colour, repeated patterns, gradients
// and noise. Where the input runs out of bytes, the background shows.
inline std::vector<uint8_t> Pixels(FuzzedDataProvider& data, const Size& size)
{
    const auto byte = [&data] { return static_cast<uint8_t>(Whole(data, 0, 255)); };
    const size_t cols = static_cast<size_t>(size.Cols);
    const size_t rows = static_cast<size_t>(size.Rows);
    std::vector<uint8_t> pixels(cols * rows * 3);
    const uint8_t background[3] = {byte(), byte(), byte()};
    for (size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = background[i % 3];

    const int32_t shapes = Whole(data, 0, 8);
    for (int32_t shape = 0; shape < shapes; ++shape) {
        const int32_t left = Whole(data, 0, size.Cols - 1);
        const int32_t right = Whole(data, left, size.Cols - 1);
        const int32_t top = Whole(data, 0, size.Rows - 1);
        const int32_t bottom = Whole(data, top, size.Rows - 1);
        const int32_t kind = Whole(data, 0, 3);
        const uint8_t colour[3] = {byte(), byte(), byte()};
        const std::vector<uint8_t> pattern =
            kind == 1 ? data.ConsumeBytes<uint8_t>(static_cast<size_t>(Whole(data, 1, 96)))
                      : std::vector<uint8_t>();
        uint32_t noise = static_cast<uint32_t>(colour[0]) * 65537U + colour[1];
        size_t next = 0;
        for (int32_t y = top; y <= bottom; ++y)
            for (int32_t x = left; x <= right; ++x)
                for (size_t channel = 0; channel < 3; ++channel) {
                    uint8_t value = colour[channel];
                    if (kind == 1 && !pattern.empty())
                        value = pattern[next++ % pattern.size()];
                    if (kind == 2)
                        value = static_cast<uint8_t>(value + x - left + 2 * (y - top));
                    if (kind == 3) {
                        noise = noise * 1664525U + 1013904223U;
                        value = static_cast<uint8_t>(value ^ (noise >> 24));
                    }
                    pixels[(static_cast<size_t>(y) * cols + static_cast<size_t>(x)) * 3 + channel] =
                        value;
                }
    }
    return pixels;
}

} // namespace fuzzing

#endif
