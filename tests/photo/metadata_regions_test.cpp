// Regions in a photograph's own metadata: read through each orientation, and rewritten for crops.
#include "regions/metadata_regions.h"

#include <random>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vistaTrim::photo {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

std::string Packet(const std::string& properties)
{
    return "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"><rdf:RDF "
           "xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">"
           "<rdf:Description rdf:about=\"\" xmlns:dc=\"http://purl.org/dc/elements/1.1/\" "
           "xmlns:mwg-rs=\"http://www.metadataworkinggroup.com/schemas/regions/\" "
           "xmlns:stDim=\"http://ns.adobe.com/xap/1.0/sType/Dimensions#\" "
           "xmlns:stArea=\"http://ns.adobe.com/xmp/sType/Area#\" "
           "xmlns:MP=\"http://ns.microsoft.com/photo/1.2/\" "
           "xmlns:MPRI=\"http://ns.microsoft.com/photo/1.2/t/RegionInfo#\" "
           "xmlns:MPReg=\"http://ns.microsoft.com/photo/1.2/t/Region#\" "
           "xmlns:Iptc4xmpExt=\"http://iptc.org/std/Iptc4xmpExt/2008-02-29/\" "
           "xmlns:xmp=\"http://ns.adobe.com/xap/1.0/\">"
           "<dc:source>a darkroom</dc:source>" +
           properties + "</rdf:Description></rdf:RDF></x:xmpmeta>";
}

struct Area {
    double X, Y, Width, Height; // centre and sides
    std::string Type = "Face";
    std::string Name = "Ada";
};

std::string WorkingGroup(const std::vector<Area>& areas, int width, int height)
{
    std::string list;
    for (const Area& area : areas)
        list += "<rdf:li><rdf:Description mwg-rs:Name=\"" + area.Name + "\" mwg-rs:Type=\"" +
                area.Type + "\"><mwg-rs:Area stArea:x=\"" + std::to_string(area.X) +
                "\" stArea:y=\"" + std::to_string(area.Y) + "\" stArea:w=\"" +
                std::to_string(area.Width) + "\" stArea:h=\"" + std::to_string(area.Height) +
                "\" stArea:unit=\"normalized\"/></rdf:Description></rdf:li>";
    return Packet(
        "<mwg-rs:Regions rdf:parseType=\"Resource\"><mwg-rs:AppliedToDimensions stDim:w=\"" +
        std::to_string(width) + "\" stDim:h=\"" + std::to_string(height) +
        "\" stDim:unit=\"pixel\"/><mwg-rs:RegionList><rdf:Bag>" + list +
        "</rdf:Bag></mwg-rs:RegionList></mwg-rs:Regions>");
}

std::string PeopleTags(const std::string& rectangle)
{
    return Packet("<MP:RegionInfo rdf:parseType=\"Resource\"><MPRI:Regions><rdf:Bag><rdf:li "
                  "MPReg:Rectangle=\"" +
                  rectangle +
                  "\" MPReg:PersonDisplayName=\"Grace\"/></rdf:Bag></MPRI:Regions>"
                  "</MP:RegionInfo>");
}

// The first packet with the people tags of the second beside its own regions.
std::string Together(std::string packet, const std::string& tags)
{
    const size_t from = tags.find("<MP:RegionInfo");
    const size_t to = tags.find("</rdf:Description></rdf:RDF>");
    return packet.insert(packet.rfind("</rdf:Description></rdf:RDF>"),
                         tags.substr(from, to - from));
}

std::string Iptc(const std::string& boundary, const std::string& role = "mainSubjectArea")
{
    return Packet("<Iptc4xmpExt:ImageRegion><rdf:Bag><rdf:li rdf:parseType=\"Resource\">"
                  "<Iptc4xmpExt:Name><rdf:Alt><rdf:li xml:lang=\"x-default\">Boat</rdf:li>"
                  "</rdf:Alt></Iptc4xmpExt:Name>"
                  "<Iptc4xmpExt:RegionBoundary rdf:parseType=\"Resource\">" +
                  boundary +
                  "</Iptc4xmpExt:RegionBoundary><Iptc4xmpExt:rRole><rdf:Bag>"
                  "<rdf:li rdf:parseType=\"Resource\"><xmp:Identifier><rdf:Bag><rdf:li>"
                  "http://cv.iptc.org/newscodes/imageregionrole/" +
                  role +
                  "</rdf:li></rdf:Bag></xmp:Identifier></rdf:li></rdf:Bag></Iptc4xmpExt:rRole>"
                  "</rdf:li></rdf:Bag></Iptc4xmpExt:ImageRegion>");
}

