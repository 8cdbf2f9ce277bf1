#include "program_figures.h"

#include <algorithm>
#include <cstdio>
#include <sstream>

#include "photo_loop.h"
#include "photo_reader.h"
#include "program_runs.h"
#include "rival_crops.h"
#include "suggestion_lines.h"

namespace {

const char* const kOurs = "vistatrim";
const char* const kCentredFrame = "centred frame of 90 %";
const char* const kCentredCrop = "largest centred crop";
const char* const kAttention = "libvips attention crop";

constexpr size_t kListLength = 5;

struct AskedRatio {
    const char* Name;
    double Value;
};
constexpr AskedRatio kFaceRatios[] = {
    {"1:1", 1.0}, {"4:5", 4.0 / 5}, {"16:9", 16.0 / 9}, {"9:16", 9.0 / 16}};

Suggestions Suggest(const ProgramToMeasure& program, const std::vector<std::string>& request,
                    const std::vector<std::string>& photos)
{
    std::vector<std::string> arguments = {"suggest", "--json", "--quiet"};
    arguments.insert(arguments.end(), request.begin(), request.end());
    arguments.insert(arguments.end(), program.Arguments.begin(), program.Arguments.end());
    arguments.emplace_back("--");
    for (const std::string& photo : photos)
        arguments.push_back(program.Photos + "/" + photo);
    std::istringstream lines(OutputOf(program.File, arguments));
    Suggestions suggestions = ReadSuggestions(lines, program.File);
    for (const std::string& photo : photos)
        CropsOf(suggestions, photo, program.File); // throws
    return suggestions;
}

// Of the first `length` crops; 0 if there is none.
double BestOverlap(const std::vector<CropBox>& crops, size_t length, const CropBox& chosen)
{
    double best = 0;
    for (size_t i = 0; i < std::min(crops.size(), length); ++i)
        best = std::max(best, IntersectionOverUnion(crops[i], chosen));
    return best;
}

std::string FourDecimals(double ratio)
{
    char text[40];
    std::snprintf(text, sizeof text, "%.4f", ratio);
    return text;
}

void AddChosenRatio(PhotoFigures& figures, const ProgramToMeasure& program,
                    const JudgedPhoto& judged, const WorkingPhoto& photo, const CropBox& chosen)
{
    const double ratio = chosen.Width / chosen.Height;
    const Suggestions asked = Suggest(
        program, {"--top", "1", "--jobs", "1", "--aspect", FourDecimals(ratio)}, {judged.File});
    const auto add = [&](const char* method, double overlap) {
        figures[{method, "IoU at the chosen ratio"}].Add(overlap);
    };
    add(kOurs, BestOverlap(asked.at(judged.File), 1, chosen));
    add(kCentredCrop,
        IntersectionOverUnion(LargestCentredCrop(photo.Width, photo.Height, ratio), chosen));
    add(kAttention, IntersectionOverUnion(AttentionCrop(photo, ratio), chosen));
}

} // namespace

std::vector<PhotoFigures> MeasureChosenCrops(const ProgramToMeasure& program,
                                             const std::vector<JudgedPhoto>& photos)
{
    std::vector<std::string> names;
    names.reserve(photos.size());
    for (const JudgedPhoto& photo : photos)
        names.push_back(photo.File);
    const Suggestions free = Suggest(
        program, {"--top", std::to_string(kListLength), "--jobs", std::to_string(program.Workers)},
        names);

    std::vector<PhotoFigures> results(photos.size());
    ForEachPhoto(photos.size(), program.Workers, [&](size_t i) {
        const JudgedPhoto& judged = photos[i];
        const WorkingPhoto photo = ReadWorkingPhoto(program.Photos + "/" + judged.File);
        const std::vector<CropBox>& crops = free.at(judged.File);
        for (const CropBox& chosen : judged.Chosen) {
            const double centred =
                IntersectionOverUnion(CentredFrame(photo.Width, photo.Height, 0.9), chosen);
            results[i][{kOurs, "IoU free, first"}].Add(BestOverlap(crops, 1, chosen));
            results[i][{kCentredFrame, "IoU free, first"}].Add(centred);
            results[i][{kOurs, "IoU free, best of 5"}].Add(BestOverlap(crops, kListLength, chosen));
            results[i][{kCentredFrame, "IoU free, best of 5"}].Add(centred);
            AddChosenRatio(results[i], program, judged, photo, chosen);
        }
    });
    return results;
}

std::vector<PhotoFigures> MeasureFaces(const ProgramToMeasure& program, const FaceList& faces)
{
    std::vector<std::string> names;
    for (const auto& photo : faces)
        names.push_back(photo.first);
    std::vector<Suggestions> asked;
    for (const AskedRatio& ratio : kFaceRatios)
        asked.push_back(Suggest(
            program,
            {"--top", "1", "--jobs", std::to_string(program.Workers), "--aspect", ratio.Name},
            names));

    std::vector<PhotoFigures> results(names.size());
    ForEachPhoto(names.size(), program.Workers, [&](size_t i) {
        const WorkingPhoto photo = ReadWorkingPhoto(program.Photos + "/" + names[i]);
        const std::vector<CropBox> inside =
            InsidePhoto(faces.at(names[i]), photo.Width, photo.Height);
        for (size_t k = 0; k < asked.size(); ++k) {
            const AskedRatio& ratio = kFaceRatios[k];
            const auto add = [&](const char* method, bool cut) {
                results[i][{method, "faces cut or lost, all four ratios"}].Add(cut ? 1 : 0);
                results[i][{method, std::string("faces cut or lost, ") + ratio.Name}].Add(cut ? 1
                                                                                              : 0);
            };
            const std::vector<CropBox>& crops = asked[k].at(names[i]);
            add(kOurs, crops.empty() || CutsOrLosesFace(crops.front(), inside));
            add(kCentredCrop,
                CutsOrLosesFace(LargestCentredCrop(photo.Width, photo.Height, ratio.Value),
                                inside));
            add(kAttention, CutsOrLosesFace(AttentionCrop(photo, ratio.Value), inside));
            add("no crop holds them all",
                NoCropHoldsAll(inside, photo.Width, photo.Height, ratio.Value));
        }
    });
    return results;
}
