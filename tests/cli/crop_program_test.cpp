// The program's `crop`, `maps` and `report`.
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sstream>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "photo/sample_pictures.h"
#include "run_program.h"

namespace vistaTrim::cli {
namespace {

using namespace photo;

using vips::VImage;

VImage Open(const std::string& path)
{
    return VImage::new_from_file(path.c_str());
}

// The whole photograph as the only crop, so that the position of every colour is known.
std::vector<std::string> WholeAsCrop(const std::string& photo, const std::string& folder,
                                     std::vector<std::string> more = {})
{
    more.insert(more.begin(),
                {"crop", photo, "-o", folder, "--aspect", "3:2", "--scale", "1", "--top", "1"});
    return more;
}

void ExpectQuarters(const VImage& image, double tolerance)
{
    const auto means = QuarterMeans(image);
    for (size_t quarter = 0; quarter < 4; ++quarter)
        for (size_t band = 0; band < 3; ++band)
            EXPECT_NEAR(means[quarter][band], kQuarterColours[quarter][band], tolerance);
}

TEST(Crop, IsCutFromTheFullResolutionWhereSuggestPlacedIt)
{
    const TempFolder folder;
    const VImage scene = Scene(1801, 1203, 0.3, 0.6);
    scene.write_to_file(folder.Path("a.png").c_str());
    const auto suggested = nlohmann::json::parse(
        RunProgram({"suggest", "--json", "--top", "3", folder.Path("a.png")}).Out);
    const Outcome outcome =
        RunProgram({"crop", "--top", "3", folder.Path("a.png"), "-o", folder.Path("out")});
    ASSERT_EQ(outcome.Status, 0) << outcome.Err;
    EXPECT_EQ(outcome.Out, folder.Path("out/a-1.png") + "\n" + folder.Path("out/a-2.png") + "\n" +
                               folder.Path("out/a-3.png") + "\n");
    for (size_t i = 0; i < 3; ++i) {
        const auto& crop = suggested["crops"][i];
        const VImage expected =
            scene.extract_area(crop["x"], crop["y"], crop["width"], crop["height"]);
        const VImage written = Open(folder.Path("out/a-" + std::to_string(i + 1) + ".png"));
        ASSERT_EQ(written.width(), expected.width());
        ASSERT_EQ(written.height(), expected.height());
        EXPECT_EQ((written - expected).abs().max(), 0.0); // every pixel unchanged
    }
}

TEST(Crop, IsUprightFromAllEightOrientations)
{
    const TempFolder folder;
    for (int orientation = 1; orientation <= 8; ++orientation) {
        SCOPED_TRACE(orientation);
        StoredWithOrientation(Quarters(900, 600), orientation)
            .write_to_file(folder.Path("a.jpg").c_str());
        const Outcome outcome =
            RunProgram(WholeAsCrop(folder.Path("a.jpg"), folder.Path("out"), {"--force"}));
        ASSERT_EQ(outcome.Status, 0) << outcome.Err;
        const VImage written = Open(folder.Path("out/a-1.jpg"));
        EXPECT_EQ(written.width(), 900);
        EXPECT_EQ(written.height(), 600);
        EXPECT_EQ(vips_image_get_orientation(written.get_image()), 1);
        ExpectQuarters(written, 2.0);
        // Several crops are read differently from one.
        const Outcome several = RunProgram({"crop", folder.Path("a.jpg"), "-o", folder.Path("two"),
                                            "--size", "899x599", "--force", "--top", "2"});
        ASSERT_EQ(several.Status, 0) << several.Err;
        ExpectQuarters(Open(folder.Path("two/a-2.jpg")), 3.0);
    }
}

TEST(Crop, KeepsProfileDepthAndBands)
{
    const TempFolder folder;
    const VImage quarters = Quarters(900, 600);
    const VImage wide =
        quarters.icc_transform("p3", VImage::option()->set("input_profile", "srgb"));
    const VImage deep =
        (quarters.cast(VIPS_FORMAT_USHORT) * 257)
            .cast(VIPS_FORMAT_USHORT)
            .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_RGB16));
    const VImage ink =
        quarters.icc_transform("cmyk", VImage::option()->set("input_profile", "srgb"));
    const VImage alpha = (VImage::black(900, 600) + 130).cast(VIPS_FORMAT_UCHAR);
    wide.write_to_file(folder.Path("wide.jpg").c_str());
    deep.write_to_file(folder.Path("deep.png").c_str());
    deep.write_to_file(folder.Path("deep.tif").c_str());
    ink.write_to_file(folder.Path("ink.jpg").c_str());
    quarters.colourspace(VIPS_INTERPRETATION_B_W).write_to_file(folder.Path("grey.png").c_str());
    quarters.bandjoin(alpha).write_to_file(folder.Path("clear.png").c_str());
    for (const char* name :
         {"wide.jpg", "deep.png", "deep.tif", "ink.jpg", "grey.png", "clear.png"}) {
        SCOPED_TRACE(name);
        const Outcome outcome =
            RunProgram(WholeAsCrop(folder.Path(name), folder.Path("out"), {"--force"}));
        ASSERT_EQ(outcome.Status, 0) << outcome.Err;
        const std::string stem = std::filesystem::path(name).stem().string();
        const std::string ending = std::filesystem::path(name).extension().string();
        const VImage written = Open(folder.Path("out/" + stem + "-1" + ending));
        const VImage stored = Open(folder.Path(name));
        EXPECT_EQ(written.bands(), stored.bands());
        EXPECT_EQ(written.format(), stored.format());
        EXPECT_EQ(written.interpretation(), stored.interpretation());
        ASSERT_EQ(written.get_typeof(VIPS_META_ICC_NAME), stored.get_typeof(VIPS_META_ICC_NAME));
        if (stored.get_typeof(VIPS_META_ICC_NAME) != 0) {
            size_t before = 0;
            size_t after = 0;
            const void* was = stored.get_blob(VIPS_META_ICC_NAME, &before);
            const void* is = written.get_blob(VIPS_META_ICC_NAME, &after);
            ASSERT_EQ(before, after);
            EXPECT_EQ(memcmp(was, is, before), 0);
        }
        const auto was = QuarterMeans(stored);
        const auto is = QuarterMeans(written);
        const double level = stored.format() == VIPS_FORMAT_USHORT ? 257.0 : 1.0;
        for (size_t quarter = 0; quarter < 4; ++quarter)
            for (size_t band = 0; band < was[quarter].size(); ++band)
                EXPECT_NEAR(is[quarter][band], was[quarter][band], 2.0 * level);
    }
}

