// The regions that files name, in every orientation, standard and format. Each marks a white block,
// so the pixels show where it must be, in the photograph and in its crops.
#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "photo/sample_pictures.h"
#include "picture/photograph_source.h"
#include "vistaTrimPhoto/crop_writer.h"
#include "vistaTrimPhoto/photograph.h"
#include "vistaTrimPhoto/picture_runtime.h"

namespace vistaTrim::photo {
namespace {

using vips::VImage;

constexpr PixelSize kSize{192, 128};
constexpr PixelRect kBlock{112, 32, 48, 16};

VImage BlockPicture()
{
    const VImage place = VImage::xyz(kSize.Width, kSize.Height);
    const VImage x = place.extract_band(0);
    const VImage y = place.extract_band(1);
    const VImage block = (x >= kBlock.X) & (x < kBlock.X + kBlock.Width) & (y >= kBlock.Y) &
                         (y < kBlock.Y + kBlock.Height);
    const VImage grey = (block / 255 * 250).cast(VIPS_FORMAT_UCHAR);
    return VImage::bandjoin(std::vector<VImage>{grey, grey, grey})
        .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB))
        .copy_memory();
}

PixelRect BlockIn(const PixelImage& image)
{
    PixelRect found{image.Size.Width, image.Size.Height, 0, 0};
    int32_t right = -1;
    int32_t bottom = -1;
    for (int32_t y = 0; y < image.Size.Height; ++y)
        for (int32_t x = 0; x < image.Size.Width; ++x)
            if (image.Bytes[static_cast<size_t>((y * image.Size.Width + x) * image.Channels)] >
                125) {
                found.X = std::min(found.X, x);
                found.Y = std::min(found.Y, y);
                right = std::max(right, x);
                bottom = std::max(bottom, y);
            }
    found.Width = right + 1 - found.X;
    found.Height = bottom + 1 - found.Y;
    return found;
}

PixelRect BlockInStored(const VImage& stored)
{
    size_t size = 0;
    auto* bytes = static_cast<uint8_t*>(stored.write_to_memory(&size));
    const PixelImage pixels{{stored.width(), stored.height()}, 3, {bytes, bytes + size}};
    g_free(bytes);
    return BlockIn(pixels);
}

enum class Standard { WorkingGroup, Iptc, IptcPixels, Microsoft };

std::string Field(const char* name, double value)
{
    return std::string("<Iptc4xmpExt:") + name + ">" + std::to_string(value) +
           "</Iptc4xmpExt:" + name + ">";
}

// Metadata that names the block, in pixels of the stored picture.
std::string XmpOf(Standard standard, const PixelRect& block, PixelSize stored)
{
    const double width = stored.Width;
    const double height = stored.Height;
    std::string region;
    switch (standard) {
    case Standard::WorkingGroup:
        region = "<mwg-rs:Regions rdf:parseType=\"Resource\"><mwg-rs:AppliedToDimensions "
                 "stDim:w=\"" +
                 std::to_string(stored.Width) + "\" stDim:h=\"" + std::to_string(stored.Height) +
                 "\" stDim:unit=\"pixel\"/><mwg-rs:RegionList><rdf:Bag><rdf:li><rdf:Description "
                 "mwg-rs:Name=\"Ada\" mwg-rs:Type=\"Face\"><mwg-rs:Area stArea:x=\"" +
                 std::to_string((block.X + block.Width / 2.0) / width) + "\" stArea:y=\"" +
                 std::to_string((block.Y + block.Height / 2.0) / height) + "\" stArea:w=\"" +
                 std::to_string(block.Width / width) + "\" stArea:h=\"" +
                 std::to_string(block.Height / height) +
                 "\" stArea:unit=\"normalized\"/></rdf:Description></rdf:li></rdf:Bag>"
                 "</mwg-rs:RegionList></mwg-rs:Regions>";
        break;
    case Standard::Iptc:
    case Standard::IptcPixels: {
        const bool inPixels = standard == Standard::IptcPixels;
        const double across = inPixels ? 1 : width;
        const double down = inPixels ? 1 : height;
        region = "<Iptc4xmpExt:ImageRegion><rdf:Bag><rdf:li rdf:parseType=\"Resource\">"
                 "<Iptc4xmpExt:Name><rdf:Alt><rdf:li xml:lang=\"x-default\">Ada</rdf:li></rdf:Alt>"
                 "</Iptc4xmpExt:Name><Iptc4xmpExt:RegionBoundary rdf:parseType=\"Resource\">"
                 "<Iptc4xmpExt:rbShape>rectangle</Iptc4xmpExt:rbShape><Iptc4xmpExt:rbUnit>" +
                 std::string(inPixels ? "pixel" : "relative") + "</Iptc4xmpExt:rbUnit>" +
                 Field("rbX", block.X / across) + Field("rbY", block.Y / down) +
                 Field("rbW", block.Width / across) + Field("rbH", block.Height / down) +
                 "</Iptc4xmpExt:RegionBoundary></rdf:li></rdf:Bag></Iptc4xmpExt:ImageRegion>";
        break;
    }
    case Standard::Microsoft:
        region = "<MP:RegionInfo rdf:parseType=\"Resource\"><MPRI:Regions><rdf:Bag><rdf:li "
                 "MPReg:Rectangle=\"" +
                 std::to_string(block.X / width) + ", " + std::to_string(block.Y / height) + ", " +
                 std::to_string(block.Width / width) + ", " +
                 std::to_string(block.Height / height) +
                 "\" MPReg:PersonDisplayName=\"Ada\"/></rdf:Bag></MPRI:Regions></MP:RegionInfo>";
    }
    return "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"><rdf:RDF "
           "xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\"><rdf:Description "
           "rdf:about=\"\" xmlns:mwg-rs=\"http://www.metadataworkinggroup.com/schemas/regions/\" "
           "xmlns:stDim=\"http://ns.adobe.com/xap/1.0/sType/Dimensions#\" "
           "xmlns:stArea=\"http://ns.adobe.com/xmp/sType/Area#\" "
           "xmlns:MP=\"http://ns.microsoft.com/photo/1.2/\" "
           "xmlns:MPRI=\"http://ns.microsoft.com/photo/1.2/t/RegionInfo#\" "
           "xmlns:MPReg=\"http://ns.microsoft.com/photo/1.2/t/Region#\" "
           "xmlns:Iptc4xmpExt=\"http://iptc.org/std/Iptc4xmpExt/2008-02-29/\">" +
           region + "</rdf:Description></rdf:RDF></x:xmpmeta>";
}

