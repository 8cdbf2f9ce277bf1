// Strip statistics computed without tables must have the same bits as those read from tables.
#include "analysis/strip_moments.h"

#include <cstring>
#include <vector>

#include "numeric/kernel_test_support.h"
#include "numeric/owned_stack.h"
#include "numeric/summed_area.h"

namespace vistaTrim {
namespace {

struct Scene {
    Scene(int32_t cols, int32_t rows, float offset)
    {
        Stack.Create(3, cols, rows);
        for (size_t k = 0; k < 3; ++k) {
            const GuardedPlane pixels = GuardedPlane::Fractions(cols, rows, uint32_t(k) + 1);
            for (int32_t i = 0; i < Stack.ElementCount; ++i)
                Stack.Planes[k][i] = offset + 0.3f * pixels.Data()[i];
        }
        BuildTables(Stack);
    }

    COwnedStack Owned;
    CPlaneStack& Stack = Owned.Handle();
};

void ExpectStatisticsOfTheTables(const CPlaneStack& stack, const CStripMoments& moments,
                                 const std::vector<CStripRect>& group)
{
    float means[3];
    float covariances[9];
    moments.Statistics(group, means, covariances);

    COwnedStack ownMean;
    CPlaneStack& mean = ownMean.Handle();
    COwnedStack ownCovariance;
    CPlaneStack& covariance = ownCovariance.Handle();
    mean.Create(1, 3, 1);
    covariance.Create(1, 3, 3);
    ComputeStripStatistics(stack, mean, covariance, group);
    EXPECT_EQ(std::memcmp(means, mean.Planes[0], sizeof means), 0);
    EXPECT_EQ(std::memcmp(covariances, covariance.Planes[0], sizeof covariances), 0);
}

// The tables of bright planes lose digits, so adding in another order would show.
TEST(StripMoments, MatchTheTablesInEveryVariant)
{
    const VariantScope scope;
    std::vector<PlaneSize> sizes = AwkwardSizes();
    for (const PlaneSize& size : {PlaneSize{640, 480}, PlaneSize{131, 640}, PlaneSize{65, 16}})
        sizes.push_back(size);
    for (const PlaneSize& size : sizes) {
        const Scene scene(size.Cols, size.Rows, 170.3f);
        const BorderStrips wide = MakeBorderStrips(size.Cols, size.Rows, 0.25f);
        const BorderStrips narrow = MakeBorderStrips(size.Cols, size.Rows, 0.2f);
        for (const IsaVariant variant : AvailableVariants()) {
            SCOPED_TRACE(testing::Message()
                         << "variant " << variant << ", " << size.Cols << " x " << size.Rows);
            SelectIsaVariant(variant);
            const CStripMoments moments(scene.Stack,
                                        {wide.Top, wide.Bottom, wide.Left, wide.Right, narrow.Top,
                                         narrow.Bottom, narrow.Left, narrow.Right});
            for (const BorderStrips& strips : {wide, narrow}) {
                ExpectStatisticsOfTheTables(scene.Stack, moments, {strips.Top});
                ExpectStatisticsOfTheTables(scene.Stack, moments, {strips.Right});
                ExpectStatisticsOfTheTables(scene.Stack, moments,
                                            {strips.Left, strips.Right, strips.Bottom});
                ExpectStatisticsOfTheTables(scene.Stack, moments,
                                            {strips.Left, strips.Right, strips.Top});
            }
        }
    }
}

TEST(StripMoments, AcceptAnyRectangles)
{
    const Scene scene(97, 53, 0.0f);
    const std::vector<CStripRect> rects = {
        {3, 5, 70, 40, 68 * 36}, {0, 52, 96, 52, 97}, {96, 0, 96, 52, 53}, {64, 16, 64, 16, 1}};
    const CStripMoments moments(scene.Stack, rects);
    for (const CStripRect& rect : rects)
        ExpectStatisticsOfTheTables(scene.Stack, moments, {rect});
    ExpectStatisticsOfTheTables(scene.Stack, moments, rects);
}

} // namespace
} // namespace vistaTrim
