#include "result_text.h"

#include <nlohmann/json.hpp>

namespace vistaTrim::host {

namespace {

// Keeps the members in the order in which they are written here.
using Json = nlohmann::ordered_json;

Json ScoresJson(const vistaTrim::Score& scores)
{
    Json json;
    for (int measure = 0; measure < kNumMeasures; ++measure)
        json[NameOfMeasure(measure)] = MeasureOf(scores, measure);
    json["roi"] = scores.RoiScore;
    json["merged"] = scores.MergedScore;
    return json;
}

Json RectJson(const PixelRect& rect)
{
    return {{"x", rect.X}, {"y", rect.Y}, {"width", rect.Width}, {"height", rect.Height}};
}

Json CropJson(const SuggestedCrop& crop)
{
    Json json = RectJson(crop.Rect);
    json["coversContent"] = crop.CoversContent;
    json["scores"] = ScoresJson(crop.Scores);
    if (crop.Explained) {
        Json ranks;
        for (int measure = 0; measure < kNumMeasures; ++measure)
            ranks[NameOfMeasure(measure)] = crop.Explained->Ranks[static_cast<size_t>(measure)];
        json["explain"] = {{"aspect", crop.Aspect.Text()},
                           {"ranks", ranks},
                           {"wishesMet", crop.Explained->WishesMet}};
    }
    return json;
}

Json ExplanationJson(const Explanation& explanation)
{
    Json wishes = Json::array();
    for (size_t i = 0; i < explanation.Wishes.size(); ++i) {
        Json wish = {{"kind", NameOf(explanation.Wishes[i].Kind)}};
        wish.update(RectJson(explanation.Wishes[i].Rect));
        wish["metByCandidates"] = explanation.MetBy[i];
        wishes.push_back(wish);
    }
    return {{"candidates", explanation.Candidates},
            {"passing", explanation.Passing},
            {"wishes", wishes},
            {"note", explanation.Note}};
}

} // namespace

std::string JsonLine(const PhotoResult& result)
{
    Json json = {{"file", result.File}};
    if (!result.Error.empty()) {
        json["error"] = result.Error;
    } else {
        json["width"] = result.Size.Width;
        json["height"] = result.Size.Height;
        json["crops"] = Json::array();
        for (const SuggestedCrop& crop : result.Crops)
            json["crops"].push_back(CropJson(crop));
        if (result.Explained)
            json["explain"] = ExplanationJson(*result.Explained);
    }
    return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace vistaTrim::host
