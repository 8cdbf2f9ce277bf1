// Regions of a photograph that something found: faces, and what its metadata or another detector
// names.
#ifndef VISTATRIM_PHOTO_FOUND_REGION_H
#define VISTATRIM_PHOTO_FOUND_REGION_H

#include <optional>
#include <string>
#include <vector>

#include "vistaTrimPhoto/geometry.h"
#include "vistaTrimPhoto/region.h"

namespace vistaTrim::photo {

enum class RegionKind { Face, Animal, Subject, Other };
enum class RegionSource { FaceFinder, Metadata, File };

const char* NameOf(RegionKind kind);     // "face", "animal", "subject", "other"
const char* NameOf(RegionSource source); // "face-finder", "metadata", "file"
std::optional<RegionKind> RegionKindOfName(const std::string& name);

struct FoundRegion {
    PixelRect Rect; // inside the photograph, at least one pixel
    RegionKind Kind = RegionKind::Other;
    RegionSource Source = RegionSource::File;
    double Confidence = 1.0;      // 0..1; comparable only within one source
    std::string Label;            // a name, UTF-8; may be empty
    std::optional<WishKind> Wish; // what crops should do with it; none: it is only shown
};

// Which faces the face finder looks for. The sizes are those of the face, brows to chin, in a
// photograph scaled to kWorkingLongSide.
enum class FaceSearch {
    Off,
    Large, // from about 80 pixels
    All    // from about 40 pixels, in five times the time
};

// Where an analysis takes its regions from.
struct RegionOptions {
    // Found by the caller's own detector, in pixels of the photograph as displayed.
    std::vector<FoundRegion> Regions;
    bool UseNamed = true; // those that the photograph's own metadata names
    // No effect if one of the above is a face: the faces are known already.
    FaceSearch Faces = FaceSearch::All;
    int Threads = 1; // above 1, the face finder runs alongside the analysis; same results
};

// False in a build without dlib; then no face is found and FaceSearch has no effect.
bool HasFaceFinder();

} // namespace vistaTrim::photo

#endif
