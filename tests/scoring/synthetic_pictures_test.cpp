#include <gtest/gtest.h>

#include "scoring/all_candidates.h"

using namespace vistaTrim::testPictures;

namespace scoringTests {
namespace {

TEST(SyntheticPictures, AllCandidatesOfBlobsMatchTheSlowForm)
{
    ExpectAllCandidatesMatchTheOracle(Blobs(640, 480, 1));
}

TEST(SyntheticPictures, AllCandidatesOfAPortraitMatchTheSlowForm)
{
    ExpectAllCandidatesMatchTheOracle(Blobs(427, 640, 2));
}

TEST(SyntheticPictures, AllCandidatesOfASquareMatchTheSlowForm)
{
    ExpectAllCandidatesMatchTheOracle(Blobs(640, 640, 3));
}

TEST(SyntheticPictures, AllCandidatesOfNoiseMatchTheSlowForm)
{
    ExpectAllCandidatesMatchTheOracle(Noise(640, 361, 4));
}

TEST(SyntheticPictures, AllCandidatesOfPlainPicturesMatchTheSlowForm)
{
    ExpectAllCandidatesMatchTheOracle(Flat(640, 200, 90, 120, 30));
    ExpectAllCandidatesMatchTheOracle(Gradient(200, 640));
    ExpectAllCandidatesMatchTheOracle(HalfAndHalf(640, 311));
    ExpectAllCandidatesMatchTheOracle(Checkerboard(640, 273, 16));
    ExpectAllCandidatesMatchTheOracle(OneBrightPixel(333, 640));
}

// Crops thinner than the grids, and a panorama.
TEST(SyntheticPictures, AllCandidatesOfThinPicturesMatchTheSlowForm)
{
    ExpectAllCandidatesMatchTheOracle(Blobs(640, 40, 5));
    ExpectAllCandidatesMatchTheOracle(Blobs(17, 640, 6));
    ExpectAllCandidatesMatchTheOracle(Blobs(640, 90, 7));
}

} // namespace
} // namespace scoringTests
