#include "analysis/distance_maps.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "numeric/kernel_test_support.h"
#include "numeric/linear_algebra.h"
#include "numeric/owned_stack.h"
#include "numeric/vector_ops.h"

namespace vistaTrim {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();

// A stack over guarded planes, and a model in separate stacks.
struct Scene {
    Scene(int32_t planes, int32_t cols, int32_t rows, uint32_t seed) : Out(cols, rows, -1.0f)
    {
        for (int32_t k = 0; k < planes; ++k)
            Planes.push_back(GuardedPlane::Fractions(cols, rows, seed + static_cast<uint32_t>(k)));
        Stack.WrapPlane(cols, rows, Planes[0].Data());
        Stack.Planes.clear();
        for (GuardedPlane& plane : Planes)
            Stack.Planes.push_back(plane.Data());
        Stack.PlaneCount = planes;
        OutStack.WrapPlaneOnly(cols, rows, Out.Data());
        Mean.Create(1, planes, 1);
        Covariance.Create(1, planes, planes);
        for (int32_t i = 0; i < planes; ++i) {
            Mean.Planes[0][i] = 100.3f + 11.7f * static_cast<float>(i);
            for (int32_t j = 0; j < planes; ++j)
                Covariance.Planes[0][i * planes + j] = i == j
                                                           ? 900.1f + 70.0f * static_cast<float>(i)
                                                           : 310.7f / static_cast<float>(1 + i + j);
        }
    }

    void SetCovariance(const std::vector<float>& values)
    {
        std::copy(values.begin(), values.end(), Covariance.Planes[0]);
    }
    void Mahalanobis(bool normalise)
    {
        ComputeMahalanobisMap(Stack, OutStack, Mean.Handle(), Covariance.Handle(), normalise);
    }
    void Scalar(bool normalise)
    {
        ComputeScalarDistanceMap(Stack, OutStack, Mean.Handle(), Covariance.Handle(), normalise);
    }

    std::vector<GuardedPlane> Planes;
    GuardedPlane Out;
    CPlaneStack Stack;
    CPlaneStack OutStack;
    COwnedStack Mean;
    COwnedStack Covariance;
};

// One product of the whole plane, then one pass for each further step.
std::vector<uint32_t> WholePlaneSteps(Scene& scene)
{
    const size_t n = scene.Planes.size();
    const int32_t count = scene.Stack.ElementCount;
    const size_t plane = static_cast<size_t>(count);
    std::vector<float> inverse(n * n);
    InvertRegularised(scene.Covariance.Planes[0], static_cast<int32_t>(n), 10.0f, inverse.data());
    std::vector<float> centred;
    for (size_t k = 0; k < n; ++k)
        for (size_t i = 0; i < plane; ++i)
            centred.push_back(scene.Planes[k].Data()[i] + -scene.Mean.Planes[0][k]);
    std::vector<float> weighted(n * plane);
    linearAlgebra::MultiplyBySymmetric(count, static_cast<int32_t>(n), inverse.data(),
                                       centred.data(), weighted.data());
    std::vector<uint32_t> bits(plane);
    for (size_t i = 0; i < plane; ++i) {
        double sum = 0.0;
        for (size_t k = 0; k < n; ++k)
            sum += static_cast<double>(centred[k * plane + i]) *
                   static_cast<double>(weighted[k * plane + i]);
        const float distance = std::sqrt(static_cast<float>(sum));
        std::memcpy(&bits[i], &distance, sizeof distance);
    }
    return bits;
}

// By Cramer's rule, in extended precision throughout.
long double SlowDistance(const Scene& scene, size_t i)
{
    long double c[3][3];
    long double x[3];
    for (int a = 0; a < 3; ++a) {
        x[a] = static_cast<long double>(scene.Planes[static_cast<size_t>(a)].Data()[i]) -
               static_cast<long double>(scene.Mean.Planes[0][a]);
        for (int b = 0; b < 3; ++b)
            c[a][b] = static_cast<long double>(scene.Covariance.Planes[0][a * 3 + b]) +
                      (a == b ? 10.0L : 0.0L);
    }
    const auto determinant = [](const long double m[3][3]) {
        return m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) -
               m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0]) +
               m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]);
    };
    long double square = 0.0L;
    for (int k = 0; k < 3; ++k) {
        long double replaced[3][3];
        for (int a = 0; a < 3; ++a)
            for (int b = 0; b < 3; ++b)
                replaced[a][b] = b == k ? x[a] : c[a][b];
        square += x[k] * determinant(replaced) / determinant(c);
    }
    return std::sqrt(square);
}