std::string IptcField(const std::string& name, const std::string& value)
{
    return "<Iptc4xmpExt:" + name + ">" + value + "</Iptc4xmpExt:" + name + ">";
}

std::string RelativeIptc(const std::string& fields, const std::string& shape)
{
    return IptcField("rbShape", shape) + IptcField("rbUnit", "relative") + fields;
}

std::vector<PixelRect> RectsOf(const std::vector<FoundRegion>& regions)
{
    std::vector<PixelRect> rects;
    rects.reserve(regions.size());
    for (const FoundRegion& region : regions)
        rects.push_back(region.Rect);
    return rects;
}

constexpr PixelSize kPhoto{400, 200};

TEST(MetadataRegions, WorkingGroupAreasAreStatedByTheirCentre)
{
    const auto regions = RegionsOfXmp(
        WorkingGroup({{0.25, 0.5, 0.1, 0.2}, {0.75, 0.5, 0.2, 0.2, "Pet", "Rex"}}, 4000, 2000),
        kPhoto, 1);

    ASSERT_THAT(RectsOf(regions),
                ElementsAre(PixelRect{80, 80, 40, 40}, PixelRect{260, 80, 80, 40}));
    EXPECT_EQ(regions[0].Kind, RegionKind::Face);
    EXPECT_EQ(regions[0].Label, "Ada");
    EXPECT_EQ(regions[0].Source, RegionSource::Metadata);
    EXPECT_EQ(regions[0].Wish, WishKind::Keep);
    EXPECT_EQ(regions[1].Kind, RegionKind::Animal);
}

// A region in the top left corner of the stored picture, 10 % of its width and 20 % of its height,
// is found where the rotated or mirrored picture shows it.
TEST(MetadataRegions, FollowTheOrientation)
{
    const std::string stored = PeopleTags("0, 0, 0.1, 0.2");
    const PixelSize upright{400, 200};
    const PixelSize turned{200, 400}; // displayed size of orientations 5 to 8
    const PixelRect expected[] = {{0, 0, 40, 40},     {360, 0, 40, 40}, {360, 160, 40, 40},
                                  {0, 160, 40, 40},   {0, 0, 40, 40},   {160, 0, 40, 40},
                                  {160, 360, 40, 40}, {0, 360, 40, 40}};
    for (int orientation = 1; orientation <= 8; ++orientation) {
        SCOPED_TRACE(orientation);
        EXPECT_THAT(RectsOf(RegionsOfXmp(stored, orientation < 5 ? upright : turned, orientation)),
                    ElementsAre(expected[orientation - 1]));
    }
}

TEST(MetadataRegions, StatedSizeTellsWhetherAreasAreAlreadyRotated)
{
    const PixelSize displayed{200, 400};
    const std::vector<Area> area = {{0.05, 0.1, 0.1, 0.2}};

    EXPECT_THAT(RectsOf(RegionsOfXmp(WorkingGroup(area, 4000, 2000), displayed, 6)),
                ElementsAre(PixelRect{160, 0, 40, 40}));
    EXPECT_THAT(RectsOf(RegionsOfXmp(WorkingGroup(area, 2000, 4000), displayed, 6)),
                ElementsAre(PixelRect{0, 0, 20, 80}));
}

TEST(MetadataRegions, AreasOfAPictureOfAnotherShapeAreStale)
{
    EXPECT_THAT(RegionsOfXmp(WorkingGroup({{0.5, 0.5, 0.1, 0.1}}, 3000, 2000), kPhoto, 1),
                IsEmpty());
}

