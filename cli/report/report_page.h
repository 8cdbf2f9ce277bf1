// The page `report` writes: one self-contained file.
#ifndef VISTATRIM_CLI_REPORT_REPORT_PAGE_H
#define VISTATRIM_CLI_REPORT_REPORT_PAGE_H

#include <string>

#include "batch/photo_result.h"
#include "report/report_pictures.h"

namespace vistaTrim::cli {

std::string EscapedHtml(const std::string& text);

std::string ReportBeginning();
// One photograph: a picture with frames and a list of crops, which are all that shows without the
// script and on paper, and the data from which the script builds the rest. The index gives the
// section its id in the page.
std::string ReportSection(const PhotoResult& result, const ReportPictures& pictures, size_t index);
std::string ReportFailure(const PhotoResult& result, size_t index);
std::string ReportEnd(size_t photographs, size_t failed);

} // namespace vistaTrim::cli

#endif
