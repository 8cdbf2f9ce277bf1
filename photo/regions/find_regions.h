// All that is found in a photograph, from every source.
#ifndef VISTATRIM_PHOTO_REGIONS_FIND_REGIONS_H
#define VISTATRIM_PHOTO_REGIONS_FIND_REGIONS_H

#include <future>
#include <vector>

#include "vistaTrimPhoto/found_region.h"
#include "vistaTrimPhoto/photograph.h"

namespace vistaTrim::photo {

// The caller's regions come first, then those of the metadata, and faces are looked for if neither
// names one. A region that two sources name is listed once, as
// the first source has it.
class RegionSearch {
public:
    // Starts looking for faces, on its own thread if the options allow it. The picture must outlive
    // the search. Throws PhotoError for a region to keep that lies outside.
    RegionSearch(const WorkingPicture& picture, const RegionOptions& options);

    std::vector<FoundRegion> Finish(); // once; waits for the faces

private:
    const WorkingPicture& Picture;
    std::vector<FoundRegion> Known;
    std::future<std::vector<FoundRegion>> Faces; // in pixels of the working picture
};

} // namespace vistaTrim::photo

#endif
