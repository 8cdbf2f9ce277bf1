#include "vistaTrimPhoto/crop_writer.h"

#include <filesystem>
#include <set>

#include <gtest/gtest.h>

#include "photo/sample_pictures.h"
#include "vistaTrimPhoto/image_encoder.h"
#include "vistaTrimPhoto/photo_error.h"

namespace vistaTrim::photo {
namespace {

using vips::VImage;

CropOutput Output(const PixelRect& rect, ImageFormat format = ImageFormat::Png)
{
    CropOutput output;
    output.Rect = rect;
    output.Format = format;
    return output;
}

VImage Decoded(const std::vector<uint8_t>& bytes)
{
    return VImage::new_from_buffer(bytes.data(), bytes.size(), "").copy_memory();
}

VImage AsImage(const PixelImage& pixels)
{
    return VImage::new_from_memory(const_cast<uint8_t*>(pixels.Bytes.data()), pixels.Bytes.size(),
                                   pixels.Size.Width, pixels.Size.Height, pixels.Channels,
                                   VIPS_FORMAT_UCHAR);
}

PixelImage PixelsOfImage(const VImage& image)
{
    size_t size = 0;
    auto* bytes = static_cast<uint8_t*>(image.write_to_memory(&size));
    PixelImage pixels{{image.width(), image.height()}, image.bands(), {bytes, bytes + size}};
    g_free(bytes);
    return pixels;
}

PhotoError::Kind KindOf(const std::function<void()>& work)
{
    try {
        work();
    } catch (const PhotoError& error) {
        EXPECT_NE(std::string(error.what()), "");
        return error.GetKind();
    }
    ADD_FAILURE() << "no error";
    return PhotoError::Kind::Internal;
}

TEST(CropWriter, GivesTheSameBytesInMemoryAsInFiles)
{
    const TempFolder folder;
    Scene(900, 600, 0.4, 0.5).write_to_file(folder.Path("a.jpg").c_str());
    const Photograph photograph = Photograph::FromFile(folder.Path("a.jpg"));
    std::vector<CropOutput> crops = {Output({10, 20, 300, 200}, ImageFormat::Jpeg),
                                     Output({0, 0, 900, 600}, ImageFormat::Png),
                                     Output({899, 599, 1, 1}, ImageFormat::Webp),
                                     Output({100, 100, 640, 320}, ImageFormat::Tiff)};
    crops[3].Size = PixelSize{64, 32};
    const std::vector<std::string> paths = {folder.Path("0"), folder.Path("1"), folder.Path("2"),
                                            folder.Path("3")};
    WriteCrops(photograph, crops, paths);
    const std::vector<std::vector<uint8_t>> encoded = EncodeCrops(photograph, crops);
    ASSERT_EQ(encoded.size(), 4U);
    for (size_t i = 0; i < 4; ++i) {
        const std::string written = ReadText(paths[i]);
        EXPECT_EQ(std::string(encoded[i].begin(), encoded[i].end()), written) << i;
        const VImage image = Decoded(encoded[i]);
        const PixelRect& rect = crops[i].Rect;
        EXPECT_EQ((PixelSize{image.width(), image.height()}),
                  crops[i].Size.value_or(PixelSize{rect.Width, rect.Height}));
    }
    EXPECT_TRUE(EncodeCrops(photograph, {}).empty());
}

TEST(CropWriter, GivesTheSameFilesInSeveralThreads)
{
    const TempFolder folder;
    const VImage scene = Scene(900, 600, 0.4, 0.5);
    scene.write_to_file(folder.Path("a.png").c_str());
    const VImage onItsSide = StoredWithOrientation(scene, 6);
    onItsSide.write_to_file(folder.Path("b.jpg").c_str());
    for (const char* name : {"a.png", "b.jpg"}) {
        const Photograph photograph = Photograph::FromFile(folder.Path(name));
        std::vector<CropOutput> crops;
        for (const ImageFormat format :
             {ImageFormat::Png, ImageFormat::Jpeg, ImageFormat::Webp, ImageFormat::Tiff})
            for (const int32_t width : {120, 300}) {
                crops.push_back(Output({10, 20, width, 200}, format));
                crops.push_back(crops.back());
                crops.back().Size = PixelSize{width / 2, 150};
            }
        const auto paths = [&](const std::string& prefix) {
            std::vector<std::string> names;
            for (size_t i = 0; i < crops.size(); ++i)
                names.push_back(folder.Path(prefix + std::to_string(i)));
            return names;
        };
        WriteCrops(photograph, crops, paths("one"));
        WriteCrops(photograph, crops, paths("four"), 4);
        for (size_t i = 0; i < crops.size(); ++i)
            EXPECT_TRUE(ReadText(paths("one")[i]) == ReadText(paths("four")[i]))
                << name << " " << i;
    }
}

TEST(CropWriter, FailsInSeveralThreadsAsInOne)
{
    const TempFolder folder;
    Scene(900, 600, 0.4, 0.5).write_to_file(folder.Path("whole.png").c_str());
    CutShort(folder.Path("whole.png"), folder.Path("cut.png"), 0.5);
    const std::vector<CropOutput> crops(6, Output({0, 0, 900, 600}));
    const std::vector<std::string> paths(6, folder.Path("out.png"));
    EXPECT_EQ(
        KindOf([&] { WriteCrops(Photograph::FromFile(folder.Path("cut.png")), crops, paths, 3); }),
        PhotoError::Kind::Damaged);
    const std::vector<std::string> nowhere(6, folder.Path("none/out.png"));
    EXPECT_EQ(KindOf([&] {
                  WriteCrops(Photograph::FromFile(folder.Path("whole.png")), crops, nowhere, 3);
              }),
              PhotoError::Kind::NotWritable);
}

TEST(CropWriter, RefusesSidesTooLongForTheFormat)
{
    const TempFolder folder;
    Scene(90, 60, 0.4, 0.5).write_to_file(folder.Path("a.png").c_str());
    const Photograph photograph = Photograph::FromFile(folder.Path("a.png"));
    for (const ImageFormat format : {ImageFormat::Jpeg, ImageFormat::Webp}) {
        CropOutput crop = Output({0, 0, 90, 60}, format);
        crop.Size = PixelSize{1, LongestSide(format)};
        EXPECT_EQ(EncodeCrops(photograph, {crop}).size(), 1U);
        crop.Size->Height += 1;
        EXPECT_EQ(KindOf([&] { CheckCropFiles(photograph, {crop}); }),
                  PhotoError::Kind::NotWritable);
        EXPECT_EQ(KindOf([&] { EncodeCrops(photograph, {crop}); }), PhotoError::Kind::NotWritable);
        EXPECT_EQ(ReadCrops(photograph, {crop})[0].Size, *crop.Size); // pixels have no limit
    }
}

TEST(CropWriter, CutsThePixelsOfTheRectangle)
{
    const TempFolder folder;
    const VImage scene = Scene(700, 500, 0.4, 0.5);
    scene.write_to_file(folder.Path("a.png").c_str());
    const Photograph photograph = Photograph::FromFile(folder.Path("a.png"));
    const std::vector<PixelRect> rects = {{0, 0, 1, 1}, {13, 77, 211, 99}, {400, 300, 300, 200}};
    std::vector<CropOutput> crops;
    for (const PixelRect& rect : rects)
        crops.push_back(Output(rect));
    const std::vector<PixelImage> pixels = ReadCrops(photograph, crops);
    const std::vector<std::vector<uint8_t>> encoded = EncodeCrops(photograph, crops);
    for (size_t i = 0; i < rects.size(); ++i) {
        const PixelRect& rect = rects[i];
        const VImage expected = scene.extract_area(rect.X, rect.Y, rect.Width, rect.Height);
        EXPECT_TRUE(pixels[i].Bytes == PixelsOfImage(expected).Bytes);
        EXPECT_EQ((Decoded(encoded[i]) - expected).abs().max(), 0.0);
        // One crop is read differently from several.
        EXPECT_TRUE(ReadCrops(photograph, {crops[i]})[0].Bytes == pixels[i].Bytes);
    }
}

TEST(CropWriter, ReadsEveryKindAsUprightSrgb)
{
    const TempFolder folder;
    const VImage quarters = Quarters(600, 400);
    const VImage alpha = (VImage::black(600, 400) + 255).cast(VIPS_FORMAT_UCHAR);
    StoredWithOrientation(quarters, 6).write_to_file(folder.Path("turned.jpg").c_str());
    quarters.icc_transform("p3", VImage::option()->set("input_profile", "srgb"))
        .write_to_file(folder.Path("wide.png").c_str());
    quarters.bandjoin(alpha).write_to_file(folder.Path("alpha.png").c_str());
    (quarters.cast(VIPS_FORMAT_USHORT) * 257)
        .cast(VIPS_FORMAT_USHORT)
        .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_RGB16))
        .write_to_file(folder.Path("deep.png").c_str());
    for (const char* name : {"turned.jpg", "wide.png", "alpha.png", "deep.png"}) {
        SCOPED_TRACE(name);
        const PixelImage whole =
            ReadCrops(Photograph::FromFile(folder.Path(name)), {Output({0, 0, 600, 400})})[0];
        ASSERT_EQ(whole.Size, (PixelSize{600, 400}));
        ASSERT_EQ(whole.Channels, 3);
        const auto means = QuarterMeans(AsImage(whole));
        for (size_t quarter = 0; quarter < 4; ++quarter)
            for (size_t band = 0; band < 3; ++band)
                EXPECT_NEAR(means[quarter][band], kQuarterColours[quarter][band], 3.0);
    }
    quarters.colourspace(VIPS_INTERPRETATION_B_W).write_to_file(folder.Path("grey.png").c_str());
    const PixelImage grey =
        ReadCrops(Photograph::FromFile(folder.Path("grey.png")), {Output({0, 0, 9, 9})})[0];
    EXPECT_EQ(grey.Channels, 3);
    EXPECT_EQ(grey.Bytes.size(), 9U * 9 * 3);
}

