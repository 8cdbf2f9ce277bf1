#include "oracle/synthetic_images.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <stdexcept>
#include <utility>

namespace slowOracle {

namespace {

using Colour = std::array<int, 3>;

Picture EmptyPicture(int cols, int rows)
{
    if (cols < 1 || rows < 1)
        throw std::invalid_argument("a synthetic image needs at least one pixel");
    Picture picture;
    picture.Cols = cols;
    picture.Rows = rows;
    picture.Bytes.assign(3 * static_cast<size_t>(cols) * static_cast<size_t>(rows), 0);
    return picture;
}

uint8_t* Pixel(Picture& picture, int x, int y)
{
    return picture.Bytes.data() + 3 * (static_cast<size_t>(y) * static_cast<size_t>(picture.Cols) +
                                       static_cast<size_t>(x));
}

void SetPixel(Picture& picture, int x, int y, const Colour& colour)
{
    uint8_t* pixel = Pixel(picture, x, y);
    for (size_t c = 0; c < 3; ++c)
        pixel[c] = static_cast<uint8_t>(std::clamp(colour[c], 0, 255));
}

// Knuth's 64-bit linear congruential generator; the upper bits are the good ones.
class Numbers {
public:
    explicit Numbers(uint32_t seed) : State(seed)
    {
        Next();
        Next();
    }
    uint32_t Next()
    {
        State = State * 6364136223846793005ULL + 1442695040888963407ULL;
        return static_cast<uint32_t>(State >> 32);
    }
    // From `least` to `most`, both inclusive.
    int Between(int least, int most)
    {
        const uint64_t span = static_cast<uint64_t>(most - least) + 1;
        return least + static_cast<int>((Next() * span) >> 32);
    }

private:
    uint64_t State;
};

// 0..255 at a lattice point, independent of its neighbours.
int LatticeValue(int x, int y, uint32_t seed)
{
    uint32_t h = static_cast<uint32_t>(x) * 0x9E3779B1U ^ static_cast<uint32_t>(y) * 0x85EBCA77U ^
                 seed * 0xC2B2AE3DU;
    h ^= h >> 15;
    h *= 0x2C1B3C6DU;
    h ^= h >> 12;
    h *= 0x297A2D39U;
    h ^= h >> 15;
    return static_cast<int>(h >> 24);
}

// Lattice values `cell` pixels apart, bilinear between them: a cloudy texture, 0..255.
int SmoothNoise(int x, int y, int cell, uint32_t seed)
{
    const int i = x / cell, j = y / cell;
    const int fx = 256 * (x % cell) / cell, fy = 256 * (y % cell) / cell;
    const int upper = LatticeValue(i, j, seed) * (256 - fx) + LatticeValue(i + 1, j, seed) * fx;
    const int lower =
        LatticeValue(i, j + 1, seed) * (256 - fx) + LatticeValue(i + 1, j + 1, seed) * fx;
    return (upper * (256 - fy) + lower * fy) >> 16;
}

// Three octaves, about -`depth` to `depth`.
int Texture(int x, int y, int cell, int depth, uint32_t seed)
{
    const int coarse = SmoothNoise(x, y, std::max(1, cell), seed) - 128;
    const int middle = SmoothNoise(x, y, std::max(1, cell / 3), seed + 1) - 128;
    const int fine = SmoothNoise(x, y, std::max(1, cell / 9), seed + 2) - 128;
    return (coarse * 4 + middle * 2 + fine) * depth / (7 * 128);
}

// 0 at the first position, 255 at the last.
int Ramp(int position, int count)
{
    return count < 2 ? 0 : position * 255 / (count - 1);
}

// One channel rises, one falls and one curves, so the colours do not lie on a straight line.
Colour RampColour(int v)
{
    return {v, 255 - v, v * v / 255};
}

struct Ellipse {
    int CentreX, CentreY, RadiusX, RadiusY;
    Colour Base;
    int Cell, Depth;
    uint32_t Seed;
};

// 0 at the rim and outside, 256 in the centre.
int EllipseHeight(const Ellipse& e, int x, int y)
{
    const int64_t dx = x - e.CentreX, dy = y - e.CentreY;
    const int64_t a = e.RadiusX, b = e.RadiusY;
    const int64_t limit = a * a * b * b;
    const int64_t d = dx * dx * b * b + dy * dy * a * a;
    return d >= limit ? 0 : static_cast<int>(256 * (limit - d) / limit);
}

} // namespace

Picture NoisePicture(int cols, int rows, uint32_t seed)
{
    Picture picture = EmptyPicture(cols, rows);
    Numbers numbers(seed);
    for (uint8_t& byte : picture.Bytes)
        byte = static_cast<uint8_t>(numbers.Next() >> 24);
    return picture;
}

Picture HorizontalGradient(int cols, int rows)
{
    Picture picture = EmptyPicture(cols, rows);
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < cols; ++x)
            SetPixel(picture, x, y, RampColour(Ramp(x, cols)));
    return picture;
}

