#include "suggest/way_back.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace vistaTrim::photo {

namespace {

constexpr double kReachShare = 0.02; // of a side; how far a crop may change for an exact ratio

// One side of the crop along one axis, in pixels of the photograph.
struct Span {
    int32_t First;
    int32_t Count;
};

// Where a span of `count` pixels may begin, both ends inclusive.
struct StartRange {
    int64_t Lowest;
    int64_t Highest;
};

// Edges rounded to the nearest pixel boundary. Rounding keeps the order of edges, so whatever
// whole-pixel rectangle the working crop holds or avoids, this one holds or avoids as well. A crop
// narrower than a pixel becomes the pixel that its first edge lies in. In a very thin picture
// the engine returns crops without pixels; such a crop may begin after the last pixel.
Span RoundedSpan(int64_t first, int64_t last, int64_t working, int64_t photo)
{
    const auto rounded = [working, photo](int64_t edge) {
        return (2 * edge * photo + working) / (2 * working);
    };
    const int64_t begin = rounded(first);
    const int64_t end = rounded(last + 1);
    if (end > begin)
        return {static_cast<int32_t>(begin), static_cast<int32_t>(end - begin)};
    return {static_cast<int32_t>(std::min(first, working - 1) * photo / working), 1};
}

struct SizeChoice {
    PixelSize Size;
    bool Exact;
    double Distance; // from the working crop's own size, as shares of its sides
};

int32_t Reach(double side, int32_t working, int32_t photo)
{
    const double workingPixel = static_cast<double>(photo) / working;
    return static_cast<int32_t>(std::ceil(std::max(workingPixel, side * kReachShare)));
}

// Whole-pixel sizes near the wanted one: those with exactly the requested ratio first, each group
// sorted by distance.
std::vector<SizeChoice> SizesOfRatio(double width, double height, const Ratio& ratio,
                                     PixelSize working, PixelSize photo)
{
    std::vector<SizeChoice> choices;
    const auto add = [&](double wide, double high) {
        const double w = std::max(1.0, wide);
        const double h = std::max(1.0, high);
        if (w > photo.Width || h > photo.Height)
            return;
        const PixelSize size{static_cast<int32_t>(w), static_cast<int32_t>(h)};
        const double offX = std::abs(w - width);
        const double offY = std::abs(h - height);
        const bool near = offX <= Reach(width, working.Width, photo.Width) &&
                          offY <= Reach(height, working.Height, photo.Height);
        const bool exact = size.Width * ratio.Height == size.Height * ratio.Width;
        choices.push_back({size, exact && near, offX / width + offY / height});
    };
    const double value = ratio.Value();
    const double nearWidth = std::round(width);
    const double nearHeight = std::round(height);
    const int32_t reachX = Reach(width, working.Width, photo.Width);
    const int32_t reachY = Reach(height, working.Height, photo.Height);
    for (int32_t off = -reachX; off <= reachX; ++off)
        add(nearWidth + off, std::round((nearWidth + off) / value));
    for (int32_t off = -reachY; off <= reachY; ++off)
        add(std::round((nearHeight + off) * value), nearHeight + off);

    std::stable_sort(choices.begin(), choices.end(), [](const SizeChoice& a, const SizeChoice& b) {
        return a.Exact != b.Exact ? a.Exact : a.Distance < b.Distance;
    });
    return choices;
}

// The centre of the working crop stays where it is, unless the crop touches a border.
int64_t WantedStart(int64_t first, int64_t last, int64_t working, int64_t photo, int64_t count)
{
    if (first == 0 && last < working - 1)
        return 0;
    if (last == working - 1 && first > 0)
        return photo - count;
    const double centre = static_cast<double>(first + last + 1) * static_cast<double>(photo) /
                          (2.0 * static_cast<double>(working));
    return std::llround(centre - static_cast<double>(count) / 2.0);
}

// Narrows the two ranges so that the wish remains met, given that `plain` meets it.
void KeepMet(const Wish& wish, const PixelRect& plain, PixelSize size, StartRange& x, StartRange& y)
{
    const PixelRect& r = wish.Rect;
    if (WantsInside(wish.Kind)) {
        x.Lowest = std::max<int64_t>(x.Lowest, int64_t{r.X} + r.Width - size.Width);
        x.Highest = std::min<int64_t>(x.Highest, r.X);
        y.Lowest = std::max<int64_t>(y.Lowest, int64_t{r.Y} + r.Height - size.Height);
        y.Highest = std::min<int64_t>(y.Highest, r.Y);
        return;
    }
    // The region is beyond at least one side of the crop. Keep to the side with the widest gap.
    const int32_t gapRight = r.X - (plain.X + plain.Width);
    const int32_t gapLeft = plain.X - (r.X + r.Width);
    const int32_t gapBelow = r.Y - (plain.Y + plain.Height);
    const int32_t gapAbove = plain.Y - (r.Y + r.Height);
    const int32_t widest = std::max({gapRight, gapLeft, gapBelow, gapAbove});
    if (widest == gapRight)
        x.Highest = std::min<int64_t>(x.Highest, int64_t{r.X} - size.Width);
    else if (widest == gapLeft)
        x.Lowest = std::max<int64_t>(x.Lowest, int64_t{r.X} + r.Width);
    else if (widest == gapBelow)
        y.Highest = std::min<int64_t>(y.Highest, int64_t{r.Y} - size.Height);
    else
        y.Lowest = std::max<int64_t>(y.Lowest, int64_t{r.Y} + r.Height);
}

} // namespace

std::optional<PixelRect> ToPhotograph(const CInt32Rect& crop, PixelSize working, PixelSize photo,
                                      const CropShape& shape, const std::vector<Wish>& wishes)
{
    const Span across = RoundedSpan(crop.Left, crop.Right, working.Width, photo.Width);
    const Span down = RoundedSpan(crop.Top, crop.Bottom, working.Height, photo.Height);
    const PixelRect plain{across.First, down.First, across.Count, down.Count};

    std::vector<SizeChoice> sizes;
    if (shape.Size) {
        if (shape.Size->Width > photo.Width || shape.Size->Height > photo.Height)
            return std::nullopt;
        sizes.push_back({*shape.Size, true, 0.0});
    } else {
        // A crop without pixels counts as one pixel wide or high.
        const int32_t wide = std::max(1, crop.Right - crop.Left + 1);
        const int32_t high = std::max(1, crop.Bottom - crop.Top + 1);
        const double width = static_cast<double>(wide) * photo.Width / working.Width;
        const double height = static_cast<double>(high) * photo.Height / working.Height;
        sizes = SizesOfRatio(width, height, shape.Aspect, working, photo);
    }

    for (const SizeChoice& choice : sizes) {
        const PixelSize size = choice.Size;
        StartRange x{0, photo.Width - size.Width};
        StartRange y{0, photo.Height - size.Height};
        for (const Wish& wish : wishes)
            if (IsMet(wish, plain))
                KeepMet(wish, plain, size, x, y);
        if (x.Lowest > x.Highest || y.Lowest > y.Highest)
            continue;
        const int64_t left =
            std::clamp(WantedStart(crop.Left, crop.Right, working.Width, photo.Width, size.Width),
                       x.Lowest, x.Highest);
        const int64_t top = std::clamp(
            WantedStart(crop.Top, crop.Bottom, working.Height, photo.Height, size.Height), y.Lowest,
            y.Highest);
        return PixelRect{static_cast<int32_t>(left), static_cast<int32_t>(top), size.Width,
                         size.Height};
    }
    if (shape.Size)
        return std::nullopt;
    return plain;
}

} // namespace vistaTrim::photo
