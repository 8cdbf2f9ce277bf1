// Compares the driver's best crops with the slow selection from the driver's own scored
// candidates, over many weights, modes, counts and rectangles of interest. Every record must
// agree, including its merged score. Ties are common in real pictures; both sides break them by
// candidate order.
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "oracle/record_bridge.h"
#include "oracle/slow_scoring.h"
#include "oracle/slow_selection.h"
#include "vistaTrim/vistaTrim.h"

namespace slowOracle {
namespace {

using vistaTrim::SuggestionParameters;

// A dim gradient with a few bright soft discs, so that candidates differ in every measure.
std::vector<uint8_t> DiscPixels(uint32_t width, uint32_t height, uint32_t seed)
{
    std::mt19937 random(seed);
    const auto below = [&random](uint32_t end) { return static_cast<uint32_t>(random() % end); };
    struct Disc {
        double X, Y, Radius, Colour[3];
    };
    std::vector<Disc> discs;
    for (int i = 0; i < 4; ++i) {
        Disc disc;
        disc.X = below(width);
        disc.Y = below(height);
        disc.Radius = 20.0 + below(60U);
        for (double& colour : disc.Colour)
            colour = below(180U);
        discs.push_back(disc);
    }
    std::vector<uint8_t> pixels;
    for (uint32_t y = 0; y < height; ++y)
        for (uint32_t x = 0; x < width; ++x)
            for (int channel = 0; channel < 3; ++channel) {
                double value = 20.0 + 0.02 * x + 0.03 * y + below(8U);
                for (const Disc& disc : discs) {
                    const double distance = std::hypot(x - disc.X, y - disc.Y) / disc.Radius;
                    value += disc.Colour[channel] * std::exp(-distance * distance);
                }
                pixels.push_back(static_cast<uint8_t>(value > 255.0 ? 255.0 : value));
            }
    return pixels;
}

struct Host {
    vistaTrim::IImage* Image;
    vistaTrim::IVistaTrim* Driver;
    std::vector<Roi> Rects;

