// Measures how well the engine agrees with people: overlap of its crops with the chosen ones,
// and how often it prefers the crop that got more votes. Everything goes through the exported
// functions, as a host would, or with --program through vistatrim itself.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <exception>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "crop_figures.h"
#include "crop_tables.h"
#include "face_list.h"
#include "photo_loop.h"
#include "photo_reader.h"
#include "program_figures.h"
#include "rival_crops.h"
#include "suggestion_lines.h"
#include "vistaTrim/vistaTrim.h"

namespace {

using Weights = std::array<double, 5>;

const std::array<const char*, 5> kMeasures = {"composition", "coverage", "border", "peak",
                                              "centre peak"};
constexpr int kListLengths[] = {1, 5, 10};

struct Options {
    std::string Photos;
    std::string Boxes;
    std::string Pairs;
    std::string Split = "dev";
    std::string Json;
    std::vector<std::string> WeightTexts;
    std::string WeightsFile;
    std::string SuggestionsFile;
    std::vector<Weights> WeightSets;
    Suggestions Suggested;
    std::string Program;
    std::string ProgramArguments; // separated by spaces
    std::string FacesFile;
    std::vector<double> Aspects;
    std::vector<double> Scales;
    bool OwnAspect = false;
    uint32_t Density = 25;
    int Resamples = 1000;
    uint32_t Seed = 1;
    int Workers = 1;
    bool MeasuresAlone = true;
};

double Measure(const vistaTrim::Score& score, size_t measure)
{
    switch (measure) {
    case 0: return score.CompositionScore;
    case 1: return score.CoverageScore;
    case 2: return score.BorderScore;
    case 3: return score.PeakScore;
    default: return score.CentrePeakScore;
    }
}

CropBox ToBox(const vistaTrim::CInt32CropRect& crop)
{
    return {static_cast<double>(crop.Left), static_cast<double>(crop.Top),
            static_cast<double>(crop.Right - crop.Left + 1),
            static_cast<double>(crop.Bottom - crop.Top + 1)};
}

std::string WeightsName(const Weights& weights)
{
    std::ostringstream name;
    name << "weights";
    for (size_t i = 0; i < weights.size(); ++i)
        name << (i == 0 ? ' ' : ',') << weights[i];
    return name.str();
}

// An image and its driver, destroyed in the right order.
class CSession {
public:
    CSession(const WorkingPhoto& photo, const vistaTrim::VistaTrimParameters& parameters)
    {
        const int32_t offsets[4] = {0, 1, 2, 3};
        Image = CreateImageObj(static_cast<uint32_t>(photo.Height),
                               static_cast<uint32_t>(photo.Width), 3, offsets, photo.Pixels.data());
        Driver = CreateVistaTrimObj(Image, &parameters);
    }
    ~CSession()
    {
        DestroyVistaTrimObj(Driver);
        DestroyImageObj(Image);
    }
    CSession(const CSession&) = delete;
    CSession& operator=(const CSession&) = delete;

    std::vector<vistaTrim::CInt32CropRect> AllCandidates()
    {
        vistaTrim::ICropRects* list = nullptr;
        const vistaTrim::SuggestionParameters everything;
        ComputeCropSuggestions(Driver, &list, &everything);
        return Take(list);
    }

    std::vector<vistaTrim::CInt32CropRect> Best(int32_t n, const Weights& w)
    {
        vistaTrim::ICropRects* list = nullptr;
        const vistaTrim::SuggestionParameters everything;
        GetNTopCropSuggestions(Driver, n, &list, &everything, 0,
                               vistaTrim::WeightDistribution(w[0], w[1], w[2], w[3], w[4]));
        return Take(list);
    }

    void Score(vistaTrim::CInt32CropRect& crop)
    {
        EvaluateScores(Driver, &crop);
    }

private:
    static std::vector<vistaTrim::CInt32CropRect> Take(vistaTrim::ICropRects* list)
    {
        const vistaTrim::CInt32CropRect* first = list->Data();
        std::vector<vistaTrim::CInt32CropRect> crops(first, first + list->Count());
        list->Release();
        return crops;
    }

