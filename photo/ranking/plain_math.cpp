#include "ranking/plain_math.h"

#include <cmath>

namespace vistaTrim::photo {

namespace {

// ln 2 in two parts: the first has zeros at its end, so that its products with integers up to 2000
// are exact.
constexpr double kLn2High = 0x1.62e42fefa2000p-1;
constexpr double kLn2Low = 0x1.9ef35793c7673p-41;

} // namespace

// x = m 2^e with m near 1; ln m = 2 artanh((m - 1) / (m + 1)), computed as a series.
double PlainLog(double x)
{
    int exponent = 0;
    double m = std::frexp(x, &exponent); // 0.5 .. 1
    if (m < 0.70710678118654752) {
        m *= 2;
        --exponent;
    }
    const double t = (m - 1) / (m + 1); // |t| < 0.1716
    const double t2 = t * t;
    double sum = 0;
    for (int k = 21; k >= 1; k -= 2)
        sum = sum * t2 + 1.0 / k;
    const double e = exponent;
    return e * kLn2High + (2 * t * sum + e * kLn2Low);
}

// x = k ln 2 + r with |r| <= ln 2 / 2; e^r computed as a series.
double PlainExp(double x)
{
    if (x < -700)
        return 0;
    const double k = std::floor(x / kLn2High + 0.5);
    const double r = (x - k * kLn2High) - k * kLn2Low;
    double sum = 1;
    for (int n = 14; n >= 1; --n)
        sum = 1 + sum * r / n;
    return std::ldexp(sum, static_cast<int>(k));
}

} // namespace vistaTrim::photo
