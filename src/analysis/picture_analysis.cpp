#include "analysis/picture_analysis.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <memory>
#include <new>

#include "analysis/multi_scale_edges.h"
#include "analysis/saliency_driver.h"
#include "numeric/aligned_memory.h"
#include "numeric/image_kernels.h"
#include "numeric/owned_stack.h"
#include "numeric/plane_stack.h"
#include "numeric/raw_kernels.h"
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
// Rows of all maps and tables that are finished together; they fit into the second-level cache.
constexpr uint32_t kFinishedRows = 2 * kTableBand;

// The working length of a source length, rounded to nearest; 0 if it rounds to nothing, and for the
// NaN of a picture without pixels.
int32_t WorkLength(int32_t sourceLength, float scaleFactor)
{
    const double length =
        static_cast<double>(sourceLength) * static_cast<double>(scaleFactor) + 0.5;
    return length >= 1.0 ? static_cast<int32_t>(length) : 0;
}

// A fraction of a map's maximum; elements below it are cleared. A value on the level stays, so the
// maximum always does, and a map of zeros is left as it is.
float LevelAtFraction(float largest, float fraction)
{
    return static_cast<float>(static_cast<double>(largest) * static_cast<double>(fraction));
}

// Five strips of columns, weighted about 0.2, 0.4472, 1, 0.4472, 0.2. Only columns are weighted: in
// a landscape photograph the subject is rarely far from the middle column, but often low or high.
// The weight steps from strip to strip. On maps with fewer than five columns, strips share a
// column, which is weighted more than once, or are empty, which ScaleColumns skips.
void CentreWeightColumns(CFloatMatrix& map)
{
    const float step = static_cast<float>(std::pow(static_cast<double>(0.2f), 0.5));
    const double cols = static_cast<float>(map.Cols);
    for (int32_t i = 0; i < 5; ++i) {
        const float weight =
            static_cast<float>(std::pow(static_cast<double>(step), std::abs(2 - i)));
        const int32_t first = static_cast<int32_t>(i * cols / 5.0);
        const int32_t last = static_cast<int32_t>((i + 1) * cols / 5.0 - 1.0);
        ScaleColumns(map, first, last - first + 1, weight);
    }
}

// Gradient strength of the three smoothed colour planes, summed with no weighting.
void SumColourEdges(const CPlaneStack& pixels, CFloatMatrix& edgeMap)
{
    // Starts from the pixels again and blurs more than the saliency maps do: only what survives
    // this blur counts as the edge of an object.
    COwnedStack planes;
    planes.Create(3, pixels.Cols, pixels.Rows);
    BlurPlanes(pixels, kEdgeBlurSigma, planes.Planes.data());
    SumGradientStrengths(planes.Handle(), edgeMap.Data);
}

// Rows taken through all their steps while they are in the cache.
constexpr uint32_t kEdgeBand = 16;

// From raw gradient strength to the few solid edges near the middle columns. Returns the
// normalisation that they still need.
CNormalisation CleanEdgeMap(CFloatMatrix& edgeMap)
{
    const int32_t cols = static_cast<int32_t>(edgeMap.Cols);
    const int32_t count = static_cast<int32_t>(edgeMap.Count);
    CPlaneRange strengths;
    strengths.Include(edgeMap.Data, count);
    const float level = LevelAtFraction(strengths.Largest(), 0.1f);
    strengths.ClearBelow(level);
    const CNormalisation normalisation(strengths);

    // Divides each row by its own sum of edges: a row of foliage or brickwork is damped, and a lone
    // outline in a quiet row stands out.
    CPlaneRange damped;
    for (uint32_t row = 0; row < edgeMap.Rows; row += kEdgeBand) {
        const int32_t rows = static_cast<int32_t>(std::min(edgeMap.Rows - row, kEdgeBand));
        float* const band = edgeMap.Data + size_t{row} * edgeMap.Cols;
        ThresholdKernel(band, cols, rows, level, 0.0f);
        normalisation.Apply(band, cols * rows);
        CPlaneStack stack; // the same storage, seen as a stack
        stack.WrapPlaneOnly(cols, rows, band);
        NormaliseRowsBySum(stack);
        damped.Include(band, cols * rows);
    }
    ThresholdBelow(edgeMap, LevelAtFraction(damped.Largest(), 0.3f), 0.0f);

    // The second box is larger: thin responses vanish, and what survives grows by one pixel on each
    // side.
    ErodeBox(edgeMap, kErodeSize);
    DilateBox(edgeMap, kDilateSize);
    CentreWeightColumns(edgeMap);
    CPlaneRange weighted;
    weighted.Include(edgeMap.Data, count);
    return CNormalisation(weighted);
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
    const float width = static_cast<float>(static_cast<double>(std::min(rows, cols)) *
                                           static_cast<double>(kBandFraction));
    return width < 1.0f ? 1 : static_cast<int32_t>(width);
}