TEST(MetadataRegions, IptcRegionsOfEachShape)
{
    const std::string rectangle = IptcField("rbX", "0.25") + IptcField("rbY", "0.5") +
                                  IptcField("rbW", "0.5") + IptcField("rbH", "0.25");
    EXPECT_THAT(RectsOf(RegionsOfXmp(Iptc(RelativeIptc(rectangle, "rectangle")), kPhoto, 1)),
                ElementsAre(PixelRect{100, 100, 200, 50}));

    const std::string circle =
        IptcField("rbX", "0.5") + IptcField("rbY", "0.5") + IptcField("rbRx", "0.1");
    EXPECT_THAT(RectsOf(RegionsOfXmp(Iptc(RelativeIptc(circle, "circle")), kPhoto, 1)),
                ElementsAre(PixelRect{160, 60, 80, 80}));

    const std::string polygon = IptcField(
        "rbVertices", "<rdf:Seq>"
                      "<rdf:li Iptc4xmpExt:rbX=\"0.5\" Iptc4xmpExt:rbY=\"0.1\"/>"
                      "<rdf:li Iptc4xmpExt:rbX=\"0.75\" Iptc4xmpExt:rbY=\"0.9\"/>"
                      "<rdf:li Iptc4xmpExt:rbX=\"0.25\" Iptc4xmpExt:rbY=\"0.5\"/></rdf:Seq>");
    EXPECT_THAT(RectsOf(RegionsOfXmp(Iptc(RelativeIptc(polygon, "polygon")), kPhoto, 1)),
                ElementsAre(PixelRect{100, 20, 200, 160}));

    const std::string pixels = IptcField("rbShape", "rectangle") + IptcField("rbUnit", "pixel") +
                               IptcField("rbX", "10") + IptcField("rbY", "20") +
                               IptcField("rbW", "30") + IptcField("rbH", "40");
    EXPECT_THAT(RectsOf(RegionsOfXmp(Iptc(pixels), kPhoto, 1)),
                ElementsAre(PixelRect{10, 20, 30, 40}));
}

TEST(MetadataRegions, ARegionThatSaysHowToCropIsNoWish)
{
    const std::string rectangle =
        RelativeIptc(IptcField("rbX", "0.25") + IptcField("rbY", "0.5") + IptcField("rbW", "0.5") +
                         IptcField("rbH", "0.25"),
                     "rectangle");

    const auto subject = RegionsOfXmp(Iptc(rectangle), kPhoto, 1);
    const auto cropping = RegionsOfXmp(Iptc(rectangle, "cropping"), kPhoto, 1);

    ASSERT_THAT(subject, SizeIs(1));
    EXPECT_EQ(subject[0].Kind, RegionKind::Subject);
    EXPECT_EQ(subject[0].Label, "Boat");
    EXPECT_EQ(subject[0].Wish, WishKind::Keep);
    ASSERT_THAT(cropping, SizeIs(1));
    EXPECT_FALSE(cropping[0].Wish.has_value());
}

TEST(MetadataRegions, AFaceNamedByTwoStandardsIsReturnedOnce)
{
    const std::string both =
        Together(WorkingGroup({{0.25, 0.5, 0.1, 0.2}}, 400, 200), PeopleTags("0.2, 0.4, 0.1, 0.2"));

    EXPECT_THAT(RectsOf(RegionsOfXmp(both, kPhoto, 1)), ElementsAre(PixelRect{80, 80, 40, 40}));
}

TEST(MetadataRegions, NonsenseGivesNone)
{
    for (const char* rectangle :
         {"", "0.1, 0.2, 0.3", "0.1, 0.2, 0.3, 0.4, 0.5", "nan, 0, 0.1, 0.1", "0, 0, inf, 1",
          "0, 0, -0.5, 0.5", "2, 2, 0.1, 0.1", "1e300, 0, 1, 1", "a, b, c, d", "0, 0, 0, 0"}) {
        SCOPED_TRACE(rectangle);
        EXPECT_THAT(RegionsOfXmp(PeopleTags(rectangle), kPhoto, 1), IsEmpty());
    }
    EXPECT_THAT(RegionsOfXmp("", kPhoto, 1), IsEmpty());
    EXPECT_THAT(RegionsOfXmp("<x:xmpmeta metadataworkinggroup.com/schemas/regions", kPhoto, 1),
                IsEmpty());
}

// Whatever bytes change, nothing crashes, no region lies outside the photograph, and a crop's
// packet is either readable or dropped.
TEST(MetadataRegions, DamagedPacketsAreHarmless)
{
    const std::string sound =
        WorkingGroup({{0.25, 0.5, 0.1, 0.2}, {0.75, 0.5, 0.2, 0.2}}, 400, 200);
    std::mt19937 random(1);
    int withRegions = 0;
    for (int round = 0; round < 2000; ++round) {
        std::string damaged = sound;
        for (unsigned changes = 1 + random() % 4; changes > 0; --changes) {
            const size_t at = random() % damaged.size();
            switch (random() % 3) {
            case 0: damaged[at] = static_cast<char>(random() % 256); break;
            case 1: damaged.erase(at, 1 + random() % 8); break;
            default: damaged.insert(at, damaged.substr(random() % damaged.size(), random() % 16));
            }
        }
        for (const FoundRegion& region : RegionsOfXmp(damaged, kPhoto, 1)) {
            ++withRegions;
            EXPECT_TRUE(Contains({0, 0, kPhoto.Width, kPhoto.Height}, region.Rect));
            EXPECT_GT(region.Rect.Width, 0);
            EXPECT_GT(region.Rect.Height, 0);
        }
        const auto crop = XmpForCrop(damaged, kPhoto, 1, {0, 0, 100, 100}, {100, 100});
        if (crop)
            RegionsOfXmp(*crop, {100, 100}, 1);
    }
    EXPECT_GT(withRegions, 100); // otherwise the damage would hide what is tested
}

