#include "output/result_text.h"

#include <nlohmann/json.hpp>

#include "vistaTrimPhoto/shape.h"

namespace vistaTrim::cli {

namespace {

using photo::Crop;
using photo::kMeasures;
using photo::Measure;

// Keeps members in the order in which they are added.
using Json = nlohmann::ordered_json;

Json ScoresJson(const photo::Scores& scores)
{
    Json json;
    for (const Measure& measure : kMeasures)
        json[measure.Name] = scores.*measure.Value;
    return json;
}

Json RectJson(const photo::PixelRect& rect)
{
    return {{"x", rect.X}, {"y", rect.Y}, {"width", rect.Width}, {"height", rect.Height}};
}

Json RegionJson(const photo::FoundRegion& region)
{
    Json json = RectJson(region.Rect);
    json["kind"] = photo::NameOf(region.Kind);
    json["source"] = photo::NameOf(region.Source);
    json["confidence"] = region.Confidence;
    if (!region.Label.empty())
        json["label"] = region.Label;
    json["wish"] = region.Wish ? photo::NameOf(*region.Wish) : "none";
    return json;
}

Json CropJson(const Crop& crop, const CropLabel* label)
{
    Json json = RectJson(crop.Rect);
    json["aspect"] = crop.Aspect.Text();
    if (label != nullptr && !label->Ratio.empty() &&
        label->Ratio != photo::FileSafeRatio(crop.Aspect.CommonName()))
        json["ratio"] = photo::ShownRatio(label->Ratio);
    if (label != nullptr && !label->Shape.empty()) {
        json["shape"] = label->Shape;
        json["rank"] = label->Rank;
        if (label->Fill)
            json["fill"] = {{"width", label->Fill->Width}, {"height", label->Fill->Height}};
    }
    json["coversContent"] = crop.CoversContent;
    json["expectedOverlap"] = crop.ExpectedOverlap;
    json["scores"] = ScoresJson(crop.Scores);
    if (crop.Explained) {
        Json ranks;
        for (size_t i = 0; i < photo::kNumWeighed; ++i)
            ranks[kMeasures[i].Name] = crop.Explained->Ranks[i];
        json["explain"] = {{"aspect", crop.Aspect.Text()},
                           {"ranks", ranks},
                           {"wishesMet", crop.Explained->WishesMet}};
    }
    return json;
}

Json ExplanationJson(const photo::Suggestions& found)
{
    const photo::Explanation& explanation = *found.Explained;
    Json wishes = Json::array();
    for (size_t i = 0; i < explanation.Wishes.size(); ++i) {
        Json wish = {{"kind", photo::NameOf(explanation.Wishes[i].Kind)}};
        wish.update(RectJson(explanation.Wishes[i].Rect));
        const std::optional<size_t> region = explanation.WishRegions[i];
        wish["source"] = region ? photo::NameOf(found.Regions[*region].Source) : "request";
        wish["metByCandidates"] = explanation.MetBy[i];
        wishes.push_back(wish);
    }
    return {{"candidates", explanation.Candidates},
            {"passing", explanation.Passing},
            {"wishes", wishes},
            {"note", photo::NoteOf(explanation, kWishPrefix)}};
}

} // namespace

std::string JsonLine(const PhotoResult& result)
{
    Json json = {{"file", result.File}};
    if (!result.Error.empty()) {
        json["error"] = result.Error;
    } else {
        json["width"] = result.Found.Size.Width;
        json["height"] = result.Found.Size.Height;
        if (!result.Found.Regions.empty()) {
            json["regions"] = Json::array();
            for (const photo::FoundRegion& region : result.Found.Regions)
                json["regions"].push_back(RegionJson(region));
        }
        json["crops"] = Json::array();
        for (size_t i = 0; i < result.Found.Crops.size(); ++i)
            json["crops"].push_back(CropJson(
                result.Found.Crops[i], i < result.Labels.size() ? &result.Labels[i] : nullptr));
        if (result.Found.Explained)
            json["explain"] = ExplanationJson(result.Found);
    }
    return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace vistaTrim::cli
