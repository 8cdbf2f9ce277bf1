#include <cmath>

#include "numeric/image_kernels.h"
#include "numeric/kernel_test_support.h"
#include "numeric/raw_kernels.h"

namespace vistaTrim {
namespace {

const char kNullLine[] = "ippStsNullPtrErr: Null pointer error.\n";
const char kSizeLine[] = "ippStsSizeErr: Incorrect value for data size.\n";
const char kScratchLine[] = "compGX: failed to allocate buffer\n";

double SlowRowDifference(const GuardedPlane& p, int32_t x, int32_t y)
{
    double sum = 0.0;
    for (int32_t d = -1; d <= 1; ++d)
        sum += (d == 0 ? 2.0 : 1.0) *
               (static_cast<double>(p.Replicated(x + d, y + 1)) - p.Replicated(x + d, y - 1));
    return sum;
}

double SlowColumnDifference(const GuardedPlane& p, int32_t x, int32_t y)
{
    double sum = 0.0;
    for (int32_t d = -1; d <= 1; ++d)
        sum += (d == 0 ? 2.0 : 1.0) *
               (static_cast<double>(p.Replicated(x - 1, y + d)) - p.Replicated(x + 1, y + d));
    return sum;
}

double SlowStrength(const GuardedPlane& p, int32_t x, int32_t y)
{
    return std::fabs(SlowRowDifference(p, x, y)) + std::fabs(SlowColumnDifference(p, x, y));
}

using GradientOperation = void (*)(const float* src, float* dst, int32_t cols, int32_t rows);

struct NamedOperation {
    const char* Name;
    GradientOperation Run;
    double (*Slow)(const GuardedPlane& p, int32_t x, int32_t y);
};

const NamedOperation kOperations[] = {
    {"SobelRowDifference", SobelRowDifference, SlowRowDifference},
    {"SobelColumnDifference", SobelColumnDifference, SlowColumnDifference},
    {"GradientStrength", GradientStrength, SlowStrength},
    {"GradientStrengthStepwise", GradientStrengthStepwise, SlowStrength},
};

class GradientKernels : public KernelTest {};

// Integers keep every sum exact, so the check needs no tolerance.
TEST_F(GradientKernels, AreExactOnIntegersInEveryVariant)
{
    const VariantScope scope;
    for (const PlaneSize& size : AwkwardSizes()) {
        const GuardedPlane src = GuardedPlane::WholeNumbers(size.Cols, size.Rows, 11);
        for (const NamedOperation& operation : kOperations) {
            const GuardedPlane expected =
                GuardedPlane::FromFunction(size.Cols, size.Rows, [&](int32_t x, int32_t y) {
                    return static_cast<float>(operation.Slow(src, x, y));
                });
            for (IsaVariant variant : AvailableVariants()) {
                SCOPED_TRACE(testing::Message() << operation.Name << ", variant " << variant << ", "
                                                << size.Cols << " x " << size.Rows);
                SelectIsaVariant(variant);
                GuardedPlane dst(size.Cols, size.Rows, -7.0f);
                operation.Run(src.Data(), dst.Data(), size.Cols, size.Rows);
                ASSERT_EQ(dst.Pixels(), expected.Pixels());
                ASSERT_TRUE(dst.GuardsIntact());
            }
        }
    }
}

// The sums are rounded in the order in which they are written, from left to right and from top to
// bottom; every variant keeps this order.
TEST_F(GradientKernels, RoundInTheWrittenOrderInEveryVariant)
{
    const VariantScope scope;
    for (const PlaneSize& size : AwkwardSizes()) {
        const GuardedPlane p = GuardedPlane::Fractions(size.Cols, size.Rows, 12);
        const auto rowSum = [&](int32_t x, int32_t y) {
            return (p.Replicated(x - 1, y) + 2.0f * p.Replicated(x, y)) + p.Replicated(x + 1, y);
        };
        const auto columnSum = [&](int32_t x, int32_t y) {
            return (p.Replicated(x, y - 1) + 2.0f * p.Replicated(x, y)) + p.Replicated(x, y + 1);
        };
        const GuardedPlane expected =
            GuardedPlane::FromFunction(size.Cols, size.Rows, [&](int32_t x, int32_t y) {
                return std::fabs(rowSum(x, y + 1) - rowSum(x, y - 1)) +
                       std::fabs(columnSum(x - 1, y) - columnSum(x + 1, y));
            });
        for (IsaVariant variant : AvailableVariants())
            for (GradientOperation operation : {GradientStrength, GradientStrengthStepwise}) {
                SCOPED_TRACE(testing::Message()
                             << "variant " << variant << ", " << size.Cols << " x " << size.Rows
                             << (operation == GradientStrength ? ", one pass" : ", stepwise"));
                SelectIsaVariant(variant);
                GuardedPlane dst(size.Cols, size.Rows, -7.0f);
                operation(p.Data(), dst.Data(), size.Cols, size.Rows);
                ASSERT_EQ(dst.Pixels(), expected.Pixels());
            }
    }
}

TEST_F(GradientKernels, AreExactlyZeroOnAConstantPlaneBordersIncluded)
{
    for (const PlaneSize& size : AwkwardSizes())
        for (float value : {0.1f, 1.0f / 3.0f, 77.7f, 255.0f, 1e30f}) {
            const GuardedPlane src(size.Cols, size.Rows, value);
            for (const NamedOperation& operation : kOperations) {
                GuardedPlane dst(size.Cols, size.Rows, -7.0f);
                operation.Run(src.Data(), dst.Data(), size.Cols, size.Rows);
                ASSERT_EQ(dst.Pixels(), GuardedPlane(size.Cols, size.Rows, 0.0f).Pixels())
                    << operation.Name << " of " << value << ", " << size.Cols << " x " << size.Rows;
            }
        }
}

TEST_F(GradientKernels, SignsAreBelowMinusAboveAndLeftMinusRight)
{
    const GuardedPlane src = GuardedPlane::FromFunction(
        5, 5, [](int32_t x, int32_t y) { return static_cast<float>(10 * x + y); });
    GuardedPlane rowsDst(5, 5);
    GuardedPlane columnsDst(5, 5);
    SobelRowDifference(src.Data(), rowsDst.Data(), 5, 5);
    SobelColumnDifference(src.Data(), columnsDst.Data(), 5, 5);
    EXPECT_EQ(rowsDst.At(2, 2), 8.0f);
    EXPECT_EQ(columnsDst.At(2, 2), -80.0f);
    // The plane is replicated outside, which halves the gradient at the border.
    EXPECT_EQ(rowsDst.At(2, 0), 4.0f);
    EXPECT_EQ(columnsDst.At(0, 2), -40.0f);
}

TEST_F(GradientKernels, StrengthIsTheSumOfAbsoluteValues)
{
    GuardedPlane src(3, 3, 0.0f);
    src.Data()[0] = 1.0f;
    GuardedPlane dst(3, 3);
    GradientStrength(src.Data(), dst.Data(), 3, 3);
    EXPECT_EQ(dst.At(1, 1), 2.0f);
}

TEST_F(GradientKernels, ReportNullPlanesAndKeepTheDestination)
{
    GuardedPlane plane(2, 2, 3.0f);
    for (GradientOperation operation : {SobelRowDifference, SobelColumnDifference}) {
        operation(nullptr, plane.Data(), 2, 2);
        EXPECT_EQ(TakeErrors(), kNullLine);
        operation(plane.Data(), nullptr, 2, 2);
        EXPECT_EQ(TakeErrors(), kNullLine);
        // A null pointer is reported before a bad size.
        operation(nullptr, plane.Data(), 0, 2);
        EXPECT_EQ(TakeErrors(), kNullLine);
    }
    // Each of the two differences reports separately.
    GradientStrength(nullptr, plane.Data(), 2, 2);
    EXPECT_EQ(TakeErrors(), std::string(kNullLine) + kNullLine);
    GradientStrength(plane.Data(), nullptr, 2, 2);
    EXPECT_EQ(TakeErrors(), kNullLine);
    EXPECT_EQ(plane.Pixels(), GuardedPlane(2, 2, 3.0f).Pixels());
}

TEST_F(GradientKernels, ReportBadSizesAndKeepTheDestination)
{
    const GuardedPlane src(2, 2, 1.0f);
    GuardedPlane dst(2, 2, 3.0f);
    for (const PlaneSize& size :
         {PlaneSize{0, 2}, {2, 0}, {-1, 2}, {-1000, 2}, {2, -1}, {-1, -1}}) {
        for (GradientOperation operation : {SobelRowDifference, SobelColumnDifference}) {
            operation(src.Data(), dst.Data(), size.Cols, size.Rows);
            EXPECT_EQ(TakeErrors(), kSizeLine);
        }
        // The temporary plane of an empty size is null, which the second difference reports.
        GradientStrength(src.Data(), dst.Data(), size.Cols, size.Rows);
        EXPECT_EQ(TakeErrors(), std::string(kSizeLine) + kNullLine);
    }
    EXPECT_EQ(dst.Pixels(), GuardedPlane(2, 2, 3.0f).Pixels());
}

TEST_F(GradientKernels, ReportFailedScratchWithTheSameMessageAndStillRun)
{
    const GuardedPlane src = GuardedPlane::WholeNumbers(5, 4, 13);
    GuardedPlane dst(5, 4, 3.0f);
    for (GradientOperation operation : {SobelRowDifference, SobelColumnDifference}) {
        AllocationFaults faults({0});
        operation(src.Data(), dst.Data(), 5, 4);
        EXPECT_EQ(TakeErrors(), std::string(kScratchLine) + kNullLine);
        EXPECT_EQ(faults.Live, 0);
    }
    EXPECT_EQ(dst.Pixels(), GuardedPlane(5, 4, 3.0f).Pixels());
}

// Allocations of the stepwise form in order: temporary plane, scratch, scratch.
TEST_F(GradientKernels, StepwiseStrengthReportsTheAllocationThatFails)
{
    const GuardedPlane src = GuardedPlane::WholeNumbers(5, 4, 14);
    const std::vector<float> untouched = GuardedPlane(5, 4, 3.0f).Pixels();
    GuardedPlane rowsOnly(5, 4);
    SobelRowDifference(src.Data(), rowsOnly.Data(), 5, 4);
    for (int32_t i = 0; i < 20; ++i)
        rowsOnly.Data()[i] = std::fabs(rowsOnly.Data()[i]);

    const struct {
        std::set<int> Denied;
        std::string Errors;
        std::vector<float> Result;
    } cases[] = {
        {{0}, kNullLine, rowsOnly.Pixels()},
        {{1}, std::string(kScratchLine) + kNullLine, untouched},
        {{2}, std::string(kScratchLine) + kNullLine, rowsOnly.Pixels()},
        {{0, 1, 2}, std::string(kScratchLine) + kNullLine + kScratchLine + kNullLine, untouched},
    };
    for (const auto& c : cases) {
        GuardedPlane dst(5, 4, 3.0f);
        AllocationFaults faults(c.Denied);
        GradientStrengthStepwise(src.Data(), dst.Data(), 5, 4);
        EXPECT_EQ(TakeErrors(), c.Errors);
        EXPECT_EQ(dst.Pixels(), c.Result);
        EXPECT_EQ(faults.Requests, 3);
        EXPECT_EQ(faults.Live, 0);
    }
}

TEST_F(GradientKernels, StrengthFallsBackToTheStepwiseFormWithoutScratch)
{
    const GuardedPlane src = GuardedPlane::WholeNumbers(9, 4, 15);
    GuardedPlane expected(9, 4);
    GradientStrength(src.Data(), expected.Data(), 9, 4);
    {
        GuardedPlane dst(9, 4, 3.0f);
        AllocationFaults faults({0});
        GradientStrength(src.Data(), dst.Data(), 9, 4);
        EXPECT_EQ(TakeErrors(), "");
        EXPECT_EQ(dst.Pixels(), expected.Pixels());
        EXPECT_EQ(faults.Requests, 4);
        EXPECT_EQ(faults.Live, 0);
    }
    GuardedPlane dst(9, 4, 3.0f);
    AllocationFaults faults({0, 1, 2, 3});
    GradientStrength(src.Data(), dst.Data(), 9, 4);
    EXPECT_EQ(TakeErrors(), std::string(kScratchLine) + kNullLine + kScratchLine + kNullLine);
    EXPECT_EQ(dst.Pixels(), GuardedPlane(9, 4, 3.0f).Pixels());
}

// The planes are added in order in every variant, even if the scratch of the single pass cannot be
// allocated.
TEST_F(GradientKernels, SumOfStrengthsAddsThePlanesInTheirOrder)
{
    const VariantScope scope;
    for (const PlaneSize& size : AwkwardSizes())
        for (const size_t count : {size_t{1}, size_t{3}}) {
            std::vector<GuardedPlane> planes;
            for (uint32_t k = 0; k < count; ++k)
                planes.push_back(GuardedPlane::Fractions(size.Cols, size.Rows, 30 + k));
            CPlaneStack stack;
            stack.WrapPlaneOnly(size.Cols, size.Rows, planes[0].Data());
            stack.Planes.clear();
            for (GuardedPlane& plane : planes)
                stack.Planes.push_back(plane.Data());
            stack.PlaneCount = static_cast<int32_t>(count);
            GuardedPlane expected(size.Cols, size.Rows);
            for (GuardedPlane& plane : planes) {
                GuardedPlane strength(size.Cols, size.Rows);
                GradientStrength(plane.Data(), strength.Data(), size.Cols, size.Rows);
                for (int32_t i = 0; i < stack.ElementCount; ++i)
                    expected.Data()[i] += strength.Data()[i];
            }
            for (const IsaVariant variant : AvailableVariants()) {
                SCOPED_TRACE(testing::Message() << "variant " << variant << ", " << count << " of "
                                                << size.Cols << " x " << size.Rows);
                SelectIsaVariant(variant);
                GuardedPlane sum(size.Cols, size.Rows, 3.0f);
                SumGradientStrengths(stack, sum.Data());
                EXPECT_EQ(sum.Bits(), expected.Bits());
                EXPECT_TRUE(sum.GuardsIntact());

                AllocationFaults faults({0});
                GuardedPlane stepwise(size.Cols, size.Rows, 3.0f);
                SumGradientStrengths(stack, stepwise.Data());
                EXPECT_EQ(stepwise.Bits(), expected.Bits());
                EXPECT_EQ(faults.Live, 0);
            }
        }
}

} // namespace
} // namespace vistaTrim
