#include "bindings.h"

#include <string>
#include <vector>

#include <pybind11/stl.h>

#include "vistaTrimPhoto/picture_runtime.h"
#include "vistaTrimPhoto/readable_formats.h"

namespace {

namespace photo = vistaTrim::photo;

std::vector<std::string> ReadableEndings()
{
    std::vector<std::string> endings;
    for (const photo::ReadableFormat& format : photo::ReadableFormats())
        endings.insert(endings.end(), format.Endings.begin(), format.Endings.end());
    return endings;
}

bool IsPhotographFile(const std::string& path)
{
    return photo::KindOfFile(path) == photo::FileKind::Photograph;
}

} // namespace

PYBIND11_MODULE(_vistatrim, module)
{
    using namespace vistaTrim;
    module.doc() = "The compiled part of vistatrim. Use the package vistatrim instead.";
    module.attr("VERSION") = VISTATRIM_VERSION_STRING;
    module.def("set_threads_per_picture", &photo::SetThreadsPerPicture,
               pybind11::call_guard<pybind11::gil_scoped_release>());
    module.def("readable_endings", &ReadableEndings,
               pybind11::call_guard<pybind11::gil_scoped_release>());
    module.def("is_photograph_file", &IsPhotographFile,
               pybind11::call_guard<pybind11::gil_scoped_release>());
    python::BindFailure(module);
    python::BindRequest(module);
    python::BindRegions(module);
    python::BindPhotograph(module);
    python::BindAnalysis(module);
}
