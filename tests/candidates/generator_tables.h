// The tables that most candidate tests start from.
#ifndef VISTATRIM_TESTS_CANDIDATES_GENERATOR_TABLES_H
#define VISTATRIM_TESTS_CANDIDATES_GENERATOR_TABLES_H

#include <cstdint>
#include <vector>

#include "candidates/random_crop_generator.h"

namespace vistaTrim {

inline std::vector<DoubleInfo> UsualAspects()
{
    return {64.0 / 27.0, 16.0 / 9.0, 3.0 / 2.0, 4.0 / 3.0, 3.0 / 4.0, 2.0 / 3.0};
}

inline std::vector<DoubleInfo> UsualScales()
{
    return {0.4, 0.5, 0.6, 0.7, 0.8, 0.9, 1.0};
}

// A generator with one cell, which GenerateAspectRow(0) fills.
inline RandomCropGenerator OneCellGenerator(uint32_t width, uint32_t height, double aspect,
                                            double scale, uint32_t density)
{
    RandomCropGenerator generator;
    generator.Initialize(width, height, {aspect}, {scale}, density);
    return generator;
}

inline RandomCropGenerator UsualGenerator(uint32_t width, uint32_t height)
{
    RandomCropGenerator generator;
    generator.Initialize(width, height, UsualAspects(), UsualScales(), 25);
    return generator;
}

} // namespace vistaTrim

#endif
