// A shape that crops are asked to have.
#ifndef VISTATRIM_CLI_OPTIONS_SHAPE_H
#define VISTATRIM_CLI_OPTIONS_SHAPE_H

#include <optional>
#include <string>

#include "vistaTrimPhoto/geometry.h"
#include "vistaTrimPhoto/ratio.h"

namespace vistaTrim::cli {

struct Shape {
    std::string Name;      // in file names: "og-image", "16x9"
    std::string RatioText; // as it was named, but fit for a file name: "21x9", not "7x3"
    photo::Ratio Aspect;
    std::optional<photo::PixelSize> Fill; // crops are scaled to exactly this
};

// "16:9" and "16/9" become "16x9".
std::string FileSafeRatio(std::string text);

// Of a ratio as people write it. Nothing for any other text.
std::optional<Shape> ShapeOfRatio(const std::string& text);
Shape ShapeOfSize(photo::PixelSize size);

} // namespace vistaTrim::cli

#endif
