// Photographs to test with: those of the Debian package lomiri-wallpapers-16.04, which are under
// free licences.
#ifndef VISTATRIM_TESTS_ANALYSIS_REAL_PHOTOGRAPHS_H
#define VISTATRIM_TESTS_ANALYSIS_REAL_PHOTOGRAPHS_H

#include <string>
#include <vector>

#include "oracle/picture.h"

namespace vistaTrim {
namespace testPictures {

// Sorted; empty if the package is not installed.
std::vector<std::string> PhotographPaths();

// Upright, longer side 640 pixels. Throws std::runtime_error if it cannot be read.
slowOracle::Picture ReadPhotograph(const std::string& path);

} // namespace testPictures
} // namespace vistaTrim

#endif
