// The tables that most candidate tests start from.
#ifndef VISTATRIM_TESTS_CANDIDATES_GENERATOR_TABLES_H
#define VISTATRIM_TESTS_CANDIDATES_GENERATOR_TABLES_H

#include <cstdint>
#include <vector>

#include "candidates/random_crop_generator.h"
#include "vistaTrim/parameters.h"

namespace vistaTrim {

inline std::vector<DoubleInfo> DefaultAspects()
{
    VistaTrimParameters defaults;
    defaults.SetDefaultAspectRatios();
    return std::vector<DoubleInfo>(defaults.AspectRatios,
                                   defaults.AspectRatios + defaults.NumAspectRatios);
}

inline std::vector<DoubleInfo> DefaultScales()
{
    VistaTrimParameters defaults;
    defaults.SetDefaultCropRectScaleRatios();
    return std::vector<DoubleInfo>(defaults.CropRectScaleRatios,
                                   defaults.CropRectScaleRatios + defaults.NumCropRectScaleRatios);
}

// A generator with one cell, which GenerateAspectRow(0) fills.
inline RandomCropGenerator OneCellGenerator(uint32_t width, uint32_t height, double aspect,
                                            double scale, uint32_t density)
{
    RandomCropGenerator generator;
    generator.Initialize(width, height, {aspect}, {scale}, density);
    return generator;
}

inline RandomCropGenerator DefaultGenerator(uint32_t width, uint32_t height)
{
    RandomCropGenerator generator;
    generator.Initialize(width, height, DefaultAspects(), DefaultScales(), 25);
    return generator;
}

} // namespace vistaTrim

#endif
