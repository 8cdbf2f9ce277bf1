// The analysis of a photograph: made once, used for any number of requests.
#ifndef VISTATRIM_PHOTO_ANALYSIS_H
#define VISTATRIM_PHOTO_ANALYSIS_H

#include <memory>
#include <string>
#include <vector>

#include "vistaTrimPhoto/found_region.h"
#include "vistaTrimPhoto/geometry.h"
#include "vistaTrimPhoto/photograph.h"
#include "vistaTrimPhoto/request.h"
#include "vistaTrimPhoto/result.h"

namespace vistaTrim::photo {

// One map of the engine, at the size of the working picture.
struct Map {
    std::string Name; // "EdgeMap"
    PixelSize Size;
    std::vector<float> Values; // row by row, about 0 to 1
};

// The map as a picture of one channel: 255 is its own maximum; a map of zeros stays black.
PixelImage GreyOf(const Map& map);

// Owns everything it needs, so the photograph may be destroyed. Cheap to copy; copies share one
// analysis. Its operations may be called from several threads. They throw PhotoError;
// the constructors do so too for a region to keep that lies outside the photograph.
class Analysis {
public:
    explicit Analysis(const Photograph& photograph, const RegionOptions& regions = {});
    // For a caller that has something to do between reading and analysing.
    explicit Analysis(WorkingPicture picture, const RegionOptions& regions = {});

    const WorkingPicture& Picture() const;
    const std::vector<FoundRegion>& Regions() const;
    double Milliseconds() const;      // time that the analysis took
    double FacesMilliseconds() const; // time it then waited for the face finder

    // Throws PhotoError for a request that is invalid (InvalidRequest) or that this photograph
    // cannot meet (DoesNotFit): a size that does not fit, a region to keep that lies outside.
    Suggestions Suggest(const Request& request) const;

    std::vector<Map> Maps() const;

private:
    class State;
    std::shared_ptr<const State> Shared;
};

} // namespace vistaTrim::photo

#endif