// In encoded crops and plain pixels, colour and grey, at 8 and 16 bits.
TEST(CropWriter, ShowsTheBackgroundThroughTransparentPixels)
{
    const TempFolder folder;
    const VImage clear = VImage::black(60, 40).cast(VIPS_FORMAT_UCHAR);
    const auto deep = [](const VImage& image, VipsInterpretation kind) {
        return (image.cast(VIPS_FORMAT_USHORT) * 257)
            .cast(VIPS_FORMAT_USHORT)
            .copy(VImage::option()->set("interpretation", kind));
    };
    const VImage colour = Quarters(60, 40).bandjoin(clear);
    const VImage grey =
        Quarters(60, 40).colourspace(VIPS_INTERPRETATION_B_W).extract_band(0).bandjoin(clear);
    colour.write_to_file(folder.Path("colour.png").c_str());
    deep(colour, VIPS_INTERPRETATION_RGB16).write_to_file(folder.Path("deep colour.png").c_str());
    grey.write_to_file(folder.Path("grey.png").c_str());
    deep(grey, VIPS_INTERPRETATION_GREY16).write_to_file(folder.Path("deep grey.png").c_str());
    const Colour background{60, 120, 180};
    const double brightness = 0.299 * 60 + 0.587 * 120 + 0.114 * 180; // of a grey background
    const std::vector<CropOutput> crops = {Output({5, 5, 40, 30}, ImageFormat::Jpeg)};
    for (const char* name : {"colour.png", "deep colour.png", "grey.png", "deep grey.png"}) {
        SCOPED_TRACE(name);
        const Photograph photograph = Photograph::FromFile(folder.Path(name), {background});
        const VImage written = Decoded(EncodeCrops(photograph, crops)[0]);
        for (int band = 0; band < written.bands(); ++band)
            EXPECT_NEAR(written.extract_band(band).avg(),
                        written.bands() == 1 ? brightness : background[static_cast<size_t>(band)],
                        2.0);
        const std::vector<PixelImage> pixels = ReadCrops(photograph, crops); // AsImage borrows them
        const VImage read = AsImage(pixels[0]);
        for (int band = 0; band < 3; ++band)
            EXPECT_NEAR(read.extract_band(band).avg(), background[static_cast<size_t>(band)], 1.0);
    }
}

