#include "explanation.h"

#include <algorithm>

namespace vistaTrim::host {

namespace {

bool IsMetInWorkingPicture(const Wish& wish, const CInt32Rect& region, const CInt32CropRect& crop)
{
    if (WantsInside(wish.Kind))
        return crop.Left <= region.Left && region.Right <= crop.Right && crop.Top <= region.Top &&
               region.Bottom <= crop.Bottom;
    return crop.Right < region.Left || region.Right < crop.Left || crop.Bottom < region.Top ||
           region.Bottom < crop.Top;
}

std::string WhyFewer(const Explanation& explanation, size_t given, int32_t asked)
{
    const bool none = given == 0;
    if (explanation.Candidates == 0)
        return "the photograph is too small for any of the ratios and scales";
    if (explanation.Passing == 0) {
        for (size_t i = 0; i < explanation.Wishes.size(); ++i)
            if (IsHard(explanation.Wishes[i].Kind) && explanation.MetBy[i] == 0)
                return std::string("no candidate meets --") + NameOf(explanation.Wishes[i].Kind) +
                       "; try more ratios or scales";
        return "no candidate meets all of --must-keep and --must-avoid at once";
    }
    if (none)
        return "no crop of exactly the asked size meets the wishes at full resolution";
    const auto crops = static_cast<int64_t>(given);
    if (crops < asked && explanation.Passing <= crops)
        return explanation.Passing == 1 ? "one candidate is left to choose from"
                                        : "only " + std::to_string(explanation.Passing) +
                                              " candidates are left to choose from";
    if (crops < asked)
        return "of " + std::to_string(explanation.Passing) +
               " candidates, the others rank too low or are much like these";
    return "";
}

} // namespace

void Explain(const std::vector<CInt32CropRect>& all, const std::vector<CInt32CropRect>& best,
             const std::vector<Wish>& wishes, const WorkingPicture& picture, int32_t asked,
             PhotoResult& result)
{
    Explanation explanation;
    explanation.Candidates = static_cast<int64_t>(all.size());
    explanation.Wishes = wishes;
    explanation.MetBy.assign(wishes.size(), 0);
    std::vector<CInt32Rect> regions;
    regions.reserve(wishes.size());
    for (const Wish& wish : wishes)
        regions.push_back(ToWorkingOutward(wish.Rect, picture.Photo, picture.Size));

    std::vector<const CInt32CropRect*> passing;
    for (const CInt32CropRect& candidate : all) {
        bool passes = true;
        for (size_t i = 0; i < wishes.size(); ++i) {
            const bool met = IsMetInWorkingPicture(wishes[i], regions[i], candidate);
            explanation.MetBy[i] += met ? 1 : 0;
            passes = passes && (met || !IsHard(wishes[i].Kind));
        }
        if (passes)
            passing.push_back(&candidate);
    }
    explanation.Passing = static_cast<int64_t>(passing.size());
    explanation.Note = WhyFewer(explanation, result.Crops.size(), asked);

    // The library's own ranks tell equal values apart, in no stated order; here all that are
    // equal share the best place, so that the figure means the same for each of them.
    for (size_t i = 0; i < best.size(); ++i) {
        CropExplanation explained;
        for (int measure = 0; measure < kNumMeasures; ++measure) {
            const double own = MeasureOf(best[i].Score, measure);
            const auto notBetter = std::count_if(passing.begin(), passing.end(),
                                                 [own, measure](const CInt32CropRect* other) {
                                                     return MeasureOf(other->Score, measure) <= own;
                                                 });
            explained.Ranks[static_cast<size_t>(measure)] =
                static_cast<double>(notBetter) / static_cast<double>(passing.size());
        }
        for (const Wish& wish : wishes)
            explained.WishesMet.push_back(IsMet(wish, result.Crops[i].Rect));
        result.Crops[i].Explained = explained;
    }
    result.Explained = explanation;
}

} // namespace vistaTrim::host
