#include "analysis/picture_analysis.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <memory>

#include "analysis/multi_scale_edges.h"
#include "analysis/owned_stack.h"
#include "analysis/saliency_driver.h"
#include "numeric/aligned_memory.h"
#include "numeric/image_kernels.h"
#include "numeric/plane_stack.h"
#include "numeric/summed_area.h"
#include "numeric/throw_text.h"
#include "numeric/vector_ops.h"

namespace vistaTrim {

namespace {

constexpr double kWorkingLongSide = 640.0;
constexpr float kEdgeBlurSigma = 2.0f;
constexpr int32_t kErodeSize = 5;
constexpr int32_t kDilateSize = 7;
constexpr float kTotalFloor = 1e-10f; // keeps an empty map from dividing by zero later
constexpr float kBandFraction = 0.15f;
constexpr float kGainOffset = 0.01f;
constexpr size_t kCacheLine = 64; // bytes

// Working length of a source length, rounded to the nearest; 0 if nothing is left of it, and
// for the NaN that a picture of no pixels gives.
int32_t WorkLength(int32_t sourceLength, float scaleFactor)
{
    const double length = double(sourceLength) * double(scaleFactor) + 0.5;
    return length >= 1.0 ? static_cast<int32_t>(length) : 0;
}

// Clears what lies below a fraction of the map's own maximum. A value on the level stays, so
// the maximum always does, and a map of zeros is left as it is.
void ThresholdAtFraction(CFloatMatrix& map, float fraction)
{
    const float largest = LargestElement(map.Data, static_cast<int32_t>(map.Count));
    const float level = static_cast<float>(double(largest) * double(fraction));
    ThresholdBelow(map, level, 0.0f);
}

// Five strips of columns, weighted about 0.2, 0.4472, 1, 0.4472, 0.2. Only the columns count:
// in a photograph that is wider than high the subject is rarely far off the middle column, but
// often low or high. The weight steps from strip to strip. On maps under five columns strips
// share a column, which is weighted more than once, or are empty, which ScaleColumns refuses.
void CentreWeightColumns(CFloatMatrix& map)
{
    const float step = static_cast<float>(std::pow(double(0.2f), 0.5));
    const double cols = static_cast<float>(map.Cols);
    for (int32_t i = 0; i < 5; ++i) {
        const float weight = static_cast<float>(std::pow(double(step), std::abs(2 - i)));
        const int32_t first = static_cast<int32_t>(i * cols / 5.0);
        const int32_t last = static_cast<int32_t>((i + 1) * cols / 5.0 - 1.0);
        ScaleColumns(map, first, last - first + 1, weight);
    }
}

// Gradient strength of the three smoothed colour planes, summed with no weighting.
void SumColourEdges(const CImageView& view, int32_t cols, int32_t rows, CFloatMatrix& edgeMap)
{
    COwnedStack planes;
    COwnedStack gradient;
    planes.Create(3, cols, rows);
    gradient.Create(1, cols, rows);

    // From the bytes again, and stronger than the smoothing of the saliency maps: only what
    // survives this blur counts as an edge of a thing.
    BlurInterleavedPixels(view.Pixels, cols, rows, kEdgeBlurSigma, planes.Planes.data());

    edgeMap.ResizeZeroed(uint32_t(rows), uint32_t(cols));
    for (const float* plane : planes.Planes) {
        GradientStrength(plane, gradient.Planes[0], cols, rows);
        VectorAdd(int32_t(edgeMap.Count), edgeMap.Data, gradient.Planes[0], edgeMap.Data);
    }
}

// From raw gradient strength to the few solid edges near the middle columns.
void CleanEdgeMap(CFloatMatrix& edgeMap)
{
    ThresholdAtFraction(edgeMap, 0.1f);
    CPlaneStack edgeStack; // the same storage, seen as a stack
    edgeStack.WrapPlane(int32_t(edgeMap.Cols), int32_t(edgeMap.Rows), edgeMap.Data);
    NormalisePlane(edgeMap.Data, int32_t(edgeMap.Count));

    // Each row is divided by its own sum of edges: a row of foliage or brickwork is damped, and
    // the lone outline in a quiet row comes forward.
    NormaliseRowsBySum(edgeStack);
    ThresholdAtFraction(edgeMap, 0.3f);

    // The larger box is the second: thin responses vanish, and what survives ends one pixel
    // wider on each side than it was.
    ErodeBox(edgeMap, kErodeSize);
    DilateBox(edgeMap, kDilateSize);
    CentreWeightColumns(edgeMap);
    NormalisePlane(edgeMap.Data, int32_t(edgeMap.Count));
}

// The first cache line that begins in the storage.
void* StartOfCacheLine(void* storage)
{
    const uintptr_t address = reinterpret_cast<uintptr_t>(storage);
    return static_cast<char*>(storage) + (kCacheLine - address % kCacheLine) % kCacheLine;
}

// The sum of the whole map, from its table.
float MapTotal(const CDoubleMatrix& table)
{
    const float total = static_cast<float>(table.Data[table.Count - 1]);
    return total < kTotalFloor ? kTotalFloor : total;
}

int32_t BandWidth(int32_t cols, int32_t rows)
{
    const float width = static_cast<float>(double(std::min(rows, cols)) * double(kBandFraction));
    return width < 1.0f ? 1 : static_cast<int32_t>(width);
}

// A quiet side gets a gain near 100, a busy one a small gain. The mean is rounded to float
// before the offset is added.
float GainOfMean(double mean)
{
    return static_cast<float>(1.0 / (double(static_cast<float>(mean)) + double(kGainOffset)));
}

// How a map is finished once the stages have filled what they fill.
struct MapRule {
    const char* Name;
    PictureMap Source; // the finished map that it is copied from; itself if a stage fills it
    float Threshold;   // share of its own maximum below which it is cleared; 0 keeps everything
    float Exponent;    // raises what is left; 1 keeps it
};

// Everything that goes through all maps goes by this list: memory, finishing, tables, names. A
// source comes before its copies, and the peaks are taken from the colour contrast after its
// threshold. Contrast and saliency keep their weak values; the edges are cleaned before.
constexpr MapRule kMapRules[PictureMapCount] = {
    {"ContrastMap", MapContrast, 0.0f, 1.0f},  {"SaliencyMap", MapSaliency, 0.0f, 1.0f},
    {"ContrastMask", MapContrast, 0.1f, 1.0f}, {"ColorContrastMap", MapColorContrast, 0.2f, 1.0f},
    {"PeakMap", MapColorContrast, 0.5f, 3.0f}, {"EdgeMap", MapEdge, 0.0f, 1.0f},
    {"SideMapTop", MapSideTop, 0.01f, 1.0f},   {"SideMapBottom", MapSideBottom, 0.01f, 1.0f},
    {"SideMapLeft", MapSideLeft, 0.01f, 1.0f}, {"SideMapRight", MapSideRight, 0.01f, 1.0f},
};

} // namespace

const char* PictureMapName(PictureMap map)
{
    return kMapRules[map].Name;
}

// Two blocks instead of twenty. A large block that is given back is kept whole for the next
// picture by the common allocators; twenty of middling size go back to the system and come
// again page by page, which takes longer than the arithmetic on them.
void CPictureAnalysis::AllocateMaps()
{
    const uint32_t rows = static_cast<uint32_t>(WorkRows);
    const uint32_t cols = static_cast<uint32_t>(WorkCols);
    const size_t count = size_t{rows} * cols;

    // new, not make_unique: nothing is to be cleared. The first map and table start on a cache
    // line, and with the usual widths of a picture all others do.
    MapStorage.reset(new float[PictureMapCount * count + kCacheLine / sizeof(float)]);
    TableStorage.reset(new double[PictureMapCount * count + kCacheLine / sizeof(double)]);
    float* map = static_cast<float*>(StartOfCacheLine(MapStorage.get()));
    double* table = static_cast<double*>(StartOfCacheLine(TableStorage.get()));
    for (int32_t k = 0; k < PictureMapCount; ++k, map += count, table += count) {
        Maps[k].Borrow(rows, cols, map);
        Tables[k].Borrow(rows, cols, table);
    }
}

void CPictureAnalysis::BuildMaps(const CImageView& view)
{
    SourceCols = view.Cols;
    SourceRows = view.Rows;
    ScaleFactor = static_cast<float>(kWorkingLongSide / std::max(SourceCols, SourceRows));
    WorkCols = WorkLength(SourceCols, ScaleFactor);
    WorkRows = WorkLength(SourceRows, ScaleFactor);
    if (WorkCols < 1 || WorkRows < 1) {
        // The object stays empty and nobody is told. The text says 1:640; the side that rounds
        // to nothing belongs to a picture narrower than about 1:1280.
        std::cerr << "Image aspect ratio is larger than 1:640! " << std::endl;
        return;
    }

    // Nothing here resamples. The factor above serves coordinates only: the stages read the
    // first WorkCols x WorkRows pixels of the buffer, packed, so a host must hand over a
    // picture whose longer side is 640. A larger one is read with the wrong row length and
    // gives the maps of a sheared piece of it. A smaller one would be read past its end.
    if (uint64_t{3} * static_cast<uint32_t>(WorkCols) * static_cast<uint32_t>(WorkRows) >
        view.ByteSize)
        ThrowText("VistaTrim: the image holds fewer pixels than the analysis reads.\n");
    AllocateMaps();
    {
        // The tables come last. Until then their storage is the stages' scratch.
        const size_t tableBytes = PictureMapCount * size_t{Tables[0].Count} * sizeof(double);
        const CScratchScope scratch(Tables[0].Data, tableBytes);
        SaliencyMapBuffers buffers = {Maps[MapContrast].Data,
                                      Maps[MapSaliency].Data,
                                      Maps[MapColorContrast].Data,
                                      {Maps[MapSideTop].Data, Maps[MapSideBottom].Data,
                                       Maps[MapSideLeft].Data, Maps[MapSideRight].Data}};
        ComputeSaliencyMaps(view.Pixels, WorkCols, WorkRows, buffers);

        SumColourEdges(view, WorkCols, WorkRows, Maps[MapEdge]);
        CleanEdgeMap(Maps[MapEdge]);
    }
    FinishMaps();
    MeasureSides();
}

void CPictureAnalysis::FinishMaps()
{
    for (int32_t k = 0; k < PictureMapCount; ++k) {
        const MapRule& rule = kMapRules[k];
        CFloatMatrix& map = Maps[k];
        if (rule.Source != k)
            map.CopyFrom(Maps[rule.Source]);
        if (rule.Threshold > 0.0f)
            ThresholdAtFraction(map, rule.Threshold);
        if (rule.Exponent != 1.0f)
            VectorPowScalar(static_cast<int32_t>(map.Count), map.Data, rule.Exponent, map.Data);
        BuildSummedAreaTable(map, Tables[k]);
        Totals[k] = MapTotal(Tables[k]);
    }
}

// How far each side's band differs from the strip along that same side: little, if the border
// is uniform.
void CPictureAnalysis::MeasureSides()
{
    BorderBand = BandWidth(WorkCols, WorkRows);
    const struct {
        int32_t FirstRow, FirstCol, LastRow, LastCol;
    } bands[kPictureSides] = {{0, 0, BorderBand - 1, WorkCols - 1},
                              {WorkRows - BorderBand, 0, WorkRows - 1, WorkCols - 1},
                              {0, 0, WorkRows - 1, BorderBand - 1},
                              {0, WorkCols - BorderBand, WorkRows - 1, WorkCols - 1}};
    for (int32_t side = 0; side < kPictureSides; ++side) {
        const auto& band = bands[side];
        const double area = static_cast<double>(band.LastRow - band.FirstRow + 1) *
                            (band.LastCol - band.FirstCol + 1);
        SideGain[side] = GainOfMean(RegionMean(Tables[MapSideTop + side], band.FirstRow,
                                               band.FirstCol, band.LastRow, band.LastCol, area));
    }
}

std::shared_ptr<const CPictureAnalysis> AnalysePicture(const IImage& image)
{
    CImageView view;
    view.Cols = static_cast<int32_t>(image.GetWidth());
    view.Rows = static_cast<int32_t>(image.GetHeight());
    view.Pixels = image.GetPixels();
    // In 32 bits, as images count their bytes: a product that wraps leaves a small buffer.
    view.ByteSize = image.GetRowStride() * image.GetHeight();
    const auto analysis = std::make_shared<CPictureAnalysis>();
    analysis->BuildMaps(view);
    return analysis;
}

} // namespace vistaTrim
