#include "vistaTrim/parameters.h"

#include <cstring>
#include <limits>
#include <new>

namespace vistaTrim {

namespace {

constexpr uint32_t kDefaultMaxCropRectsPerSide = 25;

const double kDefaultAspectRatios[] = {64.0 / 27.0, 16.0 / 9.0, 3.0 / 2.0,
                                       4.0 / 3.0,   3.0 / 4.0,  2.0 / 3.0};
const double kDefaultScaleRatios[] = {0.4, 0.5, 0.6, 0.7, 0.8, 0.9, 1.0};

// Array sizes are 32-bit byte counts on the interface. An array too large for that requests the
// largest possible size, which fails like any out-of-memory.
void RefuseOversizedArray(uint32_t count, size_t rowSize)
{
    if (count > std::numeric_limits<uint32_t>::max() / rowSize) {
        volatile size_t largest = std::numeric_limits<size_t>::max();
        ::operator delete[](::operator new[](largest));
    }
}

// Rows are copied as bytes, not field by field, so that padding is copied too.
void CopyBytes(void* copy, const void* rows, size_t bytes)
{
    if (bytes != 0)
        std::memcpy(copy, rows, bytes);
}

DoubleInfo* CopyRows(const DoubleInfo* rows, uint32_t count)
{
    RefuseOversizedArray(count, sizeof(DoubleInfo));
    DoubleInfo* copy = new DoubleInfo[count];
    CopyBytes(copy, rows, count * sizeof(DoubleInfo));
    return copy;
}

CRectOfInterest* CopyRows(const CRectOfInterest* rows, uint32_t count)
{
    RefuseOversizedArray(count, sizeof(CRectOfInterest));
    CRectOfInterest* copy = new CRectOfInterest[count];
    CopyBytes(copy, rows, count * sizeof(CRectOfInterest));
    return copy;
}

DoubleInfo* MakeRows(const double* values, uint32_t count)
{
    DoubleInfo* rows = new DoubleInfo[count];
    for (uint32_t i = 0; i < count; ++i)
        rows[i] = DoubleInfo(values[i]);
    return rows;
}

} // namespace

VistaTrimParameters::VistaTrimParameters()
    : AspectRatios(nullptr), NumAspectRatios(0), CropRectScaleRatios(nullptr),
      NumCropRectScaleRatios(0), RectsOfInterest(nullptr), NumRectsOfInterest(0),
      NumMaxCropRectsPerSide(0), UseBuiltInFaceDetector(false)
{
}

VistaTrimParameters::VistaTrimParameters(const VistaTrimParameters& other) : VistaTrimParameters()
{
    *this = other;
}

VistaTrimParameters& VistaTrimParameters::operator=(const VistaTrimParameters& other)
{
    if (this == &other)
        return *this;

    DoubleInfo* aspectRatios = nullptr;
    DoubleInfo* scaleRatios = nullptr;
    CRectOfInterest* rects = nullptr;
    try {
        aspectRatios = CopyRows(other.AspectRatios, other.NumAspectRatios);
        scaleRatios = CopyRows(other.CropRectScaleRatios, other.NumCropRectScaleRatios);
        rects = CopyRows(other.RectsOfInterest, other.NumRectsOfInterest);
    } catch (...) {
        delete[] aspectRatios;
        delete[] scaleRatios;
        delete[] rects;
        throw;
    }

    // Only now, so that a failed copy leaves the target unchanged.
    Destruct();
    AspectRatios = aspectRatios;
    CropRectScaleRatios = scaleRatios;
    RectsOfInterest = rects;
    NumAspectRatios = other.NumAspectRatios;
    NumCropRectScaleRatios = other.NumCropRectScaleRatios;
    NumRectsOfInterest = other.NumRectsOfInterest;
    NumMaxCropRectsPerSide = other.NumMaxCropRectsPerSide;
    UseBuiltInFaceDetector = other.UseBuiltInFaceDetector;
    return *this;
}

VistaTrimParameters::~VistaTrimParameters()
{
    Destruct();
    // Volatile, because the compiler removes plain stores to an object being destroyed. A host that
    // destroys it twice frees nothing the second time.
    static_cast<DoubleInfo* volatile&>(AspectRatios) = nullptr;
    static_cast<DoubleInfo* volatile&>(CropRectScaleRatios) = nullptr;
    static_cast<CRectOfInterest* volatile&>(RectsOfInterest) = nullptr;
}

void VistaTrimParameters::Destruct()
{
    delete[] AspectRatios;
    delete[] CropRectScaleRatios;
    delete[] RectsOfInterest;
}

void VistaTrimParameters::SetDefaults()
{
    SetDefaultAspectRatios();
    SetDefaultCropRectScaleRatios();
    SetDefaultNumMaxCropRectsPerSide();
    SetDefaultRectsOfInterest();
    SetDefaultUseBuiltInFaceDetector();
}

void VistaTrimParameters::SetDefaultAspectRatios()
{
    constexpr uint32_t count = sizeof kDefaultAspectRatios / sizeof *kDefaultAspectRatios;
    // Set the count last: it must never exceed the number of rows.
    AspectRatios = MakeRows(kDefaultAspectRatios, count);
    NumAspectRatios = count;
}

void VistaTrimParameters::SetDefaultCropRectScaleRatios()
{
    constexpr uint32_t count = sizeof kDefaultScaleRatios / sizeof *kDefaultScaleRatios;
    CropRectScaleRatios = MakeRows(kDefaultScaleRatios, count);
    NumCropRectScaleRatios = count;
}

void VistaTrimParameters::SetDefaultNumMaxCropRectsPerSide()
{
    NumMaxCropRectsPerSide = kDefaultMaxCropRectsPerSide;
}

void VistaTrimParameters::SetDefaultRectsOfInterest()
{
    RectsOfInterest = nullptr;
    NumRectsOfInterest = 0;
}

void VistaTrimParameters::SetDefaultUseBuiltInFaceDetector()
{
    UseBuiltInFaceDetector = false;
}

} // namespace vistaTrim
