#include "report/report_data.h"

#include <nlohmann/json.hpp>

#include "output/result_text.h"
#include "output/shown_ratio.h"
#include "vistaTrimPhoto/measures.h"

namespace vistaTrim::cli {

namespace {

// Keeps members in the order in which they are added.
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

// A number of a crop in the line, either among its scores or beside them.
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

Json Labelled(const Json& rect, const Json& label)
{
    return {{"label", label},
            {"x", rect.at("x")},
            {"y", rect.at("y")},
            {"width", rect.at("width")},
            {"height", rect.at("height")}};
}

// The found regions, by label or else by kind, and the regions that the request named. Wishes that
// stem from found regions are left out: they would only outline them a second time.
Json RegionsOf(const Json& line)
{
    Json regions = Json::array();
    for (const Json& found : line.value("regions", Json::array()))
        regions.push_back(Labelled(found, found.value("label", found.value("kind", "region"))));
    if (line.contains("explain"))
        for (const Json& wish : line.at("explain").at("wishes"))
            if (wish.value("source", "request") == "request")
                regions.push_back(Labelled(wish, wish.at("kind")));
    return regions;
}

} // namespace

std::string ReportDataOf(const std::string& text, const std::vector<std::string>& ratios)
{
    const Json line = Json::parse(text);
    Json data = {{"line", LineWithoutExplanations(line)},
                 {"ratios", ratios},
                 {"ranks", Json::array()},
                 {"candidates", 0},
                 {"regions", RegionsOf(line)},
                 {"note", ""}};
    for (const Json& crop : line.at("crops"))
        if (crop.contains("explain"))
            data["ranks"].push_back(crop.at("explain").at("ranks"));
    if (line.contains("explain")) {
        const Json& explanation = line.at("explain");
        data["candidates"] = explanation.at("passing");
        data["note"] = explanation.at("note");
    }
    return Block(data);
}

std::string ReportData(const PhotoResult& result)
{
    std::vector<std::string> ratios;
    for (size_t i = 0; i < result.Found.Crops.size(); ++i)
        ratios.push_back(ShownRatioOf(result, i));
    return ReportDataOf(JsonLine(result), ratios);
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
    // Listed with the measures, although it depends on all crops and not on one alone.
    Json measures = {{{"name", kExpectedOverlap},
                      {"label", "Expected overlap"},
                      {"text", "How far this crop is likely to agree with the one that a person "
                               "would make: the area that both share, over the area that either "
                               "covers. 1 is the same rectangle. Where nothing stands out, it "
                               "is low for all crops."}}};
    for (const photo::Measure& measure : photo::kMeasures)
        measures.push_back(
            {{"name", measure.Name}, {"label", measure.Label}, {"text", measure.Hint}});
    return Block(measures);
}

std::vector<double> ExpectedOverlaps(const std::string& line)
{
    std::vector<double> overlaps;
    const Json parsed = Json::parse(line);
    for (const Json& crop : parsed.at("crops")) {
        const Json* overlap = Figure(crop, kExpectedOverlap);
        if (overlap == nullptr)
            return {};
        overlaps.push_back(overlap->get<double>());
    }
    return overlaps;
}

} // namespace vistaTrim::cli
