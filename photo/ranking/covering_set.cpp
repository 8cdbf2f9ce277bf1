#include "ranking/covering_set.h"

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <utility>

#include "ranking/plain_math.h"

namespace vistaTrim::photo {

namespace {

constexpr size_t kPoolSize = 250;

double PixelsOf(int64_t width, int64_t height)
{
    return static_cast<double>(std::max<int64_t>(0, width)) *
           static_cast<double>(std::max<int64_t>(0, height));
}

double PixelsOf(const CInt32CropRect& crop)
{
    return PixelsOf(int64_t{crop.Right} - crop.Left + 1, int64_t{crop.Bottom} - crop.Top + 1);
}

} // namespace

double OverlapOf(const CInt32CropRect& a, const CInt32CropRect& b)
{
    const double shared =
        PixelsOf(int64_t{std::min(a.Right, b.Right)} - std::max(a.Left, b.Left) + 1,
                 int64_t{std::min(a.Bottom, b.Bottom)} - std::max(a.Top, b.Top) + 1);
    return shared > 0 ? shared / (PixelsOf(a) + PixelsOf(b) - shared) : 0.0;
}

CoveringSet::CoveringSet(const std::vector<CInt32CropRect>& crops,
                         const std::vector<double>& utilities, std::vector<size_t> tiers)
    : Crops(crops), Tiers(std::move(tiers)), Order(crops.size())
{
    std::iota(Order.begin(), Order.end(), size_t{0});
    std::stable_sort(Order.begin(), Order.end(), [&](size_t a, size_t b) {
        return Tiers[a] != Tiers[b] ? Tiers[a] > Tiers[b] : utilities[a] > utilities[b];
    });
    if (Order.empty())
        return;

    for (const size_t crop : Order) {
        if (Choices.size() == kPoolSize || Tiers[crop] != Tiers[Order.front()])
            break;
        Choices.push_back(crop);
    }
    double total = 0;
    for (const size_t crop : Choices) {
        Probabilities.push_back(PlainExp(utilities[crop] - utilities[Choices.front()]));
        total += Probabilities.back();
    }
    for (double& probability : Probabilities)
        probability /= total;
    Covered.assign(Choices.size(), 0.0);
}

// The most probable candidates of the highest tier that has any left.
void CoveringSet::FillPool()
{
    while (NextInOrder < Order.size() && Pool.size() < kPoolSize) {
        const size_t crop = Order[NextInOrder];
        if (!Pool.empty() && Tiers[crop] != Tiers[Pool.front()])
            break;
        Pool.push_back(crop);
        for (const size_t choice : Choices)
            Overlaps.push_back(OverlapOf(Crops[crop], Crops[choice]));
        ++NextInOrder;
    }
}

double CoveringSet::ExpectedOverlap(const CInt32CropRect& crop) const
{
    double expected = 0;
    for (size_t k = 0; k < Choices.size(); ++k)
        expected += Probabilities[k] * OverlapOf(crop, Crops[Choices[k]]);
    return expected;
}

bool CoveringSet::Next(Served& served)
{
    if (Pool.empty())
        FillPool();
    if (Pool.empty())
        return false;

    const size_t width = Choices.size();
    size_t best = 0;
    double bestCover = -1;
    for (size_t i = 0; i < Pool.size(); ++i) {
        const double* const row = Overlaps.data() + i * width;
        double cover = 0;
        for (size_t k = 0; k < width; ++k)
            cover += Probabilities[k] * std::max(Covered[k], row[k]);
        if (cover > bestCover) {
            best = i;
            bestCover = cover;
        }
    }

    const auto row = Overlaps.begin() + static_cast<ptrdiff_t>(best * width);
    served.Crop = Pool[best];
    served.ExpectedOverlap = 0;
    for (size_t k = 0; k < width; ++k) {
        const double overlap = *(row + static_cast<ptrdiff_t>(k));
        served.ExpectedOverlap += Probabilities[k] * overlap;
        Covered[k] = std::max(Covered[k], overlap);
    }
    Overlaps.erase(row, row + static_cast<ptrdiff_t>(width));
    Pool.erase(Pool.begin() + static_cast<ptrdiff_t>(best));
    return true;
}

} // namespace vistaTrim::photo
