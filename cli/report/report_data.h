// The data on each photograph that the script of a report page reads.
#ifndef VISTATRIM_CLI_REPORT_REPORT_DATA_H
#define VISTATRIM_CLI_REPORT_REPORT_DATA_H

#include <string>
#include <vector>

#include "batch/photo_result.h"
#include "report/report_pictures.h"

namespace vistaTrim::cli {

// All return JSON for a <script type="application/json"> element; no text in it can end the
// element.

// The line of `suggest --json` as "line", without explanations, and beside it what only the page
// shows: names of the ratios, ranks, regions, the note on missing crops.
std::string ReportData(const PhotoResult& result);
// The same from the text of a line and a name for the ratio of each crop.
std::string ReportDataOf(const std::string& text, const std::vector<std::string>& ratios);
std::string ReportMaps(const std::vector<ReportMap>& maps);
// The name, label and explanation of each measure, the most important first.
std::string ReportMeasures();

// For each crop of a line, its expected overlap with a person's crop; empty if unknown.
std::vector<double> ExpectedOverlaps(const std::string& line);

} // namespace vistaTrim::cli

#endif
