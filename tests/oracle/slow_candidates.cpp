#include "oracle/slow_candidates.h"

#include <algorithm>
#include <cmath>

namespace slowOracle {

namespace {

// A crop side as an unsigned number. The largest one represents every impossible side, negative or
// beyond 32 bits; NaN compares false with both limits and counts as 0.
uint32_t CropSide(double floored)
{
    constexpr uint32_t kLargest = 0xFFFFFFFFU;
    if (floored < 0.0 || floored > static_cast<double>(kLargest))
        return kLargest;
    return std::isnan(floored) ? 0U : static_cast<uint32_t>(floored);
}

// The number of gaps between `positions` wanted positions, at least 1. A double keeps any count
// exact, so a density of 0, which wraps, gives every position along the axis with less free room.
double Gaps(double positions)
{
    return std::max(positions - 1.0, 1.0);
}

} // namespace

CellResult EnumerateCell(uint32_t width, uint32_t height, double aspect, double scale,
                         uint32_t maxPerSide)
{
    CellResult result;
    const double fullWidth = width;
    const double fullHeight = height;

    uint32_t cropWidth = 0;
    uint32_t cropHeight = 0;
    if (fullWidth / fullHeight < aspect) {
        cropWidth = CropSide(std::floor(fullWidth * scale + 0.5));
        cropHeight = CropSide(std::floor(static_cast<double>(cropWidth) / aspect + 0.5));
    } else {
        cropHeight = CropSide(std::floor(fullHeight * scale + 0.5));
        cropWidth = CropSide(std::floor(static_cast<double>(cropHeight) * aspect + 0.5));
    }
    if (cropWidth > width || cropHeight > height) {
        result.Error = true;
        return result;
    }

    const double roomX = width - cropWidth;
    const double roomY = height - cropHeight;
    const double most = maxPerSide;
    const double mostLessOne = maxPerSide - 1U; // wraps for 0
    double wantedX = 0.0;
    double wantedY = 0.0;
    if (roomY > roomX) {
        wantedY = most;
        wantedX = std::floor(mostLessOne * (roomX / roomY) + 1.0);
    } else {
        wantedX = most;
        wantedY = std::floor(mostLessOne * (roomY / std::max(1.0, roomX)) + 1.0);
    }

    const double stepX = std::max(1.0, roomX / Gaps(wantedX));
    const double stepY = std::max(1.0, roomY / Gaps(wantedY));
    const uint32_t countX = static_cast<uint32_t>(roomX / stepX + 1.0);
    const uint32_t countY = static_cast<uint32_t>(roomY / stepY + 1.0);

    for (uint32_t i = 0; i < countX; ++i)
        for (uint32_t j = 0; j < countY; ++j) {
            const uint32_t x = static_cast<uint32_t>(std::floor(i * stepX));
            const uint32_t y = static_cast<uint32_t>(std::floor(j * stepY));
            const uint32_t right = x + cropWidth - 1U; // wraps for a side of 0 at 0
            const uint32_t bottom = y + cropHeight - 1U;
            if (right < width && bottom < height) {
                Crop crop;
                crop.Left = static_cast<int32_t>(x);
                crop.Right = static_cast<int32_t>(right);
                crop.Top = static_cast<int32_t>(y);
                crop.Bottom = static_cast<int32_t>(bottom);
                result.Crops.push_back(crop);
            }
        }
    return result;
}

GeneratorModel::GeneratorModel(uint32_t width, uint32_t height,
                               const std::vector<Ratio>& aspectRows,
                               const std::vector<Ratio>& scaleRows, uint32_t maxPerSide)
    : Aspects(aspectRows), Scales(scaleRows), imageWidth(width), imageHeight(height),
      maxCropRectsPerSide(maxPerSide),
      tolerance(0.001 / static_cast<double>(std::max(width, height)))
{
}

bool GeneratorModel::SameRatio(double a, double b) const
{
    return std::fabs(a - b) < tolerance;
}

void GeneratorModel::SetAspectRatioEnabled(double value, bool enabled)
{
    for (Ratio& row : Aspects)
        if (SameRatio(row.Value, value)) {
            row.Enabled = enabled;
            return;
        }
    Aspects.push_back(Ratio{value, enabled});
}

void GeneratorModel::SetCropRectScaleRatioEnabled(double value, bool enabled)
{
    for (Ratio& row : Scales)
        if (SameRatio(row.Value, value)) {
            row.Enabled = enabled;
            return;
        }
    Scales.push_back(Ratio{value, enabled});
}

CropCell GeneratorModel::GenerateCell(uint32_t aspectIndex, uint32_t scaleIndex)
{
    CropRow& row = Grid.at(aspectIndex);
    if (scaleIndex == row.size())
        row.push_back(CropCell());
    CropCell& cell = row.at(scaleIndex);
    if (cell.empty()) {
        const CellResult result =
            EnumerateCell(imageWidth, imageHeight, Aspects.at(aspectIndex).Value,
                          Scales.at(scaleIndex).Value, maxCropRectsPerSide);
        if (result.Error)
            throw static_cast<const char*>("RandomCropGenerator: error\n");
        cell = result.Crops;
    }
    return cell;
}

CropRow GeneratorModel::GenerateAspectRow(uint32_t aspectIndex)
{
    if (aspectIndex == Grid.size())
        Grid.push_back(CropRow());
    for (uint32_t s = 0; s < Scales.size(); ++s)
        GenerateCell(aspectIndex, s);
    return Grid.at(aspectIndex);
}

CropGrid GeneratorModel::GenerateAll()
{
    for (uint32_t a = 0; a < Aspects.size(); ++a)
        GenerateAspectRow(a);
    return Grid;
}

// The row of `ratio`, added if there is none. The scan creates grid rows as it passes them, and
// none beyond the row where it stops.
uint32_t GeneratorModel::FindAspect(double ratio)
{
    for (uint32_t i = 0; i < Aspects.size(); ++i) {
        if (i == Grid.size())
            Grid.push_back(CropRow());
        if (SameRatio(Aspects[i].Value, ratio))
            return i;
    }
    Aspects.push_back(Ratio{ratio, true});
    return static_cast<uint32_t>(Aspects.size() - 1);
}

CropRow GeneratorModel::GenerateForAspectRatio(double ratio, uint32_t& aspectIndex)
{
    aspectIndex = FindAspect(ratio);
    return GenerateAspectRow(aspectIndex);
}

CropCell GeneratorModel::GenerateForCropSize(double width, double height, uint32_t& aspectIndex,
                                             uint32_t& scaleIndex)
{
    const double fullWidth = imageWidth;
    const double fullHeight = imageHeight;
    const double ratio = width / height;
    const double scale = fullWidth / fullHeight < ratio ? width / fullWidth : height / fullHeight;

    aspectIndex = FindAspect(ratio);
    if (aspectIndex == Grid.size())
        Grid.push_back(CropRow());

    CropRow& row = Grid.at(aspectIndex);
    scaleIndex = static_cast<uint32_t>(Scales.size());
    for (uint32_t i = 0; i < Scales.size(); ++i) {
        if (i == row.size())
            row.push_back(CropCell());
        if (SameRatio(Scales[i].Value, scale)) {
            scaleIndex = i;
            break;
        }
    }
    if (scaleIndex == Scales.size()) {
        Scales.push_back(Ratio{scale, true});
        row.push_back(CropCell());
    }
    return GenerateCell(aspectIndex, scaleIndex);
}

CropCell GeneratorModel::GetEnabledCropRects(uint32_t aspectIndex) const
{
    CropCell flat;
    for (const CropRow& row : GetEnabledGrid(aspectIndex))
        for (const CropCell& cell : row)
            flat.insert(flat.end(), cell.begin(), cell.end());
    return flat;
}

CropGrid GeneratorModel::GetEnabledGrid(uint32_t aspectIndex) const
{
    CropGrid enabled;
    for (uint32_t a = 0; a < Grid.size(); ++a) {
        const bool wanted = aspectIndex == kNoIndex || aspectIndex == a;
        if (!wanted || !Aspects[a].Enabled)
            continue;
        CropRow row;
        for (size_t s = 0; s < Grid[a].size(); ++s)
            if (Scales[s].Enabled)
                row.push_back(Grid[a][s]);
        enabled.push_back(row);
    }
    if (aspectIndex != kNoIndex)
        (void)Grid.at(aspectIndex);
    return enabled;
}

} // namespace slowOracle