TEST(CropRegions, MoveWithTheCrop)
{
    const std::string xmp = WorkingGroup({{0.25, 0.5, 0.1, 0.2}}, 4000, 2000); // 80,80 40 x 40

    const auto crop = XmpForCrop(xmp, kPhoto, 1, {60, 40, 200, 160}, {200, 160});

    ASSERT_TRUE(crop.has_value());
    EXPECT_THAT(RectsOf(RegionsOfXmp(*crop, {200, 160}, 1)),
                ElementsAre(PixelRect{20, 40, 40, 40}));
    EXPECT_THAT(*crop, HasSubstr("Ada"));
    EXPECT_THAT(*crop, HasSubstr("a darkroom"));
    EXPECT_THAT(*crop, HasSubstr("stDim:w=\"200\""));
}

TEST(CropRegions, AreClippedOrDropped)
{
    const std::string xmp = WorkingGroup({{0.25, 0.5, 0.1, 0.2, "Face", "Outside"},
                                          {0.5, 0.5, 0.1, 0.2, "Face", "Clipped"},
                                          {0.75, 0.5, 0.1, 0.2, "Face", "Inside"}},
                                         4000, 2000);

    const auto crop = XmpForCrop(xmp, kPhoto, 1, {200, 0, 200, 200}, {200, 200});

    ASSERT_TRUE(crop.has_value());
    EXPECT_THAT(RectsOf(RegionsOfXmp(*crop, {200, 200}, 1)),
                ElementsAre(PixelRect{0, 80, 20, 40}, PixelRect{80, 80, 40, 40}));
    EXPECT_THAT(*crop, Not(HasSubstr("Outside")));
}

TEST(CropRegions, ScaleWithTheCrop)
{
    const std::string xmp = WorkingGroup({{0.25, 0.5, 0.1, 0.2}}, 4000, 2000);

    const auto crop = XmpForCrop(xmp, kPhoto, 1, {0, 0, 200, 200}, {50, 50});

    ASSERT_TRUE(crop.has_value());
    EXPECT_THAT(RectsOf(RegionsOfXmp(*crop, {50, 50}, 1)), ElementsAre(PixelRect{20, 20, 10, 10}));
}

// The crop is stored upright, and so are the regions in its metadata.
TEST(CropRegions, AreUprightWhateverTheOrientationWas)
{
    const std::string stored = PeopleTags("0, 0, 0.1, 0.2");
    const std::string area = WorkingGroup({{0.05, 0.1, 0.1, 0.2}}, 4000, 2000);
    for (const std::string& xmp : {stored, area}) {
        for (int orientation = 1; orientation <= 8; ++orientation) {
            SCOPED_TRACE(orientation);
            const PixelSize displayed = orientation < 5 ? PixelSize{400, 200} : PixelSize{200, 400};
            const PixelRect whole{0, 0, displayed.Width, displayed.Height};
            const auto crop = XmpForCrop(xmp, displayed, orientation, whole, displayed);
            ASSERT_TRUE(crop.has_value());
            EXPECT_EQ(RectsOf(RegionsOfXmp(*crop, displayed, 1)),
                      RectsOf(RegionsOfXmp(xmp, displayed, orientation)));
        }
    }
}

