#include "vistaTrimPhoto/ratio.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numeric>

namespace vistaTrim::photo {

namespace {

constexpr int64_t kDecimalUnit = 10000; // a term keeps four decimals
constexpr int64_t kLargestTerm = 100000;

// A decimal number above 0 in units of 1/kDecimalUnit, without sign, exponent or space.
std::optional<int64_t> ParseTerm(const std::string& text)
{
    int64_t whole = 0;
    int64_t decimals = 0;
    int64_t unit = kDecimalUnit;
    bool anyDigit = false;
    bool afterPoint = false;
    for (const char c : text) {
        if (c == '.' && !afterPoint) {
            afterPoint = true;
        } else if (c < '0' || c > '9') {
            return std::nullopt;
        } else if (afterPoint) {
            if (unit == 1)
                return std::nullopt;
            unit /= 10;
            decimals += (c - '0') * unit;
            anyDigit = true;
        } else {
            whole = whole * 10 + (c - '0');
            if (whole > kLargestTerm)
                return std::nullopt;
            anyDigit = true;
        }
    }
    const int64_t term = whole * kDecimalUnit + decimals;
    if (!anyDigit || term == 0)
        return std::nullopt;
    return term;
}

} // namespace

double Ratio::Value() const
{
    return static_cast<double>(Width) / static_cast<double>(Height);
}

std::string Ratio::Text() const
{
    return std::to_string(Width) + ":" + std::to_string(Height);
}

std::string Ratio::CommonName() const
{
    // What is sold as 21:9 is 4:3 cubed: 4:3, 16:9 and 64:27 differ by the same factor.
    if (*this == Ratio{64, 27})
        return "21:9";
    if (*this == Ratio{27, 64})
        return "9:21";
    constexpr int64_t kSmallTerm = 32;
    if (std::min(Width, Height) <= kSmallTerm && std::max(Width, Height) <= kSmallTerm)
        return Text();
    char decimals[40];
    std::snprintf(decimals, sizeof decimals, "%.2f", Width >= Height ? Value() : 1.0 / Value());
    std::string number = decimals;
    number.erase(number.find_last_not_of('0') + 1);
    if (number.back() == '.')
        number.pop_back();
    return Width >= Height ? number + ":1" : "1:" + number;
}

bool operator==(const Ratio& a, const Ratio& b)
{
    return a.Width == b.Width && a.Height == b.Height;
}

Ratio Reduced(int64_t width, int64_t height)
{
    const int64_t shared = std::gcd(width, height);
    return {width / shared, height / shared};
}

std::optional<Ratio> ParseRatio(const std::string& text)
{
    const size_t separator = text.find_first_of(":/x");
    const std::optional<int64_t> width = ParseTerm(text.substr(0, separator));
    const std::optional<int64_t> height =
        separator == std::string::npos ? kDecimalUnit : ParseTerm(text.substr(separator + 1));
    if (!width || !height)
        return std::nullopt;
    return Reduced(*width, *height);
}

Ratio RatioOfValue(double value)
{
    for (int64_t height = 1; height <= 1000; ++height) {
        const double width = std::round(value * static_cast<double>(height));
        if (width >= 1.0 && std::abs(width / static_cast<double>(height) - value) < 1e-9)
            return {static_cast<int64_t>(width), height};
    }
    return Reduced(std::max<int64_t>(1, std::llround(value * 1000.0)), 1000);
}

} // namespace vistaTrim::photo
