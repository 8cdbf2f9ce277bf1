#include "vistaTrim/functions.h"

#include <new>

#include "public/rgb8_image.h"
#include "public/vista_trim.h"

using namespace vistaTrim;

// Thin C-style wrappers. They check no pointers and let exceptions reach the host.

IImage* CreateImageObj(uint32_t height, uint32_t width, uint32_t channels,
                       const int32_t* channelOffsets, const uint8_t* pixels)
{
    // A host's own operator new may return null instead of throwing; volatile keeps the check.
    void* volatile storage = ::operator new(sizeof(CRGB8Image));
    if (storage == nullptr)
        return nullptr;
    CRGB8Image* image = new (storage) CRGB8Image(height, width, channels, channelOffsets);
    try {
        image->Fill(pixels);
    } catch (...) {
        image->Destroy();
        throw;
    }
    return image;
}

IVistaTrim* CreateVistaTrimObj(IImage* image, const VistaTrimParameters* parameters)
{
    // If the analysis throws, the half-built driver leaks; the host gets no pointer.
    VistaTrim* object = new VistaTrim;
    object->Initialize(image, *parameters);
    return object;
}

// It also destroys images, under its other name below, so the sanitizer must check neither the
// object's type nor the function's type.
#if defined(__clang__)
__attribute__((no_sanitize("vptr", "function")))
#else
__attribute__((no_sanitize("vptr")))
#endif
void DestroyVistaTrimObj(IVistaTrim* object)
{
    object->Destroy();
}

// One function under two names: Destroy has the same slot in both interfaces.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wattribute-alias"
#endif
extern "C" VISTATRIM_API void DestroyImageObj(IImage* image)
    __attribute__((alias("DestroyVistaTrimObj")));

void ComputeCropSuggestions(IVistaTrim* object, ICropRects** result,
                            const SuggestionParameters* request)
{
    object->ComputeCropSuggestions(result, *request);
}

void GetNTopCropSuggestions(IVistaTrim* object, int32_t n, ICropRects** result,
                            const SuggestionParameters* request, int32_t rankingMode,
                            WeightDistribution weights)
{
    object->GetNTopCropSuggestions(n, result, *request, rankingMode, weights);
}

void EvaluateScores(IVistaTrim* object, CInt32CropRect* rect)
{
    object->EvaluateScores(*rect);
}
