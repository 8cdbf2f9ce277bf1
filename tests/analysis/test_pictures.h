// Test pictures of packed three-byte pixels, and operations on them.
#ifndef VISTATRIM_TESTS_ANALYSIS_TEST_PICTURES_H
#define VISTATRIM_TESTS_ANALYSIS_TEST_PICTURES_H

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "scoring/crop_analyzer.h"
#include "vistaTrim/functions.h"

namespace vistaTrim {
namespace testPictures {

struct Picture {
    int32_t Cols;
    int32_t Rows;
    std::vector<uint8_t> Bytes;

    Picture(int32_t cols, int32_t rows)
        : Cols(cols), Rows(rows), Bytes(size_t(cols) * size_t(rows) * 3)
    {
    }
    uint8_t* At(int32_t row, int32_t col)
    {
        return &Bytes[(size_t(row) * size_t(Cols) + size_t(col)) * 3];
    }
    const uint8_t* At(int32_t row, int32_t col) const
    {
        return &Bytes[(size_t(row) * size_t(Cols) + size_t(col)) * 3];
    }
    void Set(int32_t row, int32_t col, double a, double b, double c)
    {
        uint8_t* const pixel = At(row, col);
        pixel[0] = static_cast<uint8_t>(std::clamp(a, 0.0, 255.0));
        pixel[1] = static_cast<uint8_t>(std::clamp(b, 0.0, 255.0));
        pixel[2] = static_cast<uint8_t>(std::clamp(c, 0.0, 255.0));
    }
};

inline Picture Flat(int32_t cols, int32_t rows, int a, int b, int c)
{
    Picture picture(cols, rows);
    for (int32_t r = 0; r < rows; ++r)
        for (int32_t col = 0; col < cols; ++col)
            picture.Set(r, col, a, b, c);
    return picture;
}

inline Picture Noise(int32_t cols, int32_t rows, uint32_t seed)
{
    Picture picture(cols, rows);
    std::mt19937 random(seed);
    for (uint8_t& byte : picture.Bytes)
        byte = static_cast<uint8_t>(random() >> 24);
    return picture;
}

inline Picture Gradient(int32_t cols, int32_t rows)
{
    Picture picture(cols, rows);
    for (int32_t r = 0; r < rows; ++r)
        for (int32_t c = 0; c < cols; ++c)
            picture.Set(r, c, 40 + 150.0 * c / cols, 200 - 120.0 * r / rows,
                        90 + 60.0 * (c + r) / (cols + rows));
    return picture;
}

// Soft bright and dark blobs at fixed positions on a gradient, with a little grain.
inline Picture Blobs(int32_t cols, int32_t rows, uint32_t seed)
{
    Picture picture = Gradient(cols, rows);
    std::mt19937 random(seed);
    const double centres[3][4] = {
        {0.4, 0.55, 0.14, 110}, {0.72, 0.35, 0.08, -90}, {0.2, 0.3, 0.05, 140}};
    for (int32_t r = 0; r < rows; ++r)
        for (int32_t c = 0; c < cols; ++c) {
            double lift[3] = {0, 0, 0};
            for (int k = 0; k < 3; ++k) {
                const double dx = double(c) / cols - centres[k][0];
                const double dy = double(r) / rows - centres[k][1];
                const double radius = centres[k][2];
                const double height =
                    centres[k][3] / (1 + std::exp(40 * (std::sqrt(dx * dx + dy * dy) - radius)));
                lift[k] += height;
                lift[(k + 1) % 3] -= height / 2;
            }
            const double grain = double(random() >> 29);
            const uint8_t* const old = picture.At(r, c);
            picture.Set(r, c, old[0] + lift[0] + grain, old[1] + lift[1] + grain,
                        old[2] + lift[2] + grain);
        }
    return picture;
}

// Left half dark, right half light.
inline Picture HalfAndHalf(int32_t cols, int32_t rows)
{
    Picture picture(cols, rows);
    for (int32_t r = 0; r < rows; ++r)
        for (int32_t c = 0; c < cols; ++c)
            picture.Set(r, c, c < cols / 2 ? 30 : 220, c < cols / 2 ? 40 : 200, 100);
    return picture;
}

inline Picture Checkerboard(int32_t cols, int32_t rows, int32_t cell)
{
    Picture picture(cols, rows);
    for (int32_t r = 0; r < rows; ++r)
        for (int32_t c = 0; c < cols; ++c)
            if ((r / cell + c / cell) % 2 == 0)
                picture.Set(r, c, 255, 255, 255);
    return picture;
}

inline Picture OneBrightPixel(int32_t cols, int32_t rows)
{
    Picture picture = Flat(cols, rows, 20, 20, 20);
    picture.Set(rows / 2, cols / 2, 255, 255, 255);
    return picture;
}

inline Picture MirroredLeftRight(const Picture& picture)
{
    Picture mirrored(picture.Cols, picture.Rows);
    for (int32_t r = 0; r < picture.Rows; ++r)
        for (int32_t c = 0; c < picture.Cols; ++c)
            std::copy_n(picture.At(r, picture.Cols - 1 - c), 3, mirrored.At(r, c));
    return mirrored;
}

inline Picture UpsideDown(const Picture& picture)
{
    Picture turned(picture.Cols, picture.Rows);
    for (int32_t r = 0; r < picture.Rows; ++r)
        std::copy_n(picture.At(picture.Rows - 1 - r, 0), size_t(picture.Cols) * 3, turned.At(r, 0));
    return turned;
}

inline Picture SwappedBytes(const Picture& picture, int first, int second)
{
    Picture swapped = picture;
    for (size_t i = 0; i < swapped.Bytes.size(); i += 3)
        std::swap(swapped.Bytes[i + size_t(first)], swapped.Bytes[i + size_t(second)]);
    return swapped;
}

struct ImageEnd {
    void operator()(IImage* image) const
    {
        DestroyImageObj(image);
    }
};
using ImageHolder = std::unique_ptr<IImage, ImageEnd>;

inline ImageHolder MakeImage(const Picture& picture)
{
    const int32_t offsets[4] = {0, 1, 2, 3};
    return ImageHolder(CreateImageObj(uint32_t(picture.Rows), uint32_t(picture.Cols), 3, offsets,
                                      picture.Bytes.data()));
}

// The analyzer reads 640 pixels along the longer side whatever the picture's size, so it rejects a
// smaller picture.
inline std::unique_ptr<CCropAnalyzer> Analyse(const Picture& picture)
{
    if (std::max(picture.Cols, picture.Rows) < 640)
        throw std::logic_error("the longer side must have at least 640 pixels");
    const ImageHolder image = MakeImage(picture);
    return std::make_unique<CCropAnalyzer>(image.get());
}

struct NamedFloats {
    std::string Name;
    const CFloatMatrix* Map;
};

inline std::vector<NamedFloats> AllMaps(const CCropAnalyzer& analyzer)
{
    return {
        {"ContrastMap", &analyzer.ContrastMap},   {"SaliencyMap", &analyzer.SaliencyMap},
        {"ContrastMask", &analyzer.ContrastMask}, {"ColorContrastMap", &analyzer.ColorContrastMap},
        {"PeakMap", &analyzer.PeakMap},           {"EdgeMap", &analyzer.EdgeMap},
        {"SideMapTop", &analyzer.SideMaps[0]},    {"SideMapBottom", &analyzer.SideMaps[1]},
        {"SideMapLeft", &analyzer.SideMaps[2]},   {"SideMapRight", &analyzer.SideMaps[3]}};
}

} // namespace testPictures
} // namespace vistaTrim

#endif
