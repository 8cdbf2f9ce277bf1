// A host that declares the library's classes itself, includes none of its headers and links against
// the built file. The linker must find every exported member.
#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace vistaTrim {

struct CInt32Rect {
    int32_t Left, Right, Top, Bottom;
    CInt32Rect();
    CInt32Rect(int left, int right, int top, int bottom);
    CInt32Rect(const CInt32Rect&) = default;
    CInt32Rect& operator=(const CInt32Rect&);
    int64_t Area() const;
    bool Empty() const;
};

struct Score {
    bool Scored;
    double Measures[7];
    Score();
    Score(const Score&) = default;
    Score& operator=(const Score&);
};

struct CInt32CropRect {
    int32_t Left, Right, Top, Bottom;
    bool CoversContent;
    vistaTrim::Score Scores;
    CInt32CropRect();
    CInt32CropRect(int left, int right, int top, int bottom);
    CInt32CropRect(const CInt32CropRect&) = default;
    CInt32CropRect& operator=(const CInt32CropRect&);
};

struct CRectOfInterest {
    int32_t Left, Right, Top, Bottom;
    bool Marked, Enabled;
    int32_t Kind;
    CRectOfInterest();
    CRectOfInterest(bool marked);
    CRectOfInterest(int left, int right, int top, int bottom, bool marked);
    CRectOfInterest(const CInt32Rect& rect, bool marked);
    CRectOfInterest(const CRectOfInterest&) = default;
    CRectOfInterest& operator=(const CRectOfInterest&);
};

struct DoubleInfo {
    double Value;
    bool Enabled;
    DoubleInfo();
    DoubleInfo(double value);
    DoubleInfo(double value, bool enabled);
    DoubleInfo(const DoubleInfo&) = default;
    DoubleInfo& operator=(const DoubleInfo&);
};

struct WeightDistribution {
    double Weights[5];
    WeightDistribution(double, double, double);
    WeightDistribution(double, double, double, double, double);
    WeightDistribution(const WeightDistribution&) = default;
    WeightDistribution& operator=(const WeightDistribution&);
};

struct SuggestionParameters {
    double CropWidth, CropHeight, AspectRatio;
    bool DetectFaces;
    SuggestionParameters();
    SuggestionParameters(bool detectFaces);
    SuggestionParameters(double aspectRatio, bool detectFaces);
    SuggestionParameters(double cropWidth, double cropHeight, bool detectFaces);
    SuggestionParameters(const SuggestionParameters&) = default;
    SuggestionParameters& operator=(const SuggestionParameters&);
};

class VistaTrimParameters {
public:
    DoubleInfo* AspectRatios;
    uint32_t NumAspectRatios;
    DoubleInfo* CropRectScaleRatios;
    uint32_t NumCropRectScaleRatios;
    CRectOfInterest* RectsOfInterest;
    uint32_t NumRectsOfInterest;
    uint32_t NumMaxCropRectsPerSide;
    bool UseBuiltInFaceDetector;
    VistaTrimParameters();
    VistaTrimParameters(const VistaTrimParameters&);
    VistaTrimParameters& operator=(const VistaTrimParameters&);
    ~VistaTrimParameters();
    void Destruct();
    void SetDefaults();
    void SetDefaultAspectRatios();
    void SetDefaultCropRectScaleRatios();
    void SetDefaultNumMaxCropRectsPerSide();
    void SetDefaultRectsOfInterest();
    void SetDefaultUseBuiltInFaceDetector();
};

class IBaseClass {
public:
    IBaseClass();
    IBaseClass(const IBaseClass&);
    IBaseClass& operator=(const IBaseClass&);

protected:
    virtual ~IBaseClass();

public:
    virtual void Release() = 0;
    virtual void AddRef() = 0;
};

class IImage : public IBaseClass {
public:
    IImage();
    IImage(const IImage&);
    IImage& operator=(const IImage&);

protected:
    ~IImage() override;

public:
    virtual void Destroy() = 0;
    virtual uint8_t* GetData() = 0;
    virtual const uint8_t* GetPixels() const = 0;
    virtual uint32_t GetWidth() const = 0;
    virtual uint32_t GetHeight() const = 0;
    virtual uint32_t GetNumChannels() const = 0;
    virtual uint32_t GetRowStride() const = 0;
    virtual uint32_t GetPixelStride() const = 0;
    virtual int32_t GetChannelOffset(int index) const = 0;
};

class ICropRects;
class CCropRects;

class IVistaTrim : public IBaseClass {
public:
    IVistaTrim();
    IVistaTrim(const IVistaTrim&);
    IVistaTrim& operator=(const IVistaTrim&);

protected:
    ~IVistaTrim() override;

public:
    virtual void Destroy() = 0;
    virtual void Initialize(IImage* image, const VistaTrimParameters& parameters) = 0;
    virtual void InitializeWithDefaults(IImage* image) = 0;
    virtual void ReservedA() = 0;
    virtual VistaTrimParameters GetParameters() = 0;
};

// Only declared: the library defines the members.
template <class T> class SmartPtr {
public:
    SmartPtr(T* object, bool addReference);
    ~SmartPtr();
    T* operator->();
    T* release();

private:
    T* Object;
};
extern template class SmartPtr<CCropRects>;

} // namespace vistaTrim

