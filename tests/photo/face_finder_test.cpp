// The face finder, on a portrait that Debian ships and on pictures without a face. Without dlib or
// the portrait, the tests that need them are skipped.
#include "regions/face_finder.h"

#include <algorithm>
#include <string>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "regions/same_region.h"
#include "vistaTrimPhoto/analysis.h"
#include "vistaTrimPhoto/photograph.h"

namespace vistaTrim::photo {
namespace {

using testing::IsEmpty;

// NASA's portrait of Eileen Collins, 512 x 512, in the public domain. Her face takes about the
// columns 175 to 265 and the rows 65 to 165.
const std::string kPortrait = "/usr/lib/python3/dist-packages/skimage/data/astronaut.png";
constexpr PixelRect kFaceInPortrait{175, 65, 90, 100};

class FaceFinder : public testing::Test {
protected:
    void SetUp() override
    {
        if (!HasFaceFinder())
            GTEST_SKIP() << "built without dlib";
    }

    // The portrait with a longer side of `side`, in the top left corner of a grey square.
    static PixelImage PortraitOf(int32_t side)
    {
        const PixelImage portrait = Photograph::FromFile(kPortrait).ReadPreview(side);
        PixelImage image;
        image.Size = {kWorkingLongSide, kWorkingLongSide};
        image.Bytes.assign(size_t{3} * kWorkingLongSide * kWorkingLongSide, 128);
        const size_t row = size_t{3} * static_cast<size_t>(portrait.Size.Width);
        for (int32_t y = 0; y < portrait.Size.Height; ++y)
            std::copy_n(portrait.Bytes.begin() + static_cast<ptrdiff_t>(row) * y, row,
                        image.Bytes.begin() + ptrdiff_t{3} * kWorkingLongSide * y);
        return image;
    }

