// Converts the library's public records to the oracles' own, and compares oracle records.
#ifndef VISTATRIM_TESTS_ORACLE_RECORD_BRIDGE_H
#define VISTATRIM_TESTS_ORACLE_RECORD_BRIDGE_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "oracle/slow_records.h"
#include "vistaTrim/records.h"

namespace slowOracle {

inline Crop FromRecord(const vistaTrim::CInt32CropRect& record)
{
    Crop crop;
    crop.Left = record.Left;
    crop.Right = record.Right;
    crop.Top = record.Top;
    crop.Bottom = record.Bottom;
    crop.CoversContent = record.CoversContent;
    crop.Scored = record.Score.Scored;
    crop.CompositionScore = record.Score.CompositionScore;
    crop.CoverageScore = record.Score.CoverageScore;
    crop.BorderScore = record.Score.BorderScore;
    crop.PeakScore = record.Score.PeakScore;
    crop.CentrePeakScore = record.Score.CentrePeakScore;
    crop.RoiScore = record.Score.RoiScore;
    crop.MergedScore = record.Score.MergedScore;
    return crop;
}

inline CropCell FromRecords(const vistaTrim::CInt32CropRect* records, size_t count)
{
    CropCell crops;
    for (size_t i = 0; i < count; ++i)
        crops.push_back(FromRecord(records[i]));
    return crops;
}

inline CropGrid
FromRecords(const std::vector<std::vector<std::vector<vistaTrim::CInt32CropRect>>>& grid)
{
    CropGrid crops;
    for (const std::vector<std::vector<vistaTrim::CInt32CropRect>>& row : grid) {
        crops.emplace_back();
        for (const std::vector<vistaTrim::CInt32CropRect>& cell : row)
            crops.back().push_back(FromRecords(cell.data(), cell.size()));
    }
    return crops;
}

inline Roi FromRecord(const vistaTrim::CRectOfInterest& record)
{
    Roi rect;
    rect.Left = record.Left;
    rect.Right = record.Right;
    rect.Top = record.Top;
    rect.Bottom = record.Bottom;
    rect.Kind = record.Kind;
    rect.Enabled = record.Enabled;
    return rect;
}

inline std::vector<Roi> FromRecords(const std::vector<vistaTrim::CRectOfInterest>& records)
{
    std::vector<Roi> rects;
    for (const vistaTrim::CRectOfInterest& record : records)
        rects.push_back(FromRecord(record));
    return rects;
}

inline std::vector<Ratio> FromRecords(const vistaTrim::DoubleInfo* records, size_t count)
{
    std::vector<Ratio> ratios;
    for (size_t i = 0; i < count; ++i)
        ratios.push_back({records[i].Value, records[i].Enabled});
    return ratios;
}

inline Weights FromRecord(const vistaTrim::WeightDistribution& record)
{
    return {record.Weight1, record.Weight2, record.Weight3, record.Weight4, record.Weight5};
}

inline bool SameSides(const Crop& a, const Crop& b)
{
    return a.Left == b.Left && a.Right == b.Right && a.Top == b.Top && a.Bottom == b.Bottom;
}

// Equal in every field; two NaNs count as equal.
inline bool SameCrop(const Crop& a, const Crop& b)
{
    const auto same = [](double x, double y) { return x == y || (x != x && y != y); };
    return SameSides(a, b) && a.CoversContent == b.CoversContent && a.Scored == b.Scored &&
           same(a.CompositionScore, b.CompositionScore) && same(a.CoverageScore, b.CoverageScore) &&
           same(a.BorderScore, b.BorderScore) && same(a.PeakScore, b.PeakScore) &&
           same(a.CentrePeakScore, b.CentrePeakScore) && same(a.RoiScore, b.RoiScore) &&
           same(a.MergedScore, b.MergedScore);
}

} // namespace slowOracle

#endif
