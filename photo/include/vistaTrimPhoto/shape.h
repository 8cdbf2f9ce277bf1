// A shape that crops are asked to have.
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
    std::string RatioText; // as it was named, but fit for a file name: "21x9", not "7x3"
    Ratio Aspect;
    std::optional<PixelSize> Fill; // crops are scaled to exactly this
};

// "16:9" and "16/9" become "16x9".
std::string FileSafeRatio(std::string text);

// Of a ratio as people write it. Nothing for any other text.
std::optional<Shape> ShapeOfRatio(const std::string& text);
Shape ShapeOfSize(PixelSize size);

// The request for crops of this shape from a photograph of this size. Crops smaller than the
// shape's Fill would be scaled up, so they are not tried, unless even the largest one of the ratio
// is too small: then only that scale is.
Request RequestFor(const Shape& shape, Request request, PixelSize photo);

} // namespace vistaTrim::photo

#endif
