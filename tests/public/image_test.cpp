#include <algorithm>
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "public/rgb8_image.h"
#include "vistaTrim/vistaTrim.h"

namespace vistaTrim {
namespace {

constexpr int32_t kOffsets[4] = {2, 1, 0, -7};

TEST(CreateImageObj, HeightComesBeforeWidth)
{
    IImage* image = CreateImageObj(2, 5, 3, kOffsets, nullptr);
    EXPECT_EQ(image->GetWidth(), 5U);
    EXPECT_EQ(image->GetHeight(), 2U);
    EXPECT_EQ(image->GetNumChannels(), 3U);
    EXPECT_EQ(image->GetRowStride(), 15U);
    EXPECT_EQ(image->GetPixelStride(), 3U);
    image->Release();
}

TEST(CreateImageObj, WithoutPixelsTheImageIsBlack)
{
    IImage* image = CreateImageObj(3, 4, 3, kOffsets, nullptr);
    for (int i = 0; i < 36; ++i)
        EXPECT_EQ(image->GetPixels()[i], 0);
    DestroyImageObj(image);
}

TEST(CreateImageObj, ImageKeepsItsOwnPixels)
{
    std::vector<uint8_t> pixels(4 * 3 * 2);
    for (size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = static_cast<uint8_t>(i + 1);
    IImage* image = CreateImageObj(2, 4, 3, kOffsets, pixels.data());
    EXPECT_NE(image->GetPixels(), pixels.data());
    pixels[5] = 99;
    EXPECT_EQ(image->GetPixels()[5], 6);
    EXPECT_EQ(image->GetPixels()[23], 24);
    DestroyImageObj(image);
}

TEST(CreateImageObj, WritingThroughGetDataChangesTheImage)
{
    IImage* image = CreateImageObj(2, 4, 3, kOffsets, nullptr);
    EXPECT_EQ(image->GetData(), image->GetPixels());
    image->GetData()[7] = 42;
    EXPECT_EQ(image->GetPixels()[7], 42);
    DestroyImageObj(image);
}

TEST(CreateImageObj, KeepsTheFourChannelOffsets)
{
    int32_t offsets[4] = {2, 1, 0, -7};
    IImage* image = CreateImageObj(1, 1, 4, offsets, nullptr);
    offsets[0] = 55;
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(image->GetChannelOffset(i), kOffsets[i]);
    EXPECT_EQ(image->GetRowStride(), 4U);
    DestroyImageObj(image);
}

TEST(CreateImageObj, ReadsOneBytePerPixelAndChannel)
{
    std::vector<uint8_t> bytes(5 * 3 * 4);
    for (size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<uint8_t>(3 * i + 1);
    for (const uint32_t channels : {1U, 2U, 4U}) {
        SCOPED_TRACE(channels);
        IImage* image = CreateImageObj(3, 5, channels, kOffsets, bytes.data());
        EXPECT_EQ(image->GetNumChannels(), channels);
        EXPECT_EQ(image->GetPixelStride(), channels);
        EXPECT_EQ(image->GetRowStride(), 5 * channels);
        EXPECT_TRUE(
            std::equal(image->GetPixels(), image->GetPixels() + 15 * channels, bytes.begin()));
        DestroyImageObj(image);
    }
}

TEST(CreateImageObj, ByteCountPast32BitsWraps)
{
    // 65536 * 65536 * 1 bytes wrap to 0: nothing is read from the pixels.
    const uint8_t pixel = 1;
    IImage* image = CreateImageObj(65536, 65536, 1, kOffsets, &pixel);
    EXPECT_EQ(image->GetWidth(), 65536U);
    EXPECT_EQ(image->GetRowStride(), 65536U);
    DestroyImageObj(image);
}

// Reports its destruction.
class WatchedImage : public CRGB8Image {
public:
    explicit WatchedImage(bool& ended) : CRGB8Image(1, 1, 1, kOffsets), Ended(ended)
    {
        Fill(nullptr);
    }
    ~WatchedImage() override
    {
        Ended = true;
    }

private:
    bool& Ended;
};

TEST(Image, LastReleaseDestroysIt)
{
    bool ended = false;
    IImage* image = new WatchedImage(ended);
    image->AddRef();
    image->Release();
    EXPECT_FALSE(ended);
    image->Release();
    EXPECT_TRUE(ended);
}

TEST(Image, DestroyIgnoresTheCount)
{
    bool ended = false;
    IImage* image = new WatchedImage(ended);
    image->AddRef();
    image->AddRef();
    DestroyImageObj(image);
    EXPECT_TRUE(ended);
}

// Volatile: a compiler assumes that two names are two functions and folds the comparison.
TEST(Image, BothDestroyFunctionsAreTheSame)
{
    using Destroy = void (*)(void*);
    const volatile Destroy ofImage = reinterpret_cast<Destroy>(&DestroyImageObj);
    const volatile Destroy ofDriver = reinterpret_cast<Destroy>(&DestroyVistaTrimObj);
    EXPECT_EQ(ofImage, ofDriver);
}

} // namespace
} // namespace vistaTrim
