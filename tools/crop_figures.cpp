#include "crop_figures.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <random>
#include <stdexcept>

#include <nlohmann/json.hpp>

std::map<FigureKey, Figure> Summarise(const std::vector<PhotoFigures>& photos, int resamples,
                                      uint32_t seed)
{
    std::map<FigureKey, std::vector<Tally>> columns;
    for (const PhotoFigures& figures : photos)
        for (const auto& entry : figures)
            columns[entry.first].push_back(entry.second);

    std::map<FigureKey, Figure> result;
    for (const auto& column : columns) {
        const std::vector<Tally>& tallies = column.second;
        Figure figure;
        Tally total;
        for (const Tally& tally : tallies) {
            total.Sum += tally.Sum;
            total.Count += tally.Count;
        }
        figure.Value = total.Sum / total.Count;
        figure.Count = total.Count;

        std::mt19937 random(seed);
        std::vector<double> means;
        for (int i = 0; i < resamples; ++i) {
            Tally drawn;
            for (size_t k = 0; k < tallies.size(); ++k) {
                const Tally& tally = tallies[random() % tallies.size()];
                drawn.Sum += tally.Sum;
                drawn.Count += tally.Count;
            }
            means.push_back(drawn.Sum / drawn.Count);
        }
        std::sort(means.begin(), means.end());
        const auto at = [&means](double share) {
            return means[static_cast<size_t>(share * static_cast<double>(means.size() - 1))];
        };
        figure.Low = at(0.025);
        figure.High = at(0.975);
        result[column.first] = figure;
    }
    return result;
}

void PrintTable(const std::map<FigureKey, Figure>& figures)
{
    std::map<std::string, std::vector<std::pair<std::string, Figure>>> byFigure;
    for (const auto& entry : figures)
        byFigure[entry.first.second].emplace_back(entry.first.first, entry.second);
    for (auto& group : byFigure) {
        std::printf("\n%s\n", group.first.c_str());
        const bool lowIsGood =
            group.first.rfind("displacement", 0) == 0 || group.first.rfind("faces", 0) == 0;
        std::stable_sort(group.second.begin(), group.second.end(),
                         [lowIsGood](const auto& a, const auto& b) {
                             return lowIsGood ? a.second.Value < b.second.Value
                                              : a.second.Value > b.second.Value;
                         });
        for (const auto& row : group.second)
            std::printf("  %-36s %.4f  [%.4f, %.4f]  n = %.0f\n", row.first.c_str(),
                        row.second.Value, row.second.Low, row.second.High, row.second.Count);
    }
}

void WriteJson(const std::map<FigureKey, Figure>& figures, const std::string& file)
{
    nlohmann::json document = nlohmann::json::object();
    for (const auto& entry : figures)
        document[entry.first.second][entry.first.first] = {{"value", entry.second.Value},
                                                           {"low", entry.second.Low},
                                                           {"high", entry.second.High},
                                                           {"count", entry.second.Count}};
    std::ofstream stream(file);
    stream << document.dump(2) << '\n';
    stream.flush();
    if (!stream)
        throw std::runtime_error(file + ": cannot be written");
}
