// Synthetic images computed in integer arithmetic only, so that every compiler and machine
// produces the same bytes.
#ifndef VISTATRIM_TESTS_ORACLE_SYNTHETIC_IMAGES_H
#define VISTATRIM_TESTS_ORACLE_SYNTHETIC_IMAGES_H

#include <cstdint>
#include <string>
#include <vector>

#include "oracle/picture.h"

namespace slowOracle {

Picture NoisePicture(int cols, int rows, uint32_t seed);
Picture HorizontalGradient(int cols, int rows); // changes from left to right
Picture VerticalGradient(int cols, int rows);   // changes from top to bottom
Picture DiagonalGradient(int cols, int rows);
Picture BlobsOnGradient(int cols, int rows, uint32_t seed);
Picture FlatPicture(int cols, int rows, uint8_t red, uint8_t green, uint8_t blue);
Picture LeftAndRightHalf(int cols, int rows); // dark left, bright right
Picture UpperAndLowerHalf(int cols, int rows);
Picture Checkerboard(int cols, int rows, int period); // squares of `period` pixels, top left dark
Picture OneBrightPixel(int cols, int rows);           // white in the middle of black

// Textured sky over textured ground with several textured, shaded ellipses in front.
Picture PseudoPhotograph(int cols, int rows, uint32_t seed);

// By name: "noise", "horizontal_gradient", "vertical_gradient", "diagonal_gradient", "blobs",
// "flat", "black", "half_and_half", "upper_and_lower_half", "checkerboard",
// "one_bright_pixel", "photograph". A number after a colon is the seed (noise, blobs,
// photograph), the value (flat) or the period (checkerboard): "flat:128".
// Any other name throws std::invalid_argument.
Picture MakePicture(const std::string& name, int cols, int rows);

// Every name above once, with a typical number where it takes one.
std::vector<std::string> PictureNames();

// The same picture with left and right, or top and bottom, swapped.
Picture MirrorLeftRight(const Picture& picture);
Picture MirrorTopBottom(const Picture& picture);

} // namespace slowOracle

#endif
