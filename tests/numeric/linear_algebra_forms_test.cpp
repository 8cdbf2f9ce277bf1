// Compares our own linear algebra with CBLAS and LAPACKE, at the sizes that the engine uses.
//
// The kernels of OpenBLAS 0.3.21 for Prescott gave the same bits as ours. Those for Haswell and
// SkylakeX contract products and sums, and each adds in its own order. The comment of each limit
// states how far they differed, relative to the rounded values.
#include "numeric/linear_algebra.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace vistaTrim {
namespace {

class LinearAlgebraForms : public testing::Test {
protected:
    std::vector<float> Noise(size_t count, float scale)
    {
        std::normal_distribution<float> value(0.0f, scale);
        std::vector<float> x(count);
        for (float& v : x)
            v = value(Random);
        return x;
    }

    std::mt19937 Random{11};
};

TEST_F(LinearAlgebraForms, FindTheSameExtremes)
{
    for (const size_t count : {1, 2, 15, 64, 1001, 307200}) {
        std::vector<float> x = Noise(count, 40.0f);
        for (float& v : x)
            v = std::fabs(v);
        const int32_t n = int32_t(count);
        EXPECT_EQ(fixedOrder::IndexOfLargest(n, x.data()), blas::IndexOfLargest(n, x.data()));
        EXPECT_EQ(fixedOrder::IndexOfSmallest(n, x.data()), blas::IndexOfSmallest(n, x.data()));
    }
    const float none = 3.0f;
    EXPECT_EQ(blas::IndexOfLargest(0, &none), 0);
    EXPECT_EQ(blas::IndexOfSmallest(0, &none), 0);
}

TEST_F(LinearAlgebraForms, ScaleAlike)
{
    const std::vector<float> x = Noise(1001, 40.0f);
    std::vector<float> ours = x;
    std::vector<float> theirs = x;
    fixedOrder::ScaleArray(1001, 0.7f, ours.data());
    blas::ScaleArray(1001, 0.7f, theirs.data());
    EXPECT_EQ(ours, theirs);
}

// A contracted step omits one rounding: half a unit in the last place of the product.
TEST_F(LinearAlgebraForms, AddScaledAgreesWithinARounding)
{
    const std::vector<float> x = Noise(100003, 1.0f);
    std::vector<float> ours = Noise(100003, 1.0f);
    std::vector<float> theirs = ours;
    const std::vector<float> y = ours;
    fixedOrder::AddScaled(100003, 0.33333334f, x.data(), ours.data());
    blas::AddScaled(100003, 0.33333334f, x.data(), theirs.data());
    for (size_t i = 0; i < ours.size(); ++i)
        ASSERT_NEAR(ours[i], theirs[i],
                    std::ldexp(std::fabs(x[i]) + std::fabs(y[i]) + std::fabs(ours[i]), -24));
}

// Sums of 304 products. Measured: 4.2e-8 of the sum of the magnitudes (SkylakeX); the limit is
// three times that.
TEST_F(LinearAlgebraForms, DotProductsStayClose)
{
    double worst = 0.0;
    for (int trial = 0; trial < 2000; ++trial) {
        const std::vector<float> x = Noise(304, 1.0f);
        const std::vector<float> y = Noise(304, 0.3f);
        double magnitude = 0.0;
        for (size_t i = 0; i < x.size(); ++i)
            magnitude += std::fabs(double(x[i]) * double(y[i]));
        const double ours = fixedOrder::DotProduct(304, x.data(), y.data());
        const double theirs = blas::DotProduct(304, x.data(), y.data());
        worst = std::max(worst, std::fabs(ours - theirs) / magnitude);
    }
    std::printf("dot product: %.3g of the sum of the magnitudes\n", worst);
    EXPECT_LE(worst, 1.3e-7);
}

// Three products of a pixel and a row of the inverse. Measured: 2.3e-7 (Haswell, SkylakeX), two
// roundings in each form; the limit is three.
TEST_F(LinearAlgebraForms, SymmetricProductsStayClose)
{
    double worst = 0.0;
    for (int trial = 0; trial < 50; ++trial) {
        const std::vector<float> b = Noise(3 * 1027, 80.0f);
        std::vector<float> a = Noise(9, 0.01f);
        for (size_t col = 1; col < 3; ++col)
            for (size_t row = 0; row < col; ++row)
                a[row + col * 3] = a[col + row * 3];
        std::vector<float> ours(b.size());
        std::vector<float> theirs(b.size());
        fixedOrder::MultiplyBySymmetric(1027, 3, a.data(), b.data(), ours.data());
        blas::MultiplyBySymmetric(1027, 3, a.data(), b.data(), theirs.data());
        for (size_t i = 0; i < 1027; ++i)
            for (size_t col = 0; col < 3; ++col) {
                double magnitude = 0.0;
                for (size_t k = 0; k < 3; ++k)
                    magnitude += std::fabs(double(b[i + k * 1027]) * double(a[k + col * 3]));
                worst = std::max(worst, std::fabs(double(ours[i + col * 1027]) -
                                                  double(theirs[i + col * 1027])) /
                                            magnitude);
            }
    }
    std::printf("symmetric product: %.3g of the sum of the magnitudes\n", worst);
    EXPECT_LE(worst, 3 * std::ldexp(1.0, -23));
}

// Covariances with the regulariser on the diagonal. The error of an inverse grows with the
// condition number. Measured: 1.9e-7 of the largest element, per condition number (SkylakeX); the
// limit is three times that.
TEST_F(LinearAlgebraForms, InversesStayClose)
{
    double worst = 0.0;
    for (int trial = 0; trial < 5000; ++trial) {
        const float scale = std::exp(std::normal_distribution<float>(2.0f, 1.5f)(Random));
        const std::vector<float> x = Noise(12, scale);
        std::vector<float> a(9);
        double norm = 0.0;
        for (size_t i = 0; i < 3; ++i)
            for (size_t j = 0; j < 3; ++j) {
                double sum = i == j ? 10.0 : 0.0;
                for (size_t k = 0; k < 4; ++k)
                    sum += double(x[std::min(i, j) * 4 + k]) * double(x[std::max(i, j) * 4 + k]);
                a[i * 3 + j] = static_cast<float>(sum);
                norm = std::max(norm, std::fabs(sum));
            }
        std::vector<float> ours = a;
        std::vector<float> theirs = a;
        ASSERT_EQ(fixedOrder::FactorPositiveDefinite(3, ours.data()), 0);
        ASSERT_EQ(blas::FactorPositiveDefinite(3, theirs.data()), 0);
        fixedOrder::InvertFactored(3, ours.data());
        blas::InvertFactored(3, theirs.data());
        double largest = 0.0;
        double difference = 0.0;
        for (size_t i = 0; i < 9; ++i) {
            if (i == 3 || i == 6 || i == 7)
                continue; // above the diagonal
            largest = std::max(largest, std::fabs(double(ours[i])));
            difference = std::max(difference, std::fabs(double(ours[i]) - double(theirs[i])));
        }
        worst = std::max(worst, difference / largest / std::max(norm * largest, 1.0));
    }
    std::printf("inverse: %.3g of the largest element, per condition number\n", worst);
    EXPECT_LE(worst, 6e-7);
}

TEST_F(LinearAlgebraForms, RejectTheSameMatrices)
{
    const std::vector<std::vector<float>> matrices = {{-1, 0, 0, 0, 1, 0, 0, 0, 1},
                                                      {1, 2, 0, 2, 3, 0, 0, 0, 1},
                                                      {1, 0, 0, 0, 1, 0, 0, 0, -2},
                                                      {9, NAN, 2, 1, 9, 3, 2, 3, 9},
                                                      {4, 1, 1, 1, 4, 1, 1, 1, 4}};
    for (const std::vector<float>& matrix : matrices) {
        std::vector<float> ours = matrix;
        std::vector<float> theirs = matrix;
        const int32_t our = fixedOrder::FactorPositiveDefinite(3, ours.data());
        const int32_t their = blas::FactorPositiveDefinite(3, theirs.data());
        EXPECT_EQ(our < 0, their < 0);
        EXPECT_EQ(std::max(our, 0), std::max(their, 0));
    }
}

} // namespace
} // namespace vistaTrim