TEST(Crop, IsWrittenInEveryFormat)
{
    const TempFolder folder;
    const VImage quarters = Quarters(900, 600);
    const VImage alpha = (VImage::xyz(900, 600).extract_band(0) < 450).cast(VIPS_FORMAT_UCHAR);
    const VImage ink =
        quarters.icc_transform("cmyk", VImage::option()->set("input_profile", "srgb"));
    quarters.bandjoin(alpha).write_to_file(folder.Path("clear.png").c_str());
    quarters.colourspace(VIPS_INTERPRETATION_B_W)
        .bandjoin(alpha)
        .write_to_file(folder.Path("greyclear.png").c_str());
    ink.write_to_file(folder.Path("ink.jpg").c_str());
    for (const char* format : {"jpg", "png", "webp", "tif", "avif"}) {
        SCOPED_TRACE(format);
        for (const char* name : {"clear.png", "greyclear.png", "ink.jpg"}) {
            const Outcome outcome = RunProgram(WholeAsCrop(
                folder.Path(name), folder.Path("out"),
                {"--force", "--format", format, "--background", "#102030", "--resize", "90x90"}));
            ASSERT_EQ(outcome.Status, 0) << outcome.Err;
        }
        const std::string ending = std::string("-1.") + format;
        const VImage clear = Open(folder.Path("out/clear" + ending));
        EXPECT_EQ(clear.width(), 90);
        EXPECT_EQ(clear.height(), 60);
        const auto means = QuarterMeans(clear);
        EXPECT_NEAR(means[0][0], 200.0, 6.0);
        if (std::string(format) == "jpg") { // the only one without transparency
            EXPECT_EQ(clear.bands(), 3);
            EXPECT_NEAR(means[1][0], 0x10, 6.0);
            EXPECT_NEAR(means[1][2], 0x30, 6.0);
        } else {
            EXPECT_EQ(clear.bands(), 4);
            EXPECT_NEAR(means[1][3], 0.0, 2.0);
        }
        const VImage inked = Open(folder.Path("out/ink" + ending));
        // The program can read what it wrote, with whichever module that needs.
        EXPECT_EQ(RunProgram({"suggest", folder.Path("out/ink" + ending)}).Status, 0);
        const bool keepsInk = std::string(format) == "jpg" || std::string(format) == "tif";
        EXPECT_EQ(inked.interpretation() == VIPS_INTERPRETATION_CMYK, keepsInk);
        if (!keepsInk) {
            EXPECT_NEAR(QuarterMeans(inked)[1][1], 160.0, 30.0); // green is green
        }
    }
}

VImage WithMetadata(const VImage& image)
{
    VImage tagged = image.copy();
    tagged.set("exif-ifd0-Make", "Testers (Testers, ASCII, 8 components, 8 bytes)");
    tagged.set("exif-ifd3-GPSLatitude",
               "47/1 30/1 0/1 (47, 30,  0, Rational, 3 components, 24 bytes)");
    return tagged;
}

