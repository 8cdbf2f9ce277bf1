#include "ranking/serving.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <numeric>

#include "ranking/choice_model.h"
#include "ranking/choice_network.h"
#include "ranking/covering_set.h"
#include "ranking/crop_utility.h"
#include "ranking/engine_lists.h"
#include "ranking/input_grid.h"
#include "ranking/moved_crops.h"

namespace vistaTrim::photo {

namespace {

// Crops that overlap more than this count as alike: a list ranked by one measure serves its other
// crops first.
constexpr double kAlike = 0.8;

// The model's view of one picture.
class PictureChoice {
public:
    PictureChoice(const CAnalysedPicture& analysed, IVistaTrim& driver, const PixelImage& picture,
                  const ChoiceModel& model)
        : Model(model), Size(picture.Size), Ranks(ScoredReference(driver, picture.Size)),
          Grid(AverageInputs(MapsOf(analysed), picture)), Parts(RunChoiceNetwork(model, Grid))
    {
    }

    // The picture has nothing to choose by: no crop is better than another.
    bool NothingToSee() const
    {
        return Grid.Flat;
    }

    std::vector<double> UtilitiesOf(const CropList& crops) const
    {
        std::vector<double> utilities = Utilities(Model, crops, Size, Ranks, Parts);
        for (double& utility : utilities) {
            utility *= Model.Sharpness;
            // Sorting needs finite numbers, and a model file may give others.
            if (!std::isfinite(utility))
                utility = -1e6;
        }
        return utilities;
    }

    double Overlap(double expected) const
    {
        return std::clamp(Model.OverlapOffset + Model.OverlapSlope * expected, 0.0, 1.0);
    }

private:
    static CropList ScoredReference(IVistaTrim& driver, PixelSize size)
    {
        CropList crops = ReferenceCrops(size);
        for (CInt32CropRect& crop : crops)
            EvaluateScores(&driver, &crop);
        return crops;
    }

    static std::vector<InputMap> MapsOf(const CAnalysedPicture& analysed)
    {
        std::vector<InputMap> maps;
        for (const NamedPictureMap& map : analysed.Maps())
            maps.push_back({map.Data, map.Rows, map.Cols});
        return maps;
    }

    const ChoiceModel& Model;
    PixelSize Size;
    MeasureRanks Ranks;
    InputGrid Grid;
    PartSums Parts;
};

// The candidates of one ratio, or of all of them, in the order in which they are served.
struct Line {
    std::vector<ServedCrop> Crops;
    std::vector<size_t> Met; // for each crop: how many of the regions that go first it meets
};

// Ranks by `key`: 1.0 for the highest; equal keys share the best rank.
void WriteRanks(CropList& crops, const std::vector<double>& keys)
{
    std::vector<double> sorted = keys;
    std::sort(sorted.begin(), sorted.end());
    for (size_t i = 0; i < crops.size(); ++i) {
        const auto notHigher =
            std::upper_bound(sorted.begin(), sorted.end(), keys[i]) - sorted.begin();
        crops[i].Score.MergedScore =
            static_cast<double>(notHigher) / static_cast<double>(sorted.size());
    }
}

double MeasureBy(const Score& score, RankBy ranking)
{
    switch (ranking) {
    case RankBy::Composition: return score.CompositionScore;
    case RankBy::Coverage: return score.CoverageScore;
    case RankBy::Border: return score.BorderScore;
    case RankBy::Peak: return score.PeakScore;
    case RankBy::CentrePeak: return score.CentrePeakScore;
    case RankBy::People:
    case RankBy::Engine: break;
    }
    return 0;
}

// Sorts the largest first, and among equal ones those nearest to the centre.
double SizeAndPlace(const CInt32CropRect& crop, PixelSize picture)
{
    const double width = crop.Right - crop.Left + 1;
    const double height = crop.Bottom - crop.Top + 1;
    const double off = std::abs(crop.Left + crop.Right + 1.0 - picture.Width) / picture.Width +
                       std::abs(crop.Top + crop.Bottom + 1.0 - picture.Height) / picture.Height;
    return width * height - off / 4; // off / 4 stays below one pixel
}

// Indices by tier, then key, then utility; at most `wanted`. Those too similar to an earlier one
// come only when nothing else is left in their tier.
std::vector<size_t> InOrderOf(const std::vector<double>& keys, const std::vector<double>& utilities,
                              const std::vector<size_t>& tiers, const CropList& crops,
                              size_t wanted)
{
    std::vector<size_t> order(crops.size());
    std::iota(order.begin(), order.end(), size_t{0});
    std::stable_sort(order.begin(), order.end(), [&](size_t a, size_t b) {
        if (tiers[a] != tiers[b])
            return tiers[a] > tiers[b];
        return keys[a] != keys[b] ? keys[a] > keys[b] : utilities[a] > utilities[b];
    });
    std::vector<size_t> served;
    for (size_t first = 0; first < order.size() && served.size() < wanted;) {
        size_t end = first;
        while (end < order.size() && tiers[order[end]] == tiers[order[first]])
            ++end;
        std::vector<size_t> alike;
        for (; first < end && served.size() < wanted; ++first) {
            const CInt32CropRect& crop = crops[order[first]];
            const bool isAlike = std::any_of(served.begin(), served.end(), [&](size_t other) {
                return OverlapOf(crop, crops[other]) > kAlike;
            });
            (isAlike ? alike : served).push_back(order[first]);
        }
        alike.resize(std::min(alike.size(), wanted - served.size()));
        served.insert(served.end(), alike.begin(), alike.end());
        first = end;
    }
    return served;
}

class LineMaker {
public:
    LineMaker(IVistaTrim& driver, const PictureChoice& choice, const Request& request,
              PixelSize picture, const std::vector<WishedRegion>& regions)
        : Driver(driver), Choice(choice), Requested(request), Picture(picture), Regions(regions)
    {
    }