TEST(MahalanobisMap, MatchesOneProductOfTheWholePlaneBitForBit)
{
    const VariantScope scope;
    std::vector<PlaneSize> sizes = AwkwardSizes();
    for (int32_t count : {511, 512, 513, 1023, 1024, 1025, 1537})
        sizes.push_back({count, 1});
    for (IsaVariant variant : AvailableVariants())
        for (const PlaneSize& size : sizes) {
            SCOPED_TRACE(testing::Message()
                         << "variant " << variant << ", " << size.Cols << " x " << size.Rows);
            SelectIsaVariant(variant);
            Scene scene(3, size.Cols, size.Rows, 1);

            scene.Mahalanobis(false);

            EXPECT_EQ(scene.Out.Bits(), WholePlaneSteps(scene));
            EXPECT_TRUE(scene.Out.GuardsIntact());
        }
}

TEST(MahalanobisMap, OfAnIndefiniteCovarianceHasOneCommonScale)
{
    struct Case {
        const char* Name;
        std::vector<float> Covariance;
        float Square; // the common scale of the fallback: first element + 20
    };
    const VariantScope scope;
    for (const IsaVariant variant : AvailableVariants())
        for (const Case& odd :
             {Case{"singular", {0, 0, 0, 0, -10, 0, 0, 0, 0}, 20},
              Case{"of rank 1", {-9, 1, 1, 1, -9, 1, 1, 1, -9}, 11},
              Case{"indefinite", {30, 1, 2, 1, -40, 3, 2, 3, 60}, 50},
              Case{"without a scale", {-20, 0, 0, 0, 50, 0, 0, 0, 50}, 0},
              Case{"of a negative scale", {-50, 0, 0, 0, 50, 0, 0, 0, 50}, -30}}) {
            SCOPED_TRACE(testing::Message() << "variant " << variant << ", " << odd.Name);
            SelectIsaVariant(variant);
            Scene scene(3, 67, 9, 12);
            scene.SetCovariance(odd.Covariance);
            scene.Mahalanobis(false);
            for (size_t i = 0; i < 67 * 9; ++i) {
                double square = 0.0;
                for (size_t k = 0; k < 3; ++k) {
                    const double apart = static_cast<double>(scene.Planes[k].Data()[i]) -
                                         static_cast<double>(scene.Mean.Planes[0][k]);
                    square += apart * apart;
                }
                const float found = scene.Out.Data()[i];
                if (odd.Square == 0) {
                    EXPECT_EQ(found, kInfinity);
                } else if (odd.Square < 0) {
                    EXPECT_TRUE(std::isnan(found));
                } else {
                    const double exact = std::sqrt(square / static_cast<double>(odd.Square));
                    EXPECT_NEAR(static_cast<double>(found), exact, 4e-7 * exact + 1e-6);
                }
            }
        }
}

TEST(MahalanobisMap, OfACovarianceWithNaNIsNaN)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (const size_t where : {0U, 4U, 8U, 1U, 2U, 5U}) {
        SCOPED_TRACE(where);
        Scene scene(3, 67, 9, 13);
        std::vector<float> covariance(scene.Covariance.Planes[0], scene.Covariance.Planes[0] + 9);
        covariance[where] = nan;
        covariance[where % 3 * 3 + where / 3] = nan;
        scene.SetCovariance(covariance);
        scene.Mahalanobis(false);
        for (const float distance : scene.Out.Pixels())
            ASSERT_TRUE(std::isnan(distance));
    }
}

// The variance of a bright flat strip can come out below -10. Such a model has no scale, and its
// plane shows no contrast; a BLAS may leave NaN there instead.
TEST(ScalarDistanceMap, OfAModelWithoutAScaleIsZero)
{
    for (const float variance : {-20.0f, std::numeric_limits<float>::quiet_NaN()}) {
        SCOPED_TRACE(variance);
        Scene scene(1, 67, 9, 14);
        scene.SetCovariance({variance});
        scene.Scalar(false);
        for (const float distance : scene.Out.Pixels())
            ASSERT_TRUE(distance == 0.0f || (!kFixedOrder && std::isnan(distance)));
    }
}

