// One list of crops out of several lists, so that the first few differ in shape and size.
#ifndef VISTATRIM_PHOTO_RANKING_TURNS_H
#define VISTATRIM_PHOTO_RANKING_TURNS_H

#include <cstddef>
#include <vector>

#include "vistaTrim/records.h"

namespace vistaTrim::photo {

using CropList = std::vector<CInt32CropRect>;

// Two crops that share more than this of what they cover together, give one too little choice.
// The engine tells crops apart at 0.83 within one request; across requests its limit does not
// reach.
constexpr double kTurnOverlap = 0.8;

// lists   each best first; lists[0] knows every ratio and is where a turn goes that finds nothing
//         in its own list
// order   which list has the first turn, the second and so on, from the start again at its end;
//         empty stands for lists[0] alone
// wanted  length of the result, which is shorter only if the lists hold no more different crops
//
// A turn takes the first crop of its list that overlaps none given before by more than
// kTurnOverlap. A crop that meets the soft wishes less well than what lists[0] offers for the same
// turn gives way to it. Only when no list has such a crop left is the limit raised; no rectangle
// is given twice.
CropList TakeTurns(const std::vector<CropList>& lists, const std::vector<size_t>& order,
                   size_t wanted);

// Intersection over union of the pixels.
double OverlapOf(const CInt32CropRect& a, const CInt32CropRect& b);

} // namespace vistaTrim::photo

#endif
