#include "vistaTrimPhoto/geometry.h"

#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "regions/working_regions.h"

namespace vistaTrim::photo {
namespace {

TEST(WorkingSize, HasItsLongerSideAtExactly640)
{
    EXPECT_EQ(WorkingSize({4224, 3168}), (PixelSize{640, 480}));
    EXPECT_EQ(WorkingSize({2056, 3088}), (PixelSize{426, 640}));
    EXPECT_EQ(WorkingSize({640, 640}), (PixelSize{640, 640}));
    EXPECT_EQ(WorkingSize({3, 2}), (PixelSize{640, 427}));
}

TEST(WorkingSize, SideIsAtLeastOnePixel)
{
    EXPECT_EQ(WorkingSize({1, 1}), (PixelSize{640, 640}));
    EXPECT_EQ(WorkingSize({1, 5000}), (PixelSize{1, 640}));
    EXPECT_EQ(WorkingSize({20000, 10}), (PixelSize{640, 1}));
}

TEST(WorkingSize, RoundsHalvesUp)
{
    EXPECT_EQ(WorkingSize({1280, 3}), (PixelSize{640, 2}));
    EXPECT_EQ(WorkingSize({1280, 5}), (PixelSize{640, 3}));
}

TEST(ToWorkingOutward, OfTheWholePhotographIsTheWholeWorkingPicture)
{
    for (const PixelSize photo : {PixelSize{4224, 3168}, {3088, 2056}, {7, 5}, {1, 5000}}) {
        const PixelSize working = WorkingSize(photo);
        const CInt32Rect whole =
            ToWorkingOutward({0, 0, photo.Width, photo.Height}, photo, working);
        EXPECT_EQ(whole.Left, 0);
        EXPECT_EQ(whole.Top, 0);
        EXPECT_EQ(whole.Right, working.Width - 1);
        EXPECT_EQ(whole.Bottom, working.Height - 1);
    }
}

// Checked against the definition: a working pixel belongs to the result if and only if its area in
// the photograph shares more than an edge with the rectangle.
TEST(ToWorkingOutward, CoversExactlyTheTouchedWorkingPixels)
{
    std::mt19937 random(7);
    for (int round = 0; round < 2000; ++round) {
        const PixelSize photo{1 + static_cast<int32_t>(random() % 3000),
                              1 + static_cast<int32_t>(random() % 3000)};
        const PixelSize working = WorkingSize(photo);
        const int32_t x = static_cast<int32_t>(random() % static_cast<unsigned>(photo.Width));
        const int32_t width =
            1 + static_cast<int32_t>(random() % static_cast<unsigned>(photo.Width - x));
        const CInt32Rect rect = ToWorkingOutward({x, 0, width, photo.Height}, photo, working);
        const auto touches = [&](int64_t pixel) {
            return pixel * photo.Width < (int64_t{x} + width) * working.Width &&
                   (pixel + 1) * photo.Width > int64_t{x} * working.Width;
        };
        ASSERT_TRUE(touches(rect.Left));
        ASSERT_TRUE(touches(rect.Right));
        ASSERT_FALSE(touches(int64_t{rect.Left} - 1));
        ASSERT_FALSE(touches(int64_t{rect.Right} + 1));
    }
}

TEST(FittedSize, IsTheLargestOfTheRatioInTheBox)
{
    EXPECT_EQ(FittedSize({1600, 900}, {800, 800}), (PixelSize{800, 450}));
    EXPECT_EQ(FittedSize({1600, 900}, {1920, 1080}), (PixelSize{1920, 1080}));
    EXPECT_EQ(FittedSize({900, 1600}, {800, 800}), (PixelSize{450, 800}));
    EXPECT_EQ(FittedSize({5000, 1}, {100, 100}), (PixelSize{100, 1}));
    EXPECT_EQ(FittedSize({1601, 900}, {1920, 1080}), (PixelSize{1920, 1079}));
}

TEST(PixelRect, SharesNoPixelWithItsNeighbour)
{
    EXPECT_FALSE(Overlaps({0, 0, 10, 10}, {10, 0, 10, 10}));
    EXPECT_TRUE(Overlaps({0, 0, 10, 10}, {9, 9, 10, 10}));
    EXPECT_TRUE(Contains({0, 0, 10, 10}, {0, 0, 10, 10}));
    EXPECT_FALSE(Contains({0, 0, 10, 10}, {1, 0, 10, 10}));
}

TEST(PixelRect, IsClippedToThePhotograph)
{
    EXPECT_EQ(ClippedTo({90, 40, 50, 50}, {100, 50}), (PixelRect{90, 40, 10, 10}));
    const PixelRect outside = ClippedTo({100, 0, 5, 5}, {100, 50});
    EXPECT_EQ(outside.Width, 0);
}

} // namespace
} // namespace vistaTrim::photo
