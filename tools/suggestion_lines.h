// Reads what `vistatrim suggest --json` prints.
#ifndef VISTATRIM_TOOLS_SUGGESTION_LINES_H
#define VISTATRIM_TOOLS_SUGGESTION_LINES_H

#include <istream>
#include <map>
#include <string>
#include <vector>

#include "crop_tables.h"

// Crops by the photograph's file name without its folder, the best first.
using Suggestions = std::map<std::string, std::vector<CropBox>>;

// One JSON object per line. Throws std::runtime_error naming the source and the line.
Suggestions ReadSuggestions(std::istream& lines, const std::string& source);

// Throws std::runtime_error if the source holds no line for the photograph.
const std::vector<CropBox>& CropsOf(const Suggestions& suggestions, const std::string& photo,
                                    const std::string& source);

#endif
