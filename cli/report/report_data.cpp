#include "report/report_data.h"

#include <algorithm>

#include <nlohmann/json.hpp>

#include "output/result_text.h"
#include "vistaTrimPhoto/measures.h"

namespace vistaTrim::cli {

namespace {

// Keeps the members in the order in which they are written here.
using Json = nlohmann::ordered_json;

constexpr const char* kExpectedOverlap = "expectedOverlap";

// JSON in which no "</script>" or "<!--" can occur, whatever a file is called.
std::string Block(const Json& json)
{
    std::string text = json.dump(-1, ' ', false, Json::error_handler_t::replace);
    for (size_t at = text.find('<'); at != std::string::npos; at = text.find('<', at))
        text.replace(at, 1, "\\u003c");
    return text;
}

// A number that the line holds for a crop, among its scores or beside them.
const Json* Figure(const Json& crop, const char* name)
{
    if (crop.contains(name))
        return &crop.at(name);
    const Json& scores = crop.at("scores");
    return scores.contains(name) ? &scores.at(name) : nullptr;
}

Json LineWithoutExplanations(const Json& line)
{
    Json plain = {{"file", line.at("file")},
                  {"width", line.at("width")},
                  {"height", line.at("height")},
                  {"crops", line.at("crops")}};
    for (Json& crop : plain["crops"])
        crop.erase("explain");
    return plain;
}

// The wishes of the request.
Json RegionsOf(const Json& explanation)
{
    Json regions = Json::array();
    for (const Json& wish : explanation.at("wishes"))
        regions.push_back({{"label", wish.at("kind")},
                           {"x", wish.at("x")},
                           {"y", wish.at("y")},
                           {"width", wish.at("width")},
                           {"height", wish.at("height")}});
    return regions;
}

} // namespace

std::string ReportData(const PhotoResult& result)
{
    const Json line = Json::parse(JsonLine(result));
    Json data = {{"line", LineWithoutExplanations(line)},
                 {"ratios", Json::array()},
                 {"ranks", Json::array()},
                 {"candidates", 0},
                 {"regions", Json::array()},
                 {"note", ""}};
    for (const photo::Crop& crop : result.Found.Crops)
        data["ratios"].push_back(crop.Aspect.CommonName());
    for (const Json& crop : line.at("crops"))
        if (crop.contains("explain"))
            data["ranks"].push_back(crop.at("explain").at("ranks"));
    if (line.contains("explain")) {
        const Json& explanation = line.at("explain");
        data["candidates"] = explanation.at("passing");
        data["regions"] = RegionsOf(explanation);
        data["note"] = explanation.at("note");
    }
    return Block(data);
}

std::string ReportMaps(const std::vector<ReportMap>& maps)
{
    Json json = Json::array();
    for (const ReportMap& map : maps)
        json.push_back({{"name", map.Name}, {"picture", map.Picture}});
    return Block(json);
}

std::string ReportMeasures()
{
    Json measures = Json::array();
    for (const photo::Measure& measure : photo::kMeasures)
        measures.push_back(
            {{"name", measure.Name}, {"label", measure.Label}, {"text", measure.Hint}});
    const auto first = std::find_if(measures.begin(), measures.end(), [](const Json& measure) {
        return measure.at("name") == kExpectedOverlap;
    });
    if (first != measures.end())
        std::rotate(measures.begin(), first, first + 1);
    return Block(measures);
}

std::vector<double> ExpectedOverlaps(const PhotoResult& result)
{
    std::vector<double> overlaps;
    const Json line = Json::parse(JsonLine(result));
    for (const Json& crop : line.at("crops")) {
        const Json* overlap = Figure(crop, kExpectedOverlap);
        if (overlap == nullptr)
            return {};
        overlaps.push_back(overlap->get<double>());
    }
    return overlaps;
}

} // namespace vistaTrim::cli
