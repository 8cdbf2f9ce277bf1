// What came of one photograph.
#ifndef VISTATRIM_HOST_RESULT_H
#define VISTATRIM_HOST_RESULT_H

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "geometry.h"
#include "ratio.h"
#include "wish.h"

namespace vistaTrim::host {

// The first five are those that the weights weigh, in their order.
constexpr int kNumMeasures = 5;
const char* NameOfMeasure(int measure); // "composition", "coverage", ...
double MeasureOf(const Score& score, int measure);

struct CropExplanation {
    std::array<double, kNumMeasures> Ranks{}; // share of the candidates that are not better
    std::vector<bool> WishesMet;              // as Explanation::Wishes
};

struct SuggestedCrop {
    PixelRect Rect;
    Ratio Aspect;
    bool CoversContent = false;
    vistaTrim::Score Scores;
    std::optional<CropExplanation> Explained;
};

struct Explanation {
    int64_t Candidates = 0;     // tried
    int64_t Passing = 0;        // of these, the ones that every hard wish lets through
    std::vector<Wish> Wishes;   // clipped to the photograph
    std::vector<int64_t> MetBy; // how many candidates meet each wish
    std::string Note;           // why there is no crop, or fewer than asked
};

// Milliseconds.
struct Timings {
    double Read = 0;
    double Analyse = 0;
    double Score = 0;
    double Write = 0;
};

struct PhotoResult {
    std::string File;
    PixelSize Size;
    std::vector<SuggestedCrop> Crops;
    std::optional<Explanation> Explained;
    std::string Error; // empty if all went well
    Timings Times;
    std::vector<std::string> Written; // files
    std::string ReportSection;        // its piece of the page, for `report`
};

} // namespace vistaTrim::host

#endif
