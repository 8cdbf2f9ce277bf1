// How the host's rectangles of interest affect a candidate, in source pixels without scaling.
#ifndef VISTATRIM_SCORING_RECTS_OF_INTEREST_H
#define VISTATRIM_SCORING_RECTS_OF_INTEREST_H

#include <vector>

#include "vistaTrim/records.h"

namespace vistaTrim {

// Copies of the enabled rectangles of the two soft (or hard) kinds, in order.
std::vector<CRectOfInterest> SoftRects(const std::vector<CRectOfInterest>& rects);
std::vector<CRectOfInterest> HardRects(const std::vector<CRectOfInterest>& rects);

// Share of rect's pixels inside crop; NaN if rect has no area.
float RectCoverage(const CInt32Rect& crop, const CInt32Rect& rect);
// 1 if every soft wish is fully met, otherwise at most about 0.101.
float ComputeRoiScore(const std::vector<CRectOfInterest>& softRects, const CInt32Rect& crop);
// True if the crop contains every hard include and touches no hard exclude.
bool PassesHardRects(const std::vector<CRectOfInterest>& hardRects, const CInt32Rect& crop);

} // namespace vistaTrim

#endif
