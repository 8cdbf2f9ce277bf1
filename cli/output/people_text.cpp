#include "output/result_text.h"

#include <cstdarg>
#include <cstdio>
#include <optional>
#include <vector>

#include "batch/photo_list.h"
#include "output/shown_ratio.h"

namespace vistaTrim::cli {

namespace {

using photo::Crop;
using photo::Explanation;
using photo::Measure;

__attribute__((format(printf, 1, 2))) std::string Format(const char* format, ...)
{
    char line[512];
    va_list values;
    va_start(values, format);
    vsnprintf(line, sizeof line, format, values);
    va_end(values);
    return line;
}

std::string RectText(const photo::PixelRect& rect)
{
    return Format("%d,%d,%d,%d", rect.X, rect.Y, rect.Width, rect.Height);
}

// The columns of the measures: the merged rank first.
std::vector<const Measure*> MeasuresInColumns()
{
    std::vector<const Measure*> measures;
    for (const Measure& measure : photo::kMeasures) {
        const bool isMerged = measure.Value == &photo::Scores::Merged;
        measures.insert(isMerged ? measures.begin() : measures.end(), &measure);
    }
    return measures;
}

std::string MeasureHeadings()
{
    std::string text;
    for (const Measure* measure : MeasuresInColumns())
        text += Format("  %6s", measure->Column);
    return text;
}

std::string MeasureColumns(const photo::Scores& scores)
{
    std::string text;
    for (const Measure* measure : MeasuresInColumns())
        text += Format("  %6.4f", scores.*measure->Value);
    return text;
}

// A wish of the request as it was given; a wish from a found region by the kind of region.
std::string WishText(const photo::Suggestions& found, size_t wish)
{
    const Explanation& explanation = *found.Explained;
    const std::optional<size_t> region = explanation.WishRegions[wish];
    const std::string name = photo::NameOf(explanation.Wishes[wish].Kind);
    return (region ? std::string(photo::NameOf(found.Regions[*region].Kind)) + ", " + name
                   : kWishPrefix + name) +
           " " + RectText(explanation.Wishes[wish].Rect);
}

std::string RegionLine(const photo::FoundRegion& region)
{
    return std::string("  ") + photo::NameOf(region.Kind) + " " + RectText(region.Rect) +
           Format(", from %s, confidence %.2f\n", photo::NameOf(region.Source), region.Confidence);
}

std::string CropExplanationText(const Crop& crop, const photo::Suggestions& found)
{
    std::string text;
    for (size_t i = 0; i < photo::kNumWeighed; ++i) {
        const Measure& measure = photo::kMeasures[i];
        text += Format("       %-12s %.4f, at or above %.1f %% of the candidates\n", measure.Name,
                       crop.Scores.*measure.Value, 100.0 * crop.Explained->Ranks[i]);
    }
    text +=
        crop.CoversContent ? "       covers the content\n" : "       does not cover the content\n";
    for (size_t i = 0; i < found.Explained->Wishes.size(); ++i)
        text += "       " + WishText(found, i) +
                (crop.Explained->WishesMet[i] ? " met\n" : " missed\n");
    return text;
}

} // namespace

std::string PeopleText(const PhotoResult& result)
{
    if (!result.Error.empty())
        return "";
    std::string text = ShownName(result.File) +
                       Format(": %d x %d\n", result.Found.Size.Width, result.Found.Size.Height);
    if (!result.Found.Crops.empty())
        text += "    #   ratio      x      y   width  height  expect" + MeasureHeadings() +
                "  content\n";
    for (size_t i = 0; i < result.Found.Crops.size(); ++i) {
        const Crop& crop = result.Found.Crops[i];
        text += Format("  %3d %7s %6d %6d %7d %7d", static_cast<int>(i) + 1,
                       ShownRatioOf(result, i).c_str(), crop.Rect.X, crop.Rect.Y, crop.Rect.Width,
                       crop.Rect.Height) +
                Format("  %6.4f", crop.ExpectedOverlap) + MeasureColumns(crop.Scores) +
                (crop.CoversContent ? "  covered\n" : "  -\n");
        if (crop.Explained && result.Found.Explained)
            text += CropExplanationText(crop, result.Found);
    }
    if (result.Found.Explained) {
        const Explanation& explanation = *result.Found.Explained;
        text += Format("  %lld candidates, %lld of them pass the hard wishes\n",
                       static_cast<long long>(explanation.Candidates),
                       static_cast<long long>(explanation.Passing));
        for (size_t i = 0; i < explanation.Wishes.size(); ++i)
            text +=
                "  " + WishText(result.Found, i) +
                Format(": met by %lld candidates\n", static_cast<long long>(explanation.MetBy[i]));
        for (const photo::FoundRegion& region : result.Found.Regions)
            text += RegionLine(region);
        const std::string note = photo::NoteOf(explanation, kWishPrefix);
        if (!note.empty())
            text += "  " + note + "\n";
    } else if (result.Found.Crops.empty()) {
        text += "  no crop: " + result.WhyNone + "\n";
    }
    return text;
}

} // namespace vistaTrim::cli
