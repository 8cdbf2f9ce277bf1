#include "analysis/map_access.h"

#include "analysis/crop_analyzer.h"

namespace vistaTrim {

CMapReader::CMapReader(IImage* image) : Analyzer(std::make_unique<CCropAnalyzer>(image))
{
    const auto add = [this](const char* name, const CFloatMatrix& map) {
        NamedMaps.push_back(
            {name, static_cast<int32_t>(map.Cols), static_cast<int32_t>(map.Rows), map.Data});
    };
    add("ContrastMap", Analyzer->ContrastMap);
    add("SaliencyMap", Analyzer->SaliencyMap);
    add("ContrastMask", Analyzer->ContrastMask);
    add("ColorContrastMap", Analyzer->ColorContrastMap);
    add("PeakMap", Analyzer->PeakMap);
    add("EdgeMap", Analyzer->EdgeMap);
    add("SideMapTop", Analyzer->SideMaps[0]);
    add("SideMapBottom", Analyzer->SideMaps[1]);
    add("SideMapLeft", Analyzer->SideMaps[2]);
    add("SideMapRight", Analyzer->SideMaps[3]);
}

CMapReader::~CMapReader() = default;

const std::vector<NamedMap>& CMapReader::Maps() const
{
    return NamedMaps;
}

const NamedMap* CMapReader::Find(const std::string& name) const
{
    for (const NamedMap& map : NamedMaps)
        if (name == map.Name)
            return &map;
    return nullptr;
}

} // namespace vistaTrim
