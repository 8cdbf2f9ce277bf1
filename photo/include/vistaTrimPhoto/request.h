// A request for crops of a photograph.
#ifndef VISTATRIM_PHOTO_REQUEST_H
#define VISTATRIM_PHOTO_REQUEST_H

#include <cstdint>
#include <optional>
#include <vector>

#include "vistaTrimPhoto/geometry.h"
#include "vistaTrimPhoto/measures.h"
#include "vistaTrimPhoto/ranking_model.h"
#include "vistaTrimPhoto/ratio.h"
#include "vistaTrimPhoto/region.h"

namespace vistaTrim::photo {

// Weights of the engine's own ranking: composition, coverage, border, peak, centre peak. They sum
// to 1, so that a crop that covers the content ranks ahead of any that does not. Chosen with
// tools/evaluate_crops on rated crops; docs/composition_model.md lists what else was tried.
constexpr Weights kDefaultWeights = {0.1, 0.7, 0.0, 0.2, 0.0};

// Fewer positions than the engine's 25: the best few then differ more, and agree better with
// what people chose. Measured with the weights.
constexpr uint32_t kDefaultDensity = 8;
constexpr uint32_t kHighestDensity = 500; // the number of candidates grows with its square

// Finer steps than the engine's own table, and no crop with less than half of a side: people chose
// smaller ones in only 8 of 972 photographs. Measured with the weights.
constexpr double kDefaultScales[] = {0.5, 0.55, 0.6, 0.65, 0.7, 0.75, 0.8, 0.85, 0.9, 0.95, 1.0};

// What crops are ranked by: the fitted model of what people choose, one measure alone, or the
// engine's own ranking by all measures and their weights.
enum class RankBy { People, Composition, Coverage, Border, Peak, CentrePeak, Engine };

struct Request {
    int32_t Top = 5;            // number of crops, at least 1
    std::vector<Ratio> Aspects; // none: the engine's own table of six
    std::vector<double>
        Scales; // crop side over photograph side, above 0 to 1; none: kDefaultScales
    std::optional<PixelSize> Size; // crops of exactly this size; then no ratio is tried
    // Positions tried along the axis with more free room, 1 to kHighestDensity.
    uint32_t Density = kDefaultDensity;
    std::vector<Wish> Wishes;
    RankBy Ranking = RankBy::People;
    RankingModel Model;                       // for RankBy::People; null: the compiled-in one
    photo::Weights Weights = kDefaultWeights; // for RankBy::Engine
    bool Explain = false;                     // fill Suggestions::Explained and Crop::Explained
};

// Throws the PhotoError that Analysis::Suggest throws for a request that is invalid
// (InvalidRequest) or that a photograph of this size cannot meet (DoesNotFit). It reads no pixels:
// a caller can check a request before it pays for an analysis.
void CheckRequest(const Request& request, PixelSize photo);

} // namespace vistaTrim::photo

#endif
