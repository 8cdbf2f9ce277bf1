#include "analysis/map_access.h"

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "test_pictures.h"

namespace vistaTrim {
namespace {

using namespace testPictures;

TEST(MapReader, HandsOutTheAnalyzersMapsByName)
{
    const Picture picture = Blobs(640, 400, 1);
    const auto analyzer = Analyse(picture);
    ImageHolder image = MakeImage(picture);
    const CMapReader reader(image.get());
    image.reset(); // the reader stands on its own

    const std::vector<NamedFloats> expected = AllMaps(*analyzer);
    ASSERT_EQ(reader.Maps().size(), expected.size());
    for (size_t k = 0; k < expected.size(); ++k) {
        SCOPED_TRACE(expected[k].Name);
        EXPECT_EQ(reader.Maps()[k].Name, expected[k].Name);
        const NamedMap* const map = reader.Find(expected[k].Name);
        ASSERT_EQ(map, &reader.Maps()[k]);
        ASSERT_EQ(map->Cols, 640);
        ASSERT_EQ(map->Rows, 400);
        EXPECT_TRUE(std::equal(map->Data, map->Data + 640 * 400, expected[k].Map->Data));
    }
}

TEST(MapReader, KnowsNoOtherName)
{
    const ImageHolder image = MakeImage(Flat(640, 10, 1, 2, 3));
    const CMapReader reader(image.get());
    EXPECT_EQ(reader.Find("contrastmap"), nullptr);
    EXPECT_EQ(reader.Find(""), nullptr);
}

TEST(MapReader, OfARefusedPictureHasEmptyMaps)
{
    const ImageHolder image = MakeImage(Flat(1, 1281, 1, 2, 3));
    testing::internal::CaptureStderr();
    const CMapReader reader(image.get());
    testing::internal::GetCapturedStderr();
    ASSERT_EQ(reader.Maps().size(), 10u);
    for (const NamedMap& map : reader.Maps()) {
        EXPECT_EQ(map.Data, nullptr) << map.Name;
        EXPECT_EQ(map.Cols, 0) << map.Name;
        EXPECT_EQ(map.Rows, 0) << map.Name;
    }
}

} // namespace
} // namespace vistaTrim
