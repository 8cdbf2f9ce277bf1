// A picture and its driver as a host holds them, destroyed in the right order.
#ifndef VISTATRIM_TESTS_PUBLIC_HOST_OBJECTS_H
#define VISTATRIM_TESTS_PUBLIC_HOST_OBJECTS_H

#include <cstdint>
#include <vector>

#include "vistaTrim/vistaTrim.h"

namespace vistaTrim {

// A picture with some content everywhere and more of it right of the middle.
inline std::vector<uint8_t> TestPixels(uint32_t width, uint32_t height)
{
    std::vector<uint8_t> pixels(size_t{3} * width * height);
    for (uint32_t y = 0; y < height; ++y)
        for (uint32_t x = 0; x < width; ++x)
            for (uint32_t c = 0; c < 3; ++c) {
                const bool inside = x > width / 2 && x < 3 * width / 4 && y > height / 4;
                const uint32_t grain = (x * 7 + y * 13 + c * 29 + x * y) % 23;
                pixels[(size_t{y} * width + x) * 3 + c] =
                    static_cast<uint8_t>((inside ? 180 - 40 * c : 60) + grain);
            }
    return pixels;
}

inline IImage* MakeTestImage(uint32_t width, uint32_t height)
{
    const int32_t offsets[4] = {0, 1, 2, 3};
    return CreateImageObj(height, width, 3, offsets, TestPixels(width, height).data());
}

// The default tables, set by the host so that none of them leaks.
inline VistaTrimParameters DefaultParameters()
{
    VistaTrimParameters parameters;
    parameters.SetDefaults();
    return parameters;
}

class HostObjects {
public:
    HostObjects(uint32_t width, uint32_t height, const VistaTrimParameters& parameters)
        : Image(MakeTestImage(width, height)), Driver(CreateVistaTrimObj(Image, &parameters))
    {
    }
    HostObjects(uint32_t width, uint32_t height) : HostObjects(width, height, DefaultParameters())
    {
    }
    ~HostObjects()
    {
        if (Driver != nullptr)
            DestroyVistaTrimObj(Driver);
        DestroyImageObj(Image);
    }
    HostObjects(const HostObjects&) = delete;
    HostObjects& operator=(const HostObjects&) = delete;

    // The records of a request; the list itself is released.
    std::vector<CInt32CropRect> Suggestions(const SuggestionParameters& request)
    {
        ICropRects* list = nullptr;
        ComputeCropSuggestions(Driver, &list, &request);
        const SmartPtr<CCropRects> owner(static_cast<CCropRects*>(list), false);
        return std::vector<CInt32CropRect>(list->Data(), list->Data() + list->Count());
    }

    std::vector<CInt32CropRect> BestCrops(int32_t n, const SuggestionParameters& request)
    {
        ICropRects* list = nullptr;
        GetNTopCropSuggestions(Driver, n, &list, &request, 0, WeightDistribution(1, 1, 1));
        const SmartPtr<CCropRects> owner(static_cast<CCropRects*>(list), false);
        return std::vector<CInt32CropRect>(list->Data(), list->Data() + list->Count());
    }

    uint32_t NumAspectRows()
    {
        DoubleInfo* table = nullptr;
        uint32_t count = 0;
        Driver->GetAspectRatios(&table, &count);
        return count;
    }

    uint32_t NumScaleRows()
    {
        DoubleInfo* table = nullptr;
        uint32_t count = 0;
        Driver->GetCropRectScaleRatios(&table, &count);
        return count;
    }

    IImage* Image;
    IVistaTrim* Driver;
};

inline bool SameRecord(const CInt32CropRect& a, const CInt32CropRect& b)
{
    return a.Left == b.Left && a.Right == b.Right && a.Top == b.Top && a.Bottom == b.Bottom &&
           a.CoversContent == b.CoversContent && a.Score.Scored == b.Score.Scored &&
           a.Score.CompositionScore == b.Score.CompositionScore &&
           a.Score.CoverageScore == b.Score.CoverageScore &&
           a.Score.BorderScore == b.Score.BorderScore && a.Score.PeakScore == b.Score.PeakScore &&
           a.Score.CentrePeakScore == b.Score.CentrePeakScore &&
           a.Score.RoiScore == b.Score.RoiScore && a.Score.MergedScore == b.Score.MergedScore;
}

inline bool SameRecords(const std::vector<CInt32CropRect>& a, const std::vector<CInt32CropRect>& b)
{
    if (a.size() != b.size())
        return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (!SameRecord(a[i], b[i]))
            return false;
    return true;
}

} // namespace vistaTrim

#endif