TEST(ScalarDistanceMap, OfExtremeVariancesIsZeroOrInfinite)
{
    Scene scene(1, 67, 9, 14);
    scene.SetCovariance({kInfinity});
    scene.Scalar(false);
    EXPECT_EQ(scene.Out.Data()[0], 0.0f);
    scene.SetCovariance({-10.0f});
    scene.Scalar(false);
    EXPECT_EQ(scene.Out.Data()[0], kInfinity);
}

TEST(MahalanobisMap, MatchesTheDefinition)
{
    Scene scene(3, 640, 427, 2);
    scene.Mahalanobis(false);
    long double worst = 0.0L;
    for (size_t i = 0; i < 640 * 427; ++i) {
        const long double exact = SlowDistance(scene, i);
        worst = std::max(worst, std::fabs(static_cast<long double>(scene.Out.Data()[i]) - exact));
    }
    // 1.3e-6 with the least accurate BLAS kernels, for distances up to 8.
    EXPECT_LT(static_cast<double>(worst), 3e-6);
}

TEST(MahalanobisMap, OfZeroCovarianceIsEuclideanOverRootTen)
{
    Scene scene(3, 33, 17, 3);
    scene.SetCovariance(std::vector<float>(9, 0.0f));
    scene.Mahalanobis(false);
    for (size_t i = 0; i < 33 * 17; ++i) {
        double square = 0.0;
        for (size_t k = 0; k < 3; ++k) {
            const double difference = static_cast<double>(scene.Planes[k].Data()[i]) -
                                      static_cast<double>(scene.Mean.Planes[0][k]);
            square += difference * difference;
        }
        const double exact = std::sqrt(square / 10.0);
        EXPECT_NEAR(static_cast<double>(scene.Out.Data()[i]), exact, 3e-7 * exact + 1e-6);
    }
}

TEST(MahalanobisMap, IsZeroAtTheMean)
{
    Scene scene(3, 17, 5, 4);
    for (size_t k = 0; k < 3; ++k)
        for (int32_t i : {0, 40, 84})
            scene.Planes[k].Data()[i] = scene.Mean.Planes[0][k];
    scene.Mahalanobis(false);
    for (int32_t i : {0, 40, 84})
        EXPECT_EQ(scene.Out.Data()[i], 0.0f);
    EXPECT_GT(scene.Out.Data()[1], 0.0f);
}

TEST(MahalanobisMap, AnIndefiniteCovarianceMakesDistancesInfinite)
{
    Scene scene(3, 9, 5, 5);
    scene.SetCovariance({-20, 0, 0, 0, 50, 0, 0, 0, 50});
    scene.Mahalanobis(false);
    for (float distance : scene.Out.Pixels())
        EXPECT_EQ(distance, kInfinity);
}

// The square is not clamped: with a common scale below 0 its root is NaN.
TEST(MahalanobisMap, ANegativeSquareGivesNaN)
{
    Scene scene(3, 9, 5, 6);
    scene.SetCovariance({-50, 0, 0, 0, 50, 0, 0, 0, 50});
    scene.Mahalanobis(false);
    for (float distance : scene.Out.Pixels())
        EXPECT_TRUE(std::isnan(distance));
}

TEST(MahalanobisMap, NormalisesOnRequestOnly)
{
    Scene scene(3, 65, 33, 7);
    scene.Mahalanobis(false);
    GuardedPlane expected = scene.Out;
    EXPECT_GT(*std::max_element(expected.Data(), expected.Data() + 65 * 33), 1.5f);
    NormalisePlane(expected.Data(), 65 * 33);
    scene.Mahalanobis(true);
    EXPECT_EQ(scene.Out.Bits(), expected.Bits());
}

TEST(MahalanobisMap, TakesOtherNumbersOfPlanes)
{
    for (int32_t planes : {2, 4}) {
        Scene scene(planes, 33, 17, 8);
        // The squares of uncorrelated planes simply add.
        std::vector<float> covariance(static_cast<size_t>(planes * planes), 0.0f);
        for (int32_t k = 0; k < planes; ++k)
            covariance[static_cast<size_t>(k * planes + k)] = 90.0f;
        scene.SetCovariance(covariance);
        scene.Mahalanobis(false);
        for (size_t i = 0; i < 33 * 17; ++i) {
            double square = 0.0;
            for (size_t k = 0; k < scene.Planes.size(); ++k) {
                const double difference = static_cast<double>(scene.Planes[k].Data()[i]) -
                                          static_cast<double>(scene.Mean.Planes[0][k]);
                square += difference * difference / 100.0;
            }
            const double exact = std::sqrt(square);
            EXPECT_NEAR(static_cast<double>(scene.Out.Data()[i]), exact, 4e-7 * exact + 1e-6);
        }
    }
}

