// The parts of the extension module `_vistatrim`. The package in python/vistatrim wraps them for
// users; the module itself checks only what would be undefined behaviour.
#ifndef VISTATRIM_PYTHON_BINDINGS_H
#define VISTATRIM_PYTHON_BINDINGS_H

#include <pybind11/pybind11.h>

namespace vistaTrim::python {

void BindFailure(pybind11::module_& module);
void BindRequest(pybind11::module_& module);
void BindRegions(pybind11::module_& module);
void BindPhotograph(pybind11::module_& module);
void BindAnalysis(pybind11::module_& module);

} // namespace vistaTrim::python

#endif