// Readers ignore regions whose stated size does not match the picture.
TEST(CropWriter, ScaledCropsStateTheirOwnSizeBesideTheirRegions)
{
    const std::string xmp =
        "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"><rdf:RDF "
        "xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\"><rdf:Description "
        "rdf:about=\"\" xmlns:mwg-rs=\"http://www.metadataworkinggroup.com/schemas/regions/\" "
        "xmlns:stDim=\"http://ns.adobe.com/xap/1.0/sType/Dimensions#\" "
        "xmlns:stArea=\"http://ns.adobe.com/xmp/sType/Area#\">"
        "<mwg-rs:Regions rdf:parseType=\"Resource\"><mwg-rs:AppliedToDimensions "
        "stDim:w=\"600\" stDim:h=\"400\" stDim:unit=\"pixel\"/><mwg-rs:RegionList><rdf:Bag>"
        "<rdf:li><rdf:Description mwg-rs:Name=\"Rex\" mwg-rs:Type=\"Pet\"><mwg-rs:Area "
        "stArea:x=\"0.5\" stArea:y=\"0.5\" stArea:w=\"0.1\" stArea:h=\"0.1\" "
        "stArea:unit=\"normalized\"/></rdf:Description></rdf:li></rdf:Bag></mwg-rs:RegionList>"
        "</mwg-rs:Regions></rdf:Description></rdf:RDF></x:xmpmeta>";
    const TempFolder folder;
    const VImage tagged = Quarters(600, 400).copy();
    vips_image_set_blob_copy(tagged.get_image(), "xmp-data", xmp.data(), xmp.size());
    tagged.write_to_file(folder.Path("a.jpg").c_str());
    std::vector<CropOutput> crops(2, Output({200, 100, 300, 200}, ImageFormat::Jpeg));
    crops[1].Size = PixelSize{150, 100};
    const auto encoded = EncodeCrops(Photograph::FromFile(folder.Path("a.jpg")), crops);
    for (size_t i = 0; i < 2; ++i) {
        const VImage crop = Decoded(encoded[i]);
        size_t size = 0;
        const auto* bytes = static_cast<const char*>(crop.get_blob("xmp-data", &size));
        const std::string written(bytes, size);
        for (const auto& [field, side] :
             {std::pair("stDim:w=\"", crop.width()), std::pair("stDim:h=\"", crop.height())})
            EXPECT_NE(written.find(field + std::to_string(side) + "\""), std::string::npos)
                << written;
    }
}

