// What the script of a report page reads of each photograph.
#ifndef VISTATRIM_CLI_REPORT_REPORT_DATA_H
#define VISTATRIM_CLI_REPORT_REPORT_DATA_H

#include <string>
#include <vector>

#include "batch/photo_result.h"
#include "report/report_pictures.h"

namespace vistaTrim::cli {

// These are blocks of JSON for a <script type="application/json">: nothing in them can end it.

// The line of `suggest --json` under "line", without explanations, and beside it what only people
// need: names of the ratios, ranks, regions, the note on missing crops.
std::string ReportData(const PhotoResult& result);
// From the line itself, with a name for the ratio of each crop.
std::string ReportDataOf(const std::string& text, const std::vector<std::string>& ratios);
std::string ReportMaps(const std::vector<ReportMap>& maps);
// Of each measure its name, its label and the sentence that explains it. The first is the one
// that matters most.
std::string ReportMeasures();

// The overlap with a person's crop that is expected of each crop of a line; empty if it is unknown.
std::vector<double> ExpectedOverlaps(const std::string& line);

} // namespace vistaTrim::cli

#endif