TEST(Crop, KeepsMetadataUnlessStripped)
{
    const TempFolder folder;
    VImage tagged = WithMetadata(
        Quarters(900, 600).icc_transform("p3", VImage::option()->set("input_profile", "srgb")));
    tagged.write_to_file(folder.Path("a.jpg").c_str());
    ASSERT_NE(Open(folder.Path("a.jpg")).get_typeof("exif-ifd0-Make"), 0U);

    ASSERT_EQ(RunProgram(WholeAsCrop(folder.Path("a.jpg"), folder.Path("kept"))).Status, 0);
    const VImage kept = Open(folder.Path("kept/a-1.jpg"));
    EXPECT_NE(kept.get_typeof("exif-ifd0-Make"), 0U);
    EXPECT_NE(kept.get_typeof("exif-ifd3-GPSLatitude"), 0U);
    EXPECT_NE(kept.get_typeof(VIPS_META_ICC_NAME), 0U);

    ASSERT_EQ(
        RunProgram(WholeAsCrop(folder.Path("a.jpg"), folder.Path("bare"), {"--strip"})).Status, 0);
    const VImage bare = Open(folder.Path("bare/a-1.jpg"));
    EXPECT_EQ(bare.get_typeof("exif-ifd0-Make"), 0U);
    EXPECT_EQ(bare.get_typeof("exif-ifd3-GPSLatitude"), 0U);
    EXPECT_NE(bare.get_typeof(VIPS_META_ICC_NAME), 0U); // colours are unchanged
    EXPECT_EQ(ReadText(folder.Path("bare/a-1.jpg")).find("Testers"), std::string::npos);
}

// Cameras embed a thumbnail of the whole; it would show what was cropped away.
TEST(Crop, DropsTheEmbeddedThumbnail)
{
    const TempFolder folder;
    VImage tagged = WithMetadata(Quarters(900, 600));
    VipsBlob* small = Quarters(90, 60).jpegsave_buffer(VImage::option()->set("strip", true));
    size_t size = 0;
    const void* bytes = vips_blob_get(small, &size);
    vips_image_set_blob_copy(tagged.get_image(), "jpeg-thumbnail-data", bytes, size);
    vips_area_unref(VIPS_AREA(small));
    tagged.write_to_file(folder.Path("a.jpg").c_str());
    ASSERT_NE(Open(folder.Path("a.jpg")).get_typeof("jpeg-thumbnail-data"), 0U);
    ASSERT_EQ(RunProgram(WholeAsCrop(folder.Path("a.jpg"), folder.Path("out"))).Status, 0);
    EXPECT_EQ(Open(folder.Path("out/a-1.jpg")).get_typeof("jpeg-thumbnail-data"), 0U);
}

TEST(Crop, NeverReplacesAFileWithoutForce)
{
    const TempFolder folder;
    Quarters(900, 600).write_to_file(folder.Path("a.jpg").c_str());
    WriteText(folder.Path("a-2.jpg"), "precious");
    const std::vector<std::string> arguments = {
        "crop", folder.Path("a.jpg"), "-o", folder.Path(""), "--top", "2"};
    const Outcome refused = RunProgram(arguments);
    EXPECT_EQ(refused.Status, 1);
    EXPECT_NE(refused.Err.find("a-2.jpg exists already"), std::string::npos) << refused.Err;
    EXPECT_EQ(ReadText(folder.Path("a-2.jpg")), "precious");
    EXPECT_EQ(folder.Files(),
              (std::vector<std::string>{"a-2.jpg", "a.jpg"})); // nothing half written
    std::vector<std::string> forced = arguments;
    forced.push_back("--force");
    EXPECT_EQ(RunProgram(forced).Status, 0);
    EXPECT_GT(Open(folder.Path("a-2.jpg")).width(), 100);
}

TEST(Crop, LeavesNoFilesForABrokenPhotograph)
{
    const TempFolder folder;
    // Large enough for a reduced version to be read from its first half.
    Scene(3000, 2000, 0.3, 0.3).write_to_file(folder.Path("a.jpg").c_str());
    for (const double share : {0.1, 0.5, 0.99}) {
        CutShort(folder.Path("a.jpg"), folder.Path("cut.jpg"), share);
        const Outcome outcome =
            RunProgram({"crop", folder.Path("cut.jpg"), "-o", folder.Path("out")});
        EXPECT_EQ(outcome.Status, 1);
        EXPECT_NE(outcome.Err.find("cut.jpg: "), std::string::npos);
        EXPECT_EQ(folder.Files(), (std::vector<std::string>{"a.jpg", "cut.jpg"}));
    }
}

