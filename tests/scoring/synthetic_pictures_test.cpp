#include <gtest/gtest.h>

#include "scoring/all_candidates.h"

using namespace vistaTrim::testPictures;

namespace scoringTests {
namespace {

TEST(SyntheticPictures, AllCandidatesOfBlobsMatchTheSlowForm)
{
    ExpectAllCandidatesAsSlow(Blobs(640, 480, 1));
}

TEST(SyntheticPictures, AllCandidatesOfAPortraitMatchTheSlowForm)
{
    ExpectAllCandidatesAsSlow(Blobs(427, 640, 2));
}

TEST(SyntheticPictures, AllCandidatesOfASquareMatchTheSlowForm)
{
    ExpectAllCandidatesAsSlow(Blobs(640, 640, 3));
}

TEST(SyntheticPictures, AllCandidatesOfNoiseMatchTheSlowForm)
{
    ExpectAllCandidatesAsSlow(Noise(640, 361, 4));
}

TEST(SyntheticPictures, AllCandidatesOfFlatOnesMatchTheSlowForm)
{
    ExpectAllCandidatesAsSlow(Flat(640, 200, 90, 120, 30));
    ExpectAllCandidatesAsSlow(Gradient(200, 640));
    ExpectAllCandidatesAsSlow(HalfAndHalf(640, 311));
    ExpectAllCandidatesAsSlow(Checkerboard(640, 273, 16));
    ExpectAllCandidatesAsSlow(OneBrightPixel(333, 640));
}

// Crops thinner than the grids, and a panorama.
TEST(SyntheticPictures, AllCandidatesOfThinOnesMatchTheSlowForm)
{
    ExpectAllCandidatesAsSlow(Blobs(640, 40, 5));
    ExpectAllCandidatesAsSlow(Blobs(17, 640, 6));
    ExpectAllCandidatesAsSlow(Blobs(640, 90, 7));
}

} // namespace
} // namespace scoringTests
