#include "suggest/way_back.h"

#include <cmath>
#include <cstdlib>
#include <random>

#include <gtest/gtest.h>

#include "regions/working_regions.h"

namespace vistaTrim::photo {

void PrintTo(const PixelRect& r, std::ostream* out)
{
    *out << r.Width << " x " << r.Height << " at " << r.X << "," << r.Y;
}

namespace {

constexpr Ratio kRatios[] = {{64, 27}, {16, 9}, {3, 2}, {4, 3}, {3, 4}, {2, 3}, {1, 1}, {47, 20}};

class Dice {
public:
    int32_t Between(int32_t least, int32_t most)
    {
        return least + static_cast<int32_t>(Engine() % static_cast<unsigned>(most - least + 1));
    }

private:
    std::mt19937 Engine{20};
};

// A crop as the engine's lattice makes it: one side rounded from the scale, the other from that
// side.
CInt32Rect LatticeCrop(PixelSize working, const Ratio& ratio, double scale, Dice& dice)
{
    int32_t width = 0;
    int32_t height = 0;
    if (static_cast<double>(working.Width) / working.Height < ratio.Value()) {
        width = static_cast<int32_t>(std::floor(working.Width * scale + 0.5));
        height = static_cast<int32_t>(std::floor(width / ratio.Value() + 0.5));
    } else {
        height = static_cast<int32_t>(std::floor(working.Height * scale + 0.5));
        width = static_cast<int32_t>(std::floor(height * ratio.Value() + 0.5));
    }
    const int32_t left = dice.Between(0, working.Width - width);
    const int32_t top = dice.Between(0, working.Height - height);
    return {left, left + width - 1, top, top + height - 1};
}

PixelRect Back(const CInt32Rect& crop, PixelSize photo, const Ratio& ratio,
               const std::vector<Wish>& wishes = {})
{
    const auto rect = ToPhotograph(crop, WorkingSize(photo), photo, {ratio, {}}, wishes);
    EXPECT_TRUE(rect);
    return rect.value_or(PixelRect{});
}

TEST(WayBack, OfTheWholePictureIsTheWholePhotograph)
{
    EXPECT_EQ(Back({0, 639, 0, 479}, {4224, 3168}, {4, 3}), (PixelRect{0, 0, 4224, 3168}));
    EXPECT_EQ(Back({0, 639, 0, 639}, {1, 1}, {1, 1}), (PixelRect{0, 0, 1, 1}));
}

// For a picture one working pixel high the engine returns crops whose sides rounded to 0: they end
// one pixel before they begin, and the last one begins after the last pixel. The result still holds
// at least one pixel of the photograph.
TEST(WayBack, CropWithoutPixelsMapsInsideThePhotograph)
{
    const PixelSize photo{6400, 10};
    for (const int32_t left : {1, 320, 639, 640})
        for (const Ratio& ratio : {Ratio{3, 2}, Ratio{1, 1000}, Ratio{1000000000, 1}}) {
            SCOPED_TRACE(testing::Message() << left << ", " << ratio.Text());
            const PixelRect back = Back({left, left - 1, 1, 0}, photo, ratio);
            EXPECT_GE(back.Width, 1);
            EXPECT_GE(back.Height, 1);
            EXPECT_TRUE(Contains({0, 0, photo.Width, photo.Height}, back));
        }
}

// 320 working pixels of 640 are columns 0 to 319, both ends included: exactly half of the
// photograph.
TEST(WayBack, CountsBothEndsOfARectangle)
{
    EXPECT_EQ(Back({0, 319, 0, 239}, {4224, 3168}, {4, 3}), (PixelRect{0, 0, 2112, 1584}));
    EXPECT_EQ(Back({320, 639, 240, 479}, {4224, 3168}, {4, 3}),
              (PixelRect{2112, 1584, 2112, 1584}));
}

TEST(WayBack, StaysInsideAndKeepsTheRatioUpToRounding)
{
    Dice dice;
    for (int round = 0; round < 4000; ++round) {
        const PixelSize photo{dice.Between(8, 9000), dice.Between(8, 9000)};
        const PixelSize working = WorkingSize(photo);
        if (working.Width < 60 || working.Height < 60)
            continue;
        const Ratio& ratio = kRatios[dice.Between(0, 7)];
        const CInt32Rect crop = LatticeCrop(working, ratio, 0.1 * dice.Between(4, 10), dice);
        SCOPED_TRACE(testing::Message() << photo.Width << " x " << photo.Height << ", crop "
                                        << crop.Left << ".." << crop.Right << " " << crop.Top
                                        << ".." << crop.Bottom << ", " << ratio.Text());
        const PixelRect rect = Back(crop, photo, ratio);

        ASSERT_TRUE(Contains({0, 0, photo.Width, photo.Height}, rect));
        ASSERT_GE(rect.Width, 1);
        ASSERT_GE(rect.Height, 1);
        // One side is the other one times the ratio, rounded to the nearest pixel.
        const double value = ratio.Value();
        ASSERT_TRUE(std::abs(rect.Width - rect.Height * value) <= 0.5 ||
                    std::abs(rect.Height - rect.Width / value) <= 0.5);
    }
}

TEST(WayBack, UsesTheExactRatioWhenWithinTolerance)
{
    Dice dice;
    for (int round = 0; round < 4000; ++round) {
        // Exact 64:27 sizes are 64 pixels of width apart, so from 1600 on one is within 2 %.
        const PixelSize photo{dice.Between(4500, 9000), dice.Between(4500, 9000)};
        const Ratio& ratio = kRatios[dice.Between(0, 7)];
        const CInt32Rect crop =
            LatticeCrop(WorkingSize(photo), ratio, 0.1 * dice.Between(4, 9), dice);
        const PixelRect rect = Back(crop, photo, ratio);
        ASSERT_EQ(rect.Width * ratio.Height, rect.Height * ratio.Width)
            << photo.Width << " x " << photo.Height << " " << ratio.Text();
    }
}

TEST(WayBack, MovesNoEdgeFar)
{
    Dice dice;
    for (int round = 0; round < 4000; ++round) {
        const PixelSize photo{dice.Between(300, 9000), dice.Between(300, 9000)};
        const PixelSize working = WorkingSize(photo);
        if (working.Width < 100 || working.Height < 100)
            continue;
        const Ratio& ratio = kRatios[dice.Between(0, 7)];
        const CInt32Rect crop = LatticeCrop(working, ratio, 0.1 * dice.Between(4, 10), dice);
        const PixelRect rect = Back(crop, photo, ratio);
        const double step = static_cast<double>(photo.Width) / working.Width;
        // The tolerance for the exact ratio, the engine's rounding of one side, and a pixel of
        // rounding here.
        const double width = (crop.Right - crop.Left + 1) * step;
        const double height = (crop.Bottom - crop.Top + 1) * step;
        const double allowedX = std::max(2.0 * step, 0.02 * width + step) + 2.0;
        const double allowedY = std::max(2.0 * step, 0.02 * height + step) + 2.0;
        ASSERT_LE(std::abs(rect.X - crop.Left * step), allowedX);
        ASSERT_LE(std::abs(rect.X + rect.Width - (crop.Right + 1) * step), allowedX);
        ASSERT_LE(std::abs(rect.Y - crop.Top * step), allowedY);
        ASSERT_LE(std::abs(rect.Y + rect.Height - (crop.Bottom + 1) * step), allowedY);
    }
}

TEST(WayBack, LeavesACropOnTheBorderThatItTouches)
{
    Dice dice;
    int touching = 0;
    for (int round = 0; round < 4000; ++round) {
        const PixelSize photo{dice.Between(300, 9000), dice.Between(300, 9000)};
        const PixelSize working = WorkingSize(photo);
        const Ratio& ratio = kRatios[dice.Between(0, 7)];
        CInt32Rect crop = LatticeCrop(working, ratio, 0.1 * dice.Between(4, 9), dice);
        const bool toFarCorner = round % 2 == 1;
        const int32_t moveX = toFarCorner ? working.Width - 1 - crop.Right : -crop.Left;
        const int32_t moveY = toFarCorner ? working.Height - 1 - crop.Bottom : -crop.Top;
        crop = {crop.Left + moveX, crop.Right + moveX, crop.Top + moveY, crop.Bottom + moveY};
        if (crop.Right - crop.Left + 1 == working.Width ||
            crop.Bottom - crop.Top + 1 == working.Height)
            continue;
        ++touching;
        const PixelRect rect = Back(crop, photo, ratio);
        ASSERT_EQ(toFarCorner ? rect.X + rect.Width : rect.X, toFarCorner ? photo.Width : 0);
        ASSERT_EQ(toFarCorner ? rect.Y + rect.Height : rect.Y, toFarCorner ? photo.Height : 0);
    }
    EXPECT_GT(touching, 1000);
}

// The guarantee for wishes: a wish that a crop meets on the working picture, with its region
// rounded outward, is also met in the photograph's own pixels.
TEST(WayBack, KeepsEveryWishThatTheWorkingCropMeets)
{
    Dice dice;
    int kept = 0;
    int avoided = 0;
    for (int round = 0; round < 40000; ++round) {
        // Every other photograph is so small that crops can be thinner than its pixels.
        const int32_t largest = round % 2 == 0 ? 6000 : 25;
        const PixelSize photo{dice.Between(1, largest), dice.Between(1, largest)};
        const PixelSize working = WorkingSize(photo);
        const Ratio& ratio = kRatios[dice.Between(0, 7)];
        const double scale = round % 2 == 0 ? 0.1 * dice.Between(4, 10) : 0.01;
        const CInt32Rect crop = LatticeCrop(working, ratio, scale, dice);
        if (crop.Right < crop.Left || crop.Bottom < crop.Top)
            continue;
        std::vector<Wish> wishes;
        for (int i = 0; i < 2; ++i) {
            const int32_t x = dice.Between(0, photo.Width - 1);
            const int32_t y = dice.Between(0, photo.Height - 1);
            wishes.push_back(
                {static_cast<WishKind>(dice.Between(0, 3)),
                 {x, y, dice.Between(1, photo.Width - x), dice.Between(1, photo.Height - y)}});
        }
        const PixelRect rect = Back(crop, photo, ratio, wishes);
        ASSERT_TRUE(Contains({0, 0, photo.Width, photo.Height}, rect));
        for (const Wish& wish : wishes) {
            const CInt32Rect region = ToWorkingOutward(wish.Rect, photo, working);
            const bool inside = crop.Left <= region.Left && region.Right <= crop.Right &&
                                crop.Top <= region.Top && region.Bottom <= crop.Bottom;
            const bool clear = crop.Right < region.Left || region.Right < crop.Left ||
                               crop.Bottom < region.Top || region.Bottom < crop.Top;
            if (WantsInside(wish.Kind) ? inside : clear) {
                ++(WantsInside(wish.Kind) ? kept : avoided);
                ASSERT_TRUE(IsMet(wish, rect))
                    << NameOf(wish.Kind) << " " << testing::PrintToString(wish.Rect) << " of "
                    << photo.Width << " x " << photo.Height << ", crop "
                    << testing::PrintToString(rect);
            }
        }
    }
    // Both kinds occurred.
    EXPECT_GT(kept, 300);
    EXPECT_GT(avoided, 3000);
}

TEST(WayBack, GivesARequestedSizeToThePixel)
{
    Dice dice;
    for (int round = 0; round < 2000; ++round) {
        const PixelSize photo{dice.Between(20, 6000), dice.Between(20, 6000)};
        const PixelSize working = WorkingSize(photo);
        const PixelSize size{dice.Between(10, photo.Width), dice.Between(10, photo.Height)};
        const CropShape shape{Reduced(size.Width, size.Height), size};
        const int32_t width =
            std::max(1, static_cast<int32_t>(int64_t{size.Width} * working.Width / photo.Width));
        const int32_t height =
            std::max(1, static_cast<int32_t>(int64_t{size.Height} * working.Height / photo.Height));
        const int32_t left = dice.Between(0, working.Width - width);
        const int32_t top = dice.Between(0, working.Height - height);
        const auto rect = ToPhotograph({left, left + width - 1, top, top + height - 1}, working,
                                       photo, shape, {});
        ASSERT_TRUE(rect);
        ASSERT_EQ(rect->Width, size.Width);
        ASSERT_EQ(rect->Height, size.Height);
        ASSERT_TRUE(Contains({0, 0, photo.Width, photo.Height}, *rect));
    }
}

TEST(WayBack, GivesNoCropForASizeThatDoesNotFit)
{
    const CropShape shape{{1, 1}, PixelSize{101, 50}};
    EXPECT_FALSE(ToPhotograph({0, 639, 0, 319}, {640, 640}, {100, 100}, shape, {}));
}

TEST(WayBack, PrefersAWishToTheRatio)
{
    // Two regions to avoid leave a gap of exactly the crop's working columns; only the unadjusted
    // size fits between them.
    const PixelSize photo{6400, 4800};
    const std::vector<Wish> wishes = {{WishKind::MustAvoid, {0, 0, 1000, 4800}},
                                      {WishKind::MustAvoid, {2010, 0, 4390, 4800}},
                                      {WishKind::MustKeep, {1000, 1000, 1010, 660}}};
    const PixelRect rect = Back({100, 200, 100, 165}, photo, {3, 2}, wishes);
    for (const Wish& wish : wishes)
        EXPECT_TRUE(IsMet(wish, rect)) << NameOf(wish.Kind);
}

// A crop from border to border that loses pixels to its ratio loses equally many on either side.
TEST(WayBack, ACropFromBorderToBorderIsCentred)
{
    int narrower = 0;
    for (const PixelSize photo : {PixelSize{6001, 4003}, {4003, 6001}, {3999, 2251}})
        for (const Ratio& ratio : kRatios) {
            const PixelSize working = WorkingSize(photo);
            const bool isWide = ratio.Value() * working.Height >= working.Width;
            const auto across = static_cast<int32_t>(
                isWide ? working.Width : std::lround(working.Height * ratio.Value()));
            const auto down = static_cast<int32_t>(
                isWide ? std::lround(working.Width / ratio.Value()) : working.Height);
            const int32_t left = (working.Width - across) / 3;
            const int32_t top = (working.Height - down) / 3;
            const PixelRect rect =
                Back({left, left + across - 1, top, top + down - 1}, photo, ratio);
            const int32_t before = isWide ? rect.X : rect.Y;
            const int32_t after =
                isWide ? photo.Width - rect.X - rect.Width : photo.Height - rect.Y - rect.Height;
            EXPECT_NEAR(before, after, 1) << photo.Width << ", " << ratio.Text();
            narrower += before + after > 3 ? 1 : 0;
        }
    EXPECT_GT(narrower, 5);
}

} // namespace
} // namespace vistaTrim::photo
