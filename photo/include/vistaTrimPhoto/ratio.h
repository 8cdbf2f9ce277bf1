// An aspect ratio as two integers, so that "exactly 16:9" can be tested.
#ifndef VISTATRIM_PHOTO_RATIO_H
#define VISTATRIM_PHOTO_RATIO_H

#include <cstdint>
#include <optional>
#include <string>

namespace vistaTrim::photo {

struct Ratio {
    int64_t Width = 1;
    int64_t Height = 1;

    double Value() const;
    std::string Text() const; // "16:9"
    // As people call it: "21:9" for 64:27, "2.39:1" for a ratio without small terms.
    std::string CommonName() const;
};

bool operator==(const Ratio& a, const Ratio& b);

// Divides both terms by their greatest common divisor. Both must be above 0.
Ratio Reduced(int64_t width, int64_t height);

// "16:9", "16/9", "16x9", "2.35:1" or "1.5"; up to four decimals per term. nullopt for any other
// text.
std::optional<Ratio> ParseRatio(const std::string& text);

// The fraction of the smallest terms that gives the value, for ratios that come as doubles.
// Terms of up to 1000, else the nearest thousandth. The value must be finite and above 0.
Ratio RatioOfValue(double value);

} // namespace vistaTrim::photo

#endif