TEST(CropWriter, ScalesPixelsToTheRequestedSize)
{
    const PixelImage image = PixelsOfImage(Quarters(600, 400));
    CropOutput crop = Output({0, 0, 600, 400});
    for (const PixelSize size : {PixelSize{60, 40}, PixelSize{1200, 800}, PixelSize{1, 1}}) {
        crop.Size = size;
        const PixelImage scaled = ReadCrops(Photograph::FromPixels(ViewOf(image)), {crop})[0];
        EXPECT_EQ(scaled.Size, size);
        EXPECT_EQ(scaled.Bytes.size(),
                  static_cast<size_t>(size.Width) * static_cast<size_t>(size.Height) * 3);
    }
}

TEST(CropWriter, AppliesQualityAndStrip)
{
    const TempFolder folder;
    VImage scene = Scene(600, 400, 0.4, 0.5).copy();
    scene.set("exif-ifd0-Artist", "somebody (somebody, ASCII, 9 components, 9 bytes)");
    scene.write_to_file(folder.Path("a.jpg").c_str());
    const Photograph photograph = Photograph::FromFile(folder.Path("a.jpg"));
    std::vector<CropOutput> crops(3, Output({0, 0, 500, 300}, ImageFormat::Jpeg));
    crops[1].Quality = 20;
    crops[2].Strip = true;
    const auto encoded = EncodeCrops(photograph, crops);
    EXPECT_LT(encoded[1].size() * 2, encoded[0].size());
    EXPECT_NE(Decoded(encoded[0]).get_typeof("exif-ifd0-Artist"), 0U);
    EXPECT_EQ(Decoded(encoded[2]).get_typeof("exif-ifd0-Artist"), 0U);
}

