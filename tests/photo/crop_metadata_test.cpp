#include "picture/crop_metadata.h"

#include <gtest/gtest.h>

namespace vistaTrim::photo {
namespace {

TEST(CropMetadata, HasUprightXmp)
{
    EXPECT_EQ(UprightXmp("<a tiff:Orientation=\"6\"/>"), "<a tiff:Orientation=\"1\"/>");
    EXPECT_EQ(UprightXmp("<tiff:Orientation>8</tiff:Orientation>"),
              "<tiff:Orientation>1</tiff:Orientation>");
    EXPECT_EQ(UprightXmp("<a tiff:Orientation='1' tiff:Make='6'/>"),
              "<a tiff:Orientation='1' tiff:Make='6'/>");
    EXPECT_EQ(UprightXmp("tiff:Orientation"), "tiff:Orientation");
}

} // namespace
} // namespace vistaTrim::photo
