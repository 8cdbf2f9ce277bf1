#include "oracle/synthetic_images.h"

#include <array>
#include <set>
#include <stdexcept>

#include <gtest/gtest.h>

namespace slowOracle {
namespace {

using Bytes3 = std::array<int, 3>;

Bytes3 PixelAt(const Picture& picture, int x, int y)
{
    const size_t i =
        3 * (static_cast<size_t>(y) * static_cast<size_t>(picture.Cols) + static_cast<size_t>(x));
    return {picture.Bytes.at(i), picture.Bytes.at(i + 1), picture.Bytes.at(i + 2)};
}

TEST(SyntheticImages, EveryNameGivesAPictureOfAnySize)
{
    for (const std::string& name : PictureNames())
        for (const int cols : {1, 2, 17, 64})
            for (const int rows : {1, 3, 40}) {
                SCOPED_TRACE(testing::Message() << name << " " << cols << " x " << rows);
                const Picture picture = MakePicture(name, cols, rows);
                EXPECT_EQ(picture.Cols, cols);
                EXPECT_EQ(picture.Rows, rows);
                EXPECT_EQ(picture.Bytes.size(), static_cast<size_t>(3 * cols * rows));
                EXPECT_EQ(MakePicture(name, cols, rows).Bytes, picture.Bytes);
            }
}

TEST(SyntheticImages, NamesGiveDifferentPictures)
{
    std::set<std::vector<uint8_t>> seen;
    for (const std::string& name : PictureNames())
        EXPECT_TRUE(seen.insert(MakePicture(name, 40, 30).Bytes).second) << name;
}

TEST(SyntheticImages, SeedsGiveDifferentPictures)
{
    for (const std::string kind : {"noise", "blobs", "photograph"})
        EXPECT_NE(MakePicture(kind + ":1", 40, 30).Bytes, MakePicture(kind + ":2", 40, 30).Bytes)
            << kind;
}

TEST(SyntheticImages, UnknownNamesAreRejected)
{
    EXPECT_THROW(MakePicture("no_such_picture", 4, 4), std::invalid_argument);
    EXPECT_THROW(MakePicture("flat:256", 4, 4), std::invalid_argument);
    EXPECT_THROW(MakePicture("checkerboard:0", 4, 4), std::invalid_argument);
    EXPECT_THROW(MakePicture("black", 0, 4), std::invalid_argument);
}

TEST(SyntheticImages, FlatAndBlackHoldOneValue)
{
    for (const uint8_t byte : MakePicture("flat:77", 5, 4).Bytes)
        EXPECT_EQ(byte, 77);
    for (const uint8_t byte : MakePicture("black", 5, 4).Bytes)
        EXPECT_EQ(byte, 0);
}

TEST(SyntheticImages, GradientsRunAlongTheirAxisOnly)
{
    const Picture across = HorizontalGradient(52, 4);
    const Picture down = VerticalGradient(4, 52);
    const Picture diagonal = DiagonalGradient(26, 27);
    for (int k = 0; k < 52; ++k) {
        const Bytes3 expected = {5 * k, 255 - 5 * k, 25 * k * k / 255}; // 255 / 51 = 5 a step
        EXPECT_EQ(PixelAt(across, k, 0), expected);
        EXPECT_EQ(PixelAt(across, k, 3), expected);
        EXPECT_EQ(PixelAt(down, 0, k), expected);
        EXPECT_EQ(PixelAt(down, 3, k), expected);
        EXPECT_EQ(PixelAt(diagonal, k / 2, k - k / 2), expected);
    }
}

TEST(SyntheticImages, CheckerboardChangesEveryPeriod)
{
    const Picture board = Checkerboard(12, 12, 3);
    const Bytes3 dark = PixelAt(board, 0, 0);
    const Bytes3 bright = PixelAt(board, 3, 0);
    EXPECT_LT(dark[0], bright[0]);
    EXPECT_EQ(PixelAt(board, 2, 2), dark);
    EXPECT_EQ(PixelAt(board, 3, 3), dark);
    EXPECT_EQ(PixelAt(board, 2, 3), bright);
    EXPECT_EQ(PixelAt(board, 6, 0), dark);
}

TEST(SyntheticImages, HalvesMeetInTheMiddle)
{
    const Picture sides = LeftAndRightHalf(10, 3);
    EXPECT_EQ(PixelAt(sides, 4, 1), PixelAt(sides, 0, 0));
    EXPECT_EQ(PixelAt(sides, 5, 1), PixelAt(sides, 9, 2));
    EXPECT_NE(PixelAt(sides, 4, 1), PixelAt(sides, 5, 1));

    const Picture stacked = UpperAndLowerHalf(3, 10);
    EXPECT_EQ(PixelAt(stacked, 1, 4), PixelAt(stacked, 0, 0));
    EXPECT_NE(PixelAt(stacked, 1, 4), PixelAt(stacked, 1, 5));
}

TEST(SyntheticImages, OneBrightPixelIsAlone)
{
    const Picture picture = OneBrightPixel(9, 6);
    int sum = 0;
    for (const uint8_t byte : picture.Bytes)
        sum += byte;
    EXPECT_EQ(sum, 3 * 255);
    EXPECT_EQ(PixelAt(picture, 4, 3), (Bytes3{255, 255, 255}));
}

TEST(SyntheticImages, PhotographUsesAWideRangeOfValues)
{
    const Picture picture = PseudoPhotograph(320, 240, 1);
    const std::set<uint8_t> values(picture.Bytes.begin(), picture.Bytes.end());
    EXPECT_GT(values.size(), 150U);
}

TEST(SyntheticImages, MirroringTwiceGivesThePictureBack)
{
    const Picture picture = NoisePicture(7, 5, 3);
    const Picture sideways = MirrorLeftRight(picture);
    const Picture upsideDown = MirrorTopBottom(picture);
    EXPECT_EQ(PixelAt(sideways, 0, 1), PixelAt(picture, 6, 1));
    EXPECT_EQ(PixelAt(upsideDown, 2, 0), PixelAt(picture, 2, 4));
    EXPECT_EQ(MirrorLeftRight(sideways).Bytes, picture.Bytes);
    EXPECT_EQ(MirrorTopBottom(upsideDown).Bytes, picture.Bytes);
}

} // namespace
} // namespace slowOracle
