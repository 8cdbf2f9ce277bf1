// What the user asks of every photograph.
#ifndef VISTATRIM_HOST_REQUEST_H
#define VISTATRIM_HOST_REQUEST_H

#include <cstdint>
#include <optional>
#include <vector>

#include "default_weights.h"
#include "geometry.h"
#include "ratio.h"
#include "wish.h"

namespace vistaTrim::host {

// Values are those of the library's ranking mode.
enum class RankBy : int32_t { All = 0, Composition = 1, Coverage = 2, Border = 3 };

struct Request {
    int32_t Top = 5;
    std::vector<Ratio> Aspects; // none: the library's own table
    std::vector<double> Scales; // none: kDefaultScales
    std::optional<PixelSize> Size;
    uint32_t Density = kDefaultDensity; // positions tried along the axis with more free room
    std::vector<Wish> Wishes;
    WeightDistribution Weights = {kDefaultWeights[0], kDefaultWeights[1], kDefaultWeights[2],
                                  kDefaultWeights[3], kDefaultWeights[4]};
    RankBy Ranking = RankBy::All;
    bool Explain = false;
};

} // namespace vistaTrim::host

#endif
