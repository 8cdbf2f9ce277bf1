// The maps of a picture, by name, for the programs that show them to people. This is the one
// internal header that tools and hosts may include; the shared library does not export it.
#ifndef VISTATRIM_ANALYSIS_MAP_ACCESS_H
#define VISTATRIM_ANALYSIS_MAP_ACCESS_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "vistaTrim/image.h"

namespace vistaTrim {

class CPictureAnalysis;

// One map: Rows x Cols floats, row-major, no row padding, about 0 to 1.
struct NamedMap {
    const char* Name; // a literal
    int32_t Cols;
    int32_t Rows;
    const float* Data; // owned by the reader
};

// Analyses a picture and keeps its maps. The picture may go as soon as the reader stands. Its
// longer side must be 640 pixels for the maps to describe it.
class CMapReader {
public:
    explicit CMapReader(IImage* image);
    ~CMapReader();
    CMapReader(const CMapReader&) = delete;
    CMapReader& operator=(const CMapReader&) = delete;

    // ContrastMap, SaliencyMap, ContrastMask, ColorContrastMap, PeakMap, EdgeMap, SideMapTop,
    // SideMapBottom, SideMapLeft, SideMapRight, in this order. All are empty, with null Data,
    // for a picture that the analysis refuses.
    const std::vector<NamedMap>& Maps() const;
    // Null for a name that is none of the above.
    const NamedMap* Find(const std::string& name) const;

private:
    std::shared_ptr<const CPictureAnalysis> Analysis;
    std::vector<NamedMap> NamedMaps;
};

} // namespace vistaTrim

#endif
