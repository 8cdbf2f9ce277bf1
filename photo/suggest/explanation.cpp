#include "suggest/explanation.h"

#include <algorithm>

#include "regions/working_regions.h"
#include "suggest/engine_scores.h"

namespace vistaTrim::photo {

namespace {

// True if the largest crop of some ratio is at least one pixel wide and high in the working
// picture.
bool HasRoom(const std::vector<Ratio>& aspects, PixelSize size)
{
    if (aspects.empty())
        return size.Width > 1 && size.Height > 1;
    return std::any_of(aspects.begin(), aspects.end(), [size](const Ratio& aspect) {
        const double width = std::min<double>(size.Width, size.Height * aspect.Value());
        return width >= 1 && width / aspect.Value() >= 1;
    });
}

Shortfall WhyNoCandidate(const Request& request, PixelSize size)
{
    if (!HasRoom({}, size) || request.Size)
        return Shortfall::PhotographTooSmall;
    return HasRoom(request.Aspects, size) ? Shortfall::ScaleTooSmall : Shortfall::RatioTooExtreme;
}

void FindShortfall(Explanation& explanation, size_t given, const Request& request, PixelSize size)
{
    const auto crops = static_cast<int64_t>(given);
    if (explanation.Candidates == 0) {
        explanation.Why = WhyNoCandidate(request, size);
    } else if (explanation.Passing == 0) {
        explanation.Why = Shortfall::HardWishesTogether;
        for (size_t i = 0; i < explanation.Wishes.size() && !explanation.UnmetWish; ++i)
            if (IsHard(explanation.Wishes[i].Kind) && explanation.MetBy[i] == 0) {
                explanation.Why = Shortfall::WishMetByNone;
                explanation.UnmetWish = explanation.Wishes[i].Kind;
            }
    } else if (given == 0) {
        explanation.Why = Shortfall::SizeMissesWishes;
    } else if (crops < request.Top) {
        explanation.Why =
            explanation.Passing <= crops ? Shortfall::FewCandidates : Shortfall::OthersRankTooLow;
    }
}

} // namespace

std::string NoteOf(const Explanation& explanation, const std::string& wishPrefix)
{
    const auto called = [&wishPrefix](WishKind kind) { return wishPrefix + NameOf(kind); };
    const std::string passing = std::to_string(explanation.Passing);
    switch (explanation.Why) {
    case Shortfall::None: break;
    case Shortfall::PhotographTooSmall: return "the photograph is too small for any crop";
    case Shortfall::ScaleTooSmall:
        return wishPrefix + "scale is too small: a crop would be less than a pixel of the reduced "
                            "picture that is searched";
    case Shortfall::RatioTooExtreme:
        return wishPrefix + "aspect is too extreme: a crop would be less than a pixel wide or high "
                            "in the reduced picture that is searched";
    case Shortfall::WishMetByNone:
        return "no candidate meets " + called(explanation.UnmetWish.value_or(WishKind::MustKeep)) +
               "; try more ratios or scales";
    case Shortfall::HardWishesTogether:
        return "no candidate meets all of " + called(WishKind::MustKeep) + " and " +
               called(WishKind::MustAvoid) + " at once";
    case Shortfall::SizeMissesWishes:
        return "no crop of exactly the requested size meets the wishes at full resolution";
    case Shortfall::FewCandidates:
        return explanation.Passing == 1 ? "only one candidate is left"
                                        : "only " + passing + " candidates are left to choose from";
    case Shortfall::OthersRankTooLow:
        return "of " + passing + " candidates, the others rank too low or are much like these";
    }
    return "";
}

void Explain(const CropList& all, const std::vector<Wish>& wishes,
             const std::vector<RegionWish>& found, const WorkingPicture& picture,
             const Request& request, Suggestions& result)
{
    Explanation explanation;
    explanation.Candidates = static_cast<int64_t>(all.size());
    explanation.Wishes = wishes;
    explanation.WishRegions.resize(wishes.size() - found.size());
    for (const RegionWish& wish : found)
        explanation.WishRegions.emplace_back(wish.Region);
    explanation.MetBy.assign(wishes.size(), 0);
    std::vector<CInt32Rect> regions;
    regions.reserve(wishes.size());
    for (const Wish& wish : wishes)
        regions.push_back(ToWorkingOutward(wish.Rect, picture.Photo, picture.Pixels.Size));

    std::vector<Scores> passing;
    for (const CInt32CropRect& candidate : all) {
        bool passes = true;
        for (size_t i = 0; i < wishes.size(); ++i) {
            const bool met = IsMetInWorkingPicture(
                wishes[i], regions[i],
                {candidate.Left, candidate.Right, candidate.Top, candidate.Bottom});
            explanation.MetBy[i] += met ? 1 : 0;
            passes = passes && (met || !IsHard(wishes[i].Kind));
        }
        if (passes)
            passing.push_back(ScoresOf(candidate.Score));
    }
    explanation.Passing = static_cast<int64_t>(passing.size());
    FindShortfall(explanation, result.Crops.size(), request, picture.Pixels.Size);

    // The engine's own ranks order equal values in no stated order; here all that are equal share
    // the best place, so that the figure means the same for each of them.
    for (Crop& crop : result.Crops) {
        CropExplanation explained;
        for (size_t measure = 0; measure < kNumWeighed; ++measure) {
            double Scores::*const value = kMeasures[measure].Value;
            const double own = crop.Scores.*value;
            const auto notBetter =
                std::count_if(passing.begin(), passing.end(),
                              [own, value](const Scores& other) { return other.*value <= own; });
            explained.Ranks[measure] =
                static_cast<double>(notBetter) / static_cast<double>(passing.size());
        }
        for (const Wish& wish : wishes)
            explained.WishesMet.push_back(IsMet(wish, crop.Rect));
        crop.Explained = explained;
    }
    result.Explained = explanation;
}

} // namespace vistaTrim::photo
