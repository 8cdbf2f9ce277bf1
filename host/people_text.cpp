#include "result_text.h"

#include <cstdarg>
#include <cstdio>

namespace vistaTrim::host {

namespace {

__attribute__((format(printf, 1, 2))) std::string Format(const char* format, ...)
{
    char line[512];
    va_list values;
    va_start(values, format);
    vsnprintf(line, sizeof line, format, values);
    va_end(values);
    return line;
}

std::string RectText(const PixelRect& rect)
{
    return Format("%d,%d,%d,%d", rect.X, rect.Y, rect.Width, rect.Height);
}

std::string CropExplanationText(const SuggestedCrop& crop, const Explanation& explanation)
{
    std::string text;
    for (int measure = 0; measure < kNumMeasures; ++measure)
        text += Format("       %-12s %.4f, at or above %.1f %% of the candidates\n",
                       NameOfMeasure(measure), MeasureOf(crop.Scores, measure),
                       100.0 * crop.Explained->Ranks[static_cast<size_t>(measure)]);
    text += crop.CoversContent
                ? "       covers the content, which counts for more than the measures\n"
                : "       does not cover the content\n";
    for (size_t i = 0; i < explanation.Wishes.size(); ++i)
        text += std::string("       --") + NameOf(explanation.Wishes[i].Kind) + " " +
                RectText(explanation.Wishes[i].Rect) +
                (crop.Explained->WishesMet[i] ? " met\n" : " missed\n");
    return text;
}

} // namespace

std::string PeopleText(const PhotoResult& result)
{
    if (!result.Error.empty())
        return "";
    std::string text = result.File + Format(": %d x %d\n", result.Size.Width, result.Size.Height);
    if (!result.Crops.empty())
        text += "    #   ratio      x      y   width  height  merged    comp   cover  border"
                "    peak  centre     roi  content\n";
    int rank = 0;
    for (const SuggestedCrop& crop : result.Crops) {
        const vistaTrim::Score& scores = crop.Scores;
        text +=
            Format("  %3d %7s %6d %6d %7d %7d  %6.4f  %6.4f  %6.4f  %6.4f  %6.4f  %6.4f"
                   "  %6.4f  %s\n",
                   ++rank, crop.Aspect.Text().c_str(), crop.Rect.X, crop.Rect.Y, crop.Rect.Width,
                   crop.Rect.Height, scores.MergedScore, scores.CompositionScore,
                   scores.CoverageScore, scores.BorderScore, scores.PeakScore,
                   scores.CentrePeakScore, scores.RoiScore, crop.CoversContent ? "covered" : "-");
        if (crop.Explained && result.Explained)
            text += CropExplanationText(crop, *result.Explained);
    }
    if (result.Explained) {
        const Explanation& explanation = *result.Explained;
        text += Format("  %lld candidates, %lld of them pass the hard wishes\n",
                       static_cast<long long>(explanation.Candidates),
                       static_cast<long long>(explanation.Passing));
        for (size_t i = 0; i < explanation.Wishes.size(); ++i)
            text +=
                std::string("  --") + NameOf(explanation.Wishes[i].Kind) + " " +
                RectText(explanation.Wishes[i].Rect) +
                Format(": met by %lld candidates\n", static_cast<long long>(explanation.MetBy[i]));
        if (!explanation.Note.empty())
            text += "  " + explanation.Note + "\n";
    } else if (result.Crops.empty()) {
        text += "  no crop; --explain tells why\n";
    }
    return text;
}

} // namespace vistaTrim::host
