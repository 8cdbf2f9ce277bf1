// Found regions: the options of an analysis, and files of regions. In Python a region is a tuple
// (x, y, width, height, kind, confidence, label, wish), where wish can be "none".
#include "bindings.h"

#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include <pybind11/stl.h>

#include "vistaTrimPhoto/found_region.h"
#include "vistaTrimPhoto/regions_file.h"
#include "wish_names.h"

namespace vistaTrim::python {

namespace {

namespace py = pybind11;
using photo::FaceSearch;
using photo::FoundRegion;
using photo::RegionOptions;

using RegionTuple =
    std::tuple<int32_t, int32_t, int32_t, int32_t, std::string, double, std::string, std::string>;

void SetRegions(RegionOptions& options, const std::vector<RegionTuple>& regions)
{
    options.Regions.clear();
    for (const auto& [x, y, width, height, kindName, confidence, label, wish] : regions) {
        FoundRegion region;
        region.Rect = {x, y, width, height};
        const auto kind = photo::RegionKindOfName(kindName);
        if (!kind)
            throw py::value_error("no kind of region is called " + kindName);
        region.Kind = *kind;
        region.Confidence = confidence;
        region.Label = label;
        if (wish != "none")
            region.Wish = WishKindOf(wish);
        options.Regions.push_back(region);
    }
}

void SetFaces(RegionOptions& options, const std::string& name)
{
    if (name == "off")
        options.Faces = FaceSearch::Off;
    else if (name == "large")
        options.Faces = FaceSearch::Large;
    else if (name == "all")
        options.Faces = FaceSearch::All;
    else
        throw py::value_error("no face search is called " + name);
}

std::vector<RegionTuple> RegionsOf(const photo::RegionsFile& file, const std::string& photograph)
{
    std::vector<RegionTuple> regions;
    for (const FoundRegion& region : file.RegionsOf(photograph))
        regions.emplace_back(region.Rect.X, region.Rect.Y, region.Rect.Width, region.Rect.Height,
                             photo::NameOf(region.Kind), region.Confidence, region.Label,
                             region.Wish ? photo::NameOf(*region.Wish) : "none");
    return regions;
}

} // namespace

void BindRegions(py::module_& module)
{
    const py::cpp_function noGetter;
    py::class_<RegionOptions>(module, "RegionOptions")
        .def(py::init<>())
        .def_readwrite("use_named", &RegionOptions::UseNamed)
        .def_property("faces", noGetter, &SetFaces)
        .def_property("regions", noGetter, &SetRegions);
    py::class_<photo::RegionsFile>(module, "RegionsFile")
        .def(py::init<const std::string&, const std::string&>(),
             py::call_guard<py::gil_scoped_release>())
        .def("regions_of", &RegionsOf)
        .def("names", &photo::RegionsFile::Names);
    module.attr("HAS_FACE_FINDER") = photo::HasFaceFinder();
}

} // namespace vistaTrim::python
