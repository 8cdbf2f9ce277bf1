// Numbers of TIFF fields.
#include "picture/tiff_reader.h"

#include <cstdint>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vistaTrim::photo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr uint16_t kTag = 330;

TiffDirectory Holding(uint16_t type, const std::vector<uint8_t>& bytes)
{
    TiffDirectory directory;
    directory[kTag].Type = type;
    directory[kTag].Bytes = bytes;
    return directory;
}

TEST(TiffNumbers, AreUnsignedOfTheirTypesWidth)
{
    const std::vector<uint8_t> bytes = {1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_THAT(NumbersOf(Holding(1, bytes), kTag), ElementsAre(1, 2, 3, 4, 5, 6, 7, 8));
    EXPECT_THAT(NumbersOf(Holding(3, bytes), kTag), ElementsAre(0x0201, 0x0403, 0x0605, 0x0807));
    for (const uint16_t type : std::vector<uint16_t>{4, 13}) // a number, an offset
        EXPECT_THAT(NumbersOf(Holding(type, bytes), kTag), ElementsAre(0x04030201, 0x08070605));
    for (const uint16_t type : std::vector<uint16_t>{16, 18})
        EXPECT_THAT(NumbersOf(Holding(type, bytes), kTag), ElementsAre(0x0807060504030201));
}

TEST(TiffNumbers, OfTextSignedNumbersAndFractionsAreNone)
{
    for (const uint16_t type : std::vector<uint16_t>{0, 2, 5, 6, 7, 8, 9, 10, 11, 12, 14, 17, 19})
        EXPECT_THAT(NumbersOf(Holding(type, {1, 0, 0, 0, 0, 0, 0, 0}), kTag), IsEmpty()) << type;
    EXPECT_THAT(NumbersOf(Holding(3, {1, 0}), kTag + 1), IsEmpty());
    EXPECT_THAT(NumbersOf(Holding(3, {}), kTag), IsEmpty());
}

// A damaged file may claim millions.
TEST(TiffNumbers, AreTheFirst64)
{
    EXPECT_THAT(NumbersOf(Holding(3, std::vector<uint8_t>(2 * 64, 1)), kTag), SizeIs(64));
    EXPECT_THAT(NumbersOf(Holding(3, std::vector<uint8_t>(2 * 65, 1)), kTag), SizeIs(64));
}

} // namespace
} // namespace vistaTrim::photo
