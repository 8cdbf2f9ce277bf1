#include "analysis/map_access.h"

#include "analysis/picture_analysis.h"

namespace vistaTrim {

CMapReader::CMapReader(IImage* image) : Analysis(AnalysePicture(*image))
{
    for (int32_t k = 0; k < PictureMapCount; ++k) {
        const CFloatMatrix& map = Analysis->Maps[k];
        NamedMaps.push_back({PictureMapName(static_cast<PictureMap>(k)),
                             static_cast<int32_t>(map.Cols), static_cast<int32_t>(map.Rows),
                             map.Data});
    }
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
