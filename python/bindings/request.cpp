// photo::Request with one property per field, as plain Python values.
#include "bindings.h"

#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <pybind11/stl.h>

#include "vistaTrimPhoto/colour.h"
#include "vistaTrimPhoto/measures.h"
#include "vistaTrimPhoto/presets.h"
#include "vistaTrimPhoto/ranking_model.h"
#include "vistaTrimPhoto/ratio.h"
#include "vistaTrimPhoto/request.h"
#include "wish_names.h"

namespace vistaTrim::python {

namespace {

namespace py = pybind11;
using photo::Request;

using Pair = std::pair<int64_t, int64_t>;
using NamedRect = std::tuple<std::string, int32_t, int32_t, int32_t, int32_t>;

void SetAspects(Request& request, const std::vector<Pair>& ratios)
{
    request.Aspects.clear();
    for (const auto& [width, height] : ratios) {
        if (width < 1 || height < 1)
            throw py::value_error("both terms of a ratio must be above 0");
        request.Aspects.push_back(photo::Reduced(width, height));
    }
}

void SetSize(Request& request, const std::optional<std::pair<int32_t, int32_t>>& size)
{
    request.Size.reset();
    if (size)
        request.Size = photo::PixelSize{size->first, size->second};
}

void SetWishes(Request& request, const std::vector<NamedRect>& wishes)
{
    request.Wishes.clear();
    for (const auto& [kind, x, y, width, height] : wishes)
        request.Wishes.push_back({WishKindOf(kind), {x, y, width, height}});
}

// In the order of kMeasures.
void SetWeights(Request& request, const std::vector<double>& weights)
{
    if (weights.size() != photo::kNumWeighed)
        throw py::value_error("there must be one weight for each weighted measure");
    request.Ranking = photo::RankBy::Engine; // the only ranking with weights
    for (size_t i = 0; i < weights.size(); ++i)
        request.Weights.*photo::kMeasures[i].Weight = weights[i];
}

void SetRankBy(Request& request, const std::string& name)
{
    using photo::RankBy;
    static const std::map<std::string, RankBy> kRankings = {
        {"people", RankBy::People},     {"composition", RankBy::Composition},
        {"coverage", RankBy::Coverage}, {"border", RankBy::Border},
        {"peak", RankBy::Peak},         {"centre-peak", RankBy::CentrePeak},
        {"engine", RankBy::Engine},     {"all", RankBy::Engine}};
    const auto found = kRankings.find(name);
    if (found == kRankings.end())
        throw py::value_error("no ranking is called " + name);
    request.Ranking = found->second;
}

// Shared by all requests that use it.
struct BoundRanking {
    photo::RankingModel Model;
};

BoundRanking ReadRanking(const std::string& text, const std::string& source)
{
    const py::gil_scoped_release unlocked;
    return {photo::ReadRankingModel(text, source)};
}

void SetRanking(Request& request, const BoundRanking& ranking)
{
    request.Model = ranking.Model;
}

std::optional<Pair> ParseRatio(const std::string& text)
{
    const auto ratio = photo::ParseRatio(text);
    if (!ratio)
        return std::nullopt;
    return Pair{ratio->Width, ratio->Height};
}

Pair RatioOfValue(double value)
{
    if (!(value > 0.0) || !(value - value == 0.0))
        throw py::value_error("a ratio must be finite and above 0");
    const photo::Ratio ratio = photo::RatioOfValue(value);
    return {ratio.Width, ratio.Height};
}

// A table of named shapes; in Python a shape is (name, ratio in file names, width and height of the
// ratio, size or None).
using ShapeTuple = std::tuple<std::string, std::string, int64_t, int64_t,
                              std::optional<std::pair<int32_t, int32_t>>>;

std::optional<ShapeTuple> FindPreset(const photo::Presets& presets, const std::string& name)
{
    const std::optional<photo::Shape> shape = presets.Find(name);
    if (!shape)
        return std::nullopt;
    std::optional<std::pair<int32_t, int32_t>> fill;
    if (shape->Fill)
        fill = {shape->Fill->Width, shape->Fill->Height};
    return ShapeTuple{shape->Name, shape->RatioText, shape->Aspect.Width, shape->Aspect.Height,
                      fill};
}

std::vector<std::string> PresetNames(const photo::Presets& presets)
{
    std::vector<std::string> names;
    for (const photo::Shape& shape : presets.All())
        names.push_back(shape.Name);
    return names;
}

std::optional<std::vector<double>> ParseColour(const std::string& text)
{
    const auto colour = photo::ParseColour(text);
    if (!colour)
        return std::nullopt;
    return std::vector<double>(colour->begin(), colour->end());
}

py::list MeasureNames(size_t count)
{
    py::list names;
    for (size_t i = 0; i < count; ++i)
        names.append(photo::kMeasures[i].Name);
    return names;
}

} // namespace

void BindRequest(py::module_& module)
{
    // Properties can only be set: the package's own table has the request.
    const py::cpp_function noGetter;
    py::class_<BoundRanking>(module, "Ranking").def(py::init(&ReadRanking));
    py::class_<Request>(module, "Request")
        .def(py::init<>())
        .def_readwrite("top", &Request::Top)
        .def_readwrite("scales", &Request::Scales)
        .def_readwrite("density", &Request::Density)
        .def_readwrite("explain", &Request::Explain)
        .def_property("aspects", noGetter, &SetAspects)
        .def_property("size", noGetter, &SetSize)
        .def_property("wishes", noGetter, &SetWishes)
        .def_property("weights", noGetter, &SetWeights)
        .def_property("rank_by", noGetter, &SetRankBy)
        .def_property("ranking", noGetter, &SetRanking);
    py::class_<photo::Presets>(module, "Presets")
        .def(py::init<>())
        .def("add_table", &photo::Presets::AddTable)
        .def("find", &FindPreset)
        .def("names", &PresetNames);
    module.def("parse_colour", &ParseColour);
    module.def("parse_ratio", &ParseRatio);
    module.def("ratio_of_value", &RatioOfValue);
    module.attr("WEIGHTED_MEASURES") = MeasureNames(photo::kNumWeighed);
    module.attr("MEASURES") = MeasureNames(photo::kNumMeasures);
}

} // namespace vistaTrim::python