void ExpectAt(const PixelRect& rect, const PixelRect& expected, int32_t tolerance)
{
    EXPECT_NEAR(rect.X, expected.X, tolerance);
    EXPECT_NEAR(rect.Y, expected.Y, tolerance);
    EXPECT_NEAR(rect.X + rect.Width, expected.X + expected.Width, tolerance);
    EXPECT_NEAR(rect.Y + rect.Height, expected.Y + expected.Height, tolerance);
}

std::vector<FoundRegion> NamedBy(const Photograph& photograph)
{
    return PhotographSource::Of(photograph).NamedRegions();
}

TEST(RegionsInFiles, MarkWhatThePixelsShow)
{
    SetThreadsPerPicture(1); // starting threads takes longer than such small pictures
    const TempFolder folder;
    const VImage upright = BlockPicture();
    for (const ImageFormat from :
         {ImageFormat::Jpeg, ImageFormat::Tiff, ImageFormat::Webp, ImageFormat::Png})
        for (int orientation = 1; orientation <= 8; ++orientation) {
            if (from == ImageFormat::Png && orientation > 1)
                continue; // libvips writes no orientation into PNG files
            for (const Standard standard : {Standard::WorkingGroup, Standard::Iptc,
                                            Standard::IptcPixels, Standard::Microsoft}) {
                // Format and standard are independent, so a sample of their combinations is enough.
                if (from != ImageFormat::Jpeg &&
                    (static_cast<int>(standard) + orientation) % 4 != 0)
                    continue;
                SCOPED_TRACE(testing::Message() << EndingOf(from) << " " << orientation
                                                << ", standard " << static_cast<int>(standard));
                const VImage stored = StoredWithOrientation(upright, orientation);
                const std::string xmp =
                    XmpOf(standard, BlockInStored(stored), {stored.width(), stored.height()});
                vips_image_set_blob_copy(stored.get_image(), "xmp-data", xmp.data(), xmp.size());
                const std::string path = folder.Path("a." + EndingOf(from));
                stored.write_to_file(path.c_str());

                const Photograph photograph = Photograph::FromFile(path);
                EXPECT_EQ(photograph.StoredOrientation(), orientation);
                const std::vector<FoundRegion> regions = NamedBy(photograph);
                ASSERT_EQ(regions.size(), 1U);
                EXPECT_EQ(regions[0].Label, "Ada");
                EXPECT_EQ(regions[0].Source, RegionSource::Metadata);
                EXPECT_EQ(BlockIn(photograph.ReadPreview(kSize.Width)), kBlock);
                // Its shares have six decimals and are rounded outward.
                ExpectAt(regions[0].Rect, kBlock, 1);

                // One crop contains the block, one cuts it, one is scaled.
                const auto to = static_cast<ImageFormat>(orientation % 4); // JPEG to TIFF
                std::vector<CropOutput> crops(3);
                crops[0].Rect = {64, 16, 112, 96};
                crops[1].Rect = {128, 8, 48, 64};
                crops[2].Rect = {96, 0, 96, 64};
                crops[2].Size = PixelSize{48, 32};
                for (CropOutput& crop : crops)
                    crop.Format = to;
                for (const std::vector<uint8_t>& bytes : EncodeCrops(photograph, crops)) {
                    const Photograph crop = Photograph::FromBytes(bytes.data(), bytes.size());
                    EXPECT_EQ(crop.StoredOrientation(), 1);
                    const std::vector<FoundRegion> named = NamedBy(crop);
                    ASSERT_EQ(named.size(), 1U) << "to " << EndingOf(to);
                    ExpectAt(named[0].Rect, BlockIn(crop.ReadPreview(1000)), 1);
                }
            }
        }
}

} // namespace
} // namespace vistaTrim::photo
