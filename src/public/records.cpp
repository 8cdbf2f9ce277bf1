#include "vistaTrim/records.h"

namespace vistaTrim {

CInt32Rect::CInt32Rect() : Left(0), Right(0), Top(0), Bottom(0)
{
}

CInt32Rect::CInt32Rect(int left, int right, int top, int bottom)
    : Left(left), Right(right), Top(top), Bottom(bottom)
{
}

CInt32Rect& CInt32Rect::operator=(const CInt32Rect& other) = default;

namespace {

// last - first + 1 in 32 bits; unsigned, so that extreme coordinates wrap instead of overflowing.
int32_t SideLength(int32_t first, int32_t last)
{
    return static_cast<int32_t>(static_cast<uint32_t>(last) - static_cast<uint32_t>(first) + 1U);
}

} // namespace

int64_t CInt32Rect::Area() const
{
    return static_cast<int64_t>(SideLength(Top, Bottom)) * SideLength(Left, Right);
}

bool CInt32Rect::Empty() const
{
    return Left > Right || Top > Bottom;
}

Score::Score() = default;

Score& Score::operator=(const Score& other) = default;

CInt32CropRect::CInt32CropRect() : Left(0), Right(0), Top(0), Bottom(0), CoversContent(false)
{
}

CInt32CropRect::CInt32CropRect(int left, int right, int top, int bottom)
    : Left(left), Right(right), Top(top), Bottom(bottom), CoversContent(false)
{
}

CInt32CropRect& CInt32CropRect::operator=(const CInt32CropRect& other) = default;

CRectOfInterest::CRectOfInterest() : CRectOfInterest(false)
{
}

CRectOfInterest::CRectOfInterest(bool marked) : CRectOfInterest(0, 0, 0, 0, marked)
{
}

CRectOfInterest::CRectOfInterest(int left, int right, int top, int bottom, bool marked)
    : Left(left), Right(right), Top(top), Bottom(bottom), Marked(marked), Enabled(true),
      Kind(RoiSoftInclude)
{
}

CRectOfInterest::CRectOfInterest(const CInt32Rect& rect, bool marked)
    : CRectOfInterest(rect.Left, rect.Right, rect.Top, rect.Bottom, marked)
{
}

CRectOfInterest& CRectOfInterest::operator=(const CRectOfInterest& other) = default;

DoubleInfo::DoubleInfo() : DoubleInfo(0.0, true)
{
}

DoubleInfo::DoubleInfo(double value) : DoubleInfo(value, true)
{
}

DoubleInfo::DoubleInfo(double value, bool enabled) : Value(value), Enabled(enabled)
{
}

DoubleInfo& DoubleInfo::operator=(const DoubleInfo& other) = default;

WeightDistribution::WeightDistribution(double weight1, double weight2, double weight3)
    : WeightDistribution(weight1, weight2, weight3, 0.0, 0.0)
{
}

WeightDistribution::WeightDistribution(double weight1, double weight2, double weight3,
                                       double weight4, double weight5)
    : Weight1(weight1), Weight2(weight2), Weight3(weight3), Weight4(weight4), Weight5(weight5)
{
}

// The class's assignment is trivial, so the compiler emits no function for it. Hosts with their own
// declarations may call one, so it is defined here under that operator's symbol.
VISTATRIM_API WeightDistribution* AssignWeightDistribution(
    WeightDistribution* target,
    const WeightDistribution* source) __asm__("_ZN9vistaTrim18WeightDistributionaSERKS0_");

WeightDistribution* AssignWeightDistribution(WeightDistribution* target,
                                             const WeightDistribution* source)
{
    *target = *source;
    return target;
}

SuggestionParameters::SuggestionParameters() : SuggestionParameters(false)
{
}

SuggestionParameters::SuggestionParameters(bool detectFaces)
    : CropWidth(0), CropHeight(0), AspectRatio(0), DetectFaces(detectFaces)
{
}

SuggestionParameters::SuggestionParameters(double aspectRatio, bool detectFaces)
    : CropWidth(0), CropHeight(0), AspectRatio(aspectRatio), DetectFaces(detectFaces)
{
}

SuggestionParameters::SuggestionParameters(double cropWidth, double cropHeight, bool detectFaces)
    : CropWidth(cropWidth), CropHeight(cropHeight), AspectRatio(0), DetectFaces(detectFaces)
{
}

SuggestionParameters& SuggestionParameters::operator=(const SuggestionParameters& other) = default;

} // namespace vistaTrim