TEST(CropWriter, ErrorsHaveKinds)
{
    using Kind = PhotoError::Kind;
    const TempFolder folder;
    Scene(900, 600, 0.4, 0.5).write_to_file(folder.Path("a.jpg").c_str());
    CutShort(folder.Path("a.jpg"), folder.Path("cut.jpg"), 0.6);
    const Photograph photograph = Photograph::FromFile(folder.Path("a.jpg"));
    const Photograph broken = Photograph::FromFile(folder.Path("cut.jpg"));
    const std::vector<CropOutput> good = {Output({0, 0, 900, 600})};
    const auto kindOfRect = [&](const PixelRect& rect) {
        return KindOf([&] { EncodeCrops(photograph, {Output(rect)}); });
    };
    EXPECT_EQ(kindOfRect({1, 0, 900, 600}), Kind::DoesNotFit);
    EXPECT_EQ(kindOfRect({-1, 0, 9, 9}), Kind::DoesNotFit);
    EXPECT_EQ(kindOfRect({5, 5, 0, 9}), Kind::DoesNotFit);
    EXPECT_EQ(KindOf([&] { ReadCrops(photograph, {Output({0, 599, 9, 2})}); }), Kind::DoesNotFit);
    std::vector<CropOutput> bad = good;
    bad[0].Quality = 0;
    EXPECT_EQ(KindOf([&] { EncodeCrops(photograph, bad); }), Kind::InvalidRequest);
    bad[0].Quality = 90;
    bad[0].Size = PixelSize{0, 4};
    EXPECT_EQ(KindOf([&] { EncodeCrops(photograph, bad); }), Kind::InvalidRequest);
    EXPECT_EQ(KindOf([&] { WriteCrops(photograph, good, {}); }), Kind::InvalidRequest);
    EXPECT_EQ(KindOf([&] { WriteCrops(photograph, good, {folder.Path("none/x.png")}); }),
              Kind::NotWritable);
    EXPECT_EQ(KindOf([&] { EncodeCrops(broken, good); }), Kind::Damaged);
    EXPECT_EQ(KindOf([&] { WriteCrops(broken, good, {folder.Path("x.png")}); }), Kind::Damaged);
    EXPECT_EQ(KindOf([&] { ReadCrops(broken, good); }), Kind::Damaged);
    try {
        EncodeCrops(broken, good);
        FAIL() << "no error";
    } catch (const PhotoError& error) { // what is wrong with the photograph, not with the crop
        EXPECT_STREQ(error.what(), "the file is cut short");
    }
}

TEST(ImageEncoder, WritesThePixelsItIsGiven)
{
    const TempFolder folder;
    for (const VImage& image : {Quarters(60, 40), Quarters(60, 40).extract_band(0),
                                Quarters(60, 40).bandjoin(Quarters(60, 40).extract_band(1))}) {
        const PixelImage pixels = PixelsOfImage(image);
        Encoding png;
        png.Format = ImageFormat::Png;
        EXPECT_TRUE(PixelsOfImage(Decoded(EncodeImage(pixels, png))).Bytes == pixels.Bytes);
        WriteImage(pixels, folder.Path("a.png"), png);
        const std::vector<uint8_t> bytes = EncodeImage(pixels, png);
        EXPECT_EQ(ReadText(folder.Path("a.png")), std::string(bytes.begin(), bytes.end()));
    }
}