// Every step on an element is a single rounded operation, so all bits are known.
TEST(ScalarDistanceMap, SubtractsTheMeanDropsTheSignAndScales)
{
    const VariantScope scope;
    for (IsaVariant variant : AvailableVariants())
        for (const PlaneSize& size : AwkwardSizes()) {
            SCOPED_TRACE(testing::Message()
                         << "variant " << variant << ", " << size.Cols << " x " << size.Rows);
            SelectIsaVariant(variant);
            Scene scene(1, size.Cols, size.Rows, 9);
            const float variance =
                static_cast<float>(static_cast<double>(scene.Covariance.Planes[0][0]) + 10.0);
            const float scale = 1.0f / std::sqrt(variance);
            std::vector<float> expected;
            for (float value : scene.Planes[0].Pixels())
                expected.push_back(std::fabs(value + -scene.Mean.Planes[0][0]) * scale);

            scene.Scalar(false);

            EXPECT_EQ(scene.Out.Pixels(), expected);
            EXPECT_TRUE(scene.Out.GuardsIntact());
        }
}

TEST(ScalarDistanceMap, IsZeroAtTheMean)
{
    Scene scene(1, 17, 5, 10);
    scene.Planes[0].Data()[84] = scene.Mean.Planes[0][0];
    scene.Scalar(false);
    EXPECT_EQ(scene.Out.Data()[84], 0.0f);
}

TEST(ScalarDistanceMap, NormalisesOnRequestOnly)
{
    Scene scene(1, 65, 33, 11);
    scene.Scalar(false);
    GuardedPlane expected = scene.Out;
    EXPECT_GT(*std::max_element(expected.Data(), expected.Data() + 65 * 33), 1.5f);
    NormalisePlane(expected.Data(), 65 * 33);
    scene.Scalar(true);
    EXPECT_EQ(scene.Out.Bits(), expected.Bits());
}

TEST(ScalarDistanceMap, AgreesWithTheGeneralFormUpToRounding)
{
    Scene scene(1, 640, 427, 12);
    scene.Scalar(false);
    const std::vector<float> scalar = scene.Out.Pixels();
    scene.Mahalanobis(false);
    float worst = 0.0f;
    for (size_t i = 0; i < scalar.size(); ++i)
        worst = std::max(worst, std::fabs(scene.Out.Data()[i] - scalar[i]) / scalar[i]);
    // 1.2e-7, one unit in the last place; each form rounds three times.
    EXPECT_LT(worst, 3e-7f);
}

TEST(InvertRegularised, OfOneElementIsItsReciprocal)
{
    const float a = 2.5f;
    float result = 0.0f;
    InvertRegularised(&a, 1, 10.0f, &result);
    EXPECT_EQ(result, 1.0f / 12.5f);
    // No factorisation, hence no fallback either.
    const float negative = -20.0f;
    InvertRegularised(&negative, 1, 10.0f, &result);
    EXPECT_EQ(result, -0.1f);
}

TEST(InvertRegularised, OfZerosIsTheReciprocalOfTheRegulariser)
{
    const std::vector<float> zeros(9, 0.0f);
    std::vector<float> result(9, 5.0f);
    InvertRegularised(zeros.data(), 3, 10.0f, result.data());
    for (size_t i = 0; i < 9; ++i) {
        // Two roundings through the root of 10.
        EXPECT_NEAR(result[i], i % 4 == 0 ? 0.1f : 0.0f, i % 4 == 0 ? 2e-8f : 0.0f);
    }
}

TEST(InvertRegularised, TimesTheRegularisedMatrixIsTheIdentity)
{
    for (int32_t n : {2, 3, 4, 5}) {
        SCOPED_TRACE(n);
        const size_t side = static_cast<size_t>(n);
        std::vector<float> a(side * side);
        for (size_t i = 0; i < side; ++i)
            for (size_t j = 0; j < side; ++j)
                a[i * side + j] =
                    i == j ? 40.0f + static_cast<float>(i) : 30.0f / static_cast<float>(1 + i + j);
        const std::vector<float> before = a;
        std::vector<float> result(side * side);

        InvertRegularised(a.data(), n, 10.0f, result.data());

        EXPECT_EQ(a, before);
        for (size_t i = 0; i < side; ++i)
            for (size_t j = 0; j < side; ++j) {
                EXPECT_EQ(result[i * side + j], result[j * side + i]);
                double sum = 0.0;
                for (size_t k = 0; k < side; ++k)
                    sum += static_cast<double>(result[i * side + k]) *
                           (static_cast<double>(a[k * side + j]) + (k == j ? 10.0 : 0.0));
                // Condition number under 3, so a few units of 6e-8.
                EXPECT_NEAR(sum, i == j ? 1.0 : 0.0, 5e-7);
            }
    }
}

