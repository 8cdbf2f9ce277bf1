// The pictures of a report page, embedded as data URIs.
#ifndef VISTATRIM_CLI_REPORT_REPORT_PICTURES_H
#define VISTATRIM_CLI_REPORT_REPORT_PICTURES_H

#include <string>
#include <vector>

#include "vistaTrimPhoto/analysis.h"
#include "vistaTrimPhoto/photograph.h"

namespace vistaTrim::cli {

struct ReportMap {
    std::string Name;
    std::string Picture; // grey; the page colours it
};

// All are data URIs. Each picture is limited in bytes, so that a page of many photographs can still
// be sent by mail.
struct ReportPictures {
    std::string Photo; // the page draws the crops from this one
    std::vector<ReportMap> Maps;
};

// Throws PhotoError.
ReportPictures MakeReportPictures(const photo::Photograph& photograph,
                                  const std::vector<photo::Map>& maps);

} // namespace vistaTrim::cli

#endif
