// photo::Analysis. Suggestions are returned as plain objects, as in one line of
// `vistatrim suggest --json` without the file name.
#include "bindings.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <pybind11/stl.h>

#include "photograph.h"
#include "pixel_arrays.h"
#include "vistaTrimPhoto/analysis.h"
#include "vistaTrimPhoto/shape.h"

namespace vistaTrim::python {

namespace {

namespace py = pybind11;
using photo::Analysis;

void AddRect(const photo::PixelRect& rect, py::dict& object)
{
    object["x"] = rect.X;
    object["y"] = rect.Y;
    object["width"] = rect.Width;
    object["height"] = rect.Height;
}

py::dict ScoresObject(const photo::Scores& scores)
{
    py::dict object;
    for (const photo::Measure& measure : photo::kMeasures)
        object[measure.Name] = scores.*measure.Value;
    return object;
}

py::dict CropExplanationObject(const photo::Crop& crop)
{
    py::dict ranks;
    for (size_t i = 0; i < photo::kNumWeighed; ++i)
        ranks[photo::kMeasures[i].Name] = crop.Explained->Ranks[i];
    py::list wishesMet;
    for (const bool isMet : crop.Explained->WishesMet)
        wishesMet.append(isMet);
    py::dict object;
    object["aspect"] = crop.Aspect.Text();
    object["ranks"] = ranks;
    object["wishesMet"] = wishesMet;
    return object;
}

py::dict CropObject(const photo::Crop& crop)
{
    py::dict object;
    AddRect(crop.Rect, object);
    object["aspect"] = crop.Aspect.Text();
    object["coversContent"] = crop.CoversContent;
    object["expectedOverlap"] = crop.ExpectedOverlap;
    object["scores"] = ScoresObject(crop.Scores);
    if (crop.Explained)
        object["explain"] = CropExplanationObject(crop);
    return object;
}

py::dict RegionObject(const photo::FoundRegion& region)
{
    py::dict object;
    AddRect(region.Rect, object);
    object["kind"] = photo::NameOf(region.Kind);
    object["source"] = photo::NameOf(region.Source);
    object["confidence"] = region.Confidence;
    if (!region.Label.empty())
        object["label"] = region.Label;
    object["wish"] = region.Wish ? photo::NameOf(*region.Wish) : "none";
    return object;
}

py::dict ExplanationObject(const photo::Suggestions& found)
{
    const photo::Explanation& explanation = *found.Explained;
    py::list wishes;
    for (size_t i = 0; i < explanation.Wishes.size(); ++i) {
        py::dict wish;
        wish["kind"] = photo::NameOf(explanation.Wishes[i].Kind);
        AddRect(explanation.Wishes[i].Rect, wish);
        const std::optional<size_t> region = explanation.WishRegions[i];
        wish["source"] = region ? photo::NameOf(found.Regions[*region].Source) : "request";
        wish["metByCandidates"] = explanation.MetBy[i];
        wishes.append(wish);
    }
    py::dict object;
    object["candidates"] = explanation.Candidates;
    object["passing"] = explanation.Passing;
    object["wishes"] = wishes;
    object["note"] = photo::NoteOf(explanation, "--");
    return object;
}

std::unique_ptr<Analysis> Analyse(const BoundPhotograph& photograph,
                                  const photo::RegionOptions& regions)
{
    const py::gil_scoped_release unlocked;
    return std::make_unique<Analysis>(photograph.Photo, regions);
}

// `fill`, if given, is the size to which the crops will be scaled; the request has one ratio.
py::dict Suggest(const Analysis& self, photo::Request request,
                 const std::optional<std::pair<int32_t, int32_t>>& fill)
{
    photo::Suggestions suggestions;
    {
        const py::gil_scoped_release unlocked;
        if (fill) {
            const photo::Shape shape = photo::ShapeOfSize({fill->first, fill->second});
            request = photo::RequestFor(shape, std::move(request), self.Picture().Photo);
        }
        suggestions = self.Suggest(request);
    }
    py::list crops;
    for (const photo::Crop& crop : suggestions.Crops)
        crops.append(CropObject(crop));
    py::dict object;
    object["width"] = suggestions.Size.Width;
    object["height"] = suggestions.Size.Height;
    object["crops"] = crops;
    if (!suggestions.Regions.empty()) {
        py::list regions;
        for (const photo::FoundRegion& region : suggestions.Regions)
            regions.append(RegionObject(region));
        object["regions"] = regions;
    }
    if (suggestions.Explained)
        object["explain"] = ExplanationObject(suggestions);
    return object;
}

py::dict Maps(const Analysis& self)
{
    std::vector<photo::Map> maps;
    {
        const py::gil_scoped_release unlocked;
        maps = self.Maps();
    }
    py::dict arrays;
    for (photo::Map& map : maps)
        arrays[py::str(map.Name)] = ArrayOf(std::move(map.Values), map.Size);
    return arrays;
}

} // namespace

void BindAnalysis(py::module_& module)
{
    py::class_<Analysis>(module, "Analysis")
        .def(py::init(&Analyse))
        .def("suggest", &Suggest, py::arg("request"), py::arg("fill") = py::none())
        .def("maps", &Maps);
}

} // namespace vistaTrim::python
