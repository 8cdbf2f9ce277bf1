// The analysis of one picture: its maps and their tables, built once, then only read.
#ifndef VISTATRIM_ANALYSIS_PICTURE_ANALYSIS_H
#define VISTATRIM_ANALYSIS_PICTURE_ANALYSIS_H

#include <cstddef>
#include <cstdint>
#include <memory>

#include "numeric/matrix.h"
#include "numeric/vector_ops.h"
#include "vistaTrim/image.h"

namespace vistaTrim {

// The maps, in the order in which they are finished. The sides are top, bottom, left, right.
// kMapRules in the source file says how each is named and built.
enum PictureMap : int32_t {
    MapContrast,
    MapSaliency,
    MapContrastMask,
    MapColorContrast,
    MapPeak,
    MapEdge,
    MapSideTop,
    MapSideBottom,
    MapSideLeft,
    MapSideRight,
    PictureMapCount
};
constexpr int32_t kPictureSides = 4;

// The name of a map: a literal such as "ContrastMap".
const char* PictureMapName(PictureMap map);

// What BuildMaps reads from an image.
struct CImageView {
    int32_t Cols;
    int32_t Rows;
    const uint8_t* Pixels; // three bytes each, packed
    uint32_t ByteSize;     // of the buffer
};

// Shared as const: nothing changes once it is built, so any number of threads may read it. It is
// empty when default-constructed and for a picture so thin that a side rounds to 0: the maps have
// no elements, and the totals and gains are 0.
class CPictureAnalysis {
public:
    CPictureAnalysis() = default;
    CPictureAnalysis(const CPictureAnalysis&) = delete;
    CPictureAnalysis& operator=(const CPictureAnalysis&) = delete;

    // Runs the whole analysis. Once per object. Throws a message if the buffer holds fewer pixels
    // than the working size has.
    void BuildMaps(const CImageView& view);

    int32_t WorkCols = 0; // size of every map and table
    int32_t WorkRows = 0;
    int32_t SourceCols = 0; // size of the image
    int32_t SourceRows = 0;
    int32_t BorderBand = 0;   // working pixels, width of the band along each side
    float ScaleFactor = 0.0f; // multiplies source coordinates to give working coordinates
    CFloatMatrix Maps[PictureMapCount];
    CDoubleMatrix Tables[PictureMapCount]; // summed-area tables of the maps
    float Totals[PictureMapCount] = {};    // sums of the maps, at least 1e-10
    // Top, bottom, left, right: 1 / (mean of that side's map in its band + 0.01).
    float SideGain[kPictureSides] = {};

private:
    void AllocateMaps();
    void FillMaps(const uint8_t* bytes, CNormalisation* scales);
    void BorrowTables();
    void FinishMaps(const CNormalisation* scales);
    void MeasureSides();

    // Storage of the matrices above, one after the other. TableStorage is bytes because it holds
    // the float planes of the stages before it holds the tables.
    std::unique_ptr<float[]> MapStorage;
    std::unique_ptr<std::byte[]> TableStorage;
};

// Analyses an image and keeps no reference to it. Throws as BuildMaps does.
std::shared_ptr<const CPictureAnalysis> AnalysePicture(const IImage& image);

} // namespace vistaTrim

#endif
