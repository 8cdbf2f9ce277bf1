// Our own linear algebra: the stated order of operations in every ISA variant, and edge cases.
#include "numeric/linear_algebra.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "numeric/kernel_test_support.h"

namespace vistaTrim {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

std::vector<float> Noise(size_t count, uint32_t seed)
{
    std::mt19937 random(seed);
    std::normal_distribution<float> value(0.0f, 40.0f);
    std::vector<float> x(count);
    for (float& v : x)
        v = value(random);
    return x;
}

bool SameBits(const std::vector<float>& a, const std::vector<float>& b)
{
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0;
}

// A symmetric matrix as well conditioned as a covariance with its regulariser.
std::vector<float> Covariance(size_t n, uint32_t seed)
{
    const std::vector<float> x = Noise(n * (n + 1), seed);
    std::vector<float> a(n * n);
    for (size_t i = 0; i < n; ++i)
        for (size_t j = 0; j <= i; ++j) {
            double sum = i == j ? 10.0 : 0.0;
            for (size_t k = 0; k <= n; ++k)
                sum += double(x[i * (n + 1) + k]) * double(x[j * (n + 1) + k]);
            a[i * n + j] = a[j * n + i] = static_cast<float>(sum);
        }
    return a;
}

TEST(FixedOrderExtremes, AreTheFirstOfEqualMagnitude)
{
    const float x[] = {2.0f, -7.0f, 7.0f, -1.0f, 1.0f};
    EXPECT_EQ(fixedOrder::IndexOfLargest(5, x), 1);
    EXPECT_EQ(fixedOrder::IndexOfSmallest(5, x), 3);
    EXPECT_EQ(fixedOrder::IndexOfLargest(1, x), 0);
    EXPECT_EQ(fixedOrder::IndexOfLargest(0, x), 0);
    EXPECT_EQ(fixedOrder::IndexOfSmallest(0, x), 0);
    const float zeros[] = {-0.0f, 0.0f};
    EXPECT_EQ(fixedOrder::IndexOfSmallest(2, zeros), 0);
}

TEST(FixedOrderAddScaled, RoundsTheProductFirstInEveryVariant)
{
    const VariantScope scope;
    for (const IsaVariant variant : AvailableVariants())
        for (const int32_t n : {0, 1, 7, 16, 17, 67, 1283}) {
            SCOPED_TRACE(testing::Message() << "variant " << variant << ", n " << n);
            SelectIsaVariant(variant);
            const std::vector<float> x = Noise(size_t(n) + 1, 1);
            std::vector<float> y = Noise(size_t(n) + 1, 2);
            std::vector<float> expected = y;
            for (size_t i = 0; i < size_t(n); ++i) {
                const float product = 0.33333334f * x[i];
                expected[i] = y[i] + product;
            }
            fixedOrder::AddScaled(n, 0.33333334f, x.data(), y.data());
            EXPECT_TRUE(SameBits(y, expected));
        }
}

TEST(FixedOrderScaleArray, MultipliesAndClearsForZeroAndNaN)
{
    const VariantScope scope;
    for (const IsaVariant variant : AvailableVariants()) {
        SelectIsaVariant(variant);
        std::vector<float> x = Noise(67, 3);
        std::vector<float> expected = x;
        for (float& v : expected)
            v = 1.7f * v;
        fixedOrder::ScaleArray(67, 1.7f, x.data());
        EXPECT_TRUE(SameBits(x, expected));
        for (const float alpha : {0.0f, kNaN}) {
            std::vector<float> odd = {1.0f, kInfinity, kNaN, -2.0f, 9.0f};
            fixedOrder::ScaleArray(4, alpha, odd.data());
            EXPECT_EQ(odd, (std::vector<float>{0.0f, 0.0f, 0.0f, 0.0f, 9.0f}));
        }
    }
}

// Element i goes to sum i % 16; see the source for how the sums are added.
TEST(FixedOrderDotProduct, HasTheStatedOrderInEveryVariant)
{
    const VariantScope scope;
    for (const IsaVariant variant : AvailableVariants())
        for (const int32_t n : {0, 1, 15, 16, 17, 31, 304, 1001}) {
            SCOPED_TRACE(testing::Message() << "variant " << variant << ", n " << n);
            SelectIsaVariant(variant);
            const std::vector<float> x = Noise(size_t(n) + 1, 4);
            const std::vector<float> y = Noise(size_t(n) + 1, 5);
            float sums[16] = {};
            for (size_t i = 0; i < size_t(n); ++i) {
                const float product = x[i] * y[i];
                sums[i % 16] += product;
            }
            for (int step : {4, 8}) {
                for (int i = 0; i < 16; i += 2 * step)
                    for (int k = 0; k < 4; ++k)
                        sums[i + k] += sums[i + step + k];
            }
            const float expected = (sums[0] + sums[1]) + (sums[2] + sums[3]);
            const float found = fixedOrder::DotProduct(n, x.data(), y.data());
            EXPECT_EQ(std::memcmp(&found, &expected, sizeof found), 0) << found;
        }
}

// Only the lower triangle is read, and the terms are added in the order of the columns.
TEST(FixedOrderMultiplyBySymmetric, HasTheStatedOrderInEveryVariant)
{
    const VariantScope scope;
    for (const IsaVariant variant : AvailableVariants())
        for (const size_t n : {1, 2, 3, 5})
            for (const size_t rows : {1, 16, 67}) {
                SCOPED_TRACE(testing::Message()
                             << "variant " << variant << ", " << rows << " x " << n);
                SelectIsaVariant(variant);
                const std::vector<float> whole = Covariance(n, 6);
                std::vector<float> lower = whole;
                for (size_t col = 0; col < n; ++col)
                    for (size_t row = 0; row < col; ++row)
                        lower[row + col * n] = kNaN;
                const std::vector<float> b = Noise(rows * n, 7);
                std::vector<float> expected(rows * n);
                for (size_t i = 0; i < rows; ++i)
                    for (size_t col = 0; col < n; ++col) {
                        float sum = b[i] * whole[col * n];
                        for (size_t k = 1; k < n; ++k) {
                            const float product = b[i + k * rows] * whole[k + col * n];
                            sum = sum + product;
                        }
                        expected[i + col * rows] = sum;
                    }
                std::vector<float> c(rows * n, kNaN);
                fixedOrder::MultiplyBySymmetric(int32_t(rows), int32_t(n), lower.data(), b.data(),
                                                c.data());
                EXPECT_TRUE(SameBits(c, expected));
            }
}

TEST(FixedOrderInverse, TimesTheMatrixIsTheIdentity)
{
    for (const size_t n : {1, 2, 3, 4, 6})
        for (uint32_t seed = 1; seed <= 50; ++seed) {
            SCOPED_TRACE(testing::Message() << n << " x " << n << ", seed " << seed);
            const std::vector<float> a = Covariance(n, seed);
            std::vector<float> inverse = a;
            ASSERT_EQ(fixedOrder::FactorPositiveDefinite(int32_t(n), inverse.data()), 0);
            fixedOrder::InvertFactored(int32_t(n), inverse.data());
            double norm = 0.0;
            double inverseNorm = 0.0;
            for (size_t col = 0; col < n; ++col)
                for (size_t row = col; row < n; ++row) {
                    inverse[col + row * n] = inverse[row + col * n];
                    norm = std::max(norm, double(std::fabs(a[row + col * n])));
                    inverseNorm = std::max(inverseNorm, double(std::fabs(inverse[row + col * n])));
                }
            // Backward stable: about n roundings of 2^-24 times the condition number.
            const double bound = 8.0 * double(n * n) * std::ldexp(norm * inverseNorm, -24);
            for (size_t i = 0; i < n; ++i)
                for (size_t j = 0; j < n; ++j) {
                    double sum = 0.0;
                    for (size_t k = 0; k < n; ++k)
                        sum += double(inverse[i + k * n]) * double(a[k + j * n]);
                    EXPECT_NEAR(sum, i == j ? 1.0 : 0.0, bound);
                }
        }
}

// The factor and the inverse of an integer matrix with an integer factor: no rounding.
TEST(FixedOrderInverse, OfAWorkedExampleIsExact)
{
    // L = {2 . .; 4 1 .; -2 8 4}
    float a[] = {4, 8, -4, 8, 17, 0, -4, 0, 84};
    ASSERT_EQ(fixedOrder::FactorPositiveDefinite(3, a), 0);
    EXPECT_EQ(a[0], 2.0f);
    EXPECT_EQ(a[1], 4.0f);
    EXPECT_EQ(a[2], -2.0f);
    EXPECT_EQ(a[4], 1.0f);
    EXPECT_EQ(a[5], 8.0f);
    EXPECT_EQ(a[8], 4.0f);
    fixedOrder::InvertFactored(3, a);
    // The inverse of L is {1/2 . .; -2 1 .; 17/4 -2 1/4}.
    EXPECT_EQ(a[0], 0.25f + 4.0f + 18.0625f);
    EXPECT_EQ(a[1], -2.0f - 8.5f);
    EXPECT_EQ(a[2], 1.0625f);
    EXPECT_EQ(a[4], 1.0f + 4.0f);
    EXPECT_EQ(a[5], -0.5f);
    EXPECT_EQ(a[8], 0.0625f);
}

TEST(FixedOrderFactor, ReturnsTheFirstMinorThatIsNotPositive)
{
    float first[] = {-1, 0, 0, 0, 1, 0, 0, 0, 1};
    EXPECT_EQ(fixedOrder::FactorPositiveDefinite(3, first), 1);
    float second[] = {1, 2, 0, 2, 4, 0, 0, 0, 1};
    EXPECT_EQ(fixedOrder::FactorPositiveDefinite(3, second), 2);
    float third[] = {1, 0, 0, 0, 1, 0, 0, 0, 0};
    EXPECT_EQ(fixedOrder::FactorPositiveDefinite(3, third), 3);
}

TEST(FixedOrderFactor, LeavesAMatrixWithNaNUnchanged)
{
    for (const size_t where : {0, 1, 2, 4, 5, 8}) {
        float a[] = {9, 1, 2, 1, 9, 3, 2, 3, 9};
        a[where] = kNaN;
        std::vector<float> before(a, a + 9);
        EXPECT_LT(fixedOrder::FactorPositiveDefinite(3, a), 0);
        EXPECT_TRUE(SameBits(std::vector<float>(a, a + 9), before));
        fixedOrder::InvertFactored(3, a);
        EXPECT_TRUE(SameBits(std::vector<float>(a, a + 9), before));
    }
    // Above the diagonal nothing is read.
    float a[] = {4, 0, 0, kNaN, 4, 0, kNaN, kNaN, 4};
    EXPECT_EQ(fixedOrder::FactorPositiveDefinite(3, a), 0);
}

TEST(FixedOrderInverse, OfASingularFactorIsUnchanged)
{
    std::vector<float> a = {2, 1, 1, 0, 0, 1, 0, 0, 3};
    const std::vector<float> before = a;
    fixedOrder::InvertFactored(3, a.data());
    EXPECT_EQ(a, before);
}

} // namespace
} // namespace vistaTrim
