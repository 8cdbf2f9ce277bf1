#include "bindings.h"

#include "vistaTrimPhoto/picture_runtime.h"

PYBIND11_MODULE(_vistatrim, module)
{
    using namespace vistaTrim;
    module.doc() = "The compiled part of vistatrim. Use the package vistatrim instead.";
    module.attr("VERSION") = VISTATRIM_VERSION_STRING;
    module.def("set_threads_per_picture", &photo::SetThreadsPerPicture,
               pybind11::call_guard<pybind11::gil_scoped_release>());
    python::BindFailure(module);
    python::BindRequest(module);
    python::BindRegions(module);
    python::BindPhotograph(module);
    python::BindAnalysis(module);
}
