#include <algorithm>
#include <limits>

#include "numeric/image_kernels.h"
#include "numeric/kernel_test_support.h"
#include "numeric/raw_kernels.h"

namespace vistaTrim {
namespace {

const char kDeniedLines[] = "Dilation buffer allocation: failed to allocate buffer.\n"
                            "Dilation b: ippStsNullPtrErr: Null pointer error.\n";

// Writes to a separate plane, so it reads only original pixels.
GuardedPlane SlowBox(const GuardedPlane& src, int32_t before, int32_t after, bool largest)
{
    return GuardedPlane::FromFunction(src.Cols, src.Rows, [&](int32_t x, int32_t y) {
        float extreme = src.At(x, y);
        for (int32_t dy = -before; dy <= after; ++dy)
            for (int32_t dx = -before; dx <= after; ++dx) {
                const float pixel = src.Replicated(x + dx, y + dy);
                extreme = largest ? std::max(extreme, pixel) : std::min(extreme, pixel);
            }
        return extreme;
    });
}

// The kernel with its own scratch, on a plane of `stride` floats per row.
int32_t RunKernel(float* data, int32_t stride, int32_t cols, int32_t rows, int32_t maskSize,
                  int32_t anchor, bool largest)
{
    int32_t size = 0;
    const int32_t status = BoxBufferSize(cols, rows, maskSize, anchor, &size);
    if (status != KernelSuccess)
        return status;
    // Exactly the requested size, between guards.
    GuardedPlane scratch(size / 4, 1);
    const int32_t result =
        BoxKernel(data, int64_t{4} * stride, cols, rows, maskSize, anchor, largest, scratch.Data());
    EXPECT_TRUE(scratch.GuardsIntact());
    return result;
}

class BoxKernels : public KernelTest {
protected:
    static void Fill(CFloatMatrix& map, const GuardedPlane& plane)
    {
        map.Resize(static_cast<uint32_t>(plane.Rows), static_cast<uint32_t>(plane.Cols));
        std::copy(plane.Data(), plane.Data() + plane.Cols * plane.Rows, map.Data);
    }
    static std::vector<float> Pixels(const CFloatMatrix& map)
    {
        return {map.Data, map.Data + map.Count};
    }
};

TEST_F(BoxKernels, InPlaceEqualsASeparateDestinationInEveryVariant)
{
    const VariantScope scope;
    for (const PlaneSize& size : AwkwardSizes()) {
        const GuardedPlane src = GuardedPlane::Fractions(size.Cols, size.Rows, 41);
        for (int32_t maskSize : {1, 3, 5, 7, 9, 21}) {
            const int32_t reach = (maskSize - 1) / 2;
            if (size.Cols == 640 && maskSize > 7)
                continue; // the full scan would take most of the run
            for (bool largest : {false, true}) {
                const GuardedPlane expected = SlowBox(src, reach, reach, largest);
                for (IsaVariant variant : AvailableVariants()) {
                    SCOPED_TRACE(testing::Message()
                                 << "variant " << variant << ", " << size.Cols << " x " << size.Rows
                                 << ", box " << maskSize << (largest ? " max" : " min"));
                    SelectIsaVariant(variant);
                    GuardedPlane plane = src;
                    ASSERT_EQ(RunKernel(plane.Data(), size.Cols, size.Cols, size.Rows, maskSize,
                                        reach, largest),
                              KernelSuccess);
                    ASSERT_EQ(plane.Bits(), expected.Bits());
                    ASSERT_TRUE(plane.GuardsIntact());
                }
            }
        }
    }
}

TEST_F(BoxKernels, OperationsCoverTheWholeMapWithACentredBox)
{
    const GuardedPlane src = GuardedPlane::Fractions(33, 17, 42);
    for (int32_t maskSize : {3, 5, 7, 15}) {
        const int32_t reach = (maskSize - 1) / 2;
        CFloatMatrix eroded;
        Fill(eroded, src);
        ErodeBox(eroded, maskSize);
        EXPECT_EQ(Pixels(eroded), SlowBox(src, reach, reach, false).Pixels());
        CFloatMatrix dilated;
        Fill(dilated, src);
        DilateBox(dilated, maskSize);
        EXPECT_EQ(Pixels(dilated), SlowBox(src, reach, reach, true).Pixels());
    }
}

TEST_F(BoxKernels, BoxFarLargerThanTheMapGivesOneExtreme)
{
    const GuardedPlane src = GuardedPlane::Fractions(9, 4, 43);
    const std::vector<float> pixels = src.Pixels();
    for (int32_t maskSize : {101, 2147483647}) {
        CFloatMatrix map;
        Fill(map, src);
        DilateBox(map, maskSize);
        const float largest = *std::max_element(pixels.begin(), pixels.end());
        EXPECT_EQ(Pixels(map), GuardedPlane(9, 4, largest).Pixels());
    }
}

TEST_F(BoxKernels, ErosionOfFiveRemovesALineOfThree)
{
    const GuardedPlane src = GuardedPlane::FromFunction(
        20, 20, [](int32_t x, int32_t) { return x >= 8 && x <= 10 ? 1.0f : 0.0f; });
    CFloatMatrix map;
    Fill(map, src);
    ErodeBox(map, 5);
    EXPECT_EQ(Pixels(map), GuardedPlane(20, 20, 0.0f).Pixels());
}

TEST_F(BoxKernels, DilationOfSevenMakesASquareClippedAtTheBorder)
{
    for (const PlaneSize& at : {PlaneSize{10, 9}, {0, 0}, {19, 2}, {1, 18}}) {
        CFloatMatrix map;
        map.ResizeZeroed(20, 20);
        map.Data[at.Rows * 20 + at.Cols] = 0.5f;
        DilateBox(map, 7);
        for (int32_t y = 0; y < 20; ++y)
            for (int32_t x = 0; x < 20; ++x) {
                const bool inside = std::abs(x - at.Cols) <= 3 && std::abs(y - at.Rows) <= 3;
                ASSERT_EQ(map.Data[y * 20 + x], inside ? 0.5f : 0.0f) << x << ", " << y;
            }
    }
}

TEST_F(BoxKernels, AnchorMovesTheBox)
{
    const GuardedPlane src = GuardedPlane::Fractions(17, 12, 44);
    for (int32_t anchor = 0; anchor < 6; ++anchor) {
        GuardedPlane plane = src;
        ASSERT_EQ(RunKernel(plane.Data(), 17, 17, 12, 6, anchor, true), KernelSuccess);
        EXPECT_EQ(plane.Bits(), SlowBox(src, anchor, 5 - anchor, true).Bits()) << anchor;
    }
}

TEST_F(BoxKernels, RowPaddingIsUntouched)
{
    const int32_t stride = 21;
    const GuardedPlane src = GuardedPlane::Fractions(stride, 9, 45);
    const GuardedPlane inner =
        GuardedPlane::FromFunction(17, 9, [&](int32_t x, int32_t y) { return src.At(x, y); });
    const GuardedPlane expected = SlowBox(inner, 2, 2, false);
    GuardedPlane plane = src;
    ASSERT_EQ(RunKernel(plane.Data(), stride, 17, 9, 5, 2, false), KernelSuccess);
    for (int32_t y = 0; y < 9; ++y)
        for (int32_t x = 0; x < stride; ++x)
            ASSERT_EQ(plane.At(x, y), x < 17 ? expected.At(x, y) : src.At(x, y));
}

TEST_F(BoxKernels, ErosionAndDilationReportARejectedMaskInTheSameThreeLines)
{
    const GuardedPlane src = GuardedPlane::Fractions(6, 5, 46);
    const std::string lines =
        std::string("Dilation buffer allocation: ippStsMaskSizeErr: Invalid mask size.\n") +
        kDeniedLines;
    CFloatMatrix map;
    Fill(map, src);
    for (int32_t maskSize : {0, -1, std::numeric_limits<int32_t>::min()}) {
        ErodeBox(map, maskSize);
        EXPECT_EQ(TakeErrors(), lines);
        DilateBox(map, maskSize);
        EXPECT_EQ(TakeErrors(), lines);
    }
    EXPECT_EQ(Pixels(map), src.Pixels());
}

TEST_F(BoxKernels, ErosionAndDilationReportAnEmptyMapInTheSameThreeLines)
{
    const std::string lines =
        std::string("Dilation buffer allocation: ippStsSizeErr: Incorrect value for data size.\n") +
        kDeniedLines;
    CFloatMatrix empty;
    ErodeBox(empty, 5);
    EXPECT_EQ(TakeErrors(), lines);
    DilateBox(empty, 7);
    EXPECT_EQ(TakeErrors(), lines);
    // The size is checked before the mask.
    DilateBox(empty, 0);
    EXPECT_EQ(TakeErrors(), lines);
}

TEST_F(BoxKernels, ErosionAndDilationReportFailedScratchInTheSameTwoLines)
{
    const GuardedPlane src = GuardedPlane::Fractions(6, 5, 47);
    CFloatMatrix map;
    Fill(map, src);
    {
        AllocationFaults faults({0});
        ErodeBox(map, 5);
        EXPECT_EQ(TakeErrors(), kDeniedLines);
        EXPECT_EQ(faults.Live, 0);
    }
    {
        AllocationFaults faults({0});
        DilateBox(map, 7);
        EXPECT_EQ(TakeErrors(), kDeniedLines);
    }
    EXPECT_EQ(Pixels(map), src.Pixels());
    AllocationFaults tally({});
    DilateBox(map, 7);
    EXPECT_EQ(tally.Requests, 1);
    EXPECT_EQ(tally.Live, 0);
}

TEST_F(BoxKernels, KernelChecksInOrder)
{
    const GuardedPlane before = GuardedPlane::Fractions(6, 5, 48);
    GuardedPlane plane = before;
    float* data = plane.Data();
    float scratch[4096];
    EXPECT_EQ(BoxKernel(nullptr, 24, 0, 5, 0, 9, true, scratch), KernelNullPointer);
    EXPECT_EQ(BoxKernel(data, 24, 0, 5, 0, 9, true, nullptr), KernelNullPointer);
    EXPECT_EQ(BoxKernel(data, 24, 0, 5, 0, 9, true, scratch), KernelBadSize);
    EXPECT_EQ(BoxKernel(data, 24, 6, 0, 0, 9, true, scratch), KernelBadSize);
    EXPECT_EQ(BoxKernel(data, 23, 6, 5, 0, 9, true, scratch), KernelBadMaskSize);
    EXPECT_EQ(BoxKernel(data, 23, 6, 5, 5, 5, true, scratch), KernelBadAnchor);
    EXPECT_EQ(BoxKernel(data, 23, 6, 5, 5, -1, true, scratch), KernelBadAnchor);
    EXPECT_EQ(BoxKernel(data, 23, 6, 5, 5, 2, true, scratch), KernelBadStep);
    EXPECT_EQ(BoxKernel(data, 25, 6, 5, 5, 2, true, scratch), KernelUnevenStep);
    EXPECT_EQ(plane.Bits(), before.Bits());
}

} // namespace
} // namespace vistaTrim
