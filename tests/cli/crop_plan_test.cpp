// Which files the crops become, and which of them would get the same name.
#include "commands/crop_plan.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "commands/name_clashes.h"
#include "options/program_error.h"
#include "photo/sample_pictures.h"

namespace vistaTrim::cli {
namespace {

using namespace photo;

using Words = std::vector<std::string>;

ListedPhoto PhotoAt(const std::string& path, const std::string& inside = "")
{
    return {path, inside, "", nullptr};
}

// Two crops of a photograph of pixels: the best wide one and the second square one.
PhotoResult TwoCrops()
{
    PhotoResult result;
    Crop wide;
    wide.Rect = {10, 20, 160, 90};
    Crop square;
    square.Rect = {5, 6, 70, 70};
    result.Found.Crops = {wide, square};
    result.Labels = {{"wide", "16x9", 1, {}}, {"square", "1x1", 2, {}}};
    return result;
}

std::vector<PlannedFile> Plan(const Options& options, const PhotoResult& result)
{
    static const PixelImage kPixels{{200, 150}, 3, std::vector<uint8_t>(200 * 150 * 3)};
    return PlanCropFiles(options, PhotoAt("in/a.b.jpg", "sub"),
                         Photograph::FromPixels(ViewOf(kPixels)), result);
}

Words Paths(const std::vector<PlannedFile>& files)
{
    Words paths;
    for (const PlannedFile& file : files)
        paths.push_back(file.Path);
    return paths;
}

TEST(SizesOfCrop, AreItsOwnUnlessRequestedOtherwise)
{
    using Sizes = std::vector<PixelSize>;
    const CropLabel plain;
    CropLabel filled;
    filled.Fill = {320, 180};
    CropFileOptions how;
    EXPECT_EQ(SizesOfCrop({1600, 900}, plain, how), (Sizes{{1600, 900}}));
    EXPECT_EQ(SizesOfCrop({1600, 900}, filled, how), (Sizes{{320, 180}}));
    how.ResizeTo = {800, 800};
    EXPECT_EQ(SizesOfCrop({1600, 900}, plain, how), (Sizes{{800, 450}}));
    how.ResizeTo.reset();
    how.Widths = {400, 1600, 5000, 6000};
    EXPECT_EQ(SizesOfCrop({1600, 900}, plain, how), (Sizes{{400, 225}, {1600, 900}}));
    EXPECT_EQ(SizesOfCrop({1601, 899}, plain, how), (Sizes{{400, 225}, {1600, 898}, {1601, 899}}));
    how.Upscale = true;
    EXPECT_EQ(SizesOfCrop({1600, 900}, plain, how),
              (Sizes{{400, 225}, {1600, 900}, {5000, 2813}, {6000, 3375}}));
    how.Widths = {1};
    EXPECT_EQ(SizesOfCrop({1600, 9}, plain, how), (Sizes{{1, 1}})); // the height is never 0
}

TEST(CropPlan, HasAFileForEachCropAndSize)
{
    Options options;
    options.Output = "out";
    options.CropFiles.Format = ImageFormat::Webp;
    options.CropFiles.Strip = true;
    std::vector<PlannedFile> files = Plan(options, TwoCrops());
    EXPECT_EQ(Paths(files), (Words{"out/sub/a.b-wide.webp", "out/sub/a.b-square-2.webp"}));
    EXPECT_EQ(files[1].Crop, 1U);
    EXPECT_EQ(files[1].Size, (PixelSize{70, 70}));
    EXPECT_EQ(files[1].Output.Rect, (PixelRect{5, 6, 70, 70}));
    EXPECT_FALSE(files[1].Output.Size); // nothing is scaled
    EXPECT_EQ(files[1].Output.Format, ImageFormat::Webp);
    EXPECT_TRUE(files[1].Output.Strip);

    options.CropFiles.Format.reset(); // as the photograph: pixels become PNG
    options.CropFiles.Strip = false;
    options.CropFiles.Widths = {80, 160};
    files = Plan(options, TwoCrops());
    EXPECT_EQ(Paths(files), (Words{"out/sub/a.b-wide-80.png", "out/sub/a.b-wide-160.png",
                                   "out/sub/a.b-square-2-70.png"}));
    EXPECT_EQ(files[0].Crop, 0U);
    EXPECT_EQ(files[0].Output.Size, (PixelSize{80, 45}));
    EXPECT_FALSE(files[1].Output.Size);
    EXPECT_FALSE(files[0].Output.Strip);
}

TEST(CropPlan, NamesFollowTheTemplateWithEveryField)
{
    Options options;
    options.Output = "out";
    options.CropFiles.Name = "{ratio}/{stem}_{shape}_{rank}_{width}x{height}";
    options.CropFiles.ResizeTo = PixelSize{32, 32};
    EXPECT_EQ(Paths(Plan(options, TwoCrops())),
              (Words{"out/sub/16x9/a.b_wide_1_32x18.png", "out/sub/1x1/a.b_square_2_32x32.png"}));
    options.CropFiles.Name = "{stem}.{extension}-{rank}";
    EXPECT_EQ(Paths(Plan(options, TwoCrops())),
              (Words{"out/sub/a.b.jpg-1.png", "out/sub/a.b.jpg-2.png"}));
    options.CropFiles.Name = "{ratio}/{stem}_{shape}_{rank}_{width}x{height}";
    // Without a name of its own, a shape is called by its ratio.
    PhotoResult result = TwoCrops();
    result.Labels = {{"", "16x9", 1, {}}, {"", "1x1", 2, {}}};
    options.CropFiles.Name = "{shape}";
    EXPECT_EQ(Paths(Plan(options, result)), (Words{"out/sub/16x9.png", "out/sub/1x1.png"}));
    options.CropFiles.Name.clear();
    EXPECT_EQ(Paths(Plan(options, result)), (Words{"out/sub/a.b-1.png", "out/sub/a.b-2.png"}));
}

TEST(CropPlan, RefusesTwoFilesOfOneName)
{
    Options options;
    options.Output = "out";
    options.CropFiles.Name = "{stem}";
    try {
        Plan(options, TwoCrops());
        FAIL() << "no error";
    } catch (const ProgramError& error) {
        EXPECT_NE(std::string(error.what()).find("sub/a.b.png"), std::string::npos);
    }
}

TEST(CropPlan, KnowsTheLabelsBeforeThePhotographIsRead)
{
    Options options;
    options.Request.Top = 3;
    std::vector<CropLabel> labels = ExpectedLabels(options, 20);
    ASSERT_EQ(labels.size(), 3U);
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(labels[i].Shape, "");
        EXPECT_EQ(labels[i].Ratio, "?"); // any of several
        EXPECT_EQ(labels[i].Rank, static_cast<int32_t>(i) + 1);
    }
    EXPECT_EQ(ExpectedLabels(options, 2).size(), 2U);
    options.Shapes = {*ShapeOfRatio("21:9")};
    EXPECT_EQ(ExpectedLabels(options, 1)[0].Ratio, "21x9");
    options.Shapes.push_back(ShapeOfSize({40, 30}));
    EXPECT_EQ(ExpectedLabels(options, 1)[0].Ratio, "?");

