// The regions of a photograph from all sources together: the caller's, those of its metadata, and
// the faces found.
#include "regions/find_regions.h"

#include <algorithm>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "vistaTrimPhoto/analysis.h"
#include "vistaTrimPhoto/photo_error.h"

namespace vistaTrim::photo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr PixelSize kPhoto{2000, 1200};

WorkingPicture PictureWith(const std::vector<FoundRegion>& named)
{
    WorkingPicture picture;
    picture.Photo = kPhoto;
    picture.Pixels.Size = WorkingSize(kPhoto);
    picture.Pixels.Bytes.assign(size_t{640} * 384 * 3, 100);
    picture.NamedRegions = named;
    return picture;
}

FoundRegion Region(const PixelRect& rect, RegionKind kind, const std::string& label,
                   std::optional<WishKind> wish = WishKind::Keep)
{
    return {rect, kind, RegionSource::File, 0.5, label, wish};
}

FoundRegion Named(const PixelRect& rect, RegionKind kind, const std::string& label)
{
    return {rect, kind, RegionSource::Metadata, 1.0, label, WishKind::Keep};
}

std::vector<FoundRegion> Found(const WorkingPicture& picture, const RegionOptions& options)
{
    return RegionSearch(picture, options).Finish();
}

std::vector<std::string> Labels(const std::vector<FoundRegion>& regions)
{
    std::vector<std::string> labels;
    for (const FoundRegion& region : regions)
        labels.push_back(region.Label);
    return labels;
}

TEST(FindRegions, TheCallersRegionsComeFirstAndThoseOfTheMetadataAreAdded)
{
    const WorkingPicture picture =
        PictureWith({Named({105, 100, 300, 300}, RegionKind::Face, "the same face"),
                     Named({100, 100, 300, 300}, RegionKind::Animal, "an animal there"),
                     Named({1000, 500, 200, 200}, RegionKind::Other, "a place"),
                     Named({1005, 505, 200, 200}, RegionKind::Other, "the same place")});
    RegionOptions options;
    options.Faces = FaceSearch::Off;
    options.Regions = {Region({100, 100, 300, 300}, RegionKind::Face, "a face"),
                       Region({102, 100, 300, 300}, RegionKind::Face, "that face again"),
                       Region({1700, 900, 100, 100}, RegionKind::Subject, "a boat")};
    EXPECT_THAT(Labels(Found(picture, options)),
                ElementsAre("a face", "a boat", "an animal there", "a place"));
    options.UseNamed = false;
    EXPECT_THAT(Labels(Found(picture, options)), ElementsAre("a face", "a boat"));
    options.Regions.clear();
    EXPECT_THAT(Found(picture, options), IsEmpty());
    options.UseNamed = true;
    EXPECT_THAT(Labels(Found(picture, options)),
                ElementsAre("the same face", "an animal there", "a place"));
}

TEST(FindRegions, EveryFieldOfARegionIsKept)
{
    RegionOptions options;
    options.Faces = FaceSearch::Off;
    options.Regions = {
        {{10, 20, 30, 40}, RegionKind::Animal, RegionSource::File, 0.25, "Rex", std::nullopt},
        {{510, 20, 30, 40}, RegionKind::Face, RegionSource::FaceFinder, 0.75, "", WishKind::Avoid}};
    const std::vector<FoundRegion> named = {
        {{910, 20, 30, 40}, RegionKind::Subject, RegionSource::Metadata, 0.5, "x", WishKind::Keep}};
    std::vector<FoundRegion> expected = options.Regions;
    expected.push_back(named[0]);
    const std::vector<FoundRegion> found = Found(PictureWith(named), options);
    ASSERT_EQ(found.size(), expected.size());
    for (size_t i = 0; i < found.size(); ++i) {
        EXPECT_EQ(found[i].Rect, expected[i].Rect);
        EXPECT_EQ(found[i].Kind, expected[i].Kind);
        EXPECT_EQ(found[i].Source, expected[i].Source);
        EXPECT_EQ(found[i].Confidence, expected[i].Confidence);
        EXPECT_EQ(found[i].Label, expected[i].Label);
        EXPECT_EQ(found[i].Wish, expected[i].Wish);
    }
}