TEST(CropRegions, IptcShapesBecomeRectangles)
{
    const std::string circle =
        IptcField("rbX", "0.5") + IptcField("rbY", "0.5") + IptcField("rbRx", "0.1");
    const std::string polygon = IptcField(
        "rbVertices", "<rdf:Seq>"
                      "<rdf:li Iptc4xmpExt:rbX=\"0.4\" Iptc4xmpExt:rbY=\"0.3\"/>"
                      "<rdf:li Iptc4xmpExt:rbX=\"0.6\" Iptc4xmpExt:rbY=\"0.7\"/></rdf:Seq>");
    for (const auto& [fields, shape] :
         {std::pair(circle, "circle"), std::pair(polygon, "polygon")}) {
        SCOPED_TRACE(shape);
        const auto crop = XmpForCrop(Iptc(RelativeIptc(fields, shape)), kPhoto, 1,
                                     {200, 0, 200, 200}, {200, 200});
        ASSERT_TRUE(crop.has_value());
        EXPECT_THAT(RectsOf(RegionsOfXmp(*crop, {200, 200}, 1)),
                    ElementsAre(PixelRect{0, 60, 40, 80}));
        EXPECT_THAT(*crop, HasSubstr("Boat"));
        EXPECT_THAT(*crop, Not(HasSubstr(shape)));
        EXPECT_THAT(*crop, Not(HasSubstr("rbVertices")));
    }
}

// Each standard has its own list, counted from 1.
TEST(CropRegions, EachStandardKeepsItsOwnList)
{
    const std::string both =
        Together(WorkingGroup({{0.25, 0.5, 0.1, 0.2}, {0.35, 0.5, 0.05, 0.1}}, 400, 200),
                 PeopleTags("0.5, 0.4, 0.1, 0.2")); // 200,80 40 x 40

    const auto crop = XmpForCrop(both, kPhoto, 1, {60, 40, 200, 160}, {200, 160});

    ASSERT_TRUE(crop.has_value());
    EXPECT_THAT(RectsOf(RegionsOfXmp(*crop, {200, 160}, 1)),
                ElementsAre(PixelRect{20, 40, 40, 40}, PixelRect{70, 50, 20, 20},
                            PixelRect{140, 40, 40, 40}));
    EXPECT_THAT(*crop, HasSubstr("Ada"));
    EXPECT_THAT(*crop, HasSubstr("Grace"));
}

TEST(CropRegions, AnEmptyListIsDropped)
{
    const auto crop =
        XmpForCrop(PeopleTags("0, 0, 0.1, 0.2"), kPhoto, 1, {200, 0, 200, 200}, {200, 200});

    ASSERT_TRUE(crop.has_value());
    EXPECT_THAT(*crop, Not(HasSubstr("Grace")));
    EXPECT_THAT(*crop, Not(HasSubstr("RegionInfo")));
    EXPECT_THAT(*crop, HasSubstr("a darkroom"));
}

TEST(CropRegions, StaleOnesDoNotSurvive)
{
    const auto crop = XmpForCrop(WorkingGroup({{0.5, 0.5, 0.1, 0.1}}, 3000, 2000), kPhoto, 1,
                                 {0, 0, 400, 200}, {400, 200});

    ASSERT_TRUE(crop.has_value());
    EXPECT_THAT(*crop, Not(HasSubstr("RegionList")));
}

TEST(CropRegions, APacketWithoutRegionsIsUnchanged)
{
    const std::string xmp = Packet("<dc:format>image/jpeg</dc:format>");

    EXPECT_EQ(XmpForCrop(xmp, kPhoto, 1, {0, 0, 10, 10}, {10, 10}), xmp);
}

TEST(CropRegions, APacketThatCannotBeReadIsDropped)
{
    const std::string xmp = WorkingGroup({{0.25, 0.5, 0.1, 0.2}}, 400, 200);

    EXPECT_FALSE(XmpForCrop(xmp.substr(0, xmp.size() - 20), kPhoto, 1, {0, 0, 10, 10}, {10, 10}));
}

