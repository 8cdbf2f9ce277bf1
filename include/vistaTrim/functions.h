// The seven exported functions, unmangled so that a host can look them up by name. Passing a null
// pointer is undefined unless stated; exceptions propagate to the host.
#ifndef VISTATRIM_FUNCTIONS_H
#define VISTATRIM_FUNCTIONS_H

#include <cstdint>

#include "vistaTrim/crop_rects.h"
#include "vistaTrim/driver.h"
#include "vistaTrim/export.h"
#include "vistaTrim/image.h"
#include "vistaTrim/parameters.h"
#include "vistaTrim/records.h"

extern "C" {

// Copies width x height x channels bytes from pixels, or creates a black image if pixels is null.
// Height comes before width. channelOffsets points at four numbers that the image stores for the
// host. The caller holds the image's first reference.
VISTATRIM_API vistaTrim::IImage* CreateImageObj(uint32_t height, uint32_t width, uint32_t channels,
                                                const int32_t* channelOffsets,
                                                const uint8_t* pixels);

// Destroys the image, whatever its count. Destroy its drivers first.
VISTATRIM_API void DestroyImageObj(vistaTrim::IImage* image);

// Creates a driver and analyses the image, the expensive step. The image is borrowed, the
// parameters are copied; parameters without aspect ratios mean the defaults. image.h says which
// images are rejected.
VISTATRIM_API vistaTrim::IVistaTrim*
CreateVistaTrimObj(vistaTrim::IImage* image, const vistaTrim::VistaTrimParameters* parameters);

// Destroys the driver, whatever its count. Lists it returned remain valid.
VISTATRIM_API void DestroyVistaTrimObj(vistaTrim::IVistaTrim* object);

// IVistaTrim documents the three functions below.
VISTATRIM_API void ComputeCropSuggestions(vistaTrim::IVistaTrim* object,
                                          vistaTrim::ICropRects** result,
                                          const vistaTrim::SuggestionParameters* request);
VISTATRIM_API void GetNTopCropSuggestions(vistaTrim::IVistaTrim* object, int32_t n,
                                          vistaTrim::ICropRects** result,
                                          const vistaTrim::SuggestionParameters* request,
                                          int32_t rankingMode,
                                          vistaTrim::WeightDistribution weights);
VISTATRIM_API void EvaluateScores(vistaTrim::IVistaTrim* object, vistaTrim::CInt32CropRect* rect);

} // extern "C"

#endif