extern "C" {
vistaTrim::IImage* CreateImageObj(uint32_t, uint32_t, uint32_t, const int32_t*, const uint8_t*);
void DestroyImageObj(vistaTrim::IImage*);
vistaTrim::IVistaTrim* CreateVistaTrimObj(vistaTrim::IImage*,
                                          const vistaTrim::VistaTrimParameters*);
void DestroyVistaTrimObj(vistaTrim::IVistaTrim*);
void ComputeCropSuggestions(vistaTrim::IVistaTrim*, vistaTrim::ICropRects**,
                            const vistaTrim::SuggestionParameters*);
void GetNTopCropSuggestions(vistaTrim::IVistaTrim*, int32_t, vistaTrim::ICropRects**,
                            const vistaTrim::SuggestionParameters*, int32_t,
                            vistaTrim::WeightDistribution);
void EvaluateScores(vistaTrim::IVistaTrim*, vistaTrim::CInt32CropRect*);
}

namespace {

using namespace vistaTrim;

int failures = 0;

void Check(bool condition, const char* what)
{
    if (!condition) {
        std::fprintf(stderr, "failed: %s\n", what);
        ++failures;
    }
}

void CheckRecords()
{
    CInt32Rect rect;
    Check(rect.Area() == 1 && !rect.Empty(), "default rectangle");
    rect = CInt32Rect(1, 2, 3, 5);
    Check(rect.Area() == 6, "area");
    vistaTrim::Score score;
    score = vistaTrim::Score();
    Check(score.Measures[5] == 1.0, "RoiScore");
    CInt32CropRect crop;
    crop = CInt32CropRect(1, 2, 3, 4);
    Check(crop.Top == 3 && crop.Scores.Measures[5] == 1.0, "crop");
    CRectOfInterest region;
    region = CRectOfInterest(true);
    Check(region.Marked && region.Enabled, "marked region");
    region = CRectOfInterest(1, 2, 3, 4, false);
    region = CRectOfInterest(rect, true);
    Check(region.Bottom == 5 && region.Kind == 0, "region of a rectangle");
    DoubleInfo info;
    info = DoubleInfo(2.0);
    Check(info.Enabled, "enabled row");
    info = DoubleInfo(2.0, false);
    Check(!info.Enabled && info.Value == 2.0, "disabled row");
    WeightDistribution weights(1, 2, 3);
    Check(weights.Weights[3] == 0.0, "three weights");
    const WeightDistribution five(1, 2, 3, 4, 5);
    Check(&(weights = five) == &weights && weights.Weights[4] == 5.0, "five weights");
    SuggestionParameters request;
    request = SuggestionParameters(true);
    Check(request.DetectFaces, "faces");
    request = SuggestionParameters(1.5, false);
    Check(request.AspectRatio == 1.5, "ratio");
    request = SuggestionParameters(3, 2, false);
    Check(request.CropHeight == 2 && request.AspectRatio == 0, "size");
}

void CheckParameters()
{
    VistaTrimParameters parameters;
    parameters.SetDefaults();
    VistaTrimParameters copy(parameters);
    Check(copy.NumAspectRatios == 6 && copy.AspectRatios != parameters.AspectRatios, "copy");
    copy = parameters;
    copy.Destruct();
    copy.SetDefaultAspectRatios();
    copy.SetDefaultCropRectScaleRatios();
    copy.SetDefaultNumMaxCropRectsPerSide();
    copy.SetDefaultRectsOfInterest();
    copy.SetDefaultUseBuiltInFaceDetector();
    Check(copy.NumCropRectScaleRatios == 7, "scales");
}

// A host's own image, derived from the exported interface.
class BlackImage : public IImage {
public:
    void Release() override
    {
    }
    void AddRef() override
    {
    }
    void Destroy() override
    {
    }
    uint8_t* GetData() override
    {
        return Pixels;
    }
    const uint8_t* GetPixels() const override
    {
        return Pixels;
    }
    uint32_t GetWidth() const override
    {
        return 640;
    }
    uint32_t GetHeight() const override
    {
        return 48;
    }
    uint32_t GetNumChannels() const override
    {
        return 3;
    }
    uint32_t GetRowStride() const override
    {
        return 1920;
    }
    uint32_t GetPixelStride() const override
    {
        return 3;
    }
    int32_t GetChannelOffset(int index) const override
    {
        return index;
    }

private:
    uint8_t Pixels[1920 * 48] = {};
};

BlackImage hostImage;

void CheckRequests()
{
    VistaTrimParameters parameters;
    parameters.SetDefaults();
    parameters.NumMaxCropRectsPerSide = 5;
    const BlackImage copied(hostImage);
    hostImage = copied;
    IVistaTrim* driver = CreateVistaTrimObj(&hostImage, &parameters);
    Check(driver->GetParameters().NumMaxCropRectsPerSide == 5, "parameters by value");
    const SuggestionParameters request(1.5, false);
    ICropRects* list = nullptr;
    ComputeCropSuggestions(driver, &list, &request);
    {
        // The interface is the first base, so the addresses are the same.
        SmartPtr<CCropRects> first(reinterpret_cast<CCropRects*>(list), false);
        SmartPtr<CCropRects> second(first.operator->(), true);
        Check(second.release() == reinterpret_cast<CCropRects*>(list), "smart pointer");
        SmartPtr<CCropRects> third(reinterpret_cast<CCropRects*>(list), false);
    }
    GetNTopCropSuggestions(driver, 3, &list, &request, 0, WeightDistribution(1, 1, 1));
    {
        SmartPtr<CCropRects> owner(reinterpret_cast<CCropRects*>(list), false);
    }
    CInt32CropRect crop(0, 99, 0, 39);
    EvaluateScores(driver, &crop);
    Check(crop.Scores.Scored, "scored");
    DestroyVistaTrimObj(driver);

    const int32_t offsets[4] = {0, 1, 2, 3};
    DestroyImageObj(CreateImageObj(2, 2, 3, offsets, nullptr));
}

} // namespace

int main()
{
    CheckRecords();
    CheckParameters();
    CheckRequests();
    return failures == 0 ? 0 : 1;
}
