// What a host sets before it creates a driver.
#ifndef VISTATRIM_PARAMETERS_H
#define VISTATRIM_PARAMETERS_H

#include <cstddef>
#include <cstdint>

#include "vistaTrim/export.h"
#include "vistaTrim/records.h"

namespace vistaTrim {

// The only public record that owns memory: three arrays, allocated with new[] by the host or the
// SetDefault operations and freed with delete[] by the destructor.
class VISTATRIM_API VistaTrimParameters {
public:
    DoubleInfo* AspectRatios;        // width over height
    uint32_t NumAspectRatios;        // 0: the driver uses defaults for all parameters
    DoubleInfo* CropRectScaleRatios; // crop side over image side, at most 1
    uint32_t NumCropRectScaleRatios;
    CRectOfInterest* RectsOfInterest;
    uint32_t NumRectsOfInterest;
    uint32_t NumMaxCropRectsPerSide; // positions tried along the axis with more free room
    bool UseBuiltInFaceDetector;     // leave it false: there is no detector

    // Null pointers, zero counts, flag false. Does not apply the defaults.
    VistaTrimParameters();
    // Deep copies. If memory runs out, std::bad_alloc is thrown and the target is unchanged. A
    // count above 0 with a null pointer is undefined behaviour.
    VistaTrimParameters(const VistaTrimParameters& other);
    VistaTrimParameters& operator=(const VistaTrimParameters& other);
    ~VistaTrimParameters();

    // Frees the arrays but keeps the dangling pointers and the counts: assign new arrays before
    // using or destroying the object.
    void Destruct();

    // For a fresh object: none of these frees what a pointer held before.
    void SetDefaults();
    void SetDefaultAspectRatios();           // 64/27, 16/9, 3/2, 4/3, 3/4, 2/3
    void SetDefaultCropRectScaleRatios();    // 0.4, 0.5 .. 1.0
    void SetDefaultNumMaxCropRectsPerSide(); // 25
    void SetDefaultRectsOfInterest();        // none
    void SetDefaultUseBuiltInFaceDetector(); // false
};
static_assert(sizeof(VistaTrimParameters) == 56 &&
                  offsetof(VistaTrimParameters, NumAspectRatios) == 8 &&
                  offsetof(VistaTrimParameters, CropRectScaleRatios) == 16 &&
                  offsetof(VistaTrimParameters, NumCropRectScaleRatios) == 24 &&
                  offsetof(VistaTrimParameters, RectsOfInterest) == 32 &&
                  offsetof(VistaTrimParameters, NumRectsOfInterest) == 40 &&
                  offsetof(VistaTrimParameters, NumMaxCropRectsPerSide) == 44 &&
                  offsetof(VistaTrimParameters, UseBuiltInFaceDetector) == 48,
              "published layout");

} // namespace vistaTrim

#endif