Picture VerticalGradient(int cols, int rows)
{
    Picture picture = EmptyPicture(cols, rows);
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < cols; ++x)
            SetPixel(picture, x, y, RampColour(Ramp(y, rows)));
    return picture;
}

Picture DiagonalGradient(int cols, int rows)
{
    Picture picture = EmptyPicture(cols, rows);
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < cols; ++x)
            SetPixel(picture, x, y, RampColour(Ramp(x + y, cols + rows - 1)));
    return picture;
}

Picture BlobsOnGradient(int cols, int rows, uint32_t seed)
{
    Picture picture = EmptyPicture(cols, rows);
    Numbers numbers(seed);
    std::vector<Ellipse> blobs;
    const int least = std::min(cols, rows);
    for (int i = 0; i < 6; ++i) {
        Ellipse blob;
        blob.CentreX = numbers.Between(0, cols - 1);
        blob.CentreY = numbers.Between(0, rows - 1);
        blob.RadiusX = blob.RadiusY = numbers.Between(1, 1 + least / 4);
        blob.Base = {numbers.Between(-200, 200), numbers.Between(-200, 200),
                     numbers.Between(-200, 200)};
        blob.Cell = 1;
        blob.Depth = 0;
        blob.Seed = 0;
        blobs.push_back(blob);
    }
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < cols; ++x) {
            const int v = 60 + Ramp(x + y, cols + rows - 1) / 2;
            Colour colour = {v, v - 20, 220 - v};
            for (const Ellipse& blob : blobs) {
                const int height = EllipseHeight(blob, x, y);
                for (size_t c = 0; c < 3; ++c)
                    colour[c] += blob.Base[c] * height / 256;
            }
            SetPixel(picture, x, y, colour);
        }
    return picture;
}

Picture FlatPicture(int cols, int rows, uint8_t red, uint8_t green, uint8_t blue)
{
    Picture picture = EmptyPicture(cols, rows);
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < cols; ++x)
            SetPixel(picture, x, y, {red, green, blue});
    return picture;
}

Picture LeftAndRightHalf(int cols, int rows)
{
    Picture picture = EmptyPicture(cols, rows);
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < cols; ++x)
            SetPixel(picture, x, y, x < cols / 2 ? Colour{40, 30, 60} : Colour{210, 220, 180});
    return picture;
}

Picture UpperAndLowerHalf(int cols, int rows)
{
    Picture picture = EmptyPicture(cols, rows);
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < cols; ++x)
            SetPixel(picture, x, y, y < rows / 2 ? Colour{210, 220, 180} : Colour{40, 30, 60});
    return picture;
}

Picture Checkerboard(int cols, int rows, int period)
{
    if (period < 1)
        throw std::invalid_argument("a checkerboard's period must be at least 1");
    Picture picture = EmptyPicture(cols, rows);
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < cols; ++x)
            SetPixel(picture, x, y,
                     (x / period + y / period) % 2 == 0 ? Colour{20, 40, 30}
                                                        : Colour{230, 200, 240});
    return picture;
}

Picture OneBrightPixel(int cols, int rows)
{
    Picture picture = EmptyPicture(cols, rows);
    SetPixel(picture, cols / 2, rows / 2, {255, 255, 255});
    return picture;
}