    Host(uint32_t width, uint32_t height, uint32_t maxPerSide, uint32_t seed)
    {
        const std::vector<uint8_t> pixels = DiscPixels(width, height, seed);
        const int32_t offsets[4] = {0, 1, 2, 3};
        vistaTrim::VistaTrimParameters parameters;
        parameters.SetDefaults();
        parameters.NumMaxCropRectsPerSide = maxPerSide;
        Image = CreateImageObj(height, width, 3, offsets, pixels.data());
        Driver = CreateVistaTrimObj(Image, &parameters);
    }
    ~Host()
    {
        DestroyVistaTrimObj(Driver);
        DestroyImageObj(Image);
    }
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    void AddRect(int left, int right, int top, int bottom, int32_t kind)
    {
        vistaTrim::CRectOfInterest rect(left, right, top, bottom, false);
        rect.Kind = kind;
        Driver->AddRectOfInterest(rect);
        Rects.push_back(FromRecord(rect));
    }
    CropCell All(const SuggestionParameters& request)
    {
        vistaTrim::ICropRects* list = nullptr;
        ComputeCropSuggestions(Driver, &list, &request);
        const CropCell crops = FromRecords(list->Data(), list->Count());
        list->Release();
        return crops;
    }
    CropCell Best(int32_t n, const SuggestionParameters& request, int32_t mode,
                  const vistaTrim::WeightDistribution& weights)
    {
        vistaTrim::ICropRects* list = nullptr;
        GetNTopCropSuggestions(Driver, n, &list, &request, mode, weights);
        const CropCell crops = FromRecords(list->Data(), list->Count());
        list->Release();
        return crops;
    }
};

// Expects the driver to select what the slow selection selects. The order of the candidates is the
// same, so for the selection one cell with all of them is equivalent to the full grid.
void ExpectSameBest(Host& host, int32_t n, const SuggestionParameters& request, int32_t mode,
                    const vistaTrim::WeightDistribution& weights)
{
    SCOPED_TRACE(testing::Message()
                 << "n " << n << ", mode " << mode << ", weights " << weights.Weight1 << ' '
                 << weights.Weight2 << ' ' << weights.Weight3 << ' ' << weights.Weight4 << ' '
                 << weights.Weight5);
    const CropGrid grid(1, CropRow(1, host.All(request)));
    const Selection expected =
        SelectTopCrops(n, grid, mode, kNoIndex, kNoIndex, FromRecord(weights), host.Rects);
    const CropCell found = host.Best(n, request, mode, weights);

    ASSERT_EQ(found.size(), expected.Result.size()) << "ties " << expected.DependsOnTies;
    ASSERT_EQ(found.empty(), n == 0);
    for (size_t i = 0; i < found.size(); ++i)
        ASSERT_TRUE(SameCrop(found[i], expected.Result[i]))
            << "crop " << i << " of " << found.size() << ", ties " << expected.DependsOnTies;
}

void ExpectSameBestForAll(Host& host, const SuggestionParameters& request)
{
    ExpectSameBest(host, 10, request, 0, {0.5, 0.3, 0.2});
    ExpectSameBest(host, 25, request, 0, {0.3, 0.3, 0.2, 0.1, 0.1});
    ExpectSameBest(host, 7, request, 1, {1.0, 1.0, 1.0});
    ExpectSameBest(host, 7, request, 2, {1.0, 1.0, 1.0, 1.0, 1.0});
    ExpectSameBest(host, 7, request, 3, {1.0, 1.0, 1.0});
    ExpectSameBest(host, 12, request, 7, {-1.0, 2.0, 0.5, -4.0, 3.0});
    ExpectSameBest(host, 200, request, 0, {0.5, 0.3, 0.2}); // some clusters serve twice
    ExpectSameBest(host, 100000, request, 0, {0.5, 0.3, 0.2});
    ExpectSameBest(host, 0, request, 0, {0.5, 0.3, 0.2});
}

TEST(DriverAgainstSlowSelection, AgreesOnTheWholeRequestWithoutRectangles)
{
    Host host(640, 480, 9, 1);
    ExpectSameBestForAll(host, SuggestionParameters());
}

TEST(DriverAgainstSlowSelection, SmallRequestsAreNotCut)
{
    Host host(480, 640, 9, 2);
    ExpectSameBestForAll(host, SuggestionParameters(1.0, false));
    ExpectSameBestForAll(host, SuggestionParameters(200.0, 300.0, false));
}

TEST(DriverAgainstSlowSelection, AgreesWithSoftAndHardRectangles)
{
    Host host(640, 480, 7, 3);
    host.AddRect(200, 259, 150, 219, kSoftInclude);
    ExpectSameBestForAll(host, SuggestionParameters());
    host.AddRect(0, 39, 0, 29, kSoftExclude);
    ExpectSameBestForAll(host, SuggestionParameters());
    host.AddRect(300, 310, 200, 230, kHardInclude);
    ExpectSameBestForAll(host, SuggestionParameters());
    host.AddRect(600, 639, 440, 479, kHardExclude);
    ExpectSameBestForAll(host, SuggestionParameters());
}

TEST(DriverAgainstSlowSelection, DisabledRowsStayOut)
{
    Host host(640, 480, 7, 4);
    host.Driver->SetAspectRatioEnabled(1.5, false);
    host.Driver->SetCropRectScaleRatioEnabled(0.4, false);
    host.Driver->SetCropRectScaleRatioEnabled(0.9, false);
    ExpectSameBestForAll(host, SuggestionParameters());
}

TEST(DriverAgainstSlowSelection, RoiScoresMatchTheSlowOnesToTheBit)
{
    Host host(640, 480, 7, 5);
    host.AddRect(120, 199, 90, 169, kSoftInclude);
    host.AddRect(400, 403, 300, 330, kSoftInclude);
    host.AddRect(500, 639, 0, 100, kSoftExclude);
    host.AddRect(0, 9, 0, 9, 4); // unknown kind: no effect
    size_t whole = 0;
    const CropCell crops = host.All(SuggestionParameters());
    for (const Crop& crop : crops) {
        const Rect sides = {crop.Left, crop.Right, crop.Top, crop.Bottom};
        ASSERT_EQ(crop.RoiScore, static_cast<double>(RoiScore(SoftRects(host.Rects), sides)));
        whole += crop.RoiScore == 1.0 ? 1 : 0;
    }
    EXPECT_GT(whole, 0U);
    EXPECT_LT(whole, crops.size());
}

} // namespace
} // namespace slowOracle
