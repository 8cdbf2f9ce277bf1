// A few crops that together cover what people would choose.
#ifndef VISTATRIM_PHOTO_RANKING_COVERING_SET_H
#define VISTATRIM_PHOTO_RANKING_COVERING_SET_H

#include <cstddef>
#include <vector>

#include "vistaTrim/records.h"

namespace vistaTrim::photo {

// Intersection over union of the pixels.
double OverlapOf(const CInt32CropRect& a, const CInt32CropRect& b);

// Returns crops of one list of candidates. The first is the one that a person's choice is expected
// to overlap most; each further one raises most the overlap that is expected of the best of them
// all. Crops of a higher tier come before all crops of a lower one.
class CoveringSet {
public:
    // crops      candidates; keep them until the set is gone
    // utilities  one for each crop; the exponentials are in proportion to the probabilities
    // tiers      one for each crop, 0 or more
    //
    // What people would choose are the most probable candidates of the highest tier: the rest
    // has next to no probability, and time grows with their square.
    CoveringSet(const std::vector<CInt32CropRect>& crops, const std::vector<double>& utilities,
                std::vector<size_t> tiers);

    struct Served {
        size_t Crop;            // its index
        double ExpectedOverlap; // with what a person would choose, as the model has it
    };

    // Of any crop, in the set or not.
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
