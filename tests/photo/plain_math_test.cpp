// Logarithm and exponential against those of the C library.
#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "ranking/plain_math.h"

namespace vistaTrim::photo {
namespace {

// Measured: 3e-16 and 6e-16 over a million values each.
constexpr double kRelative = 2e-15;

TEST(PlainMath, LogarithmAgreesWithTheLibrary)
{
    std::mt19937 random(1);
    for (int i = 0; i < 100000; ++i) {
        const double x = std::exp((static_cast<double>(random()) / 4294967296.0 - 0.5) * 100);
        const double expected = std::log(x);
        EXPECT_NEAR(PlainLog(x), expected, kRelative * std::max(1.0, std::abs(expected))) << x;
    }
    EXPECT_EQ(PlainLog(1.0), 0.0);
}

TEST(PlainMath, ExponentialAgreesWithTheLibrary)
{
    std::mt19937 random(2);
    for (int i = 0; i < 100000; ++i) {
        const double x = (static_cast<double>(random()) / 4294967296.0 - 0.5) * 600;
        EXPECT_NEAR(PlainExp(x) / std::exp(x), 1.0, kRelative) << x;
    }
    EXPECT_EQ(PlainExp(0.0), 1.0);
    EXPECT_EQ(PlainExp(-1e9), 0.0);
}

} // namespace
} // namespace vistaTrim::photo
