// The page that `report` writes: one file that needs nothing else.
#ifndef VISTATRIM_HOST_REPORT_PAGE_H
#define VISTATRIM_HOST_REPORT_PAGE_H

#include <string>

#include "report_pictures.h"
#include "result.h"

namespace vistaTrim::host {

std::string EscapedHtml(const std::string& text);

std::string ReportBeginning();
// One photograph. The index makes the names inside the page unique.
std::string ReportSection(const PhotoResult& result, const ReportPictures& pictures, size_t index);
std::string ReportFailure(const PhotoResult& result);
std::string ReportEnd(size_t photographs, size_t failed);

} // namespace vistaTrim::host

#endif