TEST(Crop, RejectsNamesThatClash)
{
    const TempFolder folder;
    std::filesystem::create_directories(folder.Path("x"));
    std::filesystem::create_directories(folder.Path("y"));
    Quarters(300, 200).write_to_file(folder.Path("x/a.jpg").c_str());
    Quarters(300, 200).write_to_file(folder.Path("y/a.jpg").c_str());
    const Outcome outcome = RunProgram({"crop", folder.Path("x/a.jpg"), folder.Path("y/a.jpg"),
                                        "-o", folder.Path("out"), "--top", "1", "--force"});
    EXPECT_EQ(outcome.Status, 1);
    EXPECT_NE(outcome.Err.find("y/a.jpg: its files would have the same names"), std::string::npos);
    // A folder read recursively keeps its structure, so nothing clashes.
    const Outcome walked =
        RunProgram({"crop", "-r", folder.Path(""), "-o", folder.Path("tree"), "--top", "1"});
    EXPECT_TRUE(std::filesystem::exists(folder.Path("tree/x/a-1.jpg"))) << walked.Err;
    EXPECT_TRUE(std::filesystem::exists(folder.Path("tree/y/a-1.jpg")));
}

// In the same folder the crop of p.jpg would be p-1.jpg, which is a photograph of the run.
TEST(Crop, NeverReplacesAPhotographOfTheSameRun)
{
    const TempFolder folder;
    Quarters(900, 600).write_to_file(folder.Path("p.jpg").c_str());
    Quarters(600, 400).write_to_file(folder.Path("p-1.jpg").c_str());
    const Outcome outcome = RunProgram(
        {"crop", "--force", "--top", "1", "-j", "1", folder.Path("."), "-o", folder.Path(".")});
    EXPECT_EQ(outcome.Status, 1);
    EXPECT_NE(outcome.Err.find("p-1.jpg would replace one of the photographs"), std::string::npos)
        << outcome.Err;
    EXPECT_EQ(Open(folder.Path("p-1.jpg")).width(), 600);
    EXPECT_FALSE(std::filesystem::exists(folder.Path("p-1-1.jpg"))); // nothing was written
}

TEST(Crop, FolderWithoutPhotographsClaimsNoName)
{
    const TempFolder folder;
    std::filesystem::create_directory(folder.Path("a"));
    Quarters(900, 600).write_to_file(folder.Path("a.jpg").c_str());
    const Outcome outcome = RunProgram(
        {"crop", "--top", "1", folder.Path("a"), folder.Path("a.jpg"), "-o", folder.Path("out")});
    EXPECT_EQ(outcome.Status, 1); // the empty folder
    EXPECT_TRUE(std::filesystem::exists(folder.Path("out/a-1.jpg"))) << outcome.Err;
}

TEST(Crop, KilledRunLeavesOnlyCompleteFilesAndResumes)
{
    const TempFolder folder;
    std::filesystem::create_directory(folder.Path("in"));
    Scene(1800, 1200, 0.3, 0.6).write_to_file(folder.Path("in/0.jpg").c_str());
    for (int i = 1; i < 12; ++i)
        std::filesystem::copy_file(folder.Path("in/0.jpg"),
                                   folder.Path("in/" + std::to_string(i) + ".jpg"));
    const std::vector<std::string> arguments = {
        "crop", "-j", "2", folder.Path("in"), "-o", folder.Path("out"), "--top", "2"};
    const pid_t process = BeginProgram(arguments);
    for (int i = 0; i < 30000 && !std::filesystem::exists(folder.Path("out/1-1.jpg")); ++i)
        usleep(2000);
    kill(process, SIGKILL);
    WaitFor(process);
    int whole = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder.Path("out"))) {
        if (entry.path().filename().string()[0] == '.')
            continue;
        const VImage image = VImage::new_from_file(
            entry.path().c_str(), VImage::option()->set("fail_on", VIPS_FAIL_ON_TRUNCATED));
        EXPECT_GT(image.avg(), 0.0);
        ++whole;
    }
    EXPECT_GE(whole, 2);
    EXPECT_LT(whole, 24);
    std::vector<std::string> resumed = arguments;
    resumed.push_back("--resume");
    const auto before = std::filesystem::last_write_time(folder.Path("out/1-1.jpg"));
    const Outcome outcome = RunProgram(resumed);
    EXPECT_EQ(std::filesystem::last_write_time(folder.Path("out/1-1.jpg")), before);
    for (int i = 0; i < 12; ++i)
        for (const char* rank : {"-1.jpg", "-2.jpg"})
            EXPECT_TRUE(std::filesystem::exists(folder.Path("out/" + std::to_string(i) + rank)))
                << i << rank << " " << outcome.Err;
}