// A quiet side gets a gain near 100, a busy one a small gain. The mean is rounded to float
// before the offset is added. Not inlined: GCC 12 at -O3 drops that rounding when it computes two
// sides in the lanes of a register.
__attribute__((noinline)) float GainOfMean(double mean)
{
    return static_cast<float>(
        1.0 / (static_cast<double>(static_cast<float>(mean)) + static_cast<double>(kGainOffset)));
}

// How a map is completed after the stages have run.
struct MapRule {
    const char* Name;
    PictureMap Source; // the finished map it is copied from; itself if a stage fills it
    float Threshold;   // share of its own maximum below which it is cleared; 0 keeps everything;
                       // a copy has a threshold
    float Exponent;    // exponent applied to what is left; 1 keeps it
};

// The one list of maps, used for allocation, finishing, tables and names. A source precedes its
// copies; the peaks come from the colour contrast after its threshold. Contrast and saliency keep
// their weak values; the edges have been cleaned before.
constexpr MapRule kMapRules[PictureMapCount] = {
    {"ContrastMap", MapContrast, 0.0f, 1.0f},  {"SaliencyMap", MapSaliency, 0.0f, 1.0f},
    {"ContrastMask", MapContrast, 0.1f, 1.0f}, {"ColorContrastMap", MapColorContrast, 0.2f, 1.0f},
    {"PeakMap", MapColorContrast, 0.5f, 3.0f}, {"EdgeMap", MapEdge, 0.0f, 1.0f},
    {"SideMapTop", MapSideTop, 0.01f, 1.0f},   {"SideMapBottom", MapSideBottom, 0.01f, 1.0f},
    {"SideMapLeft", MapSideLeft, 0.01f, 1.0f}, {"SideMapRight", MapSideRight, 0.01f, 1.0f},
};

constexpr bool CopiesHaveThresholds()
{
    for (int32_t k = 0; k < PictureMapCount; ++k)
        if (kMapRules[k].Source != k && !(kMapRules[k].Threshold > 0.0f))
            return false;
    return true;
}
static_assert(CopiesHaveThresholds(), "only the threshold copies a map from its source");

} // namespace

const char* PictureMapName(PictureMap map)
{
    return kMapRules[map].Name;
}

namespace {

size_t TableBytes(size_t elements)
{
    return PictureMapCount * elements * sizeof(double);
}

} // namespace

// Two blocks instead of twenty. Common allocators keep a freed large block for the next picture;
// twenty medium blocks go back to the system and are faulted in again page by page, which takes
// longer than the arithmetic on them.
void CPictureAnalysis::AllocateMaps()
{
    const uint32_t rows = static_cast<uint32_t>(WorkRows);
    const uint32_t cols = static_cast<uint32_t>(WorkCols);
    const size_t count = size_t{rows} * cols;

    // new, not make_unique: avoids clearing the memory. The first map and table start on a cache
    // line, and with the usual widths of a picture all others do.
    MapStorage.reset(new float[PictureMapCount * count + kCacheLine / sizeof(float)]);
    TableStorage.reset(new std::byte[TableBytes(count) + kCacheLine]);
    PreferLargePages(MapStorage.get(), PictureMapCount * count * sizeof(float));
    PreferLargePages(TableStorage.get(), TableBytes(count));
    float* map = static_cast<float*>(StartOfCacheLine(MapStorage.get()));
    for (int32_t k = 0; k < PictureMapCount; ++k, map += count)
        Maps[k].Borrow(rows, cols, map);
}

// The doubles begin here; the floats that the storage held before are gone.
void CPictureAnalysis::BorrowTables()
{
    const CFloatMatrix& map = Maps[0];
    double* table = static_cast<double*>(StartOfCacheLine(TableStorage.get()));
    for (int32_t k = 0; k < PictureMapCount; ++k, table += map.Count)
        Tables[k].Borrow(map.Rows, map.Cols, ::new (table) double[map.Count]);
}

