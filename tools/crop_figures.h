// Figures measured photograph by photograph, and their means with bootstrap intervals.
#ifndef VISTATRIM_TOOLS_CROP_FIGURES_H
#define VISTATRIM_TOOLS_CROP_FIGURES_H

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

// One figure of one photograph: a sum and how many terms it has. A photograph has ten pairs and one
// box.
struct Tally {
    double Sum = 0;
    double Count = 0;

    void Add(double value)
    {
        Sum += value;
        Count += 1;
    }
};

// A table cell: method and figure. Each photograph holds its own tallies, so that whole
// photographs can be drawn for the bootstrap.
using FigureKey = std::pair<std::string, std::string>;
using PhotoFigures = std::map<FigureKey, Tally>;

struct Figure {
    double Value = 0;
    double Low = 0;
    double High = 0;
    double Count = 0;
};

// Mean and 95 % percentile interval, whole photographs drawn with replacement (B. Efron,
// Bootstrap methods: another look at the jackknife, 1979).
std::map<FigureKey, Figure> Summarise(const std::vector<PhotoFigures>& photos, int resamples,
                                      uint32_t seed);

// A group for each figure, the best method first. Low is good for figures whose name starts with
// "displacement" or "faces".
void PrintTable(const std::map<FigureKey, Figure>& figures);

// Throws std::runtime_error naming the file.
void WriteJson(const std::map<FigureKey, Figure>& figures, const std::string& file);

#endif
