// The measures of a crop: one table that everything that shows, weighs or explains them reads.
#ifndef VISTATRIM_PHOTO_MEASURES_H
#define VISTATRIM_PHOTO_MEASURES_H

#include <array>
#include <cstddef>

namespace vistaTrim::photo {

// How well a crop does, each about 0 to 1. Merged is the share of the candidates that rank no
// higher; where the engine ranks, it is the weighted sum of the ranks by each measure: 0 to 1 for
// weights that sum to 1.
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
    const char* Hint;   // what it measures, explained for newcomers
    double Scores::*Value;
    double Weights::*Weight; // null: the measure has no weight
};

constexpr size_t kNumMeasures = 7;
// The first ones have weights; weights are written in this order.
constexpr size_t kNumWeighed = 5;

constexpr std::array<Measure, kNumMeasures> kMeasures = {{
    {"composition", "comp", "Composition",
     "How well the content is placed inside the crop, in the eyes of a model that was fitted to "
     "crops made and rated by people.",
     &Scores::Composition, &Weights::Composition},
    {"coverage", "cover", "Coverage",
     "How much of what draws the eye is inside the crop: the contrasts, colours and edges of the "
     "whole photograph. 1 leaves nothing out.",
     &Scores::Coverage, &Weights::Coverage},
    {"border", "border", "Border",
     "How quiet the sides of the crop are. Near 1, they run through the same background as the "
     "borders of the photograph; near 0, they cut through things.",
     &Scores::Border, &Weights::Border},
    {"peak", "peak", "Peak",
     "How much of the most striking part of the photograph is inside the crop. 1 is all of it.",
     &Scores::Peak, &Weights::Peak},
    {"centrePeak", "centre", "Centre peak",
     "How much of the most striking part of the photograph lies in the central third of the crop.",
     &Scores::CentrePeak, &Weights::CentrePeak},
    {"roi", "roi", "Wishes",
     "How well the crop meets the wishes to keep or avoid regions. 1 meets them all.", &Scores::Roi,
     nullptr},
    {"merged", "merged", "Merged rank",
     "The share of the candidates that rank no higher. Where the engine ranks, its sum of the "
     "ranks by all measures, each with its weight.",
     &Scores::Merged, nullptr},
}};

} // namespace vistaTrim::photo

#endif
