#include <cmath>
#include <limits>

#include "numeric/image_kernels.h"
#include "numeric/kernel_test_support.h"
#include "numeric/raw_kernels.h"

namespace vistaTrim {
namespace {

class PointwiseKernels : public KernelTest {
protected:
    static void Fill(CFloatMatrix& map, const GuardedPlane& plane)
    {
        map.Resize(static_cast<uint32_t>(plane.Rows), static_cast<uint32_t>(plane.Cols));
        std::copy(plane.Data(), plane.Data() + plane.Cols * plane.Rows, map.Data);
    }
};

TEST_F(PointwiseKernels, ThresholdKeepsValuesEqualToTheLevel)
{
    const float level = 0.1f;
    CFloatMatrix map;
    map.Resize(1, 5);
    map.Data[0] = std::nextafter(level, 0.0f);
    map.Data[1] = level;
    map.Data[2] = std::nextafter(level, 1.0f);
    map.Data[3] = -1.0f;
    map.Data[4] = std::numeric_limits<float>::quiet_NaN();

    ThresholdBelow(map, level, -2.0f);

    EXPECT_EQ(map.Data[0], -2.0f);
    EXPECT_EQ(map.Data[1], level);
    EXPECT_EQ(map.Data[2], std::nextafter(level, 1.0f));
    EXPECT_EQ(map.Data[3], -2.0f);
    EXPECT_EQ(map.Data[4], -2.0f);
}

TEST_F(PointwiseKernels, ThresholdAtZeroKeepsNonNegativeValues)
{
    const GuardedPlane plane = GuardedPlane::Fractions(33, 7, 1);
    CFloatMatrix map;
    Fill(map, plane);
    map.Data[3] = 0.0f;
    const std::vector<float> before(map.Data, map.Data + map.Count);

    ThresholdBelow(map, 0.0f, 5.0f);

    EXPECT_EQ(std::vector<float>(map.Data, map.Data + map.Count), before);
}

TEST_F(PointwiseKernels, ThresholdMatchesASlowLoopInEveryVariantAndStaysInsideThePlane)
{
    const VariantScope scope;
    for (IsaVariant variant : AvailableVariants())
        for (const PlaneSize& size : AwkwardSizes()) {
            SCOPED_TRACE(testing::Message()
                         << "variant " << variant << ", " << size.Cols << " x " << size.Rows);
            SelectIsaVariant(variant);
            const GuardedPlane before = GuardedPlane::WholeNumbers(size.Cols, size.Rows, 2);
            GuardedPlane plane = before;

            ASSERT_EQ(ThresholdKernel(plane.Data(), size.Cols, size.Rows, 128.0f, 0.5f), 0);

            const GuardedPlane expected =
                GuardedPlane::FromFunction(size.Cols, size.Rows, [&](int32_t x, int32_t y) {
                    return before.At(x, y) < 128.0f ? 0.5f : before.At(x, y);
                });
            ASSERT_EQ(plane.Bits(), expected.Bits());
            ASSERT_TRUE(plane.GuardsIntact());
        }
}

TEST_F(PointwiseKernels, ThresholdOfAnEmptyMapIsSilent)
{
    CFloatMatrix map;
    ThresholdBelow(map, 1.0f, 0.0f);
    EXPECT_EQ(TakeErrors(), "");

    float pixel = 1.0f;
    EXPECT_EQ(ThresholdKernel(nullptr, 1, 1, 2.0f, 0.0f), KernelNullPointer);
    EXPECT_EQ(ThresholdKernel(&pixel, 0, 1, 2.0f, 0.0f), KernelBadSize);
    EXPECT_EQ(ThresholdKernel(&pixel, 1, 0, 2.0f, 0.0f), KernelBadSize);
    EXPECT_EQ(ThresholdKernel(&pixel, -1, -1, 2.0f, 0.0f), KernelBadSize);
    EXPECT_EQ(pixel, 1.0f);
}

TEST_F(PointwiseKernels, ScaleColumnsMultipliesOnlyTheStrip)
{
    const VariantScope scope;
    for (IsaVariant variant : AvailableVariants())
        for (const PlaneSize& size : AwkwardSizes())
            for (int32_t firstCol : {0, size.Cols / 3, size.Cols - 1}) {
                const int32_t width = std::max((size.Cols - firstCol) / 2, 1);
                SCOPED_TRACE(testing::Message()
                             << "variant " << variant << ", " << size.Cols << " x " << size.Rows
                             << ", " << width << " columns from " << firstCol);
                SelectIsaVariant(variant);
                const GuardedPlane before = GuardedPlane::Fractions(size.Cols, size.Rows, 3);
                CFloatMatrix map;
                Fill(map, before);

                ScaleColumns(map, firstCol, width, 0.3f);

                for (int32_t y = 0; y < size.Rows; ++y)
                    for (int32_t x = 0; x < size.Cols; ++x) {
                        const bool inside = x >= firstCol && x < firstCol + width;
                        const float expected = inside ? before.At(x, y) * 0.3f : before.At(x, y);
                        ASSERT_EQ(map.Data[y * size.Cols + x], expected) << x << ", " << y;
                    }
            }
}

TEST_F(PointwiseKernels, ScaleColumnsIgnoresAnEmptyStrip)
{
    const GuardedPlane before = GuardedPlane::Fractions(3, 4, 4);
    CFloatMatrix map;
    Fill(map, before);
    ScaleColumns(map, 1, 0, 0.0f);
    ScaleColumns(map, 1, -1, 0.0f);
    EXPECT_EQ(std::vector<float>(map.Data, map.Data + map.Count), before.Pixels());

    CFloatMatrix empty;
    ScaleColumns(empty, 0, 1, 0.0f);
    CFloatMatrix noRows;
    noRows.Resize(0, 4);
    ScaleColumns(noRows, 0, 4, 0.0f);
    EXPECT_EQ(TakeErrors(), "");

    float pixel = 1.0f;
    EXPECT_EQ(ScaleKernel(&pixel, 1, 0, 1, 2.0f), KernelBadSize);
    EXPECT_EQ(ScaleKernel(&pixel, 1, 1, 0, 2.0f), KernelBadSize);
    EXPECT_EQ(ScaleKernel(nullptr, 1, 1, 1, 2.0f), KernelNullPointer);
    EXPECT_EQ(pixel, 1.0f);
}

} // namespace
} // namespace vistaTrim
