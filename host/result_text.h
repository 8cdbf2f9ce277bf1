// A result as text: for people, as a line of JSON, as lines of CSV.
#ifndef VISTATRIM_HOST_RESULT_TEXT_H
#define VISTATRIM_HOST_RESULT_TEXT_H

#include <string>

#include "result.h"

namespace vistaTrim::host {

// Each ends in a line feed. File names that are not UTF-8 come out with replacement characters
// in JSON, and as they are in the other two.
std::string PeopleText(const PhotoResult& result);
std::string JsonLine(const PhotoResult& result);

std::string CsvHeader();
// One line a crop. A photograph without crops gets one line of its own, so that it is seen.
std::string CsvLines(const PhotoResult& result);

} // namespace vistaTrim::host

#endif
