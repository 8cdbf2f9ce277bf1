// Regions that some other detector found, from a file of JSON lines.
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
    // Throws a PhotoError (InvalidRequest or Unreadable) that names the file and the line.
    explicit RegionsFile(const std::string& path);

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