Picture PseudoPhotograph(int cols, int rows, uint32_t seed)
{
    Picture picture = EmptyPicture(cols, rows);
    Numbers numbers(seed);
    const int side = std::max(cols, rows);
    const int horizon = rows * numbers.Between(30, 60) / 100;

    std::vector<Ellipse> things;
    const int count = numbers.Between(4, 7);
    for (int i = 0; i < count; ++i) {
        Ellipse thing;
        thing.CentreX = numbers.Between(cols / 8, cols - 1 - cols / 8);
        thing.CentreY = numbers.Between(rows / 4, rows - 1 - rows / 8);
        thing.RadiusX = std::max(1, cols * numbers.Between(4, 16) / 100);
        thing.RadiusY = std::max(1, rows * numbers.Between(5, 20) / 100);
        thing.Base = {numbers.Between(30, 230), numbers.Between(30, 230), numbers.Between(30, 230)};
        thing.Cell = std::max(1, side * numbers.Between(1, 5) / 100);
        thing.Depth = numbers.Between(15, 60);
        thing.Seed = numbers.Next();
        things.push_back(thing);
    }

    const uint32_t skySeed = numbers.Next(), groundSeed = numbers.Next();
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < cols; ++x) {
            Colour colour;
            if (y < horizon) {
                const int depth = Ramp(y, std::max(2, horizon));
                const int cloud = Texture(x, y, std::max(1, side / 6), 35, skySeed);
                colour = {110 + depth / 3 + cloud, 150 + depth / 4 + cloud, 215 + cloud / 2};
            } else {
                const int depth = Ramp(y - horizon, std::max(2, rows - horizon));
                const int grass = Texture(x, y, std::max(1, side / 40), 50, groundSeed);
                colour = {70 + depth / 6 + grass, 95 + grass, 45 + depth / 8 + grass / 2};
            }
            for (const Ellipse& thing : things) {
                const int height = EllipseHeight(thing, x, y);
                if (height == 0)
                    continue;
                const int grain = Texture(x, y, thing.Cell, thing.Depth, thing.Seed);
                for (size_t c = 0; c < 3; ++c)
                    colour[c] = thing.Base[c] * (128 + height / 2) / 256 + grain;
            }
            // Sensor noise, drawn anew for every byte.
            for (int& value : colour)
                value += numbers.Between(-4, 4);
            SetPixel(picture, x, y, colour);
        }
    return picture;
}

Picture MakePicture(const std::string& name, int cols, int rows)
{
    const size_t colon = name.find(':');
    const std::string kind = name.substr(0, colon);
    const bool hasNumber = colon != std::string::npos;
    const int number = hasNumber ? std::stoi(name.substr(colon + 1)) : 0;
    const uint32_t seed = hasNumber ? static_cast<uint32_t>(number) : 1U;

    if (kind == "noise")
        return NoisePicture(cols, rows, seed);
    if (kind == "horizontal_gradient")
        return HorizontalGradient(cols, rows);
    if (kind == "vertical_gradient")
        return VerticalGradient(cols, rows);
    if (kind == "diagonal_gradient")
        return DiagonalGradient(cols, rows);
    if (kind == "blobs")
        return BlobsOnGradient(cols, rows, seed);
    if (kind == "flat") {
        if (number < 0 || number > 255)
            throw std::invalid_argument("a flat picture's value must be 0 to 255");
        const uint8_t value = static_cast<uint8_t>(hasNumber ? number : 128);
        return FlatPicture(cols, rows, value, value, value);
    }
    if (kind == "black")
        return FlatPicture(cols, rows, 0, 0, 0);
    if (kind == "half_and_half")
        return LeftAndRightHalf(cols, rows);
    if (kind == "upper_and_lower_half")
        return UpperAndLowerHalf(cols, rows);
    if (kind == "checkerboard")
        return Checkerboard(cols, rows, hasNumber ? number : 8);
    if (kind == "one_bright_pixel")
        return OneBrightPixel(cols, rows);
    if (kind == "photograph")
        return PseudoPhotograph(cols, rows, seed);
    throw std::invalid_argument("no such synthetic image: " + name);
}

std::vector<std::string> PictureNames()
{
    return {"noise:1",
            "horizontal_gradient",
            "vertical_gradient",
            "diagonal_gradient",
            "blobs:1",
            "flat:128",
            "black",
            "half_and_half",
            "upper_and_lower_half",
            "checkerboard:8",
            "one_bright_pixel",
            "photograph:1"};
}

Picture MirrorLeftRight(const Picture& picture)
{
    Picture source = picture;
    Picture mirrored = EmptyPicture(picture.Cols, picture.Rows);
    for (int y = 0; y < picture.Rows; ++y)
        for (int x = 0; x < picture.Cols; ++x)
            std::copy_n(Pixel(source, x, y), 3, Pixel(mirrored, picture.Cols - 1 - x, y));
    return mirrored;
}

Picture MirrorTopBottom(const Picture& picture)
{
    Picture source = picture;
    Picture mirrored = EmptyPicture(picture.Cols, picture.Rows);
    for (int y = 0; y < picture.Rows; ++y)
        for (int x = 0; x < picture.Cols; ++x)
            std::copy_n(Pixel(source, x, y), 3, Pixel(mirrored, x, picture.Rows - 1 - y));
    return mirrored;
}

} // namespace slowOracle