TEST(FindRegions, TheCallersRegionsAreClippedToThePhotograph)
{
    const std::pair<PixelRect, PixelRect> cases[] = {{{-50, -20, 100, 100}, {0, 0, 50, 80}},
                                                     {{1950, 1150, 100, 100}, {1950, 1150, 50, 50}},
                                                     {{-10, 300, 3000, 10}, {0, 300, 2000, 10}},
                                                     {{1999, 1199, 1, 1}, {1999, 1199, 1, 1}}};
    for (const auto& [rect, expected] : cases)
        for (const WishKind wish :
             {WishKind::Keep, WishKind::MustKeep, WishKind::Avoid, WishKind::MustAvoid}) {
            RegionOptions options;
            options.Faces = FaceSearch::Off;
            options.Regions = {Region(rect, RegionKind::Other, "", wish)};
            const std::vector<FoundRegion> found = Found(PictureWith({}), options);
            ASSERT_EQ(found.size(), 1U);
            EXPECT_EQ(found[0].Rect, expected);
        }
}

// A region to keep outside the photograph cannot be kept; one to avoid is avoided already, and one
// without a wish is dropped.
TEST(FindRegions, OutsideThePhotographOnlyThoseToKeepAreRefused)
{
    for (const PixelRect& rect :
         {PixelRect{2000, 0, 50, 50}, {0, 1200, 50, 50}, {-50, 0, 50, 50}, {0, -50, 50, 50}}) {
        for (const auto& wish : {std::optional<WishKind>(), std::optional(WishKind::Avoid),
                                 std::optional(WishKind::MustAvoid)}) {
            RegionOptions options;
            options.Faces = FaceSearch::Off;
            options.Regions = {Region(rect, RegionKind::Other, "outside", wish),
                               Region({5, 5, 9, 9}, RegionKind::Other, "inside")};
            EXPECT_THAT(Labels(Found(PictureWith({}), options)), ElementsAre("inside"));
        }
        for (const WishKind wish : {WishKind::Keep, WishKind::MustKeep}) {
            RegionOptions options;
            options.Regions = {Region(rect, RegionKind::Other, "", wish)};
            try {
                Analysis(PictureWith({}), options);
                ADD_FAILURE() << "no error";
            } catch (const PhotoError& error) {
                EXPECT_EQ(error.GetKind(), PhotoError::Kind::DoesNotFit);
                ASSERT_TRUE(error.ConcernedWish());
                EXPECT_EQ(error.ConcernedWish()->Kind, wish);
                EXPECT_EQ(error.ConcernedWish()->Rect, rect);
                EXPECT_NE(std::string(error.what()).find("2000 x 1200"), std::string::npos);
            }
        }
    }
    for (const PixelRect& rect : {PixelRect{5, 5, 0, 5}, {5, 5, 5, -1}}) {
        RegionOptions options;
        options.Regions = {Region(rect, RegionKind::Other, "", std::nullopt)};
        EXPECT_THROW(RegionSearch(PictureWith({}), options), PhotoError);
    }
}

// NASA's portrait of Eileen Collins in the public domain, which Debian ships.
const std::string kPortrait = "/usr/lib/python3/dist-packages/skimage/data/astronaut.png";

bool HasFace(const std::vector<FoundRegion>& regions, RegionSource source)
{
    return std::any_of(regions.begin(), regions.end(), [source](const FoundRegion& region) {
        return region.Kind == RegionKind::Face && region.Source == source;
    });
}

// Naming a face skips the search for others; naming anything else does not.
TEST(FindRegions, FacesAreSearchedForUnlessOneIsNamed)
{
    if (!HasFaceFinder() || access(kPortrait.c_str(), R_OK) != 0)
        GTEST_SKIP() << "needs dlib and python3-skimage";
    const WorkingPicture portrait = Photograph::FromFile(kPortrait).ReadWorkingPicture();
    const PixelRect corner{400, 400, 50, 50};
    for (const RegionKind kind : {RegionKind::Face, RegionKind::Animal})
        for (const bool byMetadata : {false, true})
            for (const int threads : {1, 2}) {
                SCOPED_TRACE(testing::Message() << NameOf(kind) << " " << byMetadata);
                WorkingPicture picture = portrait;
                RegionOptions options;
                options.Faces = FaceSearch::Large;
                options.Threads = threads;
                if (byMetadata)
                    picture.NamedRegions = {Named(corner, kind, "named")};
                else
                    options.Regions = {Region(corner, kind, "named")};
                const bool expected = kind != RegionKind::Face;
                const std::vector<FoundRegion> found = Found(picture, options);
                EXPECT_EQ(HasFace(found, RegionSource::FaceFinder), expected);
                EXPECT_EQ(found.at(0).Label, "named");
                // Metadata regions that are not used do not skip the search.
                options.UseNamed = false;
                EXPECT_EQ(HasFace(Found(picture, options), RegionSource::FaceFinder),
                          expected || byMetadata);
                options.Faces = FaceSearch::Off;
                EXPECT_FALSE(HasFace(Found(picture, options), RegionSource::FaceFinder));
            }
}

} // namespace
} // namespace vistaTrim::photo
