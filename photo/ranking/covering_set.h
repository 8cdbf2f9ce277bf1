// A few crops that together cover what people would choose.
#ifndef VISTATRIM_PHOTO_RANKING_COVERING_SET_H
#define VISTATRIM_PHOTO_RANKING_COVERING_SET_H

#include <cstddef>
#include <vector>

#include "vistaTrim/records.h"

namespace vistaTrim::photo {

// Intersection over union of the pixels.
double OverlapOf(const CInt32CropRect& a, const CInt32CropRect& b);

// Returns crops of one list of candidates. The first is the one expected to overlap a person's
// choice most; each further one is the one that most raises the expected best overlap of all crops
// returned so far. Crops of a higher tier come before all crops of a lower one.
class CoveringSet {
public:
    // crops      candidates; keep them until the set is gone
    // utilities  one for each crop; their exponentials are proportional to the probabilities
    // tiers      one for each crop, 0 or more
    //
    // People's possible choices are the most probable candidates of the highest tier: the rest
    // have next to no probability, and the time grows with the square of their number.
    CoveringSet(const std::vector<CInt32CropRect>& crops, const std::vector<double>& utilities,
                std::vector<size_t> tiers);

    struct Served {
        size_t Crop;            // index into crops
        double ExpectedOverlap; // with a person's choice, according to the model
    };

    // For any crop, in the set or not.
    double ExpectedOverlap(const CInt32CropRect& crop) const;

    // True and the next crop, or false if all were returned.
    bool Next(Served& served);

private:
    void FillPool();

    const std::vector<CInt32CropRect>& Crops;
    std::vector<size_t> Tiers;
    std::vector<size_t> Order; // by tier, then by utility, then as given
    size_t NextInOrder = 0;

    std::vector<size_t> Choices;       // what people would choose
    std::vector<double> Probabilities; // of the choices
    std::vector<double> Covered;       // best overlap of each choice with a crop returned

    // Candidates for the next place, and their overlaps with the choices, row by row.
    std::vector<size_t> Pool;
    std::vector<double> Overlaps;
};

} // namespace vistaTrim::photo

#endif