// Ranks 2 and 4 of five exist, with other contents; ranks 1, 3 and 5 are missing.
TEST(Crop, ResumedWritesOnlyWhatIsMissing)
{
    const TempFolder folder;
    Scene(900, 600, 0.3, 0.6).write_to_file(folder.Path("a.jpg").c_str());
    const auto crop = [&folder](const std::string& output, const std::vector<std::string>& more) {
        std::vector<std::string> arguments = {"crop", folder.Path("a.jpg"), "-o",
                                              folder.Path(output)};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunProgram(arguments);
    };
    ASSERT_EQ(crop("whole", {}).Status, 0);
    std::filesystem::create_directory(folder.Path("out"));
    WriteText(folder.Path("out/a-2.jpg"), "second");
    WriteText(folder.Path("out/a-4.jpg"), "fourth");

    EXPECT_EQ(crop("out", {}).Status, 1); // without --resume they are in the way
    EXPECT_FALSE(std::filesystem::exists(folder.Path("out/a-1.jpg")));

    const Outcome resumed = crop("out", {"--resume"});
    EXPECT_EQ(resumed.Status, 0) << resumed.Err;
    EXPECT_EQ(resumed.Out, folder.Path("out/a-1.jpg") + "\n" + folder.Path("out/a-3.jpg") + "\n" +
                               folder.Path("out/a-5.jpg") + "\n");
    EXPECT_EQ(ReadText(folder.Path("out/a-2.jpg")), "second");
    EXPECT_EQ(ReadText(folder.Path("out/a-4.jpg")), "fourth");
    for (const char* name : {"/a-1.jpg", "/a-3.jpg", "/a-5.jpg"})
        EXPECT_TRUE(ReadText(folder.Path(std::string("out") + name)) ==
                    ReadText(folder.Path(std::string("whole") + name)))
            << name;

    const Outcome again = crop("out", {"--resume"});
    EXPECT_EQ(again.Status, 0) << again.Err;
    EXPECT_EQ(again.Out, "");
}

// An interrupted run writes the first crop last, but a person can delete any of them.
TEST(Crop, ResumedRestoresALaterCrop)
{
    const TempFolder folder;
    Scene(900, 600, 0.3, 0.6).write_to_file(folder.Path("a.png").c_str());
    const std::vector<std::string> arguments = {
        "crop", folder.Path("a.png"), "-o", folder.Path("out"), "--top", "3", "--resume"};
    ASSERT_EQ(RunProgram(arguments).Status, 0);
    const std::string second = ReadText(folder.Path("out/a-2.png"));
    std::filesystem::remove(folder.Path("out/a-2.png"));
    const Outcome resumed = RunProgram(arguments);
    EXPECT_EQ(resumed.Status, 0) << resumed.Err;
    EXPECT_EQ(resumed.Out, folder.Path("out/a-2.png") + "\n");
    EXPECT_TRUE(ReadText(folder.Path("out/a-2.png")) == second);
}

TEST(Crop, ResumedInAnotherFormatWritesThatFormat)
{
    const TempFolder folder;
    Scene(900, 600, 0.3, 0.6).write_to_file(folder.Path("a.jpg").c_str());
    std::vector<std::string> arguments = {
        "crop", folder.Path("a.jpg"), "-o", folder.Path("out"), "--top", "2", "--resume"};
    ASSERT_EQ(RunProgram(arguments).Status, 0);
    arguments.insert(arguments.end(), {"--format", "webp"});
    const Outcome resumed = RunProgram(arguments);
    EXPECT_EQ(resumed.Status, 0) << resumed.Err;
    EXPECT_EQ(resumed.Out, folder.Path("out/a-1.webp") + "\n" + folder.Path("out/a-2.webp") + "\n");
}

// A photograph with fewer crops than requested has nothing missing.
TEST(Crop, ResumedAcceptsFewerCropsThanRequested)
{
    const TempFolder folder;
    Quarters(900, 600).write_to_file(folder.Path("a.jpg").c_str());
    const std::vector<std::string> arguments = {"crop",     folder.Path("a.jpg"),
                                                "-o",       folder.Path("out"),
                                                "--aspect", "3:2",
                                                "--scale",  "1",
                                                "--top",    "5",
                                                "--resume"};
    const Outcome first = RunProgram(arguments);
    ASSERT_EQ(first.Status, 0) << first.Err;
    ASSERT_EQ(first.Out, folder.Path("out/a-1.jpg") + "\n");
    const auto before = std::filesystem::last_write_time(folder.Path("out/a-1.jpg"));
    const Outcome again = RunProgram(arguments);
    EXPECT_EQ(again.Status, 0) << again.Err;
    EXPECT_EQ(again.Out, "");
    EXPECT_EQ(std::filesystem::last_write_time(folder.Path("out/a-1.jpg")), before);
}

