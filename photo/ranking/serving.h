// Which candidates are served, and in what order.
#ifndef VISTATRIM_PHOTO_RANKING_SERVING_H
#define VISTATRIM_PHOTO_RANKING_SERVING_H

#include <vector>

#include "public/analysed_picture.h"
#include "ranking/wished_regions.h"
#include "vistaTrim/vistaTrim.h"
#include "vistaTrimPhoto/pixels.h"
#include "vistaTrimPhoto/request.h"

namespace vistaTrim::photo {

struct ServedCrop {
    CInt32CropRect Crop; // MergedScore: the share of the candidates that rank no higher
    double ExpectedOverlap;
};

// At most request.Top crops of the working picture, best first.
//
// driver         made from `analysed` for the request, with its hard wishes
// picture        the one that was analysed
// ratios         the aspect table of the driver, each ratio once
// engineRequest  the size, if one is requested
// regions        what crops should hold or avoid
//
// If several ratios are named, the best crop of each comes first, then the second of each, and so
// on; within a round, crops that meet more of the wishes go first, then the ratios keep their
// order.
std::vector<ServedCrop> Serve(const CAnalysedPicture& analysed, IVistaTrim& driver,
                              const PixelImage& picture, const Request& request,
                              const std::vector<Ratio>& ratios,
                              const SuggestionParameters& engineRequest,
                              const std::vector<WishedRegion>& regions);

} // namespace vistaTrim::photo

#endif
