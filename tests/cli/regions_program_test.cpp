// The program's regions: from metadata and from --regions, in suggest's output and in crops.
#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "photo/sample_pictures.h"
#include "regions/metadata_regions.h"
#include "run_program.h"
#include "vistaTrimPhoto/geometry.h"

namespace vistaTrim::cli {
namespace {

using namespace photo;

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;
using vips::VImage;

constexpr PixelSize kPhoto{900, 600};
// Far from the bright disc of the scene, so that no crop contains it by chance.
constexpr PixelRect kPet{720, 60, 90, 60};

// Metadata with a pet at kPet of the stored picture, whose size is kPhoto.
std::string PetXmp()
{
    return "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"><rdf:RDF "
           "xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\"><rdf:Description "
           "rdf:about=\"\" xmlns:mwg-rs=\"http://www.metadataworkinggroup.com/schemas/regions/\" "
           "xmlns:stArea=\"http://ns.adobe.com/xmp/sType/Area#\">"
           "<mwg-rs:Regions rdf:parseType=\"Resource\"><mwg-rs:RegionList><rdf:Bag><rdf:li>"
           "<rdf:Description mwg-rs:Name=\"Rex\" mwg-rs:Type=\"Pet\"><mwg-rs:Area "
           "stArea:x=\"0.85\" "
           "stArea:y=\"0.15\" stArea:w=\"0.1\" stArea:h=\"0.1\" stArea:unit=\"normalized\"/>"
           "</rdf:Description></rdf:li></rdf:Bag></mwg-rs:RegionList></mwg-rs:Regions>"
           "</rdf:Description></rdf:RDF></x:xmpmeta>";
}

void WriteWithPet(const VImage& image, const std::string& path)
{
    VImage tagged = image.copy();
    const std::string xmp = PetXmp();
    vips_image_set_blob_copy(tagged.get_image(), "xmp-data", xmp.data(), xmp.size());
    tagged.write_to_file(path.c_str());
}

json Suggest(const std::string& path, const std::vector<std::string>& options)
{
    std::vector<std::string> arguments = {"suggest", "--json", path};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const Outcome outcome = RunProgram(arguments);
    EXPECT_EQ(outcome.Status, 0) << outcome.Err;
    return outcome.Status == 0 ? json::parse(outcome.Out) : json{};
}

PixelRect RectOf(const json& rect)
{
    return {rect.at("x"), rect.at("y"), rect.at("width"), rect.at("height")};
}

std::vector<FoundRegion> RegionsIn(const std::string& path)
{
    const VImage image = VImage::new_from_file(path.c_str());
    if (image.get_typeof("xmp-data") == 0)
        return {};
    size_t size = 0;
    const auto* bytes = static_cast<const char*>(image.get_blob("xmp-data", &size));
    return RegionsOfXmp(std::string(bytes, size), {image.width(), image.height()}, 1);
}

const std::vector<std::string> kSmallSquare = {"--aspect", "1:1", "--scale", "0.5", "-n", "1"};

TEST(Regions, OfMetadataAreListedAndKept)
{
    const TempFolder folder;
    WriteWithPet(Scene(kPhoto.Width, kPhoto.Height, 0.2, 0.7), folder.Path("a.jpg"));

    const json with = Suggest(folder.Path("a.jpg"), kSmallSquare);
    ASSERT_THAT(with.at("regions"), SizeIs(1));
    const json& pet = with.at("regions")[0];
    EXPECT_EQ(RectOf(pet), kPet);
    EXPECT_EQ(pet.at("kind"), "animal");
    EXPECT_EQ(pet.at("source"), "metadata");
    EXPECT_EQ(pet.at("label"), "Rex");
    EXPECT_EQ(pet.at("wish"), "keep");
    EXPECT_TRUE(Contains(RectOf(with.at("crops")[0]), kPet));

    std::vector<std::string> ignoring = kSmallSquare;
    ignoring.emplace_back("--ignore-metadata-regions");
    const json without = Suggest(folder.Path("a.jpg"), ignoring);
    EXPECT_FALSE(without.contains("regions"));
    EXPECT_FALSE(Contains(RectOf(without.at("crops")[0]), kPet));
}

TEST(Regions, FollowTheOrientationOfThePhotograph)
{
    const TempFolder folder;
    // Orientation 6 shows the stored top right corner at the bottom right.
    const VImage shown = Scene(kPhoto.Height, kPhoto.Width, 0.2, 0.3);
    WriteWithPet(StoredWithOrientation(shown, 6), folder.Path("a.jpg"));

    const json result = Suggest(folder.Path("a.jpg"), kSmallSquare);

    EXPECT_EQ(result.at("width"), kPhoto.Height);
    ASSERT_THAT(result.at("regions"), SizeIs(1));
    EXPECT_EQ(RectOf(result.at("regions")[0]), (PixelRect{480, 720, 60, 90}));
}

TEST(Regions, OfACropAreRelativeToIt)
{
    const TempFolder folder;
    for (const int orientation : {1, 6}) {
        SCOPED_TRACE(orientation);
        const std::string photo = folder.Path("a" + std::to_string(orientation) + ".jpg");
        const bool turned = orientation == 6;
        const VImage shown = turned ? Scene(kPhoto.Height, kPhoto.Width, 0.5, 0.5)
                                    : Scene(kPhoto.Width, kPhoto.Height, 0.5, 0.5);
        WriteWithPet(StoredWithOrientation(shown, orientation), photo);
        const json suggested = Suggest(photo, kSmallSquare);
        const PixelRect rect = RectOf(suggested.at("crops")[0]);
        const PixelRect pet = RectOf(suggested.at("regions")[0]);
        ASSERT_TRUE(Contains(rect, pet));

        std::vector<std::string> arguments = {"crop", photo, "-o", folder.Path("out")};
        arguments.insert(arguments.end(), kSmallSquare.begin(), kSmallSquare.end());
        const Outcome outcome = RunProgram(arguments);

        ASSERT_EQ(outcome.Status, 0) << outcome.Err;
        const auto regions = RegionsIn(outcome.Out.substr(0, outcome.Out.find('\n')));
        ASSERT_THAT(regions, SizeIs(1));
        // Shares of the crop, stored with six digits, are exact to within a pixel.
        EXPECT_NEAR(regions[0].Rect.X, pet.X - rect.X, 1);
        EXPECT_NEAR(regions[0].Rect.Y, pet.Y - rect.Y, 1);
        EXPECT_NEAR(regions[0].Rect.Width, pet.Width, 2);
        EXPECT_NEAR(regions[0].Rect.Height, pet.Height, 2);
        EXPECT_EQ(regions[0].Label, "Rex");
    }
}

TEST(Regions, OutsideACropAreNotInIt)
{
    const TempFolder folder;
    WriteWithPet(Scene(kPhoto.Width, kPhoto.Height, 0.2, 0.7), folder.Path("a.jpg"));
    std::vector<std::string> arguments = {
        "crop",         folder.Path("a.jpg"), "-o", folder.Path("out"), "--ignore-metadata-regions",
        "--must-avoid", "720,60,90,60"};
    arguments.insert(arguments.end(), kSmallSquare.begin(), kSmallSquare.end());

    const Outcome outcome = RunProgram(arguments);

    ASSERT_EQ(outcome.Status, 0) << outcome.Err;
    const std::string crop = outcome.Out.substr(0, outcome.Out.find('\n'));
    EXPECT_THAT(RegionsIn(crop), SizeIs(0));
    EXPECT_EQ(ReadText(crop).find("Rex"), std::string::npos);
    EXPECT_THAT(RegionsIn(folder.Path("a.jpg")), SizeIs(1)); // the original keeps them
}

TEST(Regions, OfAFileAreListedAndKept)
{
    const TempFolder folder;
    Scene(kPhoto.Width, kPhoto.Height, 0.2, 0.7).write_to_file(folder.Path("a.jpg").c_str());
    WriteText(folder.Path("r.jsonl"),
              "{\"file\":\"a.jpg\",\"regions\":[{\"x\":720,\"y\":60,\"width\":90,\"height\":60,"
              "\"confidence\":0.5}]}\n");
    std::vector<std::string> options = kSmallSquare;
    options.insert(options.end(), {"--explain", "--regions", folder.Path("r.jsonl")});

    const json result = Suggest(folder.Path("a.jpg"), options);

    ASSERT_THAT(result.at("regions"), SizeIs(1));
    EXPECT_EQ(result.at("regions")[0].at("source"), "file");
    EXPECT_EQ(result.at("regions")[0].at("confidence"), 0.5);
    EXPECT_TRUE(Contains(RectOf(result.at("crops")[0]), kPet));
    ASSERT_THAT(result.at("explain").at("wishes"), SizeIs(1));
    EXPECT_EQ(result.at("explain").at("wishes")[0].at("source"), "file");
}

TEST(Regions, ErrorsNameTheFile)
{
    const TempFolder folder;
    Scene(90, 60, 0.5, 0.5).write_to_file(folder.Path("a.jpg").c_str());
    const std::string file = folder.Path("r.jsonl");
    struct Fault {
        const char* Text;
        const char* Message;
        int Status;
    };
    const Fault faults[] = {
        {"{\"file\":\"a.jpg\",\"regions\":[]}\n{\"file\":", ":2: is not JSON", 2},
        {"{\"file\":\"b.jpg\",\"regions\":[]}\n", " names none of the photographs", 1}};
    for (const auto& [text, fault, status] : faults) {
        WriteText(file, text);
        const Outcome outcome = RunProgram({"suggest", folder.Path("a.jpg"), "--regions", file});
        EXPECT_EQ(outcome.Status, status);
        EXPECT_THAT(outcome.Err, HasSubstr(file + fault));
        EXPECT_EQ(outcome.Out, "");
    }

    WriteText(file, "{\"file\":\"a.jpg\",\"regions\":[{\"x\":500,\"y\":5,\"w\":5,\"h\":5}]}\n");
    const Outcome outside = RunProgram({"suggest", folder.Path("a.jpg"), "--regions", file});
    EXPECT_EQ(outside.Status, 1);
    EXPECT_THAT(outside.Err, HasSubstr("lies outside the photograph, which is 90 x 60"));
}

// The pixels of the photograph are damaged: only a request that is checked before they are decoded
// reports its own error.
TEST(Regions, OutsideThePhotographAreRejectedBeforeItIsDecoded)
{
    const TempFolder folder;
    const std::string photo = folder.Path("a.png");
    Scene(90, 60, 0.5, 0.5).write_to_file(photo.c_str());
    std::filesystem::resize_file(photo, std::filesystem::file_size(photo) / 2);
    const std::vector<std::string> commands[] = {
        {"suggest", photo, "-o", folder.Path("list")},
        {"crop", photo, "-o", folder.Path("crops")},
        {"report", photo, "-o", folder.Path("a.html")},
        {"contact-sheet", photo, "-o", folder.Path("sheet.jpg")}};
    for (std::vector<std::string> command : commands) {
        SCOPED_TRACE(command[0]);
        EXPECT_THAT(RunProgram(command).Err, Not(HasSubstr("outside")));
        command.insert(command.end(), {"--keep", "500,5,5,5", "--force"});
        const Outcome outcome = RunProgram(command);
        EXPECT_EQ(outcome.Status, 1);
        EXPECT_THAT(outcome.Err, HasSubstr("the region of --keep 500,5,5,5 lies outside the "
                                           "photograph, which is 90 x 60"));
    }
}

TEST(Regions, ANamedFaceSkipsTheSearch)
{
    const std::string portrait = "/usr/lib/python3/dist-packages/skimage/data/astronaut.png";
    const TempFolder folder;
    WriteText(folder.Path("r.jsonl"),
              "{\"file\":\"astronaut.png\",\"regions\":[{\"x\":20,\"y\":30,\"w\":40,\"h\":40,"
              "\"kind\":\"face\"}]}\n");
    if (RunProgram({"suggest", portrait, "--faces", "all"}).Status != 0)
        GTEST_SKIP() << "built without dlib, or python3-skimage is not installed";

    const json found = Suggest(portrait, {});
    ASSERT_FALSE(found.at("regions").empty());
    EXPECT_EQ(found.at("regions")[0].at("source"), "face-finder");
    EXPECT_FALSE(Suggest(portrait, {"--faces", "off"}).contains("regions"));
    const json named = Suggest(portrait, {"--regions", folder.Path("r.jsonl")});
    ASSERT_THAT(named.at("regions"), SizeIs(1));
    EXPECT_EQ(named.at("regions")[0].at("source"), "file");
    // A named region that is not a face does not skip the search.
    for (const char* kind : {"animal", "subject", "other"}) {
        WriteText(folder.Path("r.jsonl"),
                  "{\"file\":\"astronaut.png\",\"regions\":[{\"x\":20,\"y\":30,\"w\":40,\"h\":40,"
                  "\"kind\":\"" +
                      std::string(kind) + "\"}]}\n");
        json regions = Suggest(portrait, {"--regions", folder.Path("r.jsonl")}).at("regions");
        ASSERT_THAT(regions, SizeIs(found.at("regions").size() + 1)) << kind;
        EXPECT_EQ(regions[0].at("kind"), kind);
        regions.erase(regions.begin());
        EXPECT_EQ(regions, found.at("regions"));
    }
    // A single photograph may be searched while it is analysed; the result is the same.
    EXPECT_EQ(Suggest(portrait, {"-j", "1"}), Suggest(portrait, {"-j", "4"}));
}

TEST(Regions, FacesTakesOneOfThreeValues)
{
    const Outcome outcome = RunProgram({"suggest", "a.jpg", "--faces", "many"});
    EXPECT_EQ(outcome.Status, 2);
    EXPECT_THAT(outcome.Err, HasSubstr("'many' is not off, large or all"));
}

} // namespace
} // namespace vistaTrim::cli
