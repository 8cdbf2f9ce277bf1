// The pictures of a report page, as data that stands inside the page.
#ifndef VISTATRIM_HOST_REPORT_PICTURES_H
#define VISTATRIM_HOST_REPORT_PICTURES_H

#include <string>
#include <vector>

#include "map_pictures.h"
#include "photograph.h"
#include "result.h"

namespace vistaTrim::host {

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
ReportPictures MakeReportPictures(const Photograph& photograph,
                                  const std::vector<SuggestedCrop>& crops,
                                  const std::vector<MapPicture>& maps);

std::string Base64(const unsigned char* bytes, size_t size);

} // namespace vistaTrim::host

#endif
