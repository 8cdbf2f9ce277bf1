// Compares the single sweep over the picture with the stepwise form, which calls one operation
// after another.
#include "analysis/border_contrast.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "analysis/test_pictures.h"
#include "numeric/image_kernels.h"
#include "numeric/kernel_test_support.h"
#include "numeric/linear_algebra.h"
#include "numeric/owned_stack.h"

namespace vistaTrim {
namespace {

using testPictures::Picture;

struct Maps {
    explicit Maps(const CPlaneStack& blurred)
    {
        Planes.Create(6, blurred.Cols, blurred.Rows);
        for (float* plane : Planes.Planes)
            std::fill_n(plane, Planes.ElementCount, -3.0f);
        Buffers.Contrast = Planes.Planes[0];
        Buffers.ColorContrast = Planes.Planes[1];
        std::copy_n(&Planes.Planes[2], 4, Buffers.Sides);
        Scratch.Create(1, blurred.Cols, blurred.Rows);
    }

    COwnedStack Planes;
    COwnedStack Scratch;
    BorderContrastMaps Buffers;
};

void Blur(const Picture& picture, CPlaneStack& blurred)
{
    COwnedStack ownPixels;
    CPlaneStack& pixels = ownPixels.Handle();
    pixels.Create(3, picture.Cols, picture.Rows);
    pixels.FillFromBytes(picture.Bytes.data());
    blurred.Create(3, picture.Cols, picture.Rows);
    SmoothStack(pixels, blurred, 0.7f);
}

void ExpectSameMaps(const Maps& found, const Maps& expected)
{
    const size_t bytes = size_t(expected.Planes.ElementCount) * sizeof(float);
    for (size_t map = 0; map < 6; ++map)
        EXPECT_EQ(std::memcmp(found.Planes.Planes[map], expected.Planes.Planes[map], bytes), 0)
            << "map " << map;
}

// Applies the pending normalisation and checks the reported largest elements.
void Finish(Maps& maps, const BorderContrastScales& scales)
{
    const CNormalisation pending[6] = {scales.Contrast, scales.ColorContrast, scales.Sides[0],
                                       scales.Sides[1], scales.Sides[2],      scales.Sides[3]};
    const int32_t count = maps.Planes.ElementCount;
    for (size_t map = 0; map < 6; ++map) {
        pending[map].Apply(maps.Planes.Planes[map], count);
        const float largest = LargestElement(maps.Planes.Planes[map], count);
        EXPECT_EQ(std::memcmp(&largest, &pending[map].Largest, sizeof largest), 0) << "map " << map;
    }
}

std::vector<Picture> OrdinaryPictures()
{
    std::vector<Picture> pictures = {
        testPictures::Blobs(640, 160, 1), testPictures::Blobs(100, 640, 2),
        testPictures::Noise(320, 240, 3), testPictures::HalfAndHalf(640, 100),
        testPictures::Gradient(33, 17), testPictures::Checkerboard(130, 97, 5),
        testPictures::Flat(64, 48, 30, 60, 9), testPictures::OneBrightPixel(51, 47),
        // Bright and flat: the float sums of some side strips give variances below -10, so the
        // side's model falls back to a diagonal one.
        testPictures::Flat(382, 640, 253, 253, 253), testPictures::Flat(640, 427, 250, 250, 250),
        testPictures::Flat(382, 640, 253, 252, 251)};
    for (const PlaneSize& size : AwkwardSizes())
        if (size.Cols < 300)
            pictures.push_back(testPictures::Noise(size.Cols, size.Rows, 4));
    return pictures;
}

TEST(BorderContrast, SweepMatchesTheStepwiseFormBitForBitInEveryVariant)
{
    if (!kFixedOrder)
        GTEST_SKIP() << "the sweep is not used with BLAS, whose products round in their own way";
    const VariantScope scope;
    for (const Picture& picture : OrdinaryPictures()) {
        COwnedStack ownBlurred;
        CPlaneStack& blurred = ownBlurred.Handle();
        Blur(picture, blurred);
        Maps expected(blurred);
        SelectIsaVariant(IsaVariantPlain);
        ComputeBorderContrastsStepwise(blurred, expected.Scratch.Planes[0], expected.Buffers);
        for (const IsaVariant variant : AvailableVariants()) {
            SCOPED_TRACE(testing::Message()
                         << "variant " << variant << ", " << picture.Cols << " x " << picture.Rows);
            SelectIsaVariant(variant);
            Maps found(blurred);
            BorderContrastScales scales;
            ASSERT_TRUE(
                SweepBorderContrasts(blurred, found.Scratch.Planes[0], found.Buffers, scales));
            Finish(found, scales);
            ExpectSameMaps(found, expected);
        }
    }
}

// With values far beyond the byte range, the float tables lose so many digits that a variance of an
// anchored group comes out below -10. It has no root, and the joint covariance is indefinite. Flat
// pictures of bytes cannot show this: their groups stay above -6.
TEST(BorderContrast, OfAnIndefiniteModelMatchesTheStepwiseForm)
{
    COwnedStack ownBlurred;
    CPlaneStack& blurred = ownBlurred.Handle();
    blurred.Create(3, 640, 480);
    for (size_t k = 0; k < 3; ++k)
        std::fill_n(blurred.Planes[k], blurred.ElementCount, 3000.7f + 11.3f * float(k));
    Maps swept(blurred);
    BorderContrastScales scales;
    ASSERT_FALSE(SweepBorderContrasts(blurred, swept.Scratch.Planes[0], swept.Buffers, scales));

    Maps found(blurred);
    Finish(found, MeasureBorderContrasts(blurred, found.Scratch.Planes[0], found.Buffers));
    EXPECT_TRUE(blurred.TablesBuilt);
    COwnedStack ownAgain;
    CPlaneStack& again = ownAgain.Handle();
    again.Create(3, 640, 480);
    for (size_t k = 0; k < 3; ++k)
        std::copy_n(blurred.Planes[k], blurred.ElementCount, again.Planes[k]);
    Maps expected(again);
    ComputeBorderContrastsStepwise(again, expected.Scratch.Planes[0], expected.Buffers);
    ExpectSameMaps(found, expected);
}

TEST(BorderContrast, MatchesTheStepwiseFormWithEitherLinearAlgebra)
{
    const Picture picture = testPictures::Blobs(320, 200, 7);
    COwnedStack ownBlurred;
    CPlaneStack& blurred = ownBlurred.Handle();
    Blur(picture, blurred);
    Maps found(blurred);
    Finish(found, MeasureBorderContrasts(blurred, found.Scratch.Planes[0], found.Buffers));
    EXPECT_EQ(blurred.TablesBuilt, !kFixedOrder);

    COwnedStack ownAgain;
    CPlaneStack& again = ownAgain.Handle();
    Blur(picture, again);
    Maps expected(again);
    ComputeBorderContrastsStepwise(again, expected.Scratch.Planes[0], expected.Buffers);
    ExpectSameMaps(found, expected);
    // Each map spans 0 to 1, so the comparison was not of maps of zeros.
    for (size_t map : {0U, 2U, 3U, 4U, 5U}) {
        const float* const plane = found.Planes.Planes[map];
        EXPECT_EQ(*std::max_element(plane, plane + found.Planes.ElementCount), 1.0f);
        EXPECT_EQ(*std::min_element(plane, plane + found.Planes.ElementCount), 0.0f);
    }
}

} // namespace
} // namespace vistaTrim
