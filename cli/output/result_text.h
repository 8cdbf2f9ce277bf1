// A result as text: for people, as a line of JSON, as lines of CSV.
#ifndef VISTATRIM_CLI_OUTPUT_RESULT_TEXT_H
#define VISTATRIM_CLI_OUTPUT_RESULT_TEXT_H

#include <string>

#include "batch/photo_result.h"

namespace vistaTrim::cli {

// Each ends in a line feed. File names that are not UTF-8 come out with replacement characters
// in JSON, and as they are in the other two.
std::string PeopleText(const PhotoResult& result);
std::string JsonLine(const PhotoResult& result);

std::string CsvHeader();
// One line a crop. A photograph without crops gets one line of its own, so that it is seen.
std::string CsvLines(const PhotoResult& result);

} // namespace vistaTrim::cli

#endif