TEST(Maps, AreWrittenAsPicturesOfTheWorkingSize)
{
    const TempFolder folder;
    Scene(900, 600, 0.3, 0.6).write_to_file(folder.Path("a.jpg").c_str());
    const Outcome outcome = RunProgram({"maps", folder.Path("a.jpg"), "-o", folder.Path("out")});
    EXPECT_EQ(outcome.Status, 0) << outcome.Err;
    for (const char* name :
         {"ContrastMap", "SaliencyMap", "ContrastMask", "ColorContrastMap", "PeakMap", "EdgeMap",
          "SideMapTop", "SideMapBottom", "SideMapLeft", "SideMapRight"}) {
        const VImage map = Open(folder.Path("out/a-" + std::string(name) + ".png"));
        EXPECT_EQ(map.width(), 640);
        EXPECT_EQ(map.height(), 427);
        EXPECT_EQ(map.bands(), 1);
        EXPECT_EQ(map.max(), 255.0);
    }
    // The disc stands out from its background.
    const VImage contrast = Open(folder.Path("out/a-ColorContrastMap.png"));
    EXPECT_GT(contrast.getpoint(192, 256)[0], 100.0);
    EXPECT_LT(contrast.getpoint(600, 40)[0], 60.0);
    EXPECT_EQ(RunProgram({"maps", folder.Path("a.jpg"), "-o", folder.Path("out")}).Status, 1);
}

TEST(Report, IsOneSelfContainedPage)
{
    const TempFolder folder;
    Scene(900, 600, 0.3, 0.6).write_to_file(folder.Path("a <b>&\".jpg").c_str());
    WriteText(folder.Path("broken.jpg"), "no picture");
    const std::vector<std::string> arguments = {"report", folder.Path("a <b>&\".jpg"),
                                                folder.Path("broken.jpg"), "-o",
                                                folder.Path("r.html")};
    const Outcome outcome = RunProgram(arguments);
    EXPECT_EQ(outcome.Status, 1); // one photograph is broken
    const std::string page = ReadText(folder.Path("r.html"));
    EXPECT_EQ(page.find("<!DOCTYPE html>"), 0U);
    EXPECT_NE(page.find("</html>"), std::string::npos);
    // The name of SVG's namespace looks like an address, but no browser opens it.
    const std::string svgNamespace = "http://www.w3.org/2000/svg";
    std::string rest = page;
    for (size_t at; (at = rest.find(svgNamespace)) != std::string::npos;)
        rest.erase(at, svgNamespace.size());
    EXPECT_EQ(rest.find("http://"), std::string::npos);
    EXPECT_EQ(rest.find("https://"), std::string::npos);
    EXPECT_EQ(page.find("a <b>"), std::string::npos);
    EXPECT_NE(page.find("a &lt;b&gt;&amp;&quot;.jpg"), std::string::npos);
    EXPECT_NE(page.find("not a picture"), std::string::npos);
    EXPECT_EQ(RunProgram(arguments).Err.find("r.html exists already") != std::string::npos, true);
    EXPECT_EQ(ReadText(folder.Path("r.html")), page);
}

