// The driver behind IVistaTrim.
#ifndef VISTATRIM_PUBLIC_VISTA_TRIM_H
#define VISTATRIM_PUBLIC_VISTA_TRIM_H

#include <memory>

#include "candidates/crop_grid.h"
#include "vistaTrim/driver.h"

namespace vistaTrim {

class CCropAnalyzer;
class CPictureAnalysis;
class RandomCropGenerator;

class VistaTrim : public IVistaTrim, public CRefCount {
public:
    VistaTrim();
    ~VistaTrim() override;

    // Like Initialize, on an existing analysis; no image is borrowed.
    void InitializeOn(std::shared_ptr<const CPictureAnalysis> analysis,
                      const VistaTrimParameters& parameters);

    void Release() override;
    void AddRef() override;
    void Destroy() override;
    void Initialize(IImage* image, const VistaTrimParameters& parameters) override;
    void InitializeWithDefaults(IImage* image) override;
    void ReservedA() override;
    VistaTrimParameters GetParameters() override;
    void GetAspectRatios(DoubleInfo** table, uint32_t* count) override;
    void SetAspectRatioEnabled(double value, bool enabled) override;
    void GetCropRectScaleRatios(DoubleInfo** table, uint32_t* count) override;
    void SetCropRectScaleRatioEnabled(double value, bool enabled) override;
    void GetRectsOfInterest(CRectOfInterest** table, uint32_t* count) override;
    void AddRectOfInterest(const CRectOfInterest& rect) override;
    void ReservedB(uint32_t unused) override;
    void ComputeCropSuggestions(ICropRects** result, const SuggestionParameters& request) override;
    void GetNTopCropSuggestions(int32_t n, ICropRects** result, const SuggestionParameters& request,
                                int32_t rankingMode, WeightDistribution weights) override;
    void EvaluateScores(CInt32CropRect& rect) override;

private:
    void TakeOver(IImage* image, std::unique_ptr<RandomCropGenerator> generator,
                  std::unique_ptr<CCropAnalyzer> analyzer, VistaTrimParameters& parameters);
    uint32_t ImageWidth() const;
    uint32_t ImageHeight() const;
    bool AsksForCropSize(const SuggestionParameters& request) const;
    void PrepareRequest(const SuggestionParameters& request, uint32_t& aspectIndex,
                        uint32_t& scaleIndex);
    // The cells whose candidates answer a prepared request.
    CropCells ChosenCells(const SuggestionParameters& request, uint32_t aspectIndex,
                          uint32_t scaleIndex) const;

    RandomCropGenerator* Generator; // owned
    IImage* Image; // borrowed, must outlive the driver; only its size is read; may be null
    CCropAnalyzer* Analyzer;        // owned
    VistaTrimParameters Parameters; // what Initialize stored: the host's, or the defaults
};

} // namespace vistaTrim

#endif