void CPictureAnalysis::BuildMaps(const CImageView& view)
{
    SourceCols = view.Cols;
    SourceRows = view.Rows;
    ScaleFactor = static_cast<float>(kWorkingLongSide / std::max(SourceCols, SourceRows));
    WorkCols = WorkLength(SourceCols, ScaleFactor);
    WorkRows = WorkLength(SourceRows, ScaleFactor);
    if (WorkCols < 1 || WorkRows < 1) {
        // The object stays empty and no error is reported. The message says 1:640, but a side
        // rounds to 0 only for pictures narrower than about 1:1280.
        std::cerr << "Image aspect ratio is larger than 1:640! " << std::endl;
        return;
    }

    // Nothing here resamples. The factor above serves coordinates only: the stages read the first
    // WorkCols x WorkRows pixels of the buffer, packed, so a host must pass a picture whose longer
    // side is 640. A larger one is read with the wrong row length and gives the maps of a sheared
    // piece of it. A smaller one would be read past its end.
    if (uint64_t{3} * static_cast<uint32_t>(WorkCols) * static_cast<uint32_t>(WorkRows) >
        view.ByteSize)
        ThrowText("VistaTrim: the image holds fewer pixels than the analysis reads.\n");
    AllocateMaps();
    CNormalisation scales[PictureMapCount];
    FillMaps(view.Pixels, scales);
    BorrowTables();
    FinishMaps(scales);
    MeasureSides();
}

// The maps that a stage fills. Until the tables are built, their storage is the stages' scratch.
void CPictureAnalysis::FillMaps(const uint8_t* bytes, CNormalisation* scales)
{
    const CScratchScope scratch(TableStorage.get(), TableBytes(Maps[0].Count) + kCacheLine);
    COwnedStack pixels;
    pixels.Create(3, WorkCols, WorkRows);
    pixels.FillFromBytes(bytes);
    const SaliencyMapBuffers buffers = {Maps[MapContrast].Data,
                                        Maps[MapSaliency].Data,
                                        Maps[MapColorContrast].Data,
                                        {Maps[MapSideTop].Data, Maps[MapSideBottom].Data,
                                         Maps[MapSideLeft].Data, Maps[MapSideRight].Data}};
    const SaliencyMapScales saliency = MeasureSaliencyMaps(pixels.Handle(), buffers);
    scales[MapContrast] = saliency.ContrastMap;
    scales[MapSaliency] = saliency.SaliencyMap;
    scales[MapColorContrast] = saliency.ColorContrastMap;
    std::copy_n(saliency.SideMaps, kPictureSides, scales + MapSideTop);

    SumColourEdges(pixels.Handle(), Maps[MapEdge]);
    scales[MapEdge] = CleanEdgeMap(Maps[MapEdge]);
}

// All steps of all maps on a few rows, and the rows of all tables, before the next rows.
void CPictureAnalysis::FinishMaps(const CNormalisation* scales)
{
    float largest[PictureMapCount] = {};
    float levels[PictureMapCount];
    for (int32_t k = 0; k < PictureMapCount; ++k) {
        const MapRule& rule = kMapRules[k];
        largest[k] = rule.Source == k ? scales[k].Largest : largest[rule.Source];
        levels[k] = LevelAtFraction(largest[k], rule.Threshold);
        // The largest element survives its threshold, unless it is NaN.
        if (rule.Threshold > 0.0f && !(largest[k] >= levels[k]))
            largest[k] = 0.0f;
    }

    const int32_t cols = WorkCols;
    const uint32_t height = static_cast<uint32_t>(WorkRows);
    uint32_t rows = 0;
    for (uint32_t first = 0; first < height; first += rows) {
        // The first row of a table is computed on its own.
        rows = std::min(height - first, kFinishedRows + (first == 0 ? 1 : 0));
        const int32_t count = cols * static_cast<int32_t>(rows);
        for (int32_t k = 0; k < PictureMapCount; ++k) {
            const MapRule& rule = kMapRules[k];
            const size_t start = size_t{first} * Maps[k].Cols;
            float* const band = Maps[k].Data + start;
            if (rule.Threshold > 0.0f)
                scales[k].ApplyAndClear(Maps[rule.Source].Data + start, count, levels[k], band);
            else
                scales[k].Apply(band, count);
            if (rule.Exponent != 1.0f)
                VectorPowScalar(count, band, rule.Exponent, band);
        }
        ExtendSummedAreaTables(Maps, Tables, PictureMapCount, first, rows);
    }
    for (int32_t k = 0; k < PictureMapCount; ++k)
        Totals[k] = MapTotal(Tables[k]);
}

// How much each side's band differs from the strip along the same side: little, if the border is
// uniform.
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
    // In 32 bits, as images count their bytes: a product that wraps means a small buffer.
    view.ByteSize = image.GetRowStride() * image.GetHeight();
    const auto analysis = std::make_shared<CPictureAnalysis>();
    analysis->BuildMaps(view);
    return analysis;
}

} // namespace vistaTrim
