#include "ranking/input_grid.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "numeric/isa_variants.h"

namespace vistaTrim::photo {

namespace {

struct Span {
    int32_t First;
    int32_t End;
};

Span CellSpan(int32_t cell, int32_t pixels)
{
    const int32_t first = cell * pixels / kGridSide;
    return {first, std::max(first + 1, (cell + 1) * pixels / kGridSide)};
}

// Rows are added from top to bottom, so each column adds in the same order whatever the register
// width. Float sums of at most 40 values near 1 keep six digits.
VISTATRIM_VARIANT_BODY void AddFloatsBody(float* sums, const float* row, int32_t count)
{
    for (int32_t i = 0; i < count; ++i)
        sums[i] += row[i];
}
VISTATRIM_VARIANTS(AddFloats, (float* sums, const float* row, int32_t count), (sums, row, count))

VISTATRIM_VARIANT_BODY void AddBytesBody(int32_t* sums, const uint8_t* row, int32_t count)
{
    for (int32_t i = 0; i < count; ++i)
        sums[i] += row[i];
}
VISTATRIM_VARIANTS(AddBytes, (int32_t * sums, const uint8_t* row, int32_t count),
                   (sums, row, count))

VISTATRIM_VARIANT_BODY void SumChannelsBody(int32_t* sums, const uint8_t* row, int32_t cols)
{
    for (ptrdiff_t i = 0; i < cols; ++i)
        sums[i] = row[3 * i] + row[3 * i + 1] + row[3 * i + 2];
}
VISTATRIM_VARIANTS(SumChannels, (int32_t * sums, const uint8_t* row, int32_t cols),
                   (sums, row, cols))

// below may be row itself, for the last row.
VISTATRIM_VARIANT_BODY void AddGradientBody(int32_t* sums, const int32_t* row, const int32_t* below,
                                            int32_t cols)
{
    for (int32_t i = 0; i + 1 < cols; ++i) {
        const int32_t across = row[i + 1] - row[i];
        const int32_t down = below[i] - row[i];
        sums[i] += (across < 0 ? -across : across) + (down < 0 ? -down : down);
    }
    const int32_t down = below[cols - 1] - row[cols - 1];
    sums[cols - 1] += down < 0 ? -down : down;
}
VISTATRIM_VARIANTS(AddGradient,
                   (int32_t * sums, const int32_t* row, const int32_t* below, int32_t cols),
                   (sums, row, below, cols))

void AverageMap(const InputMap& map, float* plane)
{
    if (!map.Data || map.Rows < 1 || map.Cols < 1)
        return;
    std::vector<float> sums(static_cast<size_t>(map.Cols));
    for (int32_t r = 0; r < kGridSide; ++r) {
        const Span rows = CellSpan(r, map.Rows);
        std::fill(sums.begin(), sums.end(), 0.0F);
        for (int32_t y = rows.First; y < rows.End; ++y)
            AddFloats(sums.data(), map.Data + static_cast<ptrdiff_t>(y) * map.Cols, map.Cols);
        for (int32_t c = 0; c < kGridSide; ++c) {
            const Span cols = CellSpan(c, map.Cols);
            double sum = 0;
            for (int32_t x = cols.First; x < cols.End; ++x)
                sum += static_cast<double>(sums[static_cast<size_t>(x)]);
            const double count = (rows.End - rows.First) * (cols.End - cols.First);
            plane[r * kGridSide + c] = static_cast<float>(sum / count);
        }
    }
}

// Integers: no sum is rounded.
float CellMean(const std::vector<int32_t>& sums, Span cols, int32_t step, int32_t channel,
               int32_t rows, double scale)
{
    int64_t sum = 0;
    for (int32_t x = cols.First; x < cols.End; ++x)
        sum +=
            sums[static_cast<size_t>(x) * static_cast<size_t>(step) + static_cast<size_t>(channel)];
    return static_cast<float>(static_cast<double>(sum) / (scale * rows * (cols.End - cols.First)));
}

bool AverageColours(const PixelImage& picture, float* planes)
{
    constexpr int32_t kChannels = 3;
    const int32_t width = picture.Size.Width;
    const int32_t height = picture.Size.Height;
    const auto rowAt = [&picture, width](int32_t y) {
        return picture.Bytes.data() + static_cast<ptrdiff_t>(y) * width * kChannels;
    };
    std::vector<int32_t> colours(static_cast<size_t>(width) * kChannels);
    std::vector<int32_t> gradient(static_cast<size_t>(width));
    std::vector<int32_t> row(static_cast<size_t>(width));
    std::vector<int32_t> below(static_cast<size_t>(width));
    bool flat = true;
    for (int32_t r = 0; r < kGridSide; ++r) {
        const Span rows = CellSpan(r, height);
        std::fill(colours.begin(), colours.end(), 0);
        std::fill(gradient.begin(), gradient.end(), 0);
        SumChannels(row.data(), rowAt(rows.First), width);
        for (int32_t y = rows.First; y < rows.End; ++y) {
            AddBytes(colours.data(), rowAt(y), width * kChannels);
            SumChannels(below.data(), rowAt(std::min(y + 1, height - 1)), width);
            AddGradient(gradient.data(), row.data(), below.data(), width);
            row.swap(below);
        }
        flat = flat &&
               std::all_of(gradient.begin(), gradient.end(), [](int32_t sum) { return sum == 0; });
        const int32_t numRows = rows.End - rows.First;
        for (int32_t c = 0; c < kGridSide; ++c) {
            const Span cols = CellSpan(c, width);
            float* cell = planes + static_cast<ptrdiff_t>(r) * kGridSide + c;
            for (int32_t channel = 0; channel < kChannels; ++channel)
                cell[static_cast<ptrdiff_t>(channel) * kGridCells] =
                    CellMean(colours, cols, kChannels, channel, numRows, 255.0);
            cell[static_cast<ptrdiff_t>(kChannels) * kGridCells] =
                CellMean(gradient, cols, 1, 0, numRows, 765.0);
        }
    }
    return flat;
}

} // namespace

InputGrid AverageInputs(const std::vector<InputMap>& maps, const PixelImage& picture)
{
    InputGrid grid;
    grid.Planes.assign(static_cast<size_t>(kNumInputs) * kGridCells, 0.0F);
    for (size_t i = 0; i < maps.size() && i < kNumMapInputs; ++i)
        AverageMap(maps[i], grid.Planes.data() + i * kGridCells);
    grid.Flat = AverageColours(picture, grid.Planes.data() +
                                            static_cast<size_t>(kNumMapInputs) * kGridCells);
    return grid;
}

} // namespace vistaTrim::photo
