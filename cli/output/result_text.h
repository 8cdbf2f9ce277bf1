// A result as text: for people, as a line of JSON, as lines of CSV.
#ifndef VISTATRIM_CLI_OUTPUT_RESULT_TEXT_H
#define VISTATRIM_CLI_OUTPUT_RESULT_TEXT_H

#include <string>

#include "batch/photo_result.h"

namespace vistaTrim::cli {

// Each ends in a line feed. File names that are not UTF-8 get replacement characters in JSON and
// stay as they are in the other two.
std::string PeopleText(const PhotoResult& result);
std::string JsonLine(const PhotoResult& result);

std::string CsvHeader();
// One line per crop. A photograph without crops still gets one line.
std::string CsvLines(const PhotoResult& result);

} // namespace vistaTrim::cli

#endif