TEST(MetadataRegions, KindsAndNamesAreThoseOfEachStandard)
{
    const std::pair<const char*, RegionKind> types[] = {{"Face", RegionKind::Face},
                                                        {"Pet", RegionKind::Animal},
                                                        {"Focus", RegionKind::Subject},
                                                        {"BarCode", RegionKind::Other}};
    for (const auto& [type, kind] : types) {
        const auto regions =
            RegionsOfXmp(WorkingGroup({{0.25, 0.5, 0.1, 0.2, type, "Rex"}}, 400, 200), kPhoto, 1);
        ASSERT_THAT(regions, SizeIs(1));
        EXPECT_EQ(regions[0].Kind, kind) << type;
        EXPECT_EQ(regions[0].Label, "Rex");
        EXPECT_EQ(regions[0].Wish.has_value(), kind != RegionKind::Other);
    }
    const auto tagged = RegionsOfXmp(PeopleTags("0.2, 0.4, 0.1, 0.2"), kPhoto, 1);
    ASSERT_THAT(tagged, SizeIs(1));
    EXPECT_EQ(tagged[0].Kind, RegionKind::Face);
    EXPECT_EQ(tagged[0].Label, "Grace");

    const std::string rectangle =
        RelativeIptc(IptcField("rbX", "0.25") + IptcField("rbY", "0.5") + IptcField("rbW", "0.5") +
                         IptcField("rbH", "0.25"),
                     "rectangle");
    for (const char* role : {"recomCropping", "cropping", "recomCrop"})
        EXPECT_EQ(RegionsOfXmp(Iptc(rectangle, role), kPhoto, 1).at(0).Kind, RegionKind::Other);
    // A type in addition to the role, and a name in two languages, of which the default counts.
    std::string animal = Iptc(rectangle);
    animal.insert(animal.find("<Iptc4xmpExt:rRole>"),
                  "<Iptc4xmpExt:rCtype><rdf:Bag><rdf:li rdf:parseType=\"Resource\"><xmp:Identifier>"
                  "<rdf:Bag><rdf:li>http://cv.iptc.org/newscodes/imageregiontype/animal</rdf:li>"
                  "</rdf:Bag></xmp:Identifier></rdf:li></rdf:Bag></Iptc4xmpExt:rCtype>");
    const std::string english = "<rdf:li xml:lang=\"x-default\">Boat</rdf:li>";
    animal.insert(animal.find(english) + english.size(),
                  "<rdf:li xml:lang=\"de-DE\">Kahn</rdf:li>");
    const auto regions = RegionsOfXmp(animal, kPhoto, 1);
    ASSERT_THAT(regions, SizeIs(1));
    EXPECT_EQ(regions[0].Kind, RegionKind::Animal);
    EXPECT_EQ(regions[0].Label, "Boat");
}

// As in a school photograph: no face is lost, in the photograph or in a crop of it.
TEST(MetadataRegions, AGroupHasAllItsFaces)
{
    std::vector<Area> areas;
    for (int i = 0; i < 60; ++i)
        areas.push_back({0.05 + 0.1 * (i % 10), 0.1 + 0.15 * (i / 10), 0.04, 0.08, "Face",
                         "child " + std::to_string(i)});
    const std::string xmp = WorkingGroup(areas, 4000, 2000);
    EXPECT_THAT(RegionsOfXmp(xmp, kPhoto, 1), SizeIs(60));
    const auto crop = XmpForCrop(xmp, kPhoto, 1, {0, 0, 200, 200}, {200, 200});
    ASSERT_TRUE(crop.has_value());
    const auto left = RegionsOfXmp(*crop, {200, 200}, 1);
    ASSERT_THAT(left, SizeIs(30));
    for (size_t i = 0; i < left.size(); ++i)
        EXPECT_EQ(left[i].Label, "child " + std::to_string(i / 5 * 10 + i % 5));
    EXPECT_THAT(*crop, HasSubstr("stDim:unit=\"pixel\""));
}

// Circles and points keep their place in a crop.
TEST(CropRegions, OfCirclesAndPointsStayTrue)
{
    std::string circle = WorkingGroup({{0.5, 0.5, 0.1, 0.2}}, 400, 200);
    const size_t at = circle.find("stArea:w=");
    circle.replace(at, circle.find("stArea:unit") - at, "stArea:d=\"0.2\" ");
    ASSERT_THAT(RectsOf(RegionsOfXmp(circle, kPhoto, 1)), ElementsAre(PixelRect{180, 80, 40, 40}));
    const auto crop = XmpForCrop(circle, kPhoto, 1, {100, 50, 200, 100}, {200, 100});
    ASSERT_TRUE(crop.has_value());
    EXPECT_THAT(*crop, Not(HasSubstr("stArea:d=\"0.2\"")));

    std::string point = WorkingGroup({{0.5, 0.5, 0, 0}}, 400, 200);
    const auto moved = XmpForCrop(point, kPhoto, 1, {100, 50, 200, 100}, {200, 100});
    ASSERT_TRUE(moved.has_value());
    EXPECT_THAT(*moved, HasSubstr("Ada"));
    const auto gone = XmpForCrop(point, kPhoto, 1, {0, 0, 100, 100}, {100, 100});
    ASSERT_TRUE(gone.has_value());
    EXPECT_THAT(*gone, Not(HasSubstr("Ada")));
}

} // namespace
} // namespace vistaTrim::photo
