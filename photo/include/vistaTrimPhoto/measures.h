// The measures of a crop: one table that everything that shows, weighs or explains them reads.
#ifndef VISTATRIM_PHOTO_MEASURES_H
#define VISTATRIM_PHOTO_MEASURES_H

#include <array>
#include <cstddef>

namespace vistaTrim::photo {

// How well a crop does, each about 0 to 1. Merged is the rank by all of them, 0 to 2: above 1
// are the crops that cover the content.
struct Scores {
    double Composition = 0;
    double Coverage = 0;
    double Border = 0;
    double Peak = 0;
    double CentrePeak = 0;
    double Roi = 0;
    double Merged = 0;
};

struct Weights {
    double Composition = 0;
    double Coverage = 0;
    double Border = 0;
    double Peak = 0;
    double CentrePeak = 0;
};

struct Measure {
    const char* Name;   // in files, "centrePeak"
    const char* Column; // heading of a narrow column, "centre"
    const char* Label;  // for people, "Centre peak"
    const char* Hint;   // one line that says what it measures
    double Scores::*Value;
    double Weights::*Weight; // null: not one of those that the weights weigh
};

constexpr size_t kNumMeasures = 7;
// The first ones are weighed, in the order in which weights are written.
constexpr size_t kNumWeighed = 5;

constexpr std::array<Measure, kNumMeasures> kMeasures = {{
    {"composition", "comp", "Composition", "the fitted composition model", &Scores::Composition,
     &Weights::Composition},
    {"coverage", "cover", "Coverage", "share of the picture's content inside the crop",
     &Scores::Coverage, &Weights::Coverage},
    {"border", "border", "Border", "how much the crop's edges run through background",
     &Scores::Border, &Weights::Border},
    {"peak", "peak", "Peak", "share of the strongest content inside the crop", &Scores::Peak,
     &Weights::Peak},
    {"centrePeak", "centre", "Centre peak",
     "share of the strongest content in the crop's central third", &Scores::CentrePeak,
     &Weights::CentrePeak},
    {"roi", "roi", "Wishes", "how well the soft wishes are met", &Scores::Roi, nullptr},
    {"merged", "merged", "Merged rank", "rank by all measures and their weights", &Scores::Merged,
     nullptr},
}};

} // namespace vistaTrim::photo

#endif
