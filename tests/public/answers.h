// What a host gets for one picture from a fixed series of requests. Tests use it to check that two
// runs give the same bits.
#ifndef VISTATRIM_TESTS_PUBLIC_ANSWERS_H
#define VISTATRIM_TESTS_PUBLIC_ANSWERS_H

#include <cstdint>
#include <cstring>
#include <vector>

#include "vistaTrim/vistaTrim.h"

namespace vistaTrim {

struct Answers {
    std::vector<CInt32CropRect> All;  // every candidate of the default tables
    std::vector<CInt32CropRect> Best; // the best by all measures
    std::vector<CInt32CropRect> Ratio;
    std::vector<CInt32CropRect> Size;
    CInt32CropRect Own; // a rectangle of the host's own
};

inline std::vector<CInt32CropRect> TakeRecords(ICropRects* list)
{
    const std::vector<CInt32CropRect> records(list->Data(), list->Data() + list->Count());
    list->Release();
    return records;
}

inline std::vector<CInt32CropRect> AllOf(IVistaTrim* driver, const SuggestionParameters& request)
{
    ICropRects* list = nullptr;
    ComputeCropSuggestions(driver, &list, &request);
    return TakeRecords(list);
}

inline std::vector<CInt32CropRect> BestOf(IVistaTrim* driver, int32_t n,
                                          const SuggestionParameters& request)
{
    ICropRects* list = nullptr;
    GetNTopCropSuggestions(driver, n, &list, &request, 0,
                           WeightDistribution(0.3, 0.2, 0.2, 0.15, 0.15));
    return TakeRecords(list);
}

inline Answers AnswersOf(IVistaTrim* driver, int32_t width, int32_t height)
{
    Answers answers;
    answers.All = AllOf(driver, SuggestionParameters());
    answers.Best = BestOf(driver, 25, SuggestionParameters());
    answers.Ratio = BestOf(driver, 5, SuggestionParameters(1.25, false));
    answers.Size = AllOf(driver, SuggestionParameters(width / 2.0, height / 2.0, false));
    answers.Own = CInt32CropRect(width / 5, width - 2, height / 7, height - 1);
    EvaluateScores(driver, &answers.Own);
    return answers;
}

// Bit for bit: NaN equals itself, and the two zeros differ.
inline bool SameBits(double a, double b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

inline bool SameBits(const CInt32CropRect& a, const CInt32CropRect& b)
{
    return a.Left == b.Left && a.Right == b.Right && a.Top == b.Top && a.Bottom == b.Bottom &&
           a.CoversContent == b.CoversContent && a.Score.Scored == b.Score.Scored &&
           SameBits(a.Score.CompositionScore, b.Score.CompositionScore) &&
           SameBits(a.Score.CoverageScore, b.Score.CoverageScore) &&
           SameBits(a.Score.BorderScore, b.Score.BorderScore) &&
           SameBits(a.Score.PeakScore, b.Score.PeakScore) &&
           SameBits(a.Score.CentrePeakScore, b.Score.CentrePeakScore) &&
           SameBits(a.Score.RoiScore, b.Score.RoiScore) &&
           SameBits(a.Score.MergedScore, b.Score.MergedScore);
}

inline bool SameBits(const std::vector<CInt32CropRect>& a, const std::vector<CInt32CropRect>& b)
{
    if (a.size() != b.size())
        return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (!SameBits(a[i], b[i]))
            return false;
    return true;
}

inline bool SameBits(const Answers& a, const Answers& b)
{
    return SameBits(a.All, b.All) && SameBits(a.Best, b.Best) && SameBits(a.Ratio, b.Ratio) &&
           SameBits(a.Size, b.Size) && SameBits(a.Own, b.Own);
}

} // namespace vistaTrim

#endif
