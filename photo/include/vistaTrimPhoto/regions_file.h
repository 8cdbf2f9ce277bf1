// Regions that some other detector found, from JSON lines.
#ifndef VISTATRIM_PHOTO_REGIONS_FILE_H
#define VISTATRIM_PHOTO_REGIONS_FILE_H

#include <map>
#include <string>
#include <vector>

#include "vistaTrimPhoto/found_region.h"

namespace vistaTrim::photo {

// One JSON object per line and photograph; docs/regions.schema.json describes it. Empty lines are
// skipped; lines for the same photograph add up.
class RegionsFile {
public:
    RegionsFile() = default;
    // `source` names the text in messages. Throws a PhotoError (InvalidRequest) that names it and
    // the line.
    RegionsFile(const std::string& text, const std::string& source);

    // The regions of the photograph called `photo`: from the entry with exactly this name, else
    // from the entry with its last path component. In pixels of the photograph as displayed, not
    // yet clipped to it.
    const std::vector<FoundRegion>& RegionsOf(const std::string& photo) const;
    bool Names(const std::string& photo) const;

private:
    std::map<std::string, std::vector<FoundRegion>> ByName;
};

} // namespace vistaTrim::photo

#endif
