// Passes pixels between NumPy and the library without a copy.
#ifndef VISTATRIM_PYTHON_PIXEL_ARRAYS_H
#define VISTATRIM_PYTHON_PIXEL_ARRAYS_H

#include <vector>

#include <pybind11/numpy.h>

#include "vistaTrimPhoto/geometry.h"
#include "vistaTrimPhoto/pixels.h"

namespace vistaTrim::python {

// The pixels of a uint8 array (h, w), (h, w, 1), (h, w, 3) or (h, w, 4) whose rows are packed;
// any row stride works. Throws ValueError for any other array. Borrowed: keep the array.
photo::PixelView ViewOfArray(const pybind11::array& pixels);

// The array owns the values from now on.
pybind11::array ArrayOf(photo::PixelImage image);                          // uint8 (h, w, channels)
pybind11::array ArrayOf(std::vector<float> values, photo::PixelSize size); // float32 (h, w)

} // namespace vistaTrim::python

#endif
