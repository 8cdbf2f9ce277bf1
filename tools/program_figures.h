// Measures the crops that the program prints, and the rivals beside them.
#ifndef VISTATRIM_TOOLS_PROGRAM_FIGURES_H
#define VISTATRIM_TOOLS_PROGRAM_FIGURES_H

#include <string>
#include <vector>

#include "crop_figures.h"
#include "crop_tables.h"
#include "face_list.h"

struct ProgramToMeasure {
    std::string File;                   // vistatrim
    std::vector<std::string> Arguments; // added to every `vistatrim suggest`
    std::string Photos;                 // folder
    int Workers = 1;
};

// Overlaps with the chosen crops. One run over all photographs gives the free crops; one run for
// each chosen crop, with `--aspect` of its ratio to four decimals, gives the crop of that ratio.
std::vector<PhotoFigures> MeasureChosenCrops(const ProgramToMeasure& program,
                                             const std::vector<JudgedPhoto>& photos);

// The share of crops in which a face is cut or lost: one run over all photographs for each of
// 1:1, 4:5, 16:9 and 9:16.
std::vector<PhotoFigures> MeasureFaces(const ProgramToMeasure& program, const FaceList& faces);

#endif
