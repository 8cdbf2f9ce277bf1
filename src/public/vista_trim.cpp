#include "public/vista_trim.h"

#include <memory>
#include <new>
#include <string>

#include "analysis/crop_analyzer.h"
#include "candidates/random_crop_generator.h"
#include "candidates/throw_text.h"

namespace vistaTrim {

namespace {

// Folders of a detector that is not there: made at load, ended at unload, read by nothing.
[[maybe_unused]] const std::string kResourceFolder = "./data/resource";
[[maybe_unused]] const std::string kDetectorFolder = "./data/detector";

using CellList = std::vector<const CropCell*>;

// The one way in which a list comes into being: released if an exception passes, and *result is
// touched only when it is whole.
void HandOut(const CellList& cells, ICropRects** result)
{
    SmartPtr<CCropRects> list(new CCropRects, false);
    size_t count = 0;
    for (const CropCell* cell : cells)
        count += cell->size();
    list->Reserve(count);
    for (const CropCell* cell : cells)
        for (const CInt32CropRect& crop : *cell)
            list->Append(crop);
    *result = list.release();
}

// The cells that GetEnabledGrid would copy, where they stand: a request reads the candidates
// once and needs no copy of its own.
CellList EnabledCells(const RandomCropGenerator& generator, uint32_t aspectIndex)
{
    CellList cells;
    for (uint32_t a = 0; a < generator.CropGrid.size(); ++a) {
        if ((aspectIndex != NoIndex && aspectIndex != a) || !generator.AspectRatioEnabled(a))
            continue;
        const CropRow& row = generator.CropGrid[a];
        for (uint32_t s = 0; s < row.size(); ++s)
            if (generator.CropRectScaleRatioEnabled(s))
                cells.push_back(&row[s]);
    }
    return cells;
}

// *table is the address of a copy that is gone when the operation returns: hosts may use the count
// only.
void ReportTable(const std::vector<DoubleInfo> copy, DoubleInfo** table, uint32_t* count)
{
    *count = static_cast<uint32_t>(copy.size());
    *table = const_cast<DoubleInfo*>(copy.data());
}

} // namespace

VistaTrim::VistaTrim() : Generator(nullptr), Image(nullptr), Analyzer(nullptr)
{
}

VistaTrim::~VistaTrim()
{
    delete Generator;
    delete Analyzer;
    Generator = nullptr;
    Analyzer = nullptr;
}

void VistaTrim::Release()
{
    GiveUpReference();
}

void VistaTrim::AddRef()
{
    TakeReference();
}

void VistaTrim::Destroy()
{
    VistaTrim* volatile self = this; // null when a host calls the bare slot so: nothing happens
    delete self;
}

void VistaTrim::Initialize(IImage* image, const VistaTrimParameters& parameters)
{
    Image = image;
    Parameters = parameters;
    // Without aspect ratios the whole set is replaced, the host's scales and rectangles too. The
    // arrays that the line above made are abandoned with it.
    if (Parameters.NumAspectRatios == 0)
        Parameters.SetDefaults();

    const std::vector<DoubleInfo> aspectRows(Parameters.AspectRatios,
                                             Parameters.AspectRatios + Parameters.NumAspectRatios);
    std::vector<DoubleInfo> scaleRows;
    if (Parameters.NumCropRectScaleRatios > 0)
        scaleRows.assign(Parameters.CropRectScaleRatios,
                         Parameters.CropRectScaleRatios + Parameters.NumCropRectScaleRatios);

    std::unique_ptr<RandomCropGenerator> generator(new RandomCropGenerator);
    generator->Initialize(Image->GetWidth(), Image->GetHeight(), aspectRows, scaleRows,
                          Parameters.NumMaxCropRectsPerSide);
    // A second call abandons the generator and the analyzer of the first.
    Generator = generator.release();

    Analyzer = new CCropAnalyzer(Image);
    if (Parameters.NumRectsOfInterest > 0)
        Analyzer->RectsOfInterest.assign(
            Parameters.RectsOfInterest, Parameters.RectsOfInterest + Parameters.NumRectsOfInterest);
}

void VistaTrim::InitializeWithDefaults(IImage* image)
{
    Image = image;
    Parameters.SetDefaults();
}

void VistaTrim::ReservedA()
{
}

VistaTrimParameters VistaTrim::GetParameters()
{
    return Parameters;
}

void VistaTrim::GetAspectRatios(DoubleInfo** table, uint32_t* count)
{
    ReportTable(Generator->GetAspectRatios(), table, count);
}

void VistaTrim::SetAspectRatioEnabled(double value, bool enabled)
{
    Generator->SetAspectRatioEnabled(value, enabled);
}

void VistaTrim::GetCropRectScaleRatios(DoubleInfo** table, uint32_t* count)
{
    ReportTable(Generator->GetCropRectScaleRatios(), table, count);
}

void VistaTrim::SetCropRectScaleRatioEnabled(double value, bool enabled)
{
    Generator->SetCropRectScaleRatioEnabled(value, enabled);
}

void VistaTrim::GetRectsOfInterest(CRectOfInterest** table, uint32_t* count)
{
    std::vector<CRectOfInterest>& rects = Analyzer->RectsOfInterest;
    if (!rects.empty()) {
        *table = rects.data();
        *count = static_cast<uint32_t>(rects.size());
        return;
    }
    // Not null for want of rectangles, so that a host may look at the first record unasked. Nobody
    // frees that record. A host's own allocator may return null; volatile keeps the test.
    void* volatile storage = ::operator new(sizeof(CRectOfInterest));
    *table = storage == nullptr ? nullptr : new (storage) CRectOfInterest;
    *count = 0;
}

void VistaTrim::AddRectOfInterest(const CRectOfInterest& rect)
{
    Analyzer->RectsOfInterest.push_back(rect);
}

void VistaTrim::ReservedB(uint32_t)
{
}

// Above 0 and within the image. A NaN counts as not given; a crop larger than the image too.
bool VistaTrim::AsksForCropSize(const SuggestionParameters& request) const
{
    return request.CropWidth > 0 && request.CropHeight > 0 &&
           !(Image->GetWidth() < request.CropWidth) && !(Image->GetHeight() < request.CropHeight);
}

void VistaTrim::PrepareRequest(const SuggestionParameters& request, uint32_t& aspectIndex,
                               uint32_t& scaleIndex)
{
    // There is no detector. Asking for one ends the process: a re-throw with nothing in flight.
    if (Parameters.UseBuiltInFaceDetector && request.DetectFaces)
        throw;

    if (request.AspectRatio > 0) {
        Generator->FillForAspectRatio(request.AspectRatio, aspectIndex);
        if (!Generator->AspectRatioEnabled(aspectIndex))
            ThrowText("VistaTrim: input aspect ratio is disabled.\n");
        // Once more: it finds all cells filled, save for a ratio that matches nothing, not even
        // itself (infinity), which gets its own row again.
        Generator->FillForAspectRatio(request.AspectRatio, aspectIndex);
        Analyzer->EvaluateCropRects(Generator->CropGrid, aspectIndex, NoIndex);
    } else if (AsksForCropSize(request)) {
        Generator->FillForCropSize(request.CropWidth, request.CropHeight, aspectIndex, scaleIndex);
        if (!Generator->AspectRatioEnabled(aspectIndex) ||
            !Generator->CropRectScaleRatioEnabled(scaleIndex))
            ThrowText("VistaTrim: input aspect ratio or scale ratio is disabled.\n");
        Analyzer->EvaluateCropRects(Generator->CropGrid, aspectIndex, scaleIndex);
    } else {
        Generator->FillAll();
        aspectIndex = 0;
        scaleIndex = 0;
        // Disabled rows too: the flags only decide what is handed out.
        Analyzer->EvaluateCropRects(Generator->CropGrid, NoIndex, NoIndex);
    }
}

CellList VistaTrim::ChosenCells(const SuggestionParameters& request, uint32_t aspectIndex,
                                uint32_t scaleIndex) const
{
    if (request.AspectRatio > 0)
        return EnabledCells(*Generator, aspectIndex);
    if (AsksForCropSize(request))
        return CellList(1, &Generator->CropGrid[aspectIndex][scaleIndex]);
    return EnabledCells(*Generator, NoIndex);
}

void VistaTrim::ComputeCropSuggestions(ICropRects** result, const SuggestionParameters& request)
{
    uint32_t aspectIndex = NoIndex;
    uint32_t scaleIndex = NoIndex;
    PrepareRequest(request, aspectIndex, scaleIndex);
    HandOut(ChosenCells(request, aspectIndex, scaleIndex), result);
}

void VistaTrim::GetNTopCropSuggestions(int32_t n, ICropRects** result,
                                       const SuggestionParameters& request, int32_t rankingMode,
                                       WeightDistribution weights)
{
    uint32_t aspectIndex = NoIndex;
    uint32_t scaleIndex = NoIndex;
    PrepareRequest(request, aspectIndex, scaleIndex);
    // The analyzer keeps its list and overwrites it in the next selection; the host's is a copy.
    HandOut(
        CellList(1, &Analyzer->SelectTopCropsOfCells(
                        n, ChosenCells(request, aspectIndex, scaleIndex), rankingMode, weights)),
        result);
}

void VistaTrim::EvaluateScores(CInt32CropRect& rect)
{
    Analyzer->EvaluateCropRect(rect);
}

} // namespace vistaTrim
