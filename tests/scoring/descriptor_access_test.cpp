#include "analysis/map_access.h"

#include <algorithm>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/test_pictures.h"
#include "scoring/composition_model.h"

namespace vistaTrim {
namespace {

using namespace testPictures;

constexpr float kUntouched = -7.5f;

std::vector<float> Untouched()
{
    return std::vector<float>(kDescriptorSize, kUntouched);
}

TEST(ReadDescriptor, GivesTheCellMeansBeforeTheyAreStandardised)
{
    const Picture picture = Blobs(640, 400, 2);
    const auto analyzer = Analyse(picture);
    const ImageHolder image = MakeImage(picture);
    const CMapReader reader(image.get());
    for (const CInt32CropRect& crop :
         {CInt32CropRect(0, 639, 0, 399), CInt32CropRect(31, 402, 77, 300),
          CInt32CropRect(639, 639, 399, 399)}) {
        std::vector<float> expected = Untouched();
        ComputeCompositionDescriptor(analyzer->ContrastTable, analyzer->SaliencyTable,
                                     expected.data(), analyzer->ToWorkingRect(crop));
        std::vector<float> found = Untouched();
        EXPECT_TRUE(reader.ReadDescriptor(crop, found.data()));
        EXPECT_EQ(found, expected);
    }
}

TEST(ReadDescriptor, LeavesTheBufferAloneForACropWithoutPixels)
{
    const ImageHolder image = MakeImage(Blobs(640, 20, 3));
    const CMapReader reader(image.get());
    for (const CInt32CropRect& crop :
         {CInt32CropRect(10, 9, 0, 19), CInt32CropRect(0, 639, 5, 4),
          CInt32CropRect(640, 700, 0, 19), CInt32CropRect(0, 639, -9, -1)}) {
        std::vector<float> found = Untouched();
        EXPECT_FALSE(reader.ReadDescriptor(crop, found.data()));
        EXPECT_EQ(found, Untouched());
    }
}

TEST(ReadDescriptor, DescribesNothingOfARefusedPicture)
{
    const ImageHolder image = MakeImage(Flat(1, 1281, 1, 2, 3));
    testing::internal::CaptureStderr();
    const CMapReader reader(image.get());
    testing::internal::GetCapturedStderr();
    std::vector<float> found = Untouched();
    EXPECT_FALSE(reader.ReadDescriptor(CInt32CropRect(0, 0, 0, 1280), found.data()));
    EXPECT_EQ(found, Untouched());
}

} // namespace
} // namespace vistaTrim
