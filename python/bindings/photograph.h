// A photograph for Python, with what it is borrowed from.
#ifndef VISTATRIM_PYTHON_PHOTOGRAPH_H
#define VISTATRIM_PYTHON_PHOTOGRAPH_H

#include <optional>

#include <pybind11/pybind11.h>

#include "vistaTrimPhoto/photograph.h"

namespace vistaTrim::python {

struct BoundPhotograph {
    photo::Photograph Photo;
    pybind11::object Array;                      // of pixels; else none
    std::optional<pybind11::buffer_info> Buffer; // of an encoded file; holds the export
};

} // namespace vistaTrim::python

#endif
