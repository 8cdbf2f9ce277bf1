#include "candidates/random_crop_generator.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "numeric/throw_text.h"

namespace vistaTrim {

namespace {

constexpr double kRatioTolerance = 0.001; // of a ratio, over the longer side in pixels

// Standard libraries word this error differently; hosts recognise it by this message.
[[noreturn]] void ThrowTooLong()
{
    throw std::length_error("vector<T> too long");
}

// Truncates to a 64-bit integer. A value that does not fit, or NaN, gives the smallest one, so that
// every table value has a defined result.
int64_t Truncate(double value)
{
    constexpr double kLimit = 9223372036854775808.0;
    if (value >= -kLimit && value < kLimit)
        return static_cast<int64_t>(value);
    return INT64_MIN;
}

// A crop side or position in pixels. A negative value, or one beyond 32 bits, becomes the largest
// number: such a crop fits no picture and must not wrap to a few pixels. NaN, which no comparison
// finds too large, becomes 0.
uint32_t ToPixels(double value)
{
    if (std::isnan(value))
        return 0;
    constexpr double kTwoTo32 = 4294967296.0;
    return value >= 0 && value < kTwoTo32 ? static_cast<uint32_t>(value) : UINT32_MAX;
}

void Reserve(CropCell& cell, uint64_t count)
{
    if (count > cell.max_size())
        ThrowTooLong();
    cell.reserve(static_cast<size_t>(count));
}

// The first row within the tolerance wins, not the nearest one.
bool RatioMatches(const DoubleInfo& row, double ratio, double tolerance)
{
    return std::fabs(row.Value - ratio) < tolerance;
}

void SetEnabled(std::vector<DoubleInfo>& table, double value, bool enabled, double tolerance)
{
    for (DoubleInfo& row : table)
        if (RatioMatches(row, value, tolerance)) {
            row.Enabled = enabled;
            return;
        }
    table.emplace_back(value, enabled);
}

} // namespace

void RandomCropGenerator::Initialize(uint32_t width, uint32_t height,
                                     const std::vector<DoubleInfo>& aspectRows,
                                     const std::vector<DoubleInfo>& scaleRows,
                                     uint32_t numMaxCropRectsPerSide)
{
    ImageWidth = width;
    ImageHeight = height;
    RatioTolerance = kRatioTolerance / std::max(width, height);
    AspectTable = aspectRows;
    ScaleTable = scaleRows;
    NumMaxCropRectsPerSide = numMaxCropRectsPerSide;
}

std::vector<DoubleInfo> RandomCropGenerator::GetAspectRatios() const
{
    return AspectTable;
}

std::vector<DoubleInfo> RandomCropGenerator::GetCropRectScaleRatios() const
{
    return ScaleTable;
}

void RandomCropGenerator::SetAspectRatioEnabled(double value, bool enabled)
{
    SetEnabled(AspectTable, value, enabled, RatioTolerance);
}

void RandomCropGenerator::SetCropRectScaleRatioEnabled(double value, bool enabled)
{
    SetEnabled(ScaleTable, value, enabled, RatioTolerance);
}

bool RandomCropGenerator::AspectRatioEnabled(uint32_t aspectIndex) const
{
    return AspectTable[aspectIndex].Enabled;
}

bool RandomCropGenerator::CropRectScaleRatioEnabled(uint32_t scaleIndex) const
{
    return ScaleTable[scaleIndex].Enabled;
}

const CropCell& RandomCropGenerator::GenerateCell(uint32_t aspectIndex, uint32_t scaleIndex)
{
    CropRow& row = CropGrid[aspectIndex];
    if (scaleIndex == row.size())
        row.emplace_back();
    if (!row[scaleIndex].empty())
        return row[scaleIndex];

    const double imageWidth = ImageWidth;
    const double imageHeight = ImageHeight;
    const double aspect = AspectTable[aspectIndex].Value;
    const double scale = ScaleTable[scaleIndex].Value;

    // Anchored on the side that would otherwise overflow.
    double cropWidth = 0;
    double cropHeight = 0;
    if (imageWidth / imageHeight < aspect) {
        cropWidth = std::floor(imageWidth * scale + 0.5);
        cropHeight = std::floor(ToPixels(cropWidth) / aspect + 0.5);
    } else {
        cropHeight = std::floor(imageHeight * scale + 0.5);
        cropWidth = std::floor(ToPixels(cropHeight) * aspect + 0.5);
    }
    const uint32_t w = ToPixels(cropWidth);
    const uint32_t h = ToPixels(cropHeight);
    if (w > ImageWidth || h > ImageHeight)
        ThrowText("RandomCropGenerator: error\n");

    // The axis with more free room gets all the positions, the other its share. The count minus one
    // is unsigned 32-bit: a density of 0 wraps, and the steps below still terminate the walk.
    const uint32_t freeX = ImageWidth - w;
    const uint32_t freeY = ImageHeight - h;
    const double dx = freeX;
    const double dy = freeY;
    const double intervals = NumMaxCropRectsPerSide - 1U;
    int64_t nx = NumMaxCropRectsPerSide;
    int64_t ny = NumMaxCropRectsPerSide;
    if (freeY > freeX)
        nx = Truncate(std::floor(intervals * (dx / dy) + 1));
    else
        ny = Truncate(std::floor(intervals * (dy / std::max(1.0, dx)) + 1));
    // Filled separately and moved in when complete: a cell left half full when memory ran out would
    // never be enumerated again.
    CropCell cell;
    Reserve(cell, static_cast<uint64_t>(nx) * static_cast<uint64_t>(ny));

    // Never below a pixel, so the real counts can differ from nx and ny.
    const double stepX = std::max(1.0, dx / static_cast<double>(std::max<int64_t>(nx - 1, 1)));
    const double stepY = std::max(1.0, dy / static_cast<double>(std::max<int64_t>(ny - 1, 1)));
    const int64_t countX = Truncate(dx / stepX + 1);
    const int64_t countY = Truncate(dy / stepY + 1);
    for (int64_t i = 0; i < countX; ++i) {
        const uint32_t x = ToPixels(std::floor(static_cast<double>(i) * stepX));
        for (int64_t j = 0; j < countY; ++j) {
            const uint32_t y = ToPixels(std::floor(static_cast<double>(j) * stepY));
            // A side of 0 wraps at the first column or row, and the position is skipped; elsewhere
            // such a crop is kept, with its last side one before its first.
            const uint32_t right = x + w - 1U;
            const uint32_t bottom = y + h - 1U;
            if (right >= ImageWidth || bottom >= ImageHeight)
                continue;
            cell.push_back(CInt32CropRect(static_cast<int32_t>(x), static_cast<int32_t>(right),
                                          static_cast<int32_t>(y), static_cast<int32_t>(bottom)));
        }
    }
    // A lattice denser than one position per pixel has far fewer candidates than were reserved.
    if (cell.capacity() / 2 > cell.size())
        cell.shrink_to_fit();
    row[scaleIndex].swap(cell);
    return row[scaleIndex];
}

const CropRow& RandomCropGenerator::GenerateAspectRow(uint32_t aspectIndex)
{
    if (aspectIndex == CropGrid.size())
        CropGrid.emplace_back();
    CropGrid[aspectIndex].reserve(ScaleTable.size());
    for (uint32_t scaleIndex = 0; scaleIndex < ScaleTable.size(); ++scaleIndex)
        GenerateCell(aspectIndex, scaleIndex);
    return CropGrid[aspectIndex];
}

const CropGridRows& RandomCropGenerator::GenerateAll()
{
    CropGrid.reserve(AspectTable.size());
    for (uint32_t aspectIndex = 0; aspectIndex < AspectTable.size(); ++aspectIndex)
        GenerateAspectRow(aspectIndex);
    return CropGrid;
}

void RandomCropGenerator::FindAspectRow(double ratio, uint32_t& aspectIndex)
{
    aspectIndex = static_cast<uint32_t>(AspectTable.size());
    CropGrid.reserve(AspectTable.size());
    for (uint32_t i = 0; i < AspectTable.size(); ++i) {
        if (i == CropGrid.size())
            CropGrid.emplace_back();
        if (RatioMatches(AspectTable[i], ratio, RatioTolerance)) {
            aspectIndex = i;
            return;
        }
    }
    AspectTable.emplace_back(ratio, true);
}

const CropRow& RandomCropGenerator::GenerateForAspectRatio(double ratio, uint32_t& aspectIndex)
{
    FindAspectRow(ratio, aspectIndex);
    return GenerateAspectRow(aspectIndex);
}

const CropCell& RandomCropGenerator::GenerateForCropSize(double width, double height,
                                                         uint32_t& aspectIndex,
                                                         uint32_t& scaleIndex)
{
    const double imageWidth = ImageWidth;
    const double imageHeight = ImageHeight;
    const double ratio = width / height;
    const double scale =
        imageWidth / imageHeight < ratio ? width / imageWidth : height / imageHeight;

    scaleIndex = static_cast<uint32_t>(ScaleTable.size());
    FindAspectRow(ratio, aspectIndex);
    if (aspectIndex == CropGrid.size())
        CropGrid.emplace_back();

    CropRow& row = CropGrid[aspectIndex];
    uint32_t i = 0;
    for (; i < ScaleTable.size(); ++i) {
        if (i == row.size())
            row.emplace_back();
        if (RatioMatches(ScaleTable[i], scale, RatioTolerance)) {
            scaleIndex = i;
            break;
        }
    }
    if (i == ScaleTable.size()) {
        ScaleTable.emplace_back(scale, true);
        row.emplace_back();
    }
    return GenerateCell(aspectIndex, scaleIndex);
}

CropCells RandomCropGenerator::GetEnabledCropRects(uint32_t aspectIndex) const
{
    CropCells cells;
    for (size_t a = 0; a < CropGrid.size(); ++a) {
        if ((aspectIndex != NoIndex && aspectIndex != a) || !AspectTable[a].Enabled)
            continue;
        const CropRow& row = CropGrid[a];
        for (size_t s = 0; s < row.size(); ++s)
            if (ScaleTable[s].Enabled)
                cells.push_back(&row[s]);
    }
    return cells;
}

} // namespace vistaTrim
