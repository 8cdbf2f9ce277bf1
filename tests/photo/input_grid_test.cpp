// The inputs of the choice network against slow sums.
#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "numeric/isa_variants.h"
#include "ranking/input_grid.h"

namespace vistaTrim::photo {
namespace {

PixelImage NoisePicture(int32_t width, int32_t height)
{
    PixelImage picture{{width, height}, 3, {}};
    std::mt19937 random(3);
    for (int64_t i = 0; i < int64_t{width} * height * 3; ++i)
        picture.Bytes.push_back(static_cast<uint8_t>(random()));
    return picture;
}

int First(int cell, int pixels)
{
    return cell * pixels / kGridSide;
}

int End(int cell, int pixels)
{
    return std::max(First(cell, pixels) + 1, First(cell + 1, pixels));
}

// Plane 0..2: colours; 3: gradient.
double SlowCell(const PixelImage& picture, int plane, int r, int c)
{
    const int width = picture.Size.Width;
    const int height = picture.Size.Height;
    const auto byte = [&](int y, int x, int channel) {
        return static_cast<int>(picture.Bytes[static_cast<size_t>((y * width + x) * 3 + channel)]);
    };
    const auto sumAt = [&](int y, int x) { return byte(y, x, 0) + byte(y, x, 1) + byte(y, x, 2); };
    double sum = 0;
    int count = 0;
    for (int y = First(r, height); y < End(r, height); ++y)
        for (int x = First(c, width); x < End(c, width); ++x, ++count) {
            if (plane < 3) {
                sum += byte(y, x, plane) / 255.0;
                continue;
            }
            const int across = x + 1 < width ? std::abs(sumAt(y, x + 1) - sumAt(y, x)) : 0;
            const int down = y + 1 < height ? std::abs(sumAt(y + 1, x) - sumAt(y, x)) : 0;
            sum += (across + down) / 765.0;
        }
    return sum / count;
}

TEST(InputGrid, ColoursAndGradientAreCellMeans)
{
    for (const PixelSize size : {PixelSize{640, 427}, {37, 640}, {16, 16}, {640, 1}, {1, 640}}) {
        SCOPED_TRACE(testing::Message() << size.Width << " x " << size.Height);
        const PixelImage picture = NoisePicture(size.Width, size.Height);
        const InputGrid grid = AverageInputs({}, picture);
        EXPECT_FALSE(grid.Flat);
        for (int plane = 0; plane < 4; ++plane)
            for (int r = 0; r < kGridSide; ++r)
                for (int c = 0; c < kGridSide; ++c)
                    EXPECT_FLOAT_EQ(grid.Planes[static_cast<size_t>(
                                        (kNumMapInputs + plane) * kGridCells + r * kGridSide + c)],
                                    static_cast<float>(SlowCell(picture, plane, r, c)));
    }
}

TEST(InputGrid, MapsAreCellMeansAtTheirOwnSize)
{
    // Integers keep every sum exact.
    const int rows = 53;
    const int cols = 80;
    std::vector<float> values;
    for (int i = 0; i < rows * cols; ++i)
        values.push_back(static_cast<float>(i * 7 % 31));
    std::vector<InputMap> maps(kNumMapInputs);
    maps[4] = {values.data(), rows, cols};
    const InputGrid grid = AverageInputs(maps, NoisePicture(640, 424));
    for (int r = 0; r < kGridSide; ++r)
        for (int c = 0; c < kGridSide; ++c) {
            double sum = 0;
            int count = 0;
            for (int y = First(r, rows); y < End(r, rows); ++y)
                for (int x = First(c, cols); x < End(c, cols); ++x, ++count)
                    sum += static_cast<double>(values[static_cast<size_t>(y * cols + x)]);
            EXPECT_EQ(grid.Planes[static_cast<size_t>(4 * kGridCells + r * kGridSide + c)],
                      static_cast<float>(sum / count));
        }
    for (int i = 0; i < kGridCells; ++i)
        EXPECT_EQ(grid.Planes[static_cast<size_t>(i)], 0.0F) << "a map without data is zeros";
}

TEST(InputGrid, OnlyAPictureOfOneColourIsFlat)
{
    PixelImage picture{{640, 400}, 3, std::vector<uint8_t>(640 * 400 * 3, 90)};
    EXPECT_TRUE(AverageInputs({}, picture).Flat);
    picture.Bytes.back() = 91;
    EXPECT_FALSE(AverageInputs({}, picture).Flat);
}

TEST(InputGrid, EveryIsaVariantGivesTheSameBits)
{
    const PixelImage picture = NoisePicture(640, 427);
    std::vector<float> values;
    std::mt19937 random(4);
    for (int i = 0; i < 640 * 427; ++i)
        values.push_back(static_cast<float>(random()) / 4294967296.0F);
    const std::vector<InputMap> maps(kNumMapInputs, {values.data(), 427, 640});
    const IsaVariant before = ActiveIsaVariant();
    SelectIsaVariant(IsaVariantPlain);
    const InputGrid plain = AverageInputs(maps, picture);
    for (int variant = 0; variant < IsaVariantCount; ++variant) {
        if (!IsaVariantAvailable(static_cast<IsaVariant>(variant)))
            continue;
        SelectIsaVariant(static_cast<IsaVariant>(variant));
        EXPECT_EQ(AverageInputs(maps, picture).Planes, plain.Planes) << "variant " << variant;
    }
    SelectIsaVariant(before);
}

TEST(InputGrid, MapsOfOneRowOrColumnAreReadToo)
{
    std::vector<float> values;
    for (int i = 0; i < 32; ++i)
        values.push_back(static_cast<float>(i));
    for (const bool isRow : {false, true}) {
        std::vector<InputMap> maps(1);
        maps[0] = {values.data(), isRow ? 1 : 32, isRow ? 32 : 1};
        const InputGrid grid = AverageInputs(maps, NoisePicture(64, 64));
        for (int r = 0; r < kGridSide; ++r)
            for (int c = 0; c < kGridSide; ++c) // two values a cell
                EXPECT_EQ(grid.Planes[static_cast<size_t>(r * kGridSide + c)],
                          2.0F * static_cast<float>(isRow ? c : r) + 0.5F);
    }
}

// A single different pixel counts, wherever it is.
TEST(InputGrid, APictureWithOnePixelThatDiffersIsNotFlat)
{
    for (const PixelSize size : {PixelSize{64, 40}, {40, 64}, {640, 1}, {1, 640}, {3, 2}})
        for (const int32_t x : {0, size.Width / 3, size.Width - 1})
            for (const int32_t y : {0, size.Height / 3, size.Height - 1})
                for (const int32_t channel : {0, 1, 2}) {
                    PixelImage picture{size, 3, {}};
                    picture.Bytes.assign(size_t{3} * static_cast<size_t>(size.Width) *
                                             static_cast<size_t>(size.Height),
                                         90);
                    EXPECT_TRUE(AverageInputs({}, picture).Flat);
                    picture.Bytes[static_cast<size_t>(3 * (y * size.Width + x) + channel)] = 91;
                    EXPECT_FALSE(AverageInputs({}, picture).Flat)
                        << size.Width << " x " << size.Height << ": " << x << "," << y;
                }
}

} // namespace
} // namespace vistaTrim::photo