    // Serves from these candidates, all of which are scored.
    Line Make(CropList crops) const
    {
        KeepAllowed(crops);
        Line line;
        if (crops.empty())
            return line;
        AddMoved(crops);
        std::vector<size_t> tiers;
        std::vector<double> utilities = Choice.NothingToSee()
                                            ? std::vector<double>(crops.size(), 0.0)
                                            : Choice.UtilitiesOf(crops);
        for (size_t i = 0; i < crops.size(); ++i) {
            tiers.push_back(RegionsMet(crops[i], Regions));
            utilities[i] -= CostOfMissing(crops[i], Regions);
        }
        CoveringSet set(crops, utilities, tiers);
        const auto add = [&](size_t index, double expected) {
            line.Crops.push_back({crops[index], Choice.Overlap(expected)});
            line.Met.push_back(tiers[index]);
        };
        const auto wanted = static_cast<size_t>(Requested.Top);
        const bool byPeople = Requested.Ranking == RankBy::People && !Choice.NothingToSee();
        if (byPeople) {
            WriteRanks(crops, utilities);
            CoveringSet::Served served{};
            while (line.Crops.size() < wanted && set.Next(served))
                add(served.Crop, served.ExpectedOverlap);
            return line;
        }
        std::vector<double> keys;
        for (const CInt32CropRect& crop : crops)
            keys.push_back(Requested.Ranking == RankBy::People
                               ? SizeAndPlace(crop, Picture)
                               : MeasureBy(crop.Score, Requested.Ranking));
        WriteRanks(crops, keys);
        for (const size_t index : InOrderOf(keys, utilities, tiers, crops, wanted))
            add(index, set.ExpectedOverlap(crops[index]));
        return line;
    }

    // The engine's own order of the crops in `best`.
    Line MakeOf(const CropList& best, CropList all) const
    {
        KeepAllowed(all);
        Line line;
        std::vector<double> utilities =
            Choice.NothingToSee() ? std::vector<double>(all.size(), 0.0) : Choice.UtilitiesOf(all);
        for (size_t i = 0; i < all.size(); ++i)
            utilities[i] -= CostOfMissing(all[i], Regions);
        const std::vector<size_t> tiers(all.size(), 0);
        const CoveringSet set(all, utilities, tiers);
        for (const CInt32CropRect& crop : best) {
            line.Crops.push_back({crop, Choice.Overlap(set.ExpectedOverlap(crop))});
            line.Met.push_back(RegionsMet(crop, Regions));
        }
        return line;
    }

private:
    // Nobody can choose the others.
    void KeepAllowed(CropList& crops) const
    {
        crops.erase(
            std::remove_if(crops.begin(), crops.end(),
                           [this](const auto& crop) { return !MeetsHardRegions(crop, Regions); }),
            crops.end());
    }

    // Adds places between those of the lattice, for crops that could hold the regions but do not.
    void AddMoved(CropList& crops) const
    {
        CropList moved =
            Choice.NothingToSee() ? CentredLargest(crops, Picture) : MovedToHold(crops, Regions);
        for (CInt32CropRect& crop : moved) {
            EvaluateScores(&Driver, &crop);
            if (MeetsHardRegions(crop, Regions))
                crops.push_back(crop);
        }
    }

    IVistaTrim& Driver;
    const PictureChoice& Choice;
    const Request& Requested;
    PixelSize Picture;
    const std::vector<WishedRegion>& Regions;
};

// One crop of each line in turn.
std::vector<ServedCrop> InRounds(const std::vector<Line>& lines, size_t wanted)
{
    std::vector<ServedCrop> served;
    for (size_t round = 0; served.size() < wanted; ++round) {
        std::vector<const Line*> going;
        for (const Line& line : lines)
            if (round < line.Crops.size())
                going.push_back(&line);
        if (going.empty())
            break;
        std::stable_sort(going.begin(), going.end(), [round](const Line* a, const Line* b) {
            return a->Met[round] > b->Met[round];
        });
        for (const Line* line : going)
            if (served.size() < wanted)
                served.push_back(line->Crops[round]);
    }
    return served;
}

} // namespace

std::vector<ServedCrop> Serve(const CAnalysedPicture& analysed, IVistaTrim& driver,
                              const PixelImage& picture, const Request& request,
                              const std::vector<Ratio>& ratios,
                              const SuggestionParameters& engineRequest,
                              const std::vector<WishedRegion>& regions)
{
    const std::shared_ptr<const ChoiceModel> model =
        request.Model ? request.Model : DefaultChoiceModel();
    const PictureChoice choice(analysed, driver, picture, *model);
    const LineMaker maker(driver, choice, request, picture.Size, regions);
    std::vector<Line> lines;
    if (request.Ranking == RankBy::Engine) {
        lines.push_back(maker.MakeOf(BestOf(driver, request.Weights, request.Top, engineRequest),
                                     AllOf(driver, engineRequest)));
    } else if (request.Aspects.empty() || request.Size) {
        lines.push_back(maker.Make(AllOf(driver, engineRequest)));
    } else {
        for (const Ratio& ratio : ratios)
            lines.push_back(maker.Make(AllOf(driver, SuggestionParameters(ratio.Value(), false))));
    }
    return InRounds(lines, static_cast<size_t>(request.Top));
}

} // namespace vistaTrim::photo