    vistaTrim::IImage* Image = nullptr;
    vistaTrim::IVistaTrim* Driver = nullptr;
};

// The share of the photograph's candidates that a crop's measures beat: the engine's own ranks for
// a crop that is not one of its candidates, without the tiers. As there, the last two weights count
// only when above 0.
class CRankTable {
public:
    explicit CRankTable(const std::vector<vistaTrim::CInt32CropRect>& candidates)
    {
        for (size_t measure = 0; measure < kMeasures.size(); ++measure) {
            for (const vistaTrim::CInt32CropRect& crop : candidates)
                Sorted[measure].push_back(Measure(crop.Score, measure));
            std::sort(Sorted[measure].begin(), Sorted[measure].end());
        }
    }

    double Merged(const vistaTrim::Score& score, const Weights& weights) const
    {
        double merged = 0;
        for (size_t measure = 0; measure < kMeasures.size(); ++measure) {
            if (measure >= 3 && !(weights[measure] > 0))
                continue;
            const std::vector<double>& sorted = Sorted[measure];
            const auto place =
                std::upper_bound(sorted.begin(), sorted.end(), Measure(score, measure));
            merged += weights[measure] * static_cast<double>(place - sorted.begin()) /
                      static_cast<double>(std::max<size_t>(1, sorted.size()));
        }
        return merged;
    }

private:
    std::array<std::vector<double>, 5> Sorted;
};

// Tallies whether `value` is higher for the crop with more votes; a tie counts half.
void TallyPreference(PhotoFigures& figures, const std::string& method, const VotedPair& pair,
                     double value0, double value1)
{
    const double better = pair.Votes[0] > pair.Votes[1] ? value0 - value1 : value1 - value0;
    const double right = better > 0 ? 1.0 : (better < 0 ? 0.0 : 0.5);
    figures[{method, "all pairs"}].Add(right);
    if (pair.EqualArea())
        figures[{method, "equal-area pairs"}].Add(right);
}

void TallyOverlap(PhotoFigures& figures, const std::string& method,
                  const std::vector<CropBox>& crops, const CropBox& chosen,
                  const WorkingPhoto& photo)
{
    for (const int length : kListLengths) {
        double overlap = 0;
        double displacement = 1;
        for (size_t i = 0; i < crops.size() && i < static_cast<size_t>(length); ++i) {
            overlap = std::max(overlap, IntersectionOverUnion(crops[i], chosen));
            displacement = std::min(
                displacement, BoundaryDisplacement(crops[i], chosen, photo.Width, photo.Height));
        }
        const std::string suffix = length == 1 ? "first" : "best of " + std::to_string(length);
        figures[{method, "IoU " + suffix}].Add(overlap);
        figures[{method, "displacement " + suffix}].Add(displacement);
    }
}

void EvaluateBoxes(PhotoFigures& figures, CSession& session, const JudgedPhoto& judged,
                   const CropBox& chosen, const WorkingPhoto& photo, const Options& options,
                   const std::vector<vistaTrim::CInt32CropRect>& candidates)
{
    for (const Weights& weights : options.WeightSets) {
        std::vector<CropBox> crops;
        for (const vistaTrim::CInt32CropRect& crop : session.Best(10, weights))
            crops.push_back(ToBox(crop));
        TallyOverlap(figures, WeightsName(weights), crops, chosen, photo);
    }
    if (!options.SuggestionsFile.empty())
        TallyOverlap(figures, "suggestions", options.Suggested.at(judged.File), chosen, photo);
    if (!options.MeasuresAlone)
        return;

    for (size_t measure = 0; measure < kMeasures.size(); ++measure) {
        Weights alone{};
        alone[measure] = 1;
        std::vector<CropBox> crops;
        for (const vistaTrim::CInt32CropRect& crop : session.Best(10, alone))
            crops.push_back(ToBox(crop));
        TallyOverlap(figures, std::string(kMeasures[measure]) + " alone", crops, chosen, photo);
    }

    const double width = photo.Width;
    const double height = photo.Height;
    TallyOverlap(figures, "whole frame", {{0, 0, width, height}}, chosen, photo);
    std::vector<CropBox> centred;
    for (const double share : {0.9, 0.8, 0.7, 0.6, 0.5}) {
        const CropBox box = CentredFrame(width, height, share);
        centred.push_back(box);
        char name[40];
        std::snprintf(name, sizeof name, "centred %.0f %%", 100 * share);
        TallyOverlap(figures, name, {box}, chosen, photo);
    }
    TallyOverlap(figures, "centred 90 .. 50 %", centred, chosen, photo);

    std::vector<CropBox> bySize;
    bySize.reserve(candidates.size());
    for (const vistaTrim::CInt32CropRect& crop : candidates)
        bySize.push_back(ToBox(crop));
    std::stable_sort(bySize.begin(), bySize.end(),
                     [](const CropBox& a, const CropBox& b) { return a.Area() > b.Area(); });
    TallyOverlap(figures, "largest first", bySize, chosen, photo);

    double bestOverlap = 0;
    for (const CropBox& box : bySize)
        bestOverlap = std::max(bestOverlap, IntersectionOverUnion(box, chosen));
    figures[{"best candidate there is", "IoU first"}].Add(bestOverlap);
}

void EvaluatePairs(PhotoFigures& figures, CSession& session, const std::vector<VotedPair>& pairs,
                   const WorkingPhoto& photo, const Options& options, const CRankTable& ranks)
{
    for (const VotedPair& pair : pairs) {
        if (pair.Votes[0] == pair.Votes[1])
            continue;
        vistaTrim::CInt32CropRect crops[2];
        for (int side = 0; side < 2; ++side) {
            crops[side] = ToCrop(pair.Crops[side], photo.Width, photo.Height);
            session.Score(crops[side]);
        }
        const vistaTrim::Score& score0 = crops[0].Score;
        const vistaTrim::Score& score1 = crops[1].Score;
        for (const Weights& weights : options.WeightSets)
            TallyPreference(figures, WeightsName(weights), pair, ranks.Merged(score0, weights),
                            ranks.Merged(score1, weights));
        if (!options.MeasuresAlone)
            continue;
        for (size_t measure = 0; measure < kMeasures.size(); ++measure)
            TallyPreference(figures, std::string(kMeasures[measure]) + " alone", pair,
                            Measure(score0, measure), Measure(score1, measure));

        const auto nearness = [&photo](const CropBox& box) {
            const double dx = (box.X + box.Width / 2 - photo.Width / 2.0) / photo.Width;
            const double dy = (box.Y + box.Height / 2 - photo.Height / 2.0) / photo.Height;
            return -std::sqrt(dx * dx + dy * dy);
        };
        TallyPreference(figures, "nearest to the centre", pair, nearness(pair.Crops[0]),
                        nearness(pair.Crops[1]));
        TallyPreference(figures, "largest first", pair, pair.Crops[0].Area(), pair.Crops[1].Area());
    }
}

void FillTable(const std::vector<double>& values, vistaTrim::DoubleInfo*& rows, uint32_t& count)
{
    delete[] rows;
    rows = nullptr;
    rows = new vistaTrim::DoubleInfo[values.size()];
    count = static_cast<uint32_t>(values.size());
    for (size_t i = 0; i < values.size(); ++i)
        rows[i] = vistaTrim::DoubleInfo(values[i]);
}

// The driver's parameters for one photograph.
void SetParameters(const Options& options, const WorkingPhoto& photo,
                   vistaTrim::VistaTrimParameters& parameters)
{
    parameters.SetDefaults();
    parameters.NumMaxCropRectsPerSide = options.Density;
    std::vector<double> aspects = options.Aspects;
    if (options.OwnAspect)
        aspects.push_back(static_cast<double>(photo.Width) / photo.Height);
    if (!aspects.empty())
        FillTable(aspects, parameters.AspectRatios, parameters.NumAspectRatios);
    if (!options.Scales.empty())
        FillTable(options.Scales, parameters.CropRectScaleRatios,
                  parameters.NumCropRectScaleRatios);
}

PhotoFigures EvaluatePhoto(const JudgedPhoto& judged, const Options& options)
{
    const WorkingPhoto photo = ReadWorkingPhoto(options.Photos + "/" + judged.File);
    vistaTrim::VistaTrimParameters parameters;
    SetParameters(options, photo, parameters);
    CSession session(photo, parameters);
    const std::vector<vistaTrim::CInt32CropRect> candidates = session.AllCandidates();

    PhotoFigures figures;
    for (const CropBox& chosen : judged.Chosen)
        EvaluateBoxes(figures, session, judged, chosen, photo, options, candidates);
    EvaluatePairs(figures, session, judged.Pairs, photo, options, CRankTable(candidates));

    // A score of exactly 0 or 1 means that the model's raw output was outside its range.
    for (const vistaTrim::CInt32CropRect& crop : candidates)
        figures[{"all candidates", "composition saturates"}].Add(
            crop.Score.CompositionScore <= 0 || crop.Score.CompositionScore >= 1 ? 1 : 0);
    return figures;
}

Weights ParseWeights(const std::string& text)
{
    Weights weights{};
    std::istringstream stream(text);
    size_t count = 0;
    for (std::string field; std::getline(stream, field, ',');) {
        size_t used = 0;
        double value = 0;
        try {
            value = std::stod(field, &used);
        } catch (const std::exception&) {
        }
        if (count == weights.size() || used == 0 || used != field.size() || !std::isfinite(value))
            throw std::runtime_error("--weights: '" + text + "' is not five numbers a,b,c,d,e");
        weights[count++] = value;
    }
    if (count != weights.size())
        throw std::runtime_error("--weights: '" + text + "' is not five numbers a,b,c,d,e");
    return weights;
}

void Report(const std::vector<PhotoFigures>& results, const Options& options)
{
    const std::map<FigureKey, Figure> figures = Summarise(results, options.Resamples, options.Seed);
    PrintTable(figures);
    if (!options.Json.empty())
        WriteJson(figures, options.Json);
}

int RunProgramMeasurement(const Options& options)
{
    ProgramToMeasure program;
    program.File = options.Program;
    program.Photos = options.Photos;
    program.Workers = options.Workers;
    std::istringstream words(options.ProgramArguments);
    for (std::string word; words >> word;)
        program.Arguments.push_back(word);

    // Before the long runs, so that an error in the list shows at once.
    const FaceList faces = options.FacesFile.empty() ? FaceList() : ReadFaceList(options.FacesFile);
    std::vector<PhotoFigures> results =
        MeasureChosenCrops(program, ReadCropTables(options.Boxes, "", options.Split));
    if (!faces.empty()) {
        const std::vector<PhotoFigures> ofFaces = MeasureFaces(program, faces);
        results.insert(results.end(), ofFaces.begin(), ofFaces.end());
    }
    Report(results, options);
    return 0;
}

int Run(Options& options)
{
    if (!options.Program.empty())
        return RunProgramMeasurement(options);
    for (const std::string& text : options.WeightTexts)
        options.WeightSets.push_back(ParseWeights(text));
    if (!options.WeightsFile.empty()) {
        std::ifstream stream(options.WeightsFile);
        if (!stream)
            throw std::runtime_error(options.WeightsFile + ": cannot be opened");
        for (std::string line; std::getline(stream, line);)
            if (!line.empty())
                options.WeightSets.push_back(ParseWeights(line));
    }

    const std::vector<JudgedPhoto> photos =
        ReadCropTables(options.Boxes, options.Pairs, options.Split);
    if (!options.SuggestionsFile.empty()) {
        std::ifstream stream(options.SuggestionsFile);
        if (!stream)
            throw std::runtime_error(options.SuggestionsFile + ": cannot be opened");
        options.Suggested = ReadSuggestions(stream, options.SuggestionsFile);
        for (const JudgedPhoto& photo : photos)
            if (!photo.Chosen.empty())
                CropsOf(options.Suggested, photo.File, options.SuggestionsFile);
    }
    std::vector<PhotoFigures> results(photos.size());
    ForEachPhoto(photos.size(), options.Workers,
                 [&](size_t i) { results[i] = EvaluatePhoto(photos[i], options); });

    Report(results, options);
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    CLI::App app{"Measures crops against what people chose, with 95 % bootstrap intervals."};
    app.footer(kCropTableHelp);
    Options options;
    app.add_option("--photos", options.Photos, "folder of the photographs")->required();
    CLI::Option* const boxes = app.add_option("--boxes", options.Boxes, "table of chosen crops");
    CLI::Option* const pairs = app.add_option("--pairs", options.Pairs, "table of voted pairs");
    app.add_option("--split", options.Split, "split to measure on")->capture_default_str();
    app.add_option("--weights", options.WeightTexts, "rank weights a,b,c,d,e; repeatable");
    app.add_option("--weights-file", options.WeightsFile, "file of rank weights, one set per line");
    CLI::Option* const suggestions =
        app.add_option("--suggestions", options.SuggestionsFile,
                       "measure these crops too: the output of `vistatrim suggest --json` for the "
                       "photographs as they are in --photos");
    CLI::Option* const program =
        app.add_option("--program", options.Program,
                       "run this vistatrim and measure its crops, free and at the ratio of each "
                       "chosen crop, beside centred crops and libvips' attention crop; the engine "
                       "is not measured")
            ->needs(boxes)
            ->excludes(pairs)
            ->excludes(suggestions);
    app.add_option("--program-args", options.ProgramArguments,
                   "more arguments for it, as one text separated by spaces")
        ->needs(program);
    app.add_option(
           "--faces-list", options.FacesFile,
           "count its crops at 1:1, 4:5, 16:9 and 9:16 in which a face is cut or lost; "
           "lines of file, x, y, w, h separated by tabs, in pixels of the 640-pixel photograph")
        ->needs(program);
    app.add_option("--aspects", options.Aspects, "aspect ratios instead of the default table")
        ->delimiter(',');
    app.add_option("--scales", options.Scales, "scale ratios instead of the default table")
        ->delimiter(',');
    app.add_flag("--own-aspect", options.OwnAspect, "add each photograph's own aspect ratio");
    app.add_option("--density", options.Density, "candidate positions along the roomier side")
        ->capture_default_str()
        ->check(CLI::Range(1, 200));
    app.add_flag("!--weights-only", options.MeasuresAlone,
                 "leave out the measures alone and the baselines");
    app.add_option("--json", options.Json, "also write the figures to this file");
    app.add_option("--resamples", options.Resamples, "resamples of the bootstrap")
        ->capture_default_str()
        ->check(CLI::Range(1, 1000000));
    app.add_option("--seed", options.Seed, "seed of the bootstrap")->capture_default_str();
    app.add_option("-j,--jobs", options.Workers, "threads")
        ->capture_default_str()
        ->check(CLI::Range(1, 256));
    CLI11_PARSE(app, argc, argv);

    try {
        StartPhotoReader(argv[0]);
        return Run(options);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "evaluate_crops: %s\n", error.what());
        return 1;
    } catch (const char* text) {
        std::fprintf(stderr, "evaluate_crops: %s", text);
        return 1;
    }
}
