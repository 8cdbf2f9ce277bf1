// One analysis of a picture for many uses: its maps by name, descriptors of crops, and drivers. For
// programs that link the library's object files; the shared library does not export it.
#ifndef VISTATRIM_PUBLIC_ANALYSED_PICTURE_H
#define VISTATRIM_PUBLIC_ANALYSED_PICTURE_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "vistaTrim/driver.h"
#include "vistaTrim/image.h"
#include "vistaTrim/parameters.h"
#include "vistaTrim/records.h"

namespace vistaTrim {

class CPictureAnalysis;

// Number of values in a descriptor.
constexpr int32_t kPictureDescriptorSize = 304;

// One map: Rows x Cols floats, row-major, no row padding, about 0 to 1.
struct NamedPictureMap {
    const char* Name; // a literal
    int32_t Cols;
    int32_t Rows;
    const float* Data; // owned by the analysed picture
};

// Immutable after construction: hold it by shared_ptr and use it from any number of threads.
class CAnalysedPicture {
public:
    // Runs the whole analysis, the expensive step, and keeps no reference to the image. Throws
    // what CreateVistaTrimObj throws. The image's longer side must be 640 pixels for the analysis
    // to describe it.
    explicit CAnalysedPicture(const IImage& image);
    ~CAnalysedPicture();
    CAnalysedPicture(const CAnalysedPicture&) = delete;
    CAnalysedPicture& operator=(const CAnalysedPicture&) = delete;

    // ContrastMap, SaliencyMap, ContrastMask, ColorContrastMap, PeakMap, EdgeMap, SideMapTop,
    // SideMapBottom, SideMapLeft, SideMapRight, in this order. All are empty, with null Data, for a
    // picture that the analysis rejects.
    const std::vector<NamedPictureMap>& Maps() const;
    // Null for any other name.
    const NamedPictureMap* Find(const std::string& name) const;

    // Writes the kPictureDescriptorSize cell means of a crop, before they are standardised: what
    // the composition model is fitted on. Returns false and writes nothing for a crop that contains
    // no pixel of the picture, as every crop of a rejected picture.
    bool ReadDescriptor(const CInt32CropRect& crop, float* descriptor) const;

    // A driver with these parameters on this analysis, ready at once. It gives the same bits as a
    // driver from CreateVistaTrimObj, needs no image, keeps the analysis alive, and may run while
    // other drivers of the same analysis run in other threads. The caller holds its only reference.
    IVistaTrim* MakeDriver(const VistaTrimParameters& parameters) const;

private:
    std::shared_ptr<const CPictureAnalysis> Analysis;
    std::vector<NamedPictureMap> NamedMaps;
};

} // namespace vistaTrim

#endif
