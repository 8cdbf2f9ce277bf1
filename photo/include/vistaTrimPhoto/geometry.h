// Sizes and rectangles in whole pixels of a photograph, as displayed.
#ifndef VISTATRIM_PHOTO_GEOMETRY_H
#define VISTATRIM_PHOTO_GEOMETRY_H

#include <cstdint>
#include <optional>
#include <string>

namespace vistaTrim::photo {

struct PixelSize {
    int32_t Width = 0;
    int32_t Height = 0;
};

// X, Y is the top left pixel. Width and Height count pixels, so the last column is X + Width - 1.
struct PixelRect {
    int32_t X = 0;
    int32_t Y = 0;
    int32_t Width = 0;
    int32_t Height = 0;
};

bool operator==(const PixelSize& a, const PixelSize& b);
bool operator==(const PixelRect& a, const PixelRect& b);

bool Contains(const PixelRect& outer, const PixelRect& inner);
bool Overlaps(const PixelRect& a, const PixelRect& b);
// The part of the rectangle that lies inside the photograph; width or height 0 if there is none.
PixelRect ClippedTo(const PixelRect& rect, PixelSize photo);

// The largest size with the crop's ratio that fits the box; one of its sides equals the box's.
PixelSize FittedSize(PixelSize crop, PixelSize box);

// The longer side of the working picture, whatever the photograph's size.
constexpr int32_t kWorkingLongSide = 640;

// The photograph scaled to a longer side of `longSide` pixels. The other side is rounded to the
// nearest pixel, at least 1.
PixelSize ScaledToLongSide(PixelSize photo, int32_t longSide);
PixelSize WorkingSize(PixelSize photo);

// "1920x1080"; both at least 1. nullopt for any other text.
std::optional<PixelSize> ParseSize(const std::string& text);

// "X,Y,W,H"; X and Y at least 0, W and H at least 1. nullopt for any other text.
std::optional<PixelRect> ParseRect(const std::string& text);

} // namespace vistaTrim::photo

#endif
