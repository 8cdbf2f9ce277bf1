#include "ranking/crop_utility.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "ranking/input_grid.h"
#include "ranking/plain_math.h"

namespace vistaTrim::photo {

namespace {

constexpr int32_t kTableSide = kGridSide + 1;
constexpr int32_t kTableCells = kTableSide * kTableSide;

// A side strip inside the crop is this share of the crop's side; one outside, of the picture's.
constexpr double kInnerStrip = 0.125;
constexpr double kOuterStrip = 0.0625;
// Scales the sum over the whole crop to about the size of the means.
constexpr double kWholeScale = 0.3;
// A part's sum is divided by at least this share of the picture, so that no mean explodes.
constexpr double kSmallestPart = 1e-3;

std::array<double, kNumModelMeasures> MeasuresOf(const Score& score)
{
    return {score.CompositionScore, score.CoverageScore, score.BorderScore, score.PeakScore,
            score.CentrePeakScore};
}

// Sides as shares of the picture.
struct Shares {
    double Left, Top, Right, Bottom;
};

Shares SharesOf(const CInt32CropRect& crop, PixelSize picture)
{
    const double width = picture.Width;
    const double height = picture.Height;
    return {crop.Left / width, crop.Top / height, (crop.Right + 1) / width,
            (crop.Bottom + 1) / height};
}

} // namespace

std::vector<CInt32CropRect> ReferenceCrops(PixelSize picture)
{
    constexpr int32_t kSteps = 8;
    std::vector<CInt32CropRect> crops;
    for (int32_t left = 0; left <= kSteps / 2; ++left)
        for (int32_t right = left + kSteps / 2; right <= kSteps; ++right)
            for (int32_t top = 0; top <= kSteps / 2; ++top)
                for (int32_t bottom = top + kSteps / 2; bottom <= kSteps; ++bottom) {
                    const CInt32CropRect crop(
                        left * picture.Width / kSteps, right * picture.Width / kSteps - 1,
                        top * picture.Height / kSteps, bottom * picture.Height / kSteps - 1);
                    // In a very thin picture some hold no pixel.
                    if (crop.Left <= crop.Right && crop.Top <= crop.Bottom)
                        crops.push_back(crop);
                }
    return crops;
}

MeasureRanks::MeasureRanks(const std::vector<CInt32CropRect>& reference)
{
    for (const CInt32CropRect& crop : reference) {
        const std::array<double, kNumModelMeasures> measures = MeasuresOf(crop.Score);
        for (size_t i = 0; i < measures.size(); ++i)
            Sorted[i].push_back(measures[i]);
    }
    for (std::vector<double>& values : Sorted)
        std::sort(values.begin(), values.end());
}

double MeasureRanks::Rank(int32_t measure, double value) const
{
    const std::vector<double>& sorted = Sorted[static_cast<size_t>(measure)];
    if (sorted.empty())
        return 1;
    const auto beaten = std::upper_bound(sorted.begin(), sorted.end(), value) - sorted.begin();
    return static_cast<double>(beaten) / static_cast<double>(sorted.size());
}

std::array<double, kNumCropFeatures> CropFeatures(const CInt32CropRect& crop, PixelSize picture,
                                                  const MeasureRanks& ranks)
{
    const Shares at = SharesOf(crop, picture);
    const double w = at.Right - at.Left;
    const double h = at.Bottom - at.Top;
    const double x = (at.Left + at.Right) / 2 - 0.5; // of the crop's centre from the picture's
    const double y = (at.Top + at.Bottom) / 2 - 0.5;
    const double area = PlainLog(w * h);
    const double shape = PlainLog(w / h); // 0: the picture's own
    const double pictureShape =
        PlainLog(static_cast<double>(picture.Width) / static_cast<double>(picture.Height));
    const double marginLeft = at.Left;
    const double marginRight = 1 - at.Right;
    const double marginTop = at.Top;
    const double marginBottom = 1 - at.Bottom;
    const double left = crop.Left <= 0 ? 1 : 0;
    const double right = crop.Right + 1 >= picture.Width ? 1 : 0;
    const double top = crop.Top <= 0 ? 1 : 0;
    const double bottom = crop.Bottom + 1 >= picture.Height ? 1 : 0;

    // Left and right count alike: people prefer neither side.
    const std::array<double, kNumGeometryFeatures> geometry = {
        std::abs(x),
        x * x,
        y,
        std::abs(y),
        y * y, // where the centre lies
        w,
        h,
        w * w,
        h * h,
        w * h,
        area,
        area * area, // how large
        shape,
        std::abs(shape),
        shape * shape, // how far from the picture's shape
        left + right,
        left * right,
        top,
        bottom,
        top * bottom,                    // borders of the picture touched
        (left + right) * (top + bottom), // its corners
        std::min(marginLeft, marginRight),
        std::min(marginTop, marginBottom), // what is cut
        shape * pictureShape,
        area * pictureShape,
        y * area,
        std::abs(x) * area,
        y * pictureShape,
        marginTop,
        marginBottom,
        std::sqrt(marginTop),
        std::sqrt(marginBottom),
        std::sqrt(marginLeft) + std::sqrt(marginRight)};

    const std::array<double, kNumModelMeasures> measures = MeasuresOf(crop.Score);
    std::array<double, kNumCropFeatures> features{};
    size_t next = 0;
    std::array<double, kNumModelMeasures> rank{};
    for (size_t i = 0; i < measures.size(); ++i)
        rank[i] = ranks.Rank(static_cast<int32_t>(i), measures[i]);
    for (const double value : measures)
        features[next++] = value;
    for (const double value : rank)
        features[next++] = value;
    for (const double value : geometry)
        features[next++] = value;
    for (const double value : measures)
        features[next++] = value * area;
    for (const double value : rank)
        features[next++] = value * area;
    return features;
}

PartSums::PartSums(const std::vector<float>& planes)
    : Tables(static_cast<size_t>(kNumCropParts) * kTableCells, 0.0)
{
    for (int32_t plane = 0; plane < kNumCropParts; ++plane) {
        double* table = Tables.data() + static_cast<ptrdiff_t>(plane) * kTableCells;
        const float* values = planes.data() + static_cast<ptrdiff_t>(plane) * kGridCells;
        for (int32_t r = 0; r < kGridSide; ++r) {
            double row = 0;
            for (int32_t c = 0; c < kGridSide; ++c) {
                row += static_cast<double>(values[r * kGridSide + c]);
                table[(r + 1) * kTableSide + c + 1] = table[r * kTableSide + c + 1] + row;
            }
        }
    }
}

// x and y are cells from the top left corner, 0 .. kGridSide.
double PartSums::Read(int32_t plane, double x, double y) const
{
    const int32_t c = std::min(static_cast<int32_t>(x), kGridSide - 1);
    const int32_t r = std::min(static_cast<int32_t>(y), kGridSide - 1);
    const double right = x - c;
    const double down = y - r;
    const double* const above = Tables.data() + static_cast<ptrdiff_t>(plane) * kTableCells +
                                static_cast<ptrdiff_t>(r) * kTableSide + c;
    const double* const below = above + kTableSide;
    const double upper = above[0] + right * (above[1] - above[0]);
    const double lower = below[0] + right * (below[1] - below[0]);
    return upper + down * (lower - upper);
}

// The sum over a part given as shares of the picture, divided by the number of cells.
double PartSums::Over(int32_t plane, double x0, double y0, double x1, double y1) const
{
    const double left = x0 * kGridSide;
    const double top = y0 * kGridSide;
    const double right = x1 * kGridSide;
    const double bottom = y1 * kGridSide;
    return (Read(plane, right, bottom) - Read(plane, left, bottom) - Read(plane, right, top) +
            Read(plane, left, top)) /
           kGridCells;
}

double PartSums::Sum(const CInt32CropRect& crop, PixelSize picture) const
{
    const Shares at = SharesOf(crop, picture);
    const double w = at.Right - at.Left;
    const double h = at.Bottom - at.Top;
    const double across = kInnerStrip * w;
    const double down = kInnerStrip * h;
    const auto mean = [this](int32_t plane, double x0, double y0, double x1, double y1,
                             double size) {
        return Over(plane, x0, y0, x1, y1) / std::max(size, kSmallestPart);
    };
    double sum = Over(0, at.Left, at.Top, at.Right, at.Bottom) / kWholeScale;
    sum += mean(1, at.Left, at.Top, at.Right, at.Bottom, w * h);
    sum += mean(2, at.Left, at.Top, at.Left + across, at.Bottom, across * h);
    sum += mean(3, at.Right - across, at.Top, at.Right, at.Bottom, across * h);
    sum += mean(4, at.Left, at.Top, at.Right, at.Top + down, w * down);
    sum += mean(5, at.Left, at.Bottom - down, at.Right, at.Bottom, w * down);
    sum += mean(6, at.Left + w / 4, at.Top + h / 4, at.Right - w / 4, at.Bottom - h / 4, w * h / 4);
    // A strip outside divides by its full width, so what lies beyond the picture counts as zero.
    sum +=
        mean(7, std::max(at.Left - kOuterStrip, 0.0), at.Top, at.Left, at.Bottom, kOuterStrip * h);
    sum += mean(8, at.Right, at.Top, std::min(at.Right + kOuterStrip, 1.0), at.Bottom,
                kOuterStrip * h);
    sum += mean(9, at.Left, std::max(at.Top - kOuterStrip, 0.0), at.Right, at.Top, kOuterStrip * w);
    sum += mean(10, at.Left, at.Bottom, at.Right, std::min(at.Bottom + kOuterStrip, 1.0),
                kOuterStrip * w);
    return sum;
}

std::vector<double> Utilities(const ChoiceModel& model, const std::vector<CInt32CropRect>& crops,
                              PixelSize picture, const MeasureRanks& ranks, const PartSums& parts)
{
    std::vector<double> utilities;
    utilities.reserve(crops.size());
    for (const CInt32CropRect& crop : crops) {
        double utility = parts.Sum(crop, picture);
        const std::array<double, kNumCropFeatures> features = CropFeatures(crop, picture, ranks);
        for (size_t i = 0; i < features.size(); ++i)
            utility += model.FeatureWeights[i] * features[i];
        utilities.push_back(utility);
    }
    return utilities;
}

} // namespace vistaTrim::photo
