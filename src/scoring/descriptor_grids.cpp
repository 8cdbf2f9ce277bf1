#include "scoring/descriptor_grids.h"

#include <algorithm>
#include <cmath>

#include "numeric/isa_variants.h"

namespace vistaTrim {

namespace {

// A cell's size is a fractional float; its limits are computed in double and rounded to float once,
// before the floor.
VISTATRIM_VARIANT_BODY void FillDivisionBody(float first, float extent, int32_t cells,
                                             int32_t* starts, int32_t* ends, float* lengths)
{
    const double size = extent / static_cast<float>(cells);
    const double origin = first;
    for (int32_t i = 0; i < cells; ++i) {
        const float startAt = static_cast<float>(i * size + origin);
        const float endAt = static_cast<float>((i + 1) * size + origin - 1.0);
        const int32_t start = static_cast<int32_t>(std::floor(static_cast<double>(startAt)));
        // A cell thinner than a pixel uses the pixel it starts in.
        const int32_t end =
            std::max(static_cast<int32_t>(std::floor(static_cast<double>(endAt))), start);
        starts[i] = start;
        ends[i] = end;
        lengths[i] = static_cast<float>(end - start + 1);
    }
}

VISTATRIM_VARIANT_BODY void FillDivisionsBody(float first, float extent, int32_t* starts,
                                              int32_t* ends, float* lengths)
{
    FillDivisionBody(first, extent, 4, starts, ends, lengths);
    FillDivisionBody(first, extent, 8, starts + 4, ends + 4, lengths + 4);
    FillDivisionBody(first, extent, 12, starts + 12, ends + 12, lengths + 12);
}

VISTATRIM_VARIANTS(FillDivisions,
                   (float first, float extent, int32_t* starts, int32_t* ends, float* lengths),
                   (first, extent, starts, ends, lengths))

bool TakeEdges(const int32_t* starts, const int32_t* ends, int32_t cells, int32_t* edges)
{
    edges[0] = starts[0] - 1;
    bool tiles = true;
    for (int32_t i = 0; i < cells; ++i) {
        tiles = tiles && starts[i] == edges[i] + 1;
        edges[i + 1] = ends[i];
    }
    return tiles;
}

} // namespace

void FillGridLimits(int32_t first, int32_t last, GridLimits& limits)
{
    limits.First = first;
    limits.Last = last;
    FillDivisions(static_cast<float>(first), static_cast<float>(last - first + 1), limits.Start,
                  limits.End, limits.Length);

    limits.Tiles = TakeEdges(limits.Start + 4, limits.End + 4, 8, limits.Edges8);
    limits.Tiles =
        TakeEdges(limits.Start + 12, limits.End + 12, 12, limits.Edges12) && limits.Tiles;
    for (int32_t i = 0; i < 4; ++i)
        limits.Tiles = limits.Tiles && limits.Start[i] == limits.Edges8[2 * i] + 1 &&
                       limits.End[i] == limits.Edges8[2 * i + 2];
}

} // namespace vistaTrim
