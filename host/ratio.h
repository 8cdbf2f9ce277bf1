// An aspect ratio as two whole numbers, so that "exactly 16:9" is a question with an answer.
#ifndef VISTATRIM_HOST_RATIO_H
#define VISTATRIM_HOST_RATIO_H

#include <cstdint>
#include <optional>
#include <string>

namespace vistaTrim::host {

struct Ratio {
    int64_t Width = 1;
    int64_t Height = 1;

    double Value() const;
    std::string Text() const; // "16:9"
};

bool operator==(const Ratio& a, const Ratio& b);

// Divides both terms by what they share. Both must be above 0.
Ratio Reduced(int64_t width, int64_t height);

// "16:9", "2.35:1" or "1.5"; up to four decimals a term. Nothing for any other text.
std::optional<Ratio> ParseRatio(const std::string& text);

// The fraction of the smallest terms that gives value, for ratios that come as doubles from
// the library's default table. Terms of up to 1000, else the nearest thousandth.
Ratio RatioOfValue(double value);

} // namespace vistaTrim::host

#endif
