#include "picture/crop_metadata.h"

#include <string>

#include <gtest/gtest.h>
#include <vips/vips8>

#include "vistaTrimPhoto/picture_runtime.h"

namespace vistaTrim::photo {
namespace {

using vips::VImage;

// Fields that describe the whole photograph or its file.
constexpr const char* kUntrue[] = {"jpeg-thumbnail-data",
                                   "orientation",
                                   "n-pages",
                                   "page-height",
                                   "delay",
                                   "loop",
                                   "n-subifds",
                                   "heif-primary",
                                   "exif-ifd1-Compression",
                                   "exif-ifd2-SubjectArea",
                                   "exif-ifd2-SubjectLocation"};
// Fields that are as true of a crop.
constexpr const char* kTrue[] = {"exif-ifd0-Make",    "exif-ifd2-FNumber", "iptc-data",
                                 "png-comment-0-Key", "gif-comment",       "magick-comment",
                                 "image-description", "xmp-data",          "photoshop-data"};

VImage PictureWith(const char* field)
{
    StartPictureRuntime();
    VImage image = VImage::black(4, 4).copy();
    image.set(field, 1);
    return image;
}

bool CropHas(const VImage& image, const char* field, bool strip)
{
    const CropPlace place{{8, 8}, 1, {0, 0, 4, 4}};
    return WithMetadataForCrop(image, place, ImageFormat::Png, strip).get_typeof(field) != 0;
}

TEST(CropMetadata, LosesWhatIsUntrueOfACrop)
{
    for (const char* field : kUntrue) {
        const VImage image = PictureWith(field);
        EXPECT_FALSE(CropHas(image, field, false)) << field;
        EXPECT_FALSE(CropHas(image, field, true)) << field;
        EXPECT_NE(image.get_typeof(field), 0u) << field; // the photograph keeps it
    }
}

TEST(CropMetadata, KeepsTheRestUnlessStripped)
{
    for (const char* field : kTrue) {
        const VImage image = PictureWith(field);
        const bool isXmp = field == std::string("xmp-data"); // this one is not a packet
        EXPECT_EQ(CropHas(image, field, false), !isXmp) << field;
        EXPECT_FALSE(CropHas(image, field, true)) << field;
    }
}

TEST(CropMetadata, IsNotWhatALoaderNotesOrTheColourProfile)
{
    for (const char* field : {"vips-loader", "icc-profile-data", "bits-per-sample", "resolution"})
        EXPECT_TRUE(CropHas(PictureWith(field), field, true)) << field;
}

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
