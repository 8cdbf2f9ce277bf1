#include "public/vista_trim.h"

#include <memory>
#include <new>
#include <string>
#include <utility>

#include "analysis/picture_analysis.h"
#include "candidates/random_crop_generator.h"
#include "numeric/throw_text.h"
#include "public/crop_list_builder.h"
#include "scoring/crop_analyzer.h"

namespace vistaTrim {

namespace {

// Folders of a detector that does not exist: constructed at load, destroyed at unload, never read.
[[maybe_unused]] const std::string kResourceFolder = "./data/resource";
[[maybe_unused]] const std::string kDetectorFolder = "./data/detector";

// The only place that creates a list. An exception releases it; *result is set only once the list
// is complete.
void BuildCropList(const CropCells& cells, ICropRects** result)
{
    CCropListBuilder list;
    size_t count = 0;
    for (const CropCell* cell : cells)
        count += cell->size();
    list.Reserve(count);
    for (const CropCell* cell : cells)
        for (const CInt32CropRect& crop : *cell)
            list.Append(crop);
    *result = list.Take();
}

// The parameters a driver stores. Without aspect ratios all of them are replaced by defaults,
// including the host's scales and rectangles; the arrays of the copy then leak on purpose.
VistaTrimParameters StoredParameters(const VistaTrimParameters& given)
{
    VistaTrimParameters stored(given);
    if (stored.NumAspectRatios == 0)
        stored.SetDefaults();
    return stored;
}

std::unique_ptr<RandomCropGenerator> MakeGenerator(uint32_t width, uint32_t height,
                                                   const VistaTrimParameters& parameters)
{
    const std::vector<DoubleInfo> aspectRows(parameters.AspectRatios,
                                             parameters.AspectRatios + parameters.NumAspectRatios);
    std::vector<DoubleInfo> scaleRows;
    if (parameters.NumCropRectScaleRatios > 0)
        scaleRows.assign(parameters.CropRectScaleRatios,
                         parameters.CropRectScaleRatios + parameters.NumCropRectScaleRatios);
    auto generator = std::make_unique<RandomCropGenerator>();
    generator->Initialize(width, height, aspectRows, scaleRows, parameters.NumMaxCropRectsPerSide);
    return generator;
}

// Moves no rows and cannot throw.
void SwapParameters(VistaTrimParameters& a, VistaTrimParameters& b)
{
    std::swap(a.AspectRatios, b.AspectRatios);
    std::swap(a.NumAspectRatios, b.NumAspectRatios);
    std::swap(a.CropRectScaleRatios, b.CropRectScaleRatios);
    std::swap(a.NumCropRectScaleRatios, b.NumCropRectScaleRatios);
    std::swap(a.RectsOfInterest, b.RectsOfInterest);
    std::swap(a.NumRectsOfInterest, b.NumRectsOfInterest);
    std::swap(a.NumMaxCropRectsPerSide, b.NumMaxCropRectsPerSide);
    std::swap(a.UseBuiltInFaceDetector, b.UseBuiltInFaceDetector);
}

// *table is the address of a copy that no longer exists after the call: hosts may use only the
// count.
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
    VistaTrim* volatile self = this; // null if a host calls the slot on null: nothing happens
    delete self;
}

void VistaTrim::Initialize(IImage* image, const VistaTrimParameters& parameters)
{
    VistaTrimParameters stored = StoredParameters(parameters);
    std::unique_ptr<RandomCropGenerator> generator =
        MakeGenerator(image->GetWidth(), image->GetHeight(), stored);
    TakeOver(image, std::move(generator), std::make_unique<CCropAnalyzer>(image), stored);
}

void VistaTrim::InitializeOn(std::shared_ptr<const CPictureAnalysis> analysis,
                             const VistaTrimParameters& parameters)
{
    VistaTrimParameters stored = StoredParameters(parameters);
    std::unique_ptr<RandomCropGenerator> generator =
        MakeGenerator(static_cast<uint32_t>(analysis->SourceCols),
                      static_cast<uint32_t>(analysis->SourceRows), stored);
    TakeOver(nullptr, std::move(generator), std::make_unique<CCropAnalyzer>(std::move(analysis)),
             stored);
}

// Does first what can throw, so that a ready driver stays unchanged. What an earlier call built
// leaks on purpose.
void VistaTrim::TakeOver(IImage* image, std::unique_ptr<RandomCropGenerator> generator,
                         std::unique_ptr<CCropAnalyzer> analyzer, VistaTrimParameters& parameters)
{
    if (parameters.NumRectsOfInterest > 0)
        analyzer->RectsOfInterest.assign(
            parameters.RectsOfInterest, parameters.RectsOfInterest + parameters.NumRectsOfInterest);
    Image = image;
    SwapParameters(Parameters, parameters);
    Generator = generator.release();
    Analyzer = analyzer.release();
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
    // Without rectangles the pointer is still not null, so that a host may read the first record
    // without checking. That record is never freed. A host's own operator new may return null;
    // volatile keeps the check.
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

uint32_t VistaTrim::ImageWidth() const
{
    return Image != nullptr ? Image->GetWidth() : static_cast<uint32_t>(Analyzer->SourceCols);
}

uint32_t VistaTrim::ImageHeight() const
{
    return Image != nullptr ? Image->GetHeight() : static_cast<uint32_t>(Analyzer->SourceRows);
}

// Above 0 and within the image. NaN, or a crop larger than the image, counts as not given.
bool VistaTrim::AsksForCropSize(const SuggestionParameters& request) const
{
    return request.CropWidth > 0 && request.CropHeight > 0 && !(ImageWidth() < request.CropWidth) &&
           !(ImageHeight() < request.CropHeight);
}

void VistaTrim::PrepareRequest(const SuggestionParameters& request, uint32_t& aspectIndex,
                               uint32_t& scaleIndex)
{
    // There is no detector. Requesting one terminates the process: a rethrow without an active
    // exception.
    if (Parameters.UseBuiltInFaceDetector && request.DetectFaces)
        throw;

    if (request.AspectRatio > 0) {
        Generator->GenerateForAspectRatio(request.AspectRatio, aspectIndex);
        if (!Generator->AspectRatioEnabled(aspectIndex))
            ThrowText("VistaTrim: input aspect ratio is disabled.\n");
        // A second time: all cells are already filled, except for a ratio that does not match even
        // itself (infinity), which gets another row.
        Generator->GenerateForAspectRatio(request.AspectRatio, aspectIndex);
        Analyzer->EvaluateCropRects(Generator->CropGrid, aspectIndex, NoIndex);
    } else if (AsksForCropSize(request)) {
        Generator->GenerateForCropSize(request.CropWidth, request.CropHeight, aspectIndex,
                                       scaleIndex);
        if (!Generator->AspectRatioEnabled(aspectIndex) ||
            !Generator->CropRectScaleRatioEnabled(scaleIndex))
            ThrowText("VistaTrim: input aspect ratio or scale ratio is disabled.\n");
        Analyzer->EvaluateCropRects(Generator->CropGrid, aspectIndex, scaleIndex);
    } else {
        Generator->GenerateAll();
        aspectIndex = 0;
        scaleIndex = 0;
        // Includes disabled rows: the flags only decide what is returned.
        Analyzer->EvaluateCropRects(Generator->CropGrid, NoIndex, NoIndex);
    }
}

CropCells VistaTrim::ChosenCells(const SuggestionParameters& request, uint32_t aspectIndex,
                                 uint32_t scaleIndex) const
{
    if (request.AspectRatio > 0)
        return Generator->GetEnabledCropRects(aspectIndex);
    if (AsksForCropSize(request))
        return CropCells(1, &Generator->CropGrid[aspectIndex][scaleIndex]);
    return Generator->GetEnabledCropRects(NoIndex);
}

void VistaTrim::ComputeCropSuggestions(ICropRects** result, const SuggestionParameters& request)
{
    uint32_t aspectIndex = NoIndex;
    uint32_t scaleIndex = NoIndex;
    PrepareRequest(request, aspectIndex, scaleIndex);
    BuildCropList(ChosenCells(request, aspectIndex, scaleIndex), result);
}

void VistaTrim::GetNTopCropSuggestions(int32_t n, ICropRects** result,
                                       const SuggestionParameters& request, int32_t rankingMode,
                                       WeightDistribution weights)
{
    uint32_t aspectIndex = NoIndex;
    uint32_t scaleIndex = NoIndex;
    PrepareRequest(request, aspectIndex, scaleIndex);
    // The analyzer overwrites its list in the next selection, so the host gets a copy.
    BuildCropList(
        CropCells(1, &Analyzer->SelectTopCrops(n, ChosenCells(request, aspectIndex, scaleIndex),
                                               rankingMode, weights)),
        result);
}

void VistaTrim::EvaluateScores(CInt32CropRect& rect)
{
    Analyzer->EvaluateCropRect(rect);
}

} // namespace vistaTrim