TEST(InvertRegularised, FallsBackToTheFirstDiagonalElementForAll)
{
    // The element already contains the regulariser, which is added once more: 30 + 10 + 10.
    const std::vector<float> a = {30, 1, 2, 1, -40, 3, 2, 3, 60};
    std::vector<float> result(9, 5.0f);
    InvertRegularised(a.data(), 3, 10.0f, result.data());
    const float scale = 1.0f / 50.0f;
    EXPECT_EQ(result, (std::vector<float>{scale, 0, 0, 0, scale, 0, 0, 0, scale}));
}

TEST(InvertRegularised, TheFallbackMayBeInfinite)
{
    const std::vector<float> a = {-20, 0, 0, 0, 50, 0, 0, 0, 50};
    std::vector<float> result(9, 5.0f);
    InvertRegularised(a.data(), 3, 10.0f, result.data());
    EXPECT_EQ(result, (std::vector<float>{kInfinity, 0, 0, 0, kInfinity, 0, 0, 0, kInfinity}));
}

TEST(DotThreePlanes, RoundsOnceInEveryVariant)
{
    const VariantScope scope;
    for (IsaVariant variant : AvailableVariants())
        for (int32_t count = 1; count <= 70; ++count) {
            SCOPED_TRACE(testing::Message() << "variant " << variant << ", count " << count);
            SelectIsaVariant(variant);
            const GuardedPlane a = GuardedPlane::Fractions(count, 3, 13);
            GuardedPlane b = GuardedPlane::Fractions(count, 3, 14);
            for (int32_t i = 0; i < 3 * count; i += 2)
                b.Data()[i] *= -1.0f;
            GuardedPlane result(count, 1);
            GuardedPlane expected(count, 1);
            for (int32_t i = 0; i < count; ++i) {
                double sum = 0.0;
                for (int32_t k = 0; k < 3; ++k)
                    sum += static_cast<double>(a.At(i, k)) * static_cast<double>(b.At(i, k));
                expected.Data()[i] = static_cast<float>(sum);
            }

            DotThreePlanes(a.Data(), b.Data(), count, result.Data());

            EXPECT_EQ(result.Bits(), expected.Bits());
            EXPECT_TRUE(result.GuardsIntact());
        }
}

// In float, adding 1 to 2^24 changes nothing, but adding 2 does.
TEST(DotPlanes, RoundsAtEachPlaneWhereDotThreePlanesDoesNot)
{
    const float a[] = {4096.0f, 1.0f, 1.0f};
    const float b[] = {4096.0f, 1.0f, 1.0f};
    float result = 0.0f;
    DotThreePlanes(a, b, 1, &result);
    EXPECT_EQ(result, 16777218.0f);
    DotPlanes(a, b, 3, 1, &result);
    EXPECT_EQ(result, 16777216.0f);
}

TEST(DotPlanes, SumsAnyNumberOfPlanes)
{
    const VariantScope scope;
    for (IsaVariant variant : AvailableVariants())
        for (int32_t planes : {1, 2, 5})
            for (int32_t count : {1, 7, 8, 17, 33, 65}) {
                SCOPED_TRACE(testing::Message()
                             << "variant " << variant << ", " << planes << " planes of " << count);
                SelectIsaVariant(variant);
                const GuardedPlane a = GuardedPlane::Fractions(count, planes, 15);
                const GuardedPlane b = GuardedPlane::Fractions(count, planes, 16);
                GuardedPlane result(count, 1);
                GuardedPlane expected(count, 1);
                for (int32_t i = 0; i < count; ++i) {
                    float sum = a.At(i, 0) * b.At(i, 0);
                    for (int32_t k = 1; k < planes; ++k) {
                        const float product = a.At(i, k) * b.At(i, k);
                        sum = sum + product;
                    }
                    expected.Data()[i] = sum;
                }

                DotPlanes(a.Data(), b.Data(), planes, count, result.Data());

                EXPECT_EQ(result.Bits(), expected.Bits());
                EXPECT_TRUE(result.GuardsIntact());
            }
}

} // namespace
} // namespace vistaTrim
