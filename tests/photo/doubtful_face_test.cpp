// Which doubtful detections count, on synthetic pictures.
#include "regions/doubtful_face.h"

#include <gtest/gtest.h>

namespace vistaTrim::photo {
namespace {

struct Colour {
    uint8_t Red, Green, Blue;
};

constexpr Colour kSky{150, 180, 230};

// 200 x 100 pixels of sky; the left 50 columns of `colour`.
PixelImage Beside(const Colour& colour)
{
    PixelImage image;
    image.Size = {200, 100};
    for (int y = 0; y < 100; ++y)
        for (int x = 0; x < 200; ++x)
            for (const uint8_t value :
                 {x < 50 ? colour.Red : kSky.Red, x < 50 ? colour.Green : kSky.Green,
                  x < 50 ? colour.Blue : kSky.Blue})
                image.Bytes.push_back(value);
    return image;
}

constexpr PixelRect kOnColour{5, 30, 40, 40};

TEST(HueOfSkin, HoldsForLightAndDarkSkinAndForNothingGreenBlueOrGrey)
{
    for (const Colour& skin : {Colour{194, 157, 151}, {141, 88, 73}, {65, 46, 39}, {43, 16, 14}})
        EXPECT_TRUE(HasHueOfSkin(Beside(skin), kOnColour)) << int{skin.Red};
    for (const Colour& other :
         {Colour{49, 90, 72}, {180, 100, 150}, {199, 206, 226}, {130, 130, 130}, {199, 179, 199}})
        EXPECT_FALSE(HasHueOfSkin(Beside(other), kOnColour)) << int{other.Red};
}

TEST(HueOfSkin, NeedsHalfOfTheMiddle)
{
    const PixelImage image = Beside({141, 88, 73});
    // The middle is 30 wide: of columns 34..63, 16 have the colour; of 36..65, 14.
    EXPECT_TRUE(HasHueOfSkin(image, {29, 30, 40, 40}));
    EXPECT_FALSE(HasHueOfSkin(image, {31, 30, 40, 40}));
    EXPECT_FALSE(HasHueOfSkin(image, {-90, 30, 40, 40})) << "outside the picture";
}

TEST(DoubtfulFace, LiesInsideThePictureAndIsNotLarge)
{
    const PixelImage image = Beside({141, 88, 73});
    EXPECT_TRUE(MayBeAFace(image, false, kOnColour, -0.4));
    EXPECT_TRUE(MayBeAFace(image, false, {-4, 30, 40, 40}, -0.4));
    EXPECT_FALSE(MayBeAFace(image, false, {-5, 30, 40, 40}, -0.4));
    EXPECT_FALSE(MayBeAFace(image, false, {-2, -2, 102, 102}, -0.4));
    EXPECT_FALSE(MayBeAFace(image, false, {120, 30, 40, 40}, -0.4)) << "sky";
}

TEST(DoubtfulFace, InAGreyPictureItsScoreDecides)
{
    const PixelImage image = Beside({90, 90, 90});
    EXPECT_TRUE(MayBeAFace(image, true, kOnColour, -0.2));
    EXPECT_FALSE(MayBeAFace(image, true, kOnColour, -0.21));
}

TEST(IsGrey, HoldsForBlackAndWhiteOnly)
{
    PixelImage image = Beside({90, 90, 90});
    EXPECT_FALSE(IsGrey(image));
    image.Bytes.assign(image.Bytes.size(), 77);
    EXPECT_TRUE(IsGrey(image));
}

TEST(Confidence, GrowsWithTheScoreAndIsHigherWithTheHueOfSkin)
{
    for (const bool hue : {false, true})
        for (double score = -0.5; score < 1; score += 0.1)
            EXPECT_LT(ConfidenceOf(score, hue), ConfidenceOf(score + 0.1, hue));
    EXPECT_NEAR(ConfidenceOf(-0.17, false), 0.5, 1e-12);
    EXPECT_NEAR(ConfidenceOf(-0.4, true), 0.5, 1e-12);
}

} // namespace
} // namespace vistaTrim::photo