    static PixelImage Plain(int32_t width, int32_t height)
    {
        PixelImage image;
        image.Size = {width, height};
        image.Bytes.assign(size_t{3} * static_cast<size_t>(width) * static_cast<size_t>(height),
                           90);
        return image;
    }
};

class FaceFinderOnPortrait : public FaceFinder {
protected:
    void SetUp() override
    {
        FaceFinder::SetUp();
        if (!IsSkipped() && access(kPortrait.c_str(), R_OK) != 0)
            GTEST_SKIP() << "python3-skimage is not installed";
    }
};

// More than half of the union of the two, as detectors are commonly judged.
void ExpectOverlap(const PixelRect& a, const PixelRect& b)
{
    const int width = std::min(a.X + a.Width, b.X + b.Width) - std::max(a.X, b.X);
    const int height = std::min(a.Y + a.Height, b.Y + b.Height) - std::max(a.Y, b.Y);
    ASSERT_GT(width, 0);
    ASSERT_GT(height, 0);
    const double common = static_cast<double>(width) * height;
    EXPECT_GT(common / (a.Width * a.Height + b.Width * b.Height - common), 0.5);
}

TEST_F(FaceFinderOnPortrait, BothSearchesFindTheLargeFace)
{
    const PixelImage portrait = PortraitOf(512);
    for (const FaceSearch search : {FaceSearch::Large, FaceSearch::All}) {
        const auto faces = FindFaces(portrait, search);
        ASSERT_FALSE(faces.empty()); // part of her suit counts as another face
        ExpectOverlap(faces[0].Rect, kFaceInPortrait);
        EXPECT_EQ(faces[0].Kind, RegionKind::Face);
        EXPECT_EQ(faces[0].Source, RegionSource::FaceFinder);
        EXPECT_EQ(faces[0].Wish, WishKind::Keep);
        EXPECT_GT(faces[0].Confidence, 0.9);
    }
}

TEST_F(FaceFinderOnPortrait, OnlyTheFineSearchFindsTheSmallFace)
{
    const PixelImage portrait = PortraitOf(256); // the face is about 45 x 50 pixels
    EXPECT_THAT(FindFaces(portrait, FaceSearch::Large), IsEmpty());

    const auto faces = FindFaces(portrait, FaceSearch::All);
    ASSERT_FALSE(faces.empty());
    ExpectOverlap(faces[0].Rect, {kFaceInPortrait.X / 2, kFaceInPortrait.Y / 2,
                                  kFaceInPortrait.Width / 2, kFaceInPortrait.Height / 2});
}

TEST_F(FaceFinderOnPortrait, TheFineSearchFindsWhateverTheCoarseOneFinds)
{
    const PixelImage portrait = PortraitOf(512);
    const auto fine = FindFaces(portrait, FaceSearch::All);
    for (const FoundRegion& face : FindFaces(portrait, FaceSearch::Large))
        EXPECT_TRUE(std::any_of(fine.begin(), fine.end(), [&face](const FoundRegion& other) {
            return AreTheSame(face, other);
        }));
}

TEST_F(FaceFinderOnPortrait, ThreadsFindTheSame)
{
    const PixelImage portrait = PortraitOf(512);
    const auto alone = FindFaces(portrait, FaceSearch::All);
    std::vector<std::vector<FoundRegion>> found(4);
    std::vector<std::thread> threads;
    for (auto& faces : found)
        threads.emplace_back([&] { faces = FindFaces(portrait, FaceSearch::All); });
    for (std::thread& thread : threads)
        thread.join();
    for (const auto& faces : found) {
        ASSERT_EQ(faces.size(), alone.size());
        for (size_t i = 0; i < faces.size(); ++i) {
            EXPECT_EQ(faces[i].Rect, alone[i].Rect);
            EXPECT_EQ(faces[i].Confidence, alone[i].Confidence);
        }
    }
}

// The most confident first. Confidence is a curve over the detector's score, fitted to faces that
// were checked one by one; these are its values for the portrait. The score depends on the last
// levels of the pixels: two ways of scaling them differ by 5e-5.
TEST_F(FaceFinderOnPortrait, ReportsItsConfidenceInEach)
{
    const std::vector<FoundRegion> faces =
        FindFaces(Photograph::FromFile(kPortrait).ReadWorkingPicture().Pixels, FaceSearch::All);
    ASSERT_GE(faces.size(), 2U);
    EXPECT_NEAR(faces[0].Confidence, 0.9999, 1e-3);
    EXPECT_NEAR(faces[1].Confidence, 0.774, 1e-3); // a face on a badge
    for (size_t i = 1; i < faces.size(); ++i)
        EXPECT_GE(faces[i - 1].Confidence, faces[i].Confidence);
}

// The face finder sees the working picture; the regions of an analysis are in photograph pixels.
TEST_F(FaceFinderOnPortrait, FacesOfAnAnalysisAreInPhotographPixels)
{
    const PixelImage portrait = Photograph::FromFile(kPortrait).ReadPreview(512);
    for (const int32_t times : {1, 3}) {
        SCOPED_TRACE(times);
        PixelImage large;
        large.Size = {portrait.Size.Width * times, portrait.Size.Height * times};
        for (int32_t y = 0; y < large.Size.Height; ++y)
            for (int32_t x = 0; x < large.Size.Width; ++x) {
                const auto pixel = portrait.Bytes.begin() +
                                   ptrdiff_t{3} * (y / times * portrait.Size.Width + x / times);
                large.Bytes.insert(large.Bytes.end(), pixel, pixel + 3);
            }
        RegionOptions options;
        options.Faces = FaceSearch::Large;
        const Analysis analysis(Photograph::FromPixels(ViewOf(large)), options);
        ASSERT_FALSE(analysis.Regions().empty());
        ExpectOverlap(analysis.Regions()[0].Rect,
                      {kFaceInPortrait.X * times, kFaceInPortrait.Y * times,
                       kFaceInPortrait.Width * times, kFaceInPortrait.Height * times});
    }
}

TEST_F(FaceFinderOnPortrait, AnAnalysisSearchesAsItsOptionsSay)
{
    const PixelImage portrait = PortraitOf(256); // a small face
    const Photograph photograph = Photograph::FromPixels(ViewOf(portrait));
    for (const FaceSearch search : {FaceSearch::Off, FaceSearch::Large, FaceSearch::All}) {
        RegionOptions options;
        options.Faces = search;
        EXPECT_EQ(Analysis(photograph, options).Regions().empty(), search != FaceSearch::All);
    }
}

TEST_F(FaceFinderOnPortrait, OffFindsNone)
{
    EXPECT_THAT(FindFaces(PortraitOf(512), FaceSearch::Off), IsEmpty());
}

TEST_F(FaceFinder, PlainAndThinPicturesHaveNoFace)
{
    for (const FaceSearch search : {FaceSearch::Large, FaceSearch::All})
        for (const PixelSize size : {PixelSize{640, 427}, {640, 1}, {1, 640}, {640, 20}, {1, 1}})
            EXPECT_THAT(FindFaces(Plain(size.Width, size.Height), search), IsEmpty());
}

TEST(NoFaceFinder, FindsNone)
{
    if (HasFaceFinder())
        GTEST_SKIP() << "built with dlib";
    PixelImage image;
    image.Size = {640, 480};
    image.Bytes.assign(size_t{640} * 480 * 3, 90);
    EXPECT_THAT(FindFaces(image, FaceSearch::All), IsEmpty());
}

} // namespace
} // namespace vistaTrim::photo
