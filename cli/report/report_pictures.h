// The pictures of a report page, as data that stands inside the page.
#ifndef VISTATRIM_CLI_REPORT_REPORT_PICTURES_H
#define VISTATRIM_CLI_REPORT_REPORT_PICTURES_H

#include <string>
#include <vector>

#include "vistaTrimPhoto/analysis.h"
#include "vistaTrimPhoto/photograph.h"
#include "vistaTrimPhoto/result.h"

namespace vistaTrim::cli {

struct MapOverlay {
    std::string Name;
    std::string DataUri;
};

struct ReportPictures {
    std::string Photo;              // data URIs throughout
    std::vector<std::string> Crops; // as result.Crops
    std::vector<MapOverlay> Maps;
};

// Throws PhotoError.
ReportPictures MakeReportPictures(const photo::Photograph& photograph,
                                  const std::vector<photo::Crop>& crops,
                                  const std::vector<photo::Map>& maps);

std::string Base64(const unsigned char* bytes, size_t size);

} // namespace vistaTrim::cli

#endif
