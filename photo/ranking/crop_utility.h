// How much a person would like a crop, in the units of a logarithm: the probability that a person
// picks one of several crops is proportional to the exponential of its utility (D. McFadden,
// Conditional logit analysis of qualitative choice behavior, 1974).
#ifndef VISTATRIM_PHOTO_RANKING_CROP_UTILITY_H
#define VISTATRIM_PHOTO_RANKING_CROP_UTILITY_H

#include <array>
#include <cstdint>
#include <vector>

#include "ranking/choice_model.h"
#include "vistaTrim/records.h"
#include "vistaTrimPhoto/geometry.h"

namespace vistaTrim::photo {

// The measures that the model reads: composition, coverage, border, peak, centre peak.
constexpr int32_t kNumModelMeasures = 5;

// In this order: the measures; their ranks; kNumGeometryFeatures of the crop's place and shape;
// the measures times log area; the ranks times log area.
constexpr int32_t kNumGeometryFeatures = 33;
constexpr int32_t kNumCropFeatures = 4 * kNumModelMeasures + kNumGeometryFeatures;

// Parts of a crop, one for each plane of the network: the sum over the whole crop; the means of
// the crop, of its left, right, top and bottom eighth, and of its middle half; and the means of
// the strips just outside its left, right, top and bottom side.
constexpr int32_t kNumCropParts = 11;

// What the measures of a crop are ranked among: every rectangle of at least half of each side on an
// 8 x 8 grid of the picture. The same for every request, so that a crop's utility does not depend
// on the request. Not scored yet.
std::vector<CInt32CropRect> ReferenceCrops(PixelSize picture);

// The ranks of a crop's measures among the reference crops of its picture.
class MeasureRanks {
public:
    // reference  scored; may be empty
    explicit MeasureRanks(const std::vector<CInt32CropRect>& reference);

    // The share of the reference crops that a value equals or beats.
    double Rank(int32_t measure, double value) const;

private:
    std::array<std::vector<double>, kNumModelMeasures> Sorted;
};

// The crop must be scored and lie inside the picture.
std::array<double, kNumCropFeatures> CropFeatures(const CInt32CropRect& crop, PixelSize picture,
                                                  const MeasureRanks& ranks);

// Sums over any part of a crop in constant time: each plane as a table of running sums, read
// between its cells by linear interpolation.
class PartSums {
public:
    // planes  kNumCropParts planes of kGridCells
    explicit PartSums(const std::vector<float>& planes);

    // What all parts of the crop add to its utility.
    double Sum(const CInt32CropRect& crop, PixelSize picture) const;

private:
    double Read(int32_t plane, double x, double y) const;
    double Over(int32_t plane, double x0, double y0, double x1, double y1) const;

    std::vector<double> Tables;
};

// One for each crop.
std::vector<double> Utilities(const ChoiceModel& model, const std::vector<CInt32CropRect>& crops,
                              PixelSize picture, const MeasureRanks& ranks, const PartSums& parts);

} // namespace vistaTrim::photo

#endif
