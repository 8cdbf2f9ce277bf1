// Positions in the stored and in the displayed picture, and the names of regions.
#include "regions/stored_place.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "regions/working_regions.h"
#include "vistaTrimPhoto/found_region.h"
#include "vistaTrimPhoto/photo_error.h"

namespace vistaTrim::photo {
namespace {

void ExpectRect(const RelativeRect& rect, const RelativeRect& expected)
{
    // 1 - x is rounded.
    EXPECT_NEAR(rect.X, expected.X, 1e-15);
    EXPECT_NEAR(rect.Y, expected.Y, 1e-15);
    EXPECT_EQ(rect.Width, expected.Width);
    EXPECT_EQ(rect.Height, expected.Height);
}

// Where EXIF's eight orientations show a rectangle near the stored top left corner.
TEST(StoredPlace, IsShownWhereTheOrientationPutsIt)
{
    const RelativeRect stored{0.125, 0.25, 0.0625, 0.5};
    const RelativeRect shown[] = {{0.125, 0.25, 0.0625, 0.5},  {0.8125, 0.25, 0.0625, 0.5},
                                  {0.8125, 0.25, 0.0625, 0.5}, {0.125, 0.25, 0.0625, 0.5},
                                  {0.25, 0.125, 0.5, 0.0625},  {0.25, 0.125, 0.5, 0.0625},
                                  {0.25, 0.8125, 0.5, 0.0625}, {0.25, 0.8125, 0.5, 0.0625}};
    for (int orientation = 1; orientation <= 8; ++orientation) {
        SCOPED_TRACE(orientation);
        ExpectRect(ToDisplayed(stored, orientation), shown[orientation - 1]);
    }
    // The first is centred vertically; this one tells top from bottom.
    const RelativeRect tall{0.125, 0.0625, 0.25, 0.5};
    const RelativeRect tallShown[] = {{0.125, 0.0625, 0.25, 0.5}, {0.625, 0.0625, 0.25, 0.5},
                                      {0.625, 0.4375, 0.25, 0.5}, {0.125, 0.4375, 0.25, 0.5},
                                      {0.0625, 0.125, 0.5, 0.25}, {0.4375, 0.125, 0.5, 0.25},
                                      {0.4375, 0.625, 0.5, 0.25}, {0.0625, 0.625, 0.5, 0.25}};
    for (int orientation = 1; orientation <= 8; ++orientation) {
        SCOPED_TRACE(orientation);
        ExpectRect(ToDisplayed(tall, orientation), tallShown[orientation - 1]);
    }
    for (const int other : {0, 9, -1})
        ExpectRect(ToDisplayed(tall, other), tall);
}

TEST(StoredPlace, SizesSwapWhereThePictureLiesOnItsSide)
{
    for (int orientation = 0; orientation <= 9; ++orientation) {
        const bool swapped = orientation >= 5 && orientation <= 8;
        EXPECT_EQ(StoredSize({30, 20}, orientation),
                  (swapped ? PixelSize{20, 30} : PixelSize{30, 20}))
            << orientation;
    }
}

TEST(StoredPlace, BecomesWholePixelsOutward)
{
    const PixelSize picture{100, 50};
    EXPECT_EQ(ToPixelsOutward({0.1, 0.2, 0.3, 0.4}, picture), (PixelRect{10, 10, 30, 20}));
    EXPECT_EQ(ToPixelsOutward({0.105, 0.21, 0.3, 0.4}, picture), (PixelRect{10, 10, 31, 21}));
    EXPECT_EQ(ToPixelsOutward({-0.5, -0.5, 0.6, 0.7}, picture), (PixelRect{0, 0, 10, 10}));
    EXPECT_EQ(ToPixelsOutward({0.9, 0.9, 5.0, 5.0}, picture), (PixelRect{90, 45, 10, 5}));
    const double inf = std::numeric_limits<double>::infinity();
    for (const RelativeRect& none :
         {RelativeRect{0.1, 0.1, 0.0, 0.5}, RelativeRect{0.1, 0.1, 0.5, 0.0},
          RelativeRect{0.1, 0.1, -0.1, 0.5}, RelativeRect{std::nan(""), 0.1, 0.1, 0.5},
          RelativeRect{0.1, 0.1, inf, 0.5}, RelativeRect{1.5, 0.1, 0.2, 0.5}}) {
        const PixelRect rect = ToPixelsOutward(none, picture);
        EXPECT_TRUE(rect.Width < 1 || rect.Height < 1);
    }
}

// A working pixel maps to every photograph pixel that shares more than an edge with it.
// Edges off by up to a millionth of a pixel are those of whole pixels; anything more counts.
TEST(StoredPlace, AMillionthOfAPixelIsARoundingError)
{
    const PixelSize picture = {100, 100};
    const auto place = [&picture](double off) {
        const double edge = off / 100;
        return ToPixelsOutward({0.1 - edge, 0.2 - edge, 0.3 + 2 * edge, 0.4 + 2 * edge}, picture);
    };
    EXPECT_EQ(place(0.99e-6), (PixelRect{10, 20, 30, 40}));
    EXPECT_EQ(place(1.01e-6), (PixelRect{9, 19, 32, 42}));
}

TEST(WorkingPlace, GoesBackToEveryPixelThatItTouches)
{
    EXPECT_EQ(ToPhotographOutward({10, 20, 30, 40}, {640, 480}, {1280, 960}),
              (PixelRect{20, 40, 60, 80}));
    // 640 / 1000: working pixels 1 to 2 cover 1.56 to 4.69 of the photograph.
    EXPECT_EQ(ToPhotographOutward({1, 1, 2, 2}, {640, 640}, {1000, 1000}), (PixelRect{1, 1, 4, 4}));
    EXPECT_EQ(ToPhotographOutward({0, 0, 640, 427}, {640, 427}, {901, 601}),
              (PixelRect{0, 0, 901, 601}));
}

TEST(WorkingPlace, WishesAreClippedToThePhotograph)
{
    const std::vector<Wish> inside = WishesInside({{WishKind::Keep, {90, -5, 20, 10}},
                                                   {WishKind::MustAvoid, {200, 0, 5, 5}},
                                                   {WishKind::Avoid, {0, 50, 5, 5}}},
                                                  {100, 50});
    ASSERT_EQ(inside.size(), 1U);
    EXPECT_EQ(inside[0].Kind, WishKind::Keep);
    EXPECT_EQ(inside[0].Rect, (PixelRect{90, 0, 10, 5}));
    EXPECT_THROW(WishesInside({{WishKind::Keep, {100, 0, 5, 5}}}, {100, 50}), PhotoError);
    EXPECT_EQ(EngineKind(WishKind::Keep), RoiSoftInclude);
    EXPECT_EQ(EngineKind(WishKind::MustKeep), RoiHardInclude);
    EXPECT_EQ(EngineKind(WishKind::Avoid), RoiSoftExclude);
    EXPECT_EQ(EngineKind(WishKind::MustAvoid), RoiHardExclude);
}

TEST(FoundRegion, HasTheNamesUsedInFiles)
{
    const std::pair<RegionKind, std::string> kinds[] = {{RegionKind::Face, "face"},
                                                        {RegionKind::Animal, "animal"},
                                                        {RegionKind::Subject, "subject"},
                                                        {RegionKind::Other, "other"}};
    for (const auto& [kind, name] : kinds) {
        EXPECT_EQ(NameOf(kind), name);
        EXPECT_EQ(RegionKindOfName(name), kind);
    }
    EXPECT_FALSE(RegionKindOfName("Face"));
    EXPECT_EQ(NameOf(RegionSource::FaceFinder), std::string("face-finder"));
    EXPECT_EQ(NameOf(RegionSource::Metadata), std::string("metadata"));
    EXPECT_EQ(NameOf(RegionSource::File), std::string("file"));
    const std::pair<WishKind, std::string> wishes[] = {{WishKind::Keep, "keep"},
                                                       {WishKind::MustKeep, "must-keep"},
                                                       {WishKind::Avoid, "avoid"},
                                                       {WishKind::MustAvoid, "must-avoid"}};
    for (const auto& [wish, name] : wishes)
        EXPECT_EQ(NameOf(wish), name);
}

} // namespace
} // namespace vistaTrim::photo