// The options apply to the file of each crop at each width.
TEST(Crop, OptionsApplyToEveryFile)
{
    const TempFolder folder;
    WithMetadata(Scene(900, 600, 0.3, 0.6)).write_to_file(folder.Path("a.jpg").c_str());
    const auto crop = [&folder](const std::string& output, std::vector<std::string> more) {
        more.insert(more.begin(), {"crop", folder.Path("a.jpg"), "-o", folder.Path(output), "-n",
                                   "2", "--faces", "off", "--aspect", "3:2", "--scale", "0.8"});
        const Outcome outcome = RunProgram(more);
        EXPECT_EQ(outcome.Status, 0) << outcome.Err;
        return outcome;
    };
    // Crops are 720 x 480; both widths beyond that become 720.
    crop("fine", {"--widths", "300,2000,5000", "--quality", "95"});
    crop("plain", {"--widths", "300,2000,5000", "--quality", "20", "--chroma", "4:4:4", "--strip"});
    for (const char* name : {"/a-1-300.jpg", "/a-1-720.jpg", "/a-2-300.jpg", "/a-2-720.jpg"}) {
        SCOPED_TRACE(name);
        const std::string fine = folder.Path(std::string("fine") + name);
        const std::string plain = folder.Path(std::string("plain") + name);
        EXPECT_LT(3 * std::filesystem::file_size(plain), std::filesystem::file_size(fine));
        EXPECT_NE(Open(fine).get_typeof("exif-ifd0-Make"), 0U);
        EXPECT_EQ(Open(plain).get_typeof("exif-ifd0-Make"), 0U);
        EXPECT_EQ(std::string(Open(plain).get_string("jpeg-chroma-subsample")), "4:4:4");
        EXPECT_EQ(Open(plain).width(), name[5] == '3' ? 300 : 720);
        EXPECT_EQ(Open(plain).height(), name[5] == '3' ? 200 : 480);
    }
    // {extension} is that of the photograph.
    const Outcome webp = crop(
        "webp", {"--format", "webp", "--resize", "90x90", "--name", "{stem}-{extension}-{rank}"});
    EXPECT_EQ(webp.Out,
              folder.Path("webp/a-jpg-1.webp") + "\n" + folder.Path("webp/a-jpg-2.webp") + "\n");
    for (const char* name : {"webp/a-jpg-1.webp", "webp/a-jpg-2.webp"}) {
        const VImage image = Open(folder.Path(name));
        EXPECT_EQ(std::string(image.get_string("vips-loader")), "webpload");
        EXPECT_EQ(image.width(), 90);
        EXPECT_EQ(image.height(), 60);
    }
    // The size that --resize gives counts, not that of the preset.
    const Outcome preset = RunProgram({"crop", folder.Path("a.jpg"), "-o", folder.Path("preset"),
                                       "--preset", "og-image", "--preset", "avatar", "--resize",
                                       "60x60", "--name", "{shape}-{width}x{height}"});
    EXPECT_EQ(preset.Status, 0) << preset.Err;
    EXPECT_EQ(Open(folder.Path("preset/avatar-60x60.jpg")).height(), 60);
    EXPECT_EQ(Open(folder.Path("preset/og-image-60x32.jpg")).height(), 32); // 31.5
    // With a template without the shape, the names clash.
    const Outcome clash = RunProgram({"crop", folder.Path("a.jpg"), "-o", folder.Path("clash"),
                                      "--preset", "square", "--preset", "avatar", "--resize",
                                      "60x60", "--name", "{stem}-{width}x{height}"});
    EXPECT_EQ(clash.Status, 1);
    EXPECT_FALSE(std::filesystem::exists(folder.Path("clash")));
}

// If many names clash, ten are listed and the others counted.
TEST(Crop, ManyClashesAreCounted)
{
    const TempFolder folder;
    std::vector<std::string> words = {
        "crop", "-n", "1", "--name", "same", "-o", folder.Path("out")};
    Quarters(90, 60).write_to_file(folder.Path("0.jpg").c_str());
    for (int i = 0; i < 14; ++i) {
        const std::string name = folder.Path(std::to_string(i) + ".jpg");
        if (i > 0)
            std::filesystem::copy_file(folder.Path("0.jpg"), name);
        words.push_back(name);
    }
    const Outcome outcome = RunProgram(words);
    EXPECT_EQ(outcome.Status, 1);
    EXPECT_EQ(outcome.Out, "");
    std::istringstream lines(outcome.Err);
    std::string line;
    for (int i = 1; i <= 10; ++i) {
        std::getline(lines, line);
        EXPECT_EQ(line, "vistatrim: " + folder.Path(std::to_string(i) + ".jpg") +
                            ": its files would have the same names as those of " +
                            folder.Path("0.jpg"));
    }
    std::getline(lines, line);
    EXPECT_EQ(line, "vistatrim: and 3 more");
    EXPECT_FALSE(std::filesystem::exists(folder.Path("out")));
}

// Clashes that show only during the run: the photograph that came first keeps the name, even where
// files may be replaced.
TEST(Crop, ForceReplacesNothingOfTheSameRun)
{
    const TempFolder folder;
    Scene(300, 200, 0.3, 0.6).write_to_file(folder.Path("a.jpg").c_str());
    Scene(300, 200, 0.6, 0.3).write_to_file(folder.Path("a2.jpg").c_str());
    const auto crop = [&folder](std::vector<std::string> more) {
        more.insert(more.begin(), {"crop", "--force", "-j", "1", "--faces", "off"});
        return RunProgram(more);
    };
    // Rank 21 of a has the same name as rank 1 of a2.
    const std::vector<std::string> many = {
        "-n", "21", "--name", "{stem}{rank}", "-o", folder.Path("out"), folder.Path("a.jpg")};
    ASSERT_EQ(crop(many).Status, 0);
    const std::string last = ReadText(folder.Path("out/a21.jpg"));
    std::vector<std::string> both = many;
    both.push_back(folder.Path("a2.jpg"));
    const Outcome outcome = crop(both);
    EXPECT_EQ(outcome.Status, 1);
    EXPECT_EQ(outcome.Err, "vistatrim: " + folder.Path("a2.jpg") + ": its crop " +
                               folder.Path("out/a21.jpg") + " would have the name of one of " +
                               folder.Path("a.jpg") + "\n");
    EXPECT_TRUE(ReadText(folder.Path("out/a21.jpg")) == last);

    // A JPEG photograph with the ending of another format gets crops that end in jpg.
    std::filesystem::create_directory(folder.Path("in"));
    std::filesystem::copy_file(folder.Path("a.jpg"), folder.Path("in/p.png"));
    std::filesystem::copy_file(folder.Path("a2.jpg"), folder.Path("in/p-1.jpg"));
    const std::string photograph = ReadText(folder.Path("in/p-1.jpg"));
    const Outcome over = crop(
        {"-n", "1", "-o", folder.Path("in"), folder.Path("in/p.png"), folder.Path("in/p-1.jpg")});
    EXPECT_EQ(over.Status, 1);
    EXPECT_EQ(over.Err, "vistatrim: " + folder.Path("in/p.png") + ": its crop " +
                            folder.Path("in/p-1.jpg") +
                            " would replace one of the photographs to be cropped\n");
    EXPECT_TRUE(ReadText(folder.Path("in/p-1.jpg")) == photograph);
    EXPECT_TRUE(std::filesystem::exists(folder.Path("in/p-1-1.jpg")));
}

