#include <cmath>
#include <string>

#include <nlohmann/json.hpp>

#include "ranking/choice_model.h"
#include "ranking/crop_utility.h"
#include "ranking/input_grid.h"
#include "vistaTrimPhoto/photo_error.h"
#include "vistaTrimPhoto/ranking_model.h"

namespace vistaTrim::photo {

namespace {

using nlohmann::json;

constexpr const char* kFormat = "vistatrim-ranking";
constexpr int kVersion = 1;
// Far more than is useful; it keeps a file from requesting more memory than the machine has.
constexpr int64_t kMaxLayers = 16;
constexpr int64_t kMaxPlanes = 256;

[[noreturn]] void Fail(const std::string& what)
{
    throw PhotoError(PhotoError::Kind::InvalidRequest, what);
}

const json& Member(const json& object, const std::string& name)
{
    const auto found = object.find(name);
    if (found == object.end())
        Fail("'" + name + "' is missing");
    return *found;
}

double Number(const json& value, const std::string& name)
{
    if (!value.is_number() || !std::isfinite(value.get<double>()))
        Fail("'" + name + "' must hold numbers");
    return value.get<double>();
}

int64_t Whole(const json& object, const std::string& name, int64_t least, int64_t most)
{
    const json& value = Member(object, name);
    if (!value.is_number_integer() || value.get<double>() < static_cast<double>(least) ||
        value.get<double>() > static_cast<double>(most))
        Fail("'" + name + "' must be an integer from " + std::to_string(least) + " to " +
             std::to_string(most));
    return value.get<int64_t>();
}

std::vector<double> Numbers(const json& object, const std::string& name, size_t count)
{
    const json& list = Member(object, name);
    if (!list.is_array() || list.size() != count)
        Fail("'" + name + "' must be a list of " + std::to_string(count) + " numbers");
    std::vector<double> numbers;
    numbers.reserve(count);
    for (const json& value : list)
        numbers.push_back(Number(value, name));
    return numbers;
}

std::vector<float> Floats(const json& object, const std::string& name, size_t count)
{
    std::vector<float> floats;
    floats.reserve(count);
    for (const double value : Numbers(object, name, count)) {
        floats.push_back(static_cast<float>(value));
        if (!std::isfinite(floats.back()))
            Fail("'" + name + "' holds a number that is too large");
    }
    return floats;
}

ConvolutionLayer ReadLayer(const json& object, int64_t inputs)
{
    if (!object.is_object())
        Fail("'layers' must be a list of objects");
    ConvolutionLayer layer;
    layer.Inputs = static_cast<int32_t>(inputs);
    layer.Outputs = static_cast<int32_t>(Whole(object, "outputs", 1, kMaxPlanes));
    layer.Dilation = static_cast<int32_t>(Whole(object, "dilation", 1, kMaxDilation));
    const auto outputs = static_cast<size_t>(layer.Outputs);
    layer.Weights = Floats(object, "weights", outputs * static_cast<size_t>(inputs) * 9);
    layer.Biases = Floats(object, "biases", outputs);
    return layer;
}

ChoiceModel ReadModel(const json& root)
{
    if (!root.is_object() || !root.contains("format") || root["format"] != kFormat)
        Fail(std::string("'format' must be \"") + kFormat + "\"");
    if (Whole(root, "version", 1, 1'000'000) != kVersion)
        Fail("'version' must be " + std::to_string(kVersion));
    Whole(root, "grid", kGridSide, kGridSide);

    ChoiceModel model;
    model.InputMeans = Floats(root, "inputMeans", kNumInputs);
    model.InputScales = Floats(root, "inputScales", kNumInputs);
    const json& layers = Member(root, "layers");
    if (!layers.is_array() || layers.empty() || layers.size() > kMaxLayers)
        Fail("'layers' must be a list of 1 to " + std::to_string(kMaxLayers) + " layers");
    int64_t inputs = kNumInputs;
    for (const json& layer : layers) {
        model.Layers.push_back(ReadLayer(layer, inputs));
        inputs = model.Layers.back().Outputs;
    }
    if (inputs != kNumCropParts)
        Fail("the last of 'layers' must have " + std::to_string(kNumCropParts) + " outputs");
    model.FeatureWeights = Numbers(root, "featureWeights", kNumCropFeatures);
    model.Sharpness = Number(Member(root, "sharpness"), "sharpness");
    if (!(model.Sharpness > 0))
        Fail("'sharpness' must be above 0");
    model.OverlapOffset = Number(Member(root, "overlapOffset"), "overlapOffset");
    model.OverlapSlope = Number(Member(root, "overlapSlope"), "overlapSlope");
    return model;
}

} // namespace

RankingModel ReadRankingModel(const std::string& text, const std::string& source)
{
    try {
        return std::make_shared<const ChoiceModel>(ReadModel(json::parse(text)));
    } catch (const json::exception&) {
        Fail(source + ": is not valid JSON");
    } catch (const PhotoError& error) {
        Fail(source + ": " + error.what());
    }
}

} // namespace vistaTrim::photo
