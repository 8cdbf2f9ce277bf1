#include "public/analysed_picture.h"

#include "analysis/picture_analysis.h"
#include "public/vista_trim.h"
#include "scoring/crop_analyzer.h"

namespace vistaTrim {

static_assert(kPictureDescriptorSize == kDescriptorSize, "one descriptor");

CAnalysedPicture::CAnalysedPicture(const IImage& image) : Analysis(AnalysePicture(image))
{
    for (int32_t k = 0; k < PictureMapCount; ++k) {
        const CFloatMatrix& map = Analysis->Maps[k];
        NamedMaps.push_back({PictureMapName(static_cast<PictureMap>(k)),
                             static_cast<int32_t>(map.Cols), static_cast<int32_t>(map.Rows),
                             map.Data});
    }
}

CAnalysedPicture::~CAnalysedPicture() = default;

const std::vector<NamedPictureMap>& CAnalysedPicture::Maps() const
{
    return NamedMaps;
}

const NamedPictureMap* CAnalysedPicture::Find(const std::string& name) const
{
    for (const NamedPictureMap& map : NamedMaps)
        if (name == map.Name)
            return &map;
    return nullptr;
}

bool CAnalysedPicture::ReadDescriptor(const CInt32CropRect& crop, float* descriptor) const
{
    return CCropAnalyzer(Analysis).ReadDescriptor(crop, descriptor);
}

IVistaTrim* CAnalysedPicture::MakeDriver(const VistaTrimParameters& parameters) const
{
    // Releases the driver if InitializeOn throws.
    SmartPtr<VistaTrim> driver(new VistaTrim, false);
    driver->InitializeOn(Analysis, parameters);
    return driver.release();
}

} // namespace vistaTrim
