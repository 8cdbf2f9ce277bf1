// A photograph for Python, with the object whose memory it borrows.
#ifndef VISTATRIM_PYTHON_PHOTOGRAPH_H
#define VISTATRIM_PYTHON_PHOTOGRAPH_H

#include <optional>

#include <pybind11/pybind11.h>

#include "vistaTrimPhoto/photograph.h"

namespace vistaTrim::python {

struct BoundPhotograph {
    photo::Photograph Photo;
    pybind11::object Array;                      // pixels, else None
    std::optional<pybind11::buffer_info> Buffer; // an encoded file; keeps its buffer exported
};

} // namespace vistaTrim::python

#endif
