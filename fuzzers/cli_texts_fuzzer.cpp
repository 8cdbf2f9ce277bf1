// Reads any text as each of those that users give or that stand beside their outputs: regions,
// presets, a ranking, chosen crops, a record of options. It is accepted, and everything in it is in
// bounds, or rejected with one line that names its source.
#include <algorithm>
#include <cmath>
#include <set>
#include <string>
#include <vector>

#include "batch/chosen_crops.h"
#include "batch/run_record.h"
#include "fuzz_support.h"
#include "options/program_error.h"
#include "ranking/choice_model.h"
#include "ranking/choice_network.h"
#include "text_examples.h"
#include "vistaTrimPhoto/photo_error.h"
#include "vistaTrimPhoto/presets.h"
#include "vistaTrimPhoto/ranking_model.h"
#include "vistaTrimPhoto/regions_file.h"

using namespace fuzzing;
using namespace vistaTrim::cli;
using namespace vistaTrim::photo;

namespace {

const std::string kSource = "the source";

void CheckFault(const std::string& message)
{
    Demand(message.compare(0, kSource.size() + 1, kSource + ":") == 0, "the source is named");
    Demand(message.find('\n') == std::string::npos, "one line");
}

void CheckRatio(const Ratio& ratio)
{
    Demand(ratio.Width >= 1 && ratio.Height >= 1, "both terms are above 0");
    Demand(Reduced(ratio.Width, ratio.Height) == ratio, "the ratio is in lowest terms");
}

void CheckPartOfFileName(const std::string& text)
{
    Demand(text.find('/') == std::string::npos && text.find('\0') == std::string::npos,
           "no path in a file name");
}

void CheckRegions(const std::string& text)
{
    const RegionsFile file(text, kSource);
    for (const char* name : {"a.jpg", "b.jpg", "folder/a.jpg", "1", ""}) {
        const std::vector<FoundRegion>& regions = file.RegionsOf(name);
        Demand(regions.empty() || file.Names(name), "what has regions is named");
        for (const FoundRegion& region : regions) {
            const PixelRect& rect = region.Rect;
            Demand(rect.Width >= 1 && rect.Height >= 1, "a region has pixels");
            Demand(int64_t{rect.X} + rect.Width <= INT32_MAX &&
                       int64_t{rect.Y} + rect.Height <= INT32_MAX,
                   "the far side of a region fits 32 bits");
            Demand(region.Confidence >= 0 && region.Confidence <= 1, "confidence");
            Demand(region.Source == RegionSource::File, "the regions come from a file");
            ClippedTo(rect, {4000, 3000});
        }
    }
}

void CheckPresets(const std::string& text)
{
    Presets presets;
    const size_t builtIn = presets.All().size();
    presets.AddTable(text, kSource);
    Demand(presets.All().size() >= builtIn, "no preset is lost");
    std::set<std::string> names;
    for (const Shape& shape : presets.All()) {
        Demand(names.insert(shape.Name).second, "a name is there once");
        Demand(!shape.Name.empty() && shape.Name[0] != '-', "a preset has a name");
        CheckPartOfFileName(shape.Name);
        Demand(!ParseRatio(shape.Name), "no name is a ratio");
        CheckRatio(shape.Aspect);
        Demand(!shape.RatioText.empty(), "the ratio has a text");
        CheckPartOfFileName(shape.RatioText);
        if (shape.Fill)
            Demand(shape.Fill->Width >= 1 && shape.Fill->Height >= 1 &&
                       Reduced(shape.Fill->Width, shape.Fill->Height) == shape.Aspect,
                   "the size has the ratio");
        for (const double scale : RequestFor(shape, {}, {4000, 3000}).Scales)
            Demand(scale > 0 && scale <= 1, "scales");
    }
}

void CheckRanking(const std::string& text)
{
    const RankingModel model = ReadRankingModel(text, kSource);
    Demand(model->Sharpness > 0 && std::isfinite(model->Sharpness), "sharpness");
    Demand(model->FeatureWeights.size() == static_cast<size_t>(kNumCropFeatures), "features");
    for (const double weight : model->FeatureWeights)
        Demand(std::isfinite(weight), "weights are finite");
    // Reads every weight of every layer, where the sizes say that it is.
    InputGrid inputs;
    inputs.Planes.assign(static_cast<size_t>(kNumInputs) * kGridCells, 0.5F);
    Demand(RunChoiceNetwork(*model, inputs).size() ==
               static_cast<size_t>(kNumCropParts) * kGridCells,
           "a plane for each part of a crop");
}

void CheckCrops(const std::string& text)
{
    for (const ChosenPhoto& photo : ReadChosenCrops(text, kSource).Photos) {
        Demand(!photo.File.empty(), "the photograph has a name");
        Demand(photo.Source.compare(0, kSource.size() + 1, kSource + ":") == 0, "its source");
        Demand(!photo.Crops.empty() && photo.Crops.size() == photo.Labels.size(),
               "a label for each crop");
        for (const Crop& crop : photo.Crops) {
            Demand(crop.Rect.X >= 0 && crop.Rect.Y >= 0 && crop.Rect.Width >= 1 &&
                       crop.Rect.Height >= 1,
                   "a crop has pixels");
            Demand(!photo.Size ||
                       Contains({0, 0, photo.Size->Width, photo.Size->Height}, crop.Rect),
                   "a crop lies in its photograph");
            CheckRatio(crop.Aspect);
            for (const Measure& measure : kMeasures)
                Demand(std::isfinite(crop.Scores.*measure.Value), "scores are finite");
        }
        for (const CropLabel& label : photo.Labels) {
            Demand(label.Rank >= 1, "ranks begin at 1");
            CheckPartOfFileName(label.Shape);
            CheckPartOfFileName(label.Ratio);
            Demand(!label.Fill || (label.Fill->Width >= 1 && label.Fill->Height >= 1),
                   "a size has pixels");
        }
    }
}

void CheckRecord(const std::string& text)
{
    const auto runs = RecordedRuns(text);
    if (!runs)
        return;
    const auto again = RecordedRuns(RecordText(*runs));
    Demand(again && std::equal(runs->begin(), runs->end(), again->begin(), again->end(),
                               [](const RecordedRun& a, const RecordedRun& b) {
                                   return a.Names == b.Names && a.Options == b.Options;
                               }),
           "a record reads back unchanged");
}

// The valid example with words replaced and inserted: what mutated bytes seldom reach.
std::string Spoilt(FuzzedDataProvider& data, std::string text)
{
    static const char* const words[] = {
        "null", "true",    "\"1\"",      "{}",         "[]",         "0",    "-1",        "1e-30",
        "1e30", "1e999",   "-0.5",       "1",          "2147483648", "255",  "100000000", "1.5e9",
        "-1e9", "\"\\n\"", "\"..\\/a\"", "\"a.jpg\"",  "\"16:9\"",   "16:9", "10000x1",   "64x64",
        "-",    "../a",    "\t",         "\n",         ",",          "}",    "]",         "\"",
        "",     "[[",      "\"none\"",   "\"\\u0000\""};
    constexpr int32_t kLast = static_cast<int32_t>(sizeof words / sizeof words[0]) - 1;
    const char* const separators = "{}[]:,\t\n";
    const int32_t changes = Whole(data, 1, 4);
    for (int32_t i = 0; i < changes; ++i) {
        // Counted from the front, where the names and the structure are.
        const auto at = std::min(text.size(), static_cast<size_t>(Whole(data, 0, 1023)));
        const size_t before = text.find_last_of(separators, at);
        const size_t begin = before == std::string::npos ? 0 : before + 1;
        const size_t end = std::min(text.find_first_of(separators, begin), text.size());
        const bool replaces = Whole(data, 0, 3) != 0;
        text.replace(begin, replaces ? end - begin : 0, words[Whole(data, 0, kLast)]);
    }
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count)
{
    FuzzedDataProvider data(bytes, count);
    const int32_t choice = Whole(data, 0, 2 * kNumTextKinds - 1);
    const auto kind = static_cast<TextKind>(choice % kNumTextKinds);
    const std::string text = choice < kNumTextKinds ? data.ConsumeRemainingBytesAsString()
                                                    : Spoilt(data, ExampleOf(kind));
    try {
        switch (kind) {
        case TextKind::Regions: CheckRegions(text); break;
        case TextKind::Presets: CheckPresets(text); break;
        case TextKind::Ranking: CheckRanking(text); break;
        case TextKind::Crops: CheckCrops(text); break;
        case TextKind::Record: CheckRecord(text); break;
        }
    } catch (const PhotoError& error) {
        Demand(kind != TextKind::Crops && kind != TextKind::Record,
               "a PhotoError from the library");
        Demand(error.GetKind() == PhotoError::Kind::InvalidRequest, "its kind");
        CheckFault(error.what());
    } catch (const ProgramError& error) {
        Demand(kind == TextKind::Crops, "a ProgramError from the program");
        CheckFault(error.what());
    }
    return 0;
}