    options.EachShape = true;
    options.Request.Top = 2;
    labels = ExpectedLabels(options, 20);
    ASSERT_EQ(labels.size(), 4U);
    EXPECT_EQ(labels[1].Shape, "21x9");
    EXPECT_EQ(labels[1].Rank, 2);
    EXPECT_FALSE(labels[1].Fill);
    EXPECT_EQ(labels[2].Shape, "40x30");
    EXPECT_EQ(labels[2].Ratio, "4x3");
    EXPECT_EQ(labels[2].Rank, 1);
    EXPECT_EQ(labels[2].Fill, (PixelSize{40, 30}));
}

TEST(CropPlan, ExpectedNamesHaveQuestionMarksForWhatIsUnknown)
{
    Options options;
    const ListedPhoto photo = PhotoAt("in/a.jpg", "sub");
    const CropLabel plain{"wide", "16x9", 1, {}};
    CropLabel filled = plain;
    filled.Fill = {320, 180};
    EXPECT_EQ(ExpectedNames(options, photo, plain), (Words{"sub/a-wide"}));
    options.CropFiles.Name = "{stem}-{width}x{height}";
    EXPECT_EQ(ExpectedNames(options, photo, plain), (Words{"sub/a-?x?"}));
    EXPECT_EQ(ExpectedNames(options, photo, filled), (Words{"sub/a-320x180"}));
    options.CropFiles.ResizeTo = PixelSize{50, 50};
    EXPECT_EQ(ExpectedNames(options, photo, filled), (Words{"sub/a-?x?"}));
    options.CropFiles.ResizeTo.reset();
    options.CropFiles.Widths = {100, 200};
    EXPECT_EQ(ExpectedNames(options, photo, filled), (Words{"sub/a-100x?100", "sub/a-200x?200"}));
}

TEST(ClaimedNames, BelongToThePhotographThatCameFirst)
{
    PlannedFile one;
    one.Path = "out/a.jpg";
    PlannedFile two;
    two.Path = "out/b.jpg";
    ClaimedNames names;
    names.Claim({one}, "first");
    names.Claim({one}, "first"); // its own
    try {
        names.Claim({two, one}, "second");
        FAIL() << "no error";
    } catch (const ProgramError& error) {
        EXPECT_NE(std::string(error.what()).find("out/a.jpg"), std::string::npos);
        EXPECT_NE(std::string(error.what()).find("first"), std::string::npos);
    }
    names.Claim({two}, "third"); // nothing of the second was claimed
}

Words Clashes(const Options& options, const std::vector<ListedPhoto>& photos)
{
    return NameClashes(options, photos, [&options](size_t) { return ExpectedLabels(options, 20); });
}

TEST(NameClashes, AreFoundWithinAndBetweenPhotographs)
{
    Options options;
    options.Output = "out";
    options.Request.Top = 2;
    const std::vector<ListedPhoto> photos = {PhotoAt("x/a.jpg"), PhotoAt("y/a.png"),
                                             PhotoAt("y/b.jpg"), PhotoAt("z/a.jpg", "z")};
    // Names clash whatever the ending, because the content of the file decides the crop's ending.
    const Words between = Clashes(options, photos);
    ASSERT_EQ(between.size(), 1U);
    EXPECT_EQ(between[0], "y/a.png: its files would have the same names as those of x/a.jpg");
    EXPECT_TRUE(Clashes(options, {photos[0], photos[2], photos[3]}).empty());

    options.CropFiles.Name = "{stem}";
    const Words within = Clashes(options, {photos[0]});
    ASSERT_EQ(within.size(), 1U);
    EXPECT_EQ(within[0].find("x/a.jpg: two of its crops would have the same name a;"), 0U)
        << within[0];
    // A photograph with an error writes nothing.
    ListedPhoto failed = PhotoAt("y/a.jpg");
    failed.Error = "empty";
    options.CropFiles.Name.clear();
    EXPECT_TRUE(Clashes(options, {failed, photos[0]}).empty());
    EXPECT_TRUE(Clashes(options, {photos[0], failed}).empty());
}

TEST(NameClashes, WithInputPhotographsCountOnlyWithForce)
{
    const TempFolder folder;
    Options options;
    options.Output = folder.Path("./");
    options.Request.Top = 1;
    for (const char* name : {"a.jpg", "a-1.jpg", "b.tiff", "b-1.tif", "c", "c-1.png"})
        WriteText(folder.Path(name), "");
    const auto clashing = [&](const char* photo, const char* other) {
        return !Clashes(options, {PhotoAt(folder.Path(photo)), PhotoAt(folder.Path(other))})
                    .empty();
    };
    EXPECT_FALSE(clashing("a.jpg", "a-1.jpg")); // refused when it is written
    options.Force = true;
    EXPECT_TRUE(clashing("a.jpg", "a-1.jpg"));
    EXPECT_TRUE(clashing("b.tiff", "b-1.tif")); // by the ending that the crop gets
    EXPECT_TRUE(clashing("c", "c-1.png"));      // no known ending: PNG
    EXPECT_FALSE(clashing("a.jpg", "b.tiff"));
    options.CropFiles.Format = ImageFormat::Webp;
    EXPECT_FALSE(clashing("a.jpg", "a-1.jpg"));
}

TEST(CanonicalPath, IsTheSameForEveryWayToAFile)
{
    const TempFolder folder;
    WriteText(folder.Path("a"), "");
    std::filesystem::create_symlink(folder.Path("a"), folder.Path("link"));
    EXPECT_EQ(CanonicalPath(folder.Path("link")), CanonicalPath(folder.Path("./b/../a")));
    EXPECT_NE(CanonicalPath(folder.Path("a")), CanonicalPath(folder.Path("none")));
}

} // namespace
} // namespace vistaTrim::cli
