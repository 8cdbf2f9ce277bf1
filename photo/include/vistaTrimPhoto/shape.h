// A requested shape of crops.
#ifndef VISTATRIM_PHOTO_SHAPE_H
#define VISTATRIM_PHOTO_SHAPE_H

#include <optional>
#include <string>

#include "vistaTrimPhoto/geometry.h"
#include "vistaTrimPhoto/ratio.h"
#include "vistaTrimPhoto/request.h"

namespace vistaTrim::photo {

struct Shape {
    std::string Name;      // in file names: "og-image", "16x9"
    std::string RatioText; // as the user wrote it, made safe for file names: "21x9", not "7x3"
    Ratio Aspect;
    std::optional<PixelSize> Fill; // crops are scaled to exactly this
};

// "16:9" and "16/9" become "16x9".
std::string FileSafeRatio(std::string text);

// "21x9" becomes "21:9", for people to read. Texts of other forms stay as they are.
std::string ShownRatio(std::string fileSafe);

// For people: "21:9", "og-image", "1200x630".
std::string ShownName(const Shape& shape);

// The shape of a ratio as people write it. nullopt for any other text.
std::optional<Shape> ShapeOfRatio(const std::string& text);
Shape ShapeOfSize(PixelSize size);

// The request for crops of this shape from a photograph of this size. Crops smaller than the
// shape's Fill would be scaled up, so they are not tried, unless even the largest one of the ratio
// is too small: then only that one is tried.
Request RequestFor(const Shape& shape, Request request, PixelSize photo);

} // namespace vistaTrim::photo

#endif