TEST(ImageEncoder, CutsAndScalesDownButNeverUp)
{
    const PixelImage pixels = PixelsOfImage(Quarters(600, 400));
    Encoding encoding;
    encoding.Format = ImageFormat::Png;
    encoding.Part = PixelRect{300, 200, 300, 200}; // the last quarter
    const VImage part = Decoded(EncodeImage(pixels, encoding));
    EXPECT_EQ((PixelSize{part.width(), part.height()}), (PixelSize{300, 200}));
    EXPECT_EQ(part.getpoint(0, 0), (std::vector<double>{200, 200, 40}));
    EXPECT_EQ(part.getpoint(299, 199), (std::vector<double>{200, 200, 40}));
    encoding.LongSide = 30;
    EXPECT_EQ(Decoded(EncodeImage(pixels, encoding)).width(), 30);
    EXPECT_EQ(Decoded(EncodeImage(pixels, encoding)).height(), 20);
    encoding.LongSide = 3000;
    EXPECT_EQ(Decoded(EncodeImage(pixels, encoding)).width(), 300);
}

TEST(ImageEncoder, AppliesQualityAndEffort)
{
    const PixelImage pixels = PixelsOfImage(Scene(600, 400, 0.4, 0.5));
    const auto bytes = [&pixels](ImageFormat format, int quality, bool fast) {
        Encoding encoding;
        encoding.Format = format;
        encoding.Quality = quality;
        encoding.Fast = fast;
        return EncodeImage(pixels, encoding).size();
    };
    EXPECT_LT(bytes(ImageFormat::Jpeg, 20, false) * 2, bytes(ImageFormat::Jpeg, 90, false));
    EXPECT_LT(bytes(ImageFormat::Webp, 20, false) * 2, bytes(ImageFormat::Webp, 90, false));
    EXPECT_NE(bytes(ImageFormat::Webp, 60, true), bytes(ImageFormat::Webp, 60, false));
}

TEST(ImageEncoder, ErrorsHaveKinds)
{
    using Kind = PhotoError::Kind;
    const TempFolder folder;
    const PixelImage pixels = PixelsOfImage(Quarters(60, 40));
    const auto kindOf = [&pixels](const auto& spoil) {
        Encoding encoding;
        spoil(encoding);
        return KindOf([&] { EncodeImage(pixels, encoding); });
    };
    EXPECT_EQ(kindOf([](Encoding& e) { e.Part = PixelRect{1, 0, 60, 40}; }), Kind::DoesNotFit);
    EXPECT_EQ(kindOf([](Encoding& e) { e.Part = PixelRect{1, 1, 0, 1}; }), Kind::DoesNotFit);
    EXPECT_EQ(kindOf([](Encoding& e) { e.Quality = 101; }), Kind::InvalidRequest);
    EXPECT_EQ(kindOf([](Encoding& e) { e.LongSide = 0; }), Kind::InvalidRequest);
    EXPECT_EQ(KindOf([&] { WriteImage(pixels, folder.Path("none/x.jpg"), {}); }),
              Kind::NotWritable);
}

TEST(ImageFormat, HasOneExtensionAndKnowsTheOthers)
{
    std::set<std::string> endings;
    for (const ImageFormat format : {ImageFormat::Jpeg, ImageFormat::Png, ImageFormat::Webp,
                                     ImageFormat::Tiff, ImageFormat::Avif, ImageFormat::Heic}) {
        EXPECT_EQ(FormatOfEnding(EndingOf(format)), format);
        endings.insert(EndingOf(format));
    }
    EXPECT_EQ(endings, (std::set<std::string>{"jpg", "png", "webp", "tif", "avif", "heic"}));
    EXPECT_EQ(FormatOfEnding("JPEG"), ImageFormat::Jpeg);
    EXPECT_EQ(FormatOfEnding("Tiff"), ImageFormat::Tiff);
    EXPECT_FALSE(FormatOfEnding(""));
    EXPECT_FALSE(FormatOfEnding("gif"));
    EXPECT_FALSE(FormatOfEnding(".jpg"));
}

} // namespace
} // namespace vistaTrim::photo