TEST(Crop, EveryShapeWithoutACropIsNamed)
{
    const TempFolder folder;
    Scene(300, 200, 0.3, 0.6).write_to_file(folder.Path("a.jpg").c_str());
    const auto crop = [&folder](std::vector<std::string> more) {
        more.insert(more.begin(),
                    {"crop", folder.Path("a.jpg"), "-o", folder.Path("out"), "--each-ratio",
                     "--aspect", "1:3", "--aspect", "1:1", "--must-keep", "0,95,300,9"});
        return RunProgram(more);
    };
    const Outcome some = crop({"--aspect", "3:1"});
    EXPECT_EQ(some.Status, 1);
    EXPECT_EQ(some.Out, folder.Path("out/a-3x1.jpg") + "\n");
    EXPECT_EQ(some.Err, "vistatrim: " + folder.Path("a.jpg") +
                            ": no crop of 1:3, 1:1 meets the request; suggest --explain shows "
                            "why\n");
    const Outcome none = crop({});
    EXPECT_EQ(none.Status, 1);
    EXPECT_EQ(none.Err, "vistatrim: " + folder.Path("a.jpg") +
                            ": no crop of 1:3, 1:1: no candidate meets --must-keep; try more "
                            "ratios or scales\n");
}

TEST(Crop, AFolderThatCannotBeMadeIsNamedOnce)
{
    const TempFolder folder;
    Scene(300, 200, 0.3, 0.6).write_to_file(folder.Path("a.jpg").c_str());
    std::filesystem::create_directory(folder.Path("locked"));
    std::filesystem::permissions(folder.Path("locked"), std::filesystem::perms(0555));
    RunOptions nobody;
    nobody.AsNobody = true;
    for (const char* command : {"crop", "maps"}) {
        const Outcome outcome = RunProgram({command, folder.Path("a.jpg"), folder.Path("a.jpg"),
                                            "-o", folder.Path("locked/new/er")},
                                           nobody);
        EXPECT_EQ(outcome.Status, 1);
        EXPECT_EQ(outcome.Err, "vistatrim: cannot create the folder " +
                                   folder.Path("locked/new/er") + ": Permission denied\n");
    }
}

TEST(Maps, OfTwoPhotographsOfOneNameAreNotMixed)
{
    const TempFolder folder;
    for (const char* name : {"x", "y"})
        std::filesystem::create_directories(folder.Path(name));
    Scene(300, 200, 0.3, 0.6).write_to_file(folder.Path("x/a.jpg").c_str());
    Scene(300, 200, 0.6, 0.3).write_to_file(folder.Path("y/a.jpg").c_str());
    const auto maps = [&folder](std::vector<std::string> photos) {
        photos.insert(photos.begin(), {"maps", "--force", "-j", "1", "-o", folder.Path("out")});
        return RunProgram(photos);
    };
    ASSERT_EQ(maps({folder.Path("x/a.jpg")}).Status, 0);
    const std::string first = ReadText(folder.Path("out/a-ContrastMap.png"));
    const Outcome both = maps({folder.Path("x/a.jpg"), folder.Path("y/a.jpg")});
    EXPECT_EQ(both.Status, 1);
    EXPECT_EQ(both.Err, "vistatrim: " + folder.Path("y/a.jpg") +
                            ": its files would have the same names as those of " +
                            folder.Path("x/a.jpg") + "\n");
    EXPECT_TRUE(ReadText(folder.Path("out/a-ContrastMap.png")) == first);
}

} // namespace
} // namespace vistaTrim::cli
