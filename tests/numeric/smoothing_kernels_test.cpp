#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <new>

#include "numeric/image_kernels.h"
#include "numeric/kernel_test_support.h"
#include "numeric/raw_kernels.h"

namespace {

// Heap allocations of arrays while watched: which one fails, and how many are live.
bool watchingArrays = false;
int arrayRequests = 0;
int liveArrays = 0;
int deniedArray = -1;

} // namespace

// Only the array forms are replaced: the three planes of BlurInterleavedPixels are arrays.
void* operator new[](std::size_t size)
{
    if (watchingArrays && arrayRequests++ == deniedArray)
        throw std::bad_alloc();
    void* pointer = std::malloc(size ? size : 1);
    if (!pointer)
        throw std::bad_alloc();
    if (watchingArrays)
        ++liveArrays;
    return pointer;
}

void operator delete[](void* pointer) noexcept
{
    if (watchingArrays && pointer)
        --liveArrays;
    std::free(pointer);
}

void operator delete[](void* pointer, std::size_t) noexcept
{
    operator delete[](pointer);
}

namespace vistaTrim {
namespace {

const char kDeniedLines[] = "Gaussian blur buffer allocation failure. \n"
                            "Gaussian blur: ippStsNullPtrErr: Null pointer error.\n";
const char kSizeLine[] =
    "Gaussian blur buffer allocation: ippStsSizeErr: Incorrect value for data size.\n";
const char kMaskLine[] =
    "Gaussian blur buffer allocation: ippStsBadArgErr: Incorrect arg/param of the function.\n";

std::vector<float> TapsOf(int32_t maskSize, float sigma)
{
    std::vector<float> taps(static_cast<size_t>(maskSize));
    GaussianTaps(maskSize, sigma, taps.data());
    return taps;
}

// The definition: float taps, and double for everything after them.
GuardedPlane SlowSmooth(const GuardedPlane& src, int32_t maskSize, float sigma)
{
    const std::vector<float> taps = TapsOf(maskSize, sigma);
    const int32_t reach = maskSize / 2;
    return GuardedPlane::FromFunction(src.Cols, src.Rows, [&](int32_t x, int32_t y) {
        double sum = 0.0;
        for (int32_t j = 0; j < maskSize; ++j) {
            double row = 0.0;
            for (int32_t i = 0; i < maskSize; ++i)
                row += static_cast<double>(taps[static_cast<size_t>(i)]) *
                       src.Replicated(x + i - reach, y + j - reach);
            sum += static_cast<double>(taps[static_cast<size_t>(j)]) * row;
        }
        return static_cast<float>(sum);
    });
}

float PairedSum(const std::vector<float>& taps, const std::function<float(int32_t)>& at)
{
    const int32_t reach = static_cast<int32_t>(taps.size() / 2);
    float sum = taps[0] * (at(-reach) + at(reach));
    for (int32_t k = 1; k < reach; ++k)
        sum += taps[static_cast<size_t>(k)] * (at(k - reach) + at(reach - k));
    return sum + taps[static_cast<size_t>(reach)] * at(0);
}

// The order of additions that all variants and mask sizes keep: columns first, the pairs from the
// outside in, the centre last.
GuardedPlane OrderedSmooth(const GuardedPlane& src, int32_t maskSize, float sigma)
{
    const std::vector<float> taps = TapsOf(maskSize, sigma);
    const GuardedPlane down =
        GuardedPlane::FromFunction(src.Cols, src.Rows, [&](int32_t x, int32_t y) {
            return PairedSum(taps, [&](int32_t d) { return src.Replicated(x, y + d); });
        });
    return GuardedPlane::FromFunction(src.Cols, src.Rows, [&](int32_t x, int32_t y) {
        return PairedSum(taps, [&](int32_t d) { return down.Replicated(x + d, y); });
    });
}

struct Smoothing {
    int32_t MaskSize;
    float Sigma;
};
// The three sizes in use, and sizes that take the general path.
const Smoothing kSmoothings[] = {{7, 0.7f}, {7, 0.5f}, {15, 2.0f}, {3, 1.0f},
                                 {5, 0.9f}, {9, 3.0f}, {21, 2.5f}};

class SmoothingKernels : public KernelTest {
protected:
    void SetUp() override
    {
        deniedArray = -1;
        arrayRequests = 0;
        liveArrays = 0;
    }
};

TEST_F(SmoothingKernels, TapsAreTheRoundedBellDividedByItsFloatSum)
{
    for (const Smoothing& s : kSmoothings) {
        SCOPED_TRACE(testing::Message() << "mask " << s.MaskSize << ", sigma " << s.Sigma);
        const std::vector<float> taps = TapsOf(s.MaskSize, s.Sigma);
        const int32_t reach = s.MaskSize / 2;
        std::vector<float> expected;
        float sum = 0.0f;
        for (int32_t d = -reach; d <= reach; ++d) {
            const long double wide = s.Sigma;
            expected.push_back(static_cast<float>(std::exp(-(d * d) / (2.0L * wide * wide))));
            sum = sum + expected.back();
        }
        for (float& tap : expected)
            tap = tap / sum;
        EXPECT_EQ(taps, expected);
        for (int32_t i = 0; i < reach; ++i)
            EXPECT_EQ(taps[static_cast<size_t>(i)], taps[static_cast<size_t>(2 * reach - i)]);
    }
}

// At sigma 100 the bell is almost flat over the mask, and still ends at its edge.
TEST_F(SmoothingKernels, MaskIsTruncatedWhateverSigmaIs)
{
    GuardedPlane src(31, 1, 0.0f);
    src.Data()[15] = 1.0f;
    GuardedPlane dst(31, 1);
    GaussianSmooth(src.Data(), dst.Data(), 31, 1, 15, 100.0f);
    const std::vector<float> taps = TapsOf(15, 100.0f);
    for (int32_t x = 0; x < 31; ++x)
        if (std::abs(x - 15) <= 7)
            EXPECT_NEAR(dst.At(x, 0), taps[static_cast<size_t>(x - 8)], 1e-8);
        else
            EXPECT_EQ(dst.At(x, 0), 0.0f);
}

// Measured on these planes of 0..255: 3.1e-5 at worst, two units in the last place of a float
// near 255. The limit is twice that.
constexpr double kSumTolerance = 6.2e-5;

TEST_F(SmoothingKernels, MatchTheDefinition)
{
    double worst = 0.0;
    for (const PlaneSize& size : AwkwardSizes())
        for (const Smoothing& s : kSmoothings) {
            if (size.Cols == 640 && s.MaskSize != 7)
                continue; // the slow sums of large masks would take most of the run
            const GuardedPlane src = GuardedPlane::Fractions(size.Cols, size.Rows, 21);
            const GuardedPlane expected = SlowSmooth(src, s.MaskSize, s.Sigma);
            GuardedPlane dst(size.Cols, size.Rows, -7.0f);
            GaussianSmooth(src.Data(), dst.Data(), size.Cols, size.Rows, s.MaskSize, s.Sigma);
            for (int32_t y = 0; y < size.Rows; ++y)
                for (int32_t x = 0; x < size.Cols; ++x)
                    worst = std::max(
                        worst, std::fabs(static_cast<double>(dst.At(x, y)) - expected.At(x, y)));
        }
    RecordProperty("worst", std::to_string(worst));
    EXPECT_LE(worst, kSumTolerance);
}

TEST_F(SmoothingKernels, RoundInOneOrderInEveryVariantAndForEveryMask)
{
    const VariantScope scope;
    for (const PlaneSize& size : AwkwardSizes())
        for (const Smoothing& s : kSmoothings) {
            const GuardedPlane src = GuardedPlane::Fractions(size.Cols, size.Rows, 22);
            const GuardedPlane expected = OrderedSmooth(src, s.MaskSize, s.Sigma);
            for (IsaVariant variant : AvailableVariants()) {
                SelectIsaVariant(variant);
                GuardedPlane dst(size.Cols, size.Rows, -7.0f);
                GaussianSmooth(src.Data(), dst.Data(), size.Cols, size.Rows, s.MaskSize, s.Sigma);
                ASSERT_EQ(dst.Bits(), expected.Bits())
                    << "variant " << variant << ", " << size.Cols << " x " << size.Rows << ", mask "
                    << s.MaskSize;
                ASSERT_TRUE(dst.GuardsIntact());
            }
        }
}

// All results for a flat picture depend on this, including borders, corners and vector tails.
TEST_F(SmoothingKernels, ConstantPlaneStaysConstantToTheBit)
{
    const VariantScope scope;
    for (const PlaneSize& size : AwkwardSizes())
        for (const Smoothing& s : kSmoothings)
            for (float value : {1.0f, 3.0f, 255.0f, 0.1f, 1.0f / 3.0f, 77.7f, 1e-30f, 1e30f}) {
                const GuardedPlane src(size.Cols, size.Rows, value);
                for (IsaVariant variant : AvailableVariants()) {
                    SelectIsaVariant(variant);
                    GuardedPlane dst(size.Cols, size.Rows, -7.0f);
                    GaussianSmooth(src.Data(), dst.Data(), size.Cols, size.Rows, s.MaskSize,
                                   s.Sigma);
                    ASSERT_EQ(dst.Bits(), GuardedPlane(size.Cols, size.Rows, dst.At(0, 0)).Bits())
                        << "variant " << variant << ", " << size.Cols << " x " << size.Rows
                        << ", mask " << s.MaskSize << ", value " << value;
                    ASSERT_NEAR(dst.At(0, 0) / value, 1.0f, 1e-6f);
                }
            }
}

TEST_F(SmoothingKernels, FlippedPictureGivesTheFlippedResultToTheBit)
{
    const int32_t cols = 37;
    const int32_t rows = 21;
    const GuardedPlane src = GuardedPlane::Fractions(cols, rows, 23);
    const auto flipped = [&](const GuardedPlane& plane) {
        return GuardedPlane::FromFunction(
            cols, rows, [&](int32_t x, int32_t y) { return plane.At(cols - 1 - x, rows - 1 - y); });
    };
    for (const Smoothing& s : kSmoothings) {
        GuardedPlane dst(cols, rows);
        GuardedPlane fromFlipped(cols, rows);
        GaussianSmooth(src.Data(), dst.Data(), cols, rows, s.MaskSize, s.Sigma);
        GaussianSmooth(flipped(src).Data(), fromFlipped.Data(), cols, rows, s.MaskSize, s.Sigma);
        EXPECT_EQ(fromFlipped.Bits(), flipped(dst).Bits()) << "mask " << s.MaskSize;
    }
}

// A single pixel is its own border: the taps sum to 1 twice, up to rounding.
TEST_F(SmoothingKernels, SinglePixelKeepsItsValueUpToRounding)
{
    for (const Smoothing& s : kSmoothings) {
        double sum = 0.0;
        for (float tap : TapsOf(s.MaskSize, s.Sigma))
            sum += tap;
        const GuardedPlane src(1, 1, 200.0f);
        GuardedPlane dst(1, 1);
        GaussianSmooth(src.Data(), dst.Data(), 1, 1, s.MaskSize, s.Sigma);
        EXPECT_NEAR(dst.At(0, 0), 200.0 * sum * sum, 200.0 * 5e-7);
        EXPECT_NEAR(dst.At(0, 0), 200.0f, 200.0f * 1e-6f);
    }
}

TEST_F(SmoothingKernels, SingleColumnIsSmoothedOnlyAlongItself)
{
    const GuardedPlane src = GuardedPlane::Fractions(1, 40, 24);
    GuardedPlane dst(1, 40);
    GaussianSmooth(src.Data(), dst.Data(), 1, 40, 15, 2.0f);
    const std::vector<float> taps = TapsOf(15, 2.0f);
    for (int32_t y = 0; y < 40; ++y) {
        double sum = 0.0;
        for (int32_t j = 0; j < 15; ++j)
            sum += static_cast<double>(taps[static_cast<size_t>(j)]) * src.Replicated(0, y + j - 7);
        EXPECT_NEAR(dst.At(0, y), sum, kSumTolerance);
    }
}

TEST_F(SmoothingKernels, ReportBadSizesInThreeLines)
{
    const GuardedPlane src(2, 2, 1.0f);
    GuardedPlane dst(2, 2, 3.0f);
    for (const PlaneSize& size : {PlaneSize{0, 2}, {2, 0}, {-1, 2}, {2, -1}}) {
        GaussianSmooth(src.Data(), dst.Data(), size.Cols, size.Rows, 7, 1.0f);
        EXPECT_EQ(TakeErrors(), std::string(kSizeLine) + kDeniedLines);
    }
    // The size is checked before the mask.
    GaussianSmooth(src.Data(), dst.Data(), 0, 2, 4, 1.0f);
    EXPECT_EQ(TakeErrors(), std::string(kSizeLine) + kDeniedLines);
    EXPECT_EQ(dst.Pixels(), GuardedPlane(2, 2, 3.0f).Pixels());
}

TEST_F(SmoothingKernels, ReportEvenAndSmallMasksInThreeLines)
{
    const GuardedPlane src(9, 9, 1.0f);
    GuardedPlane dst(9, 9, 3.0f);
    for (int32_t maskSize : {2, 4, 8, 1, 0, -1, -3, std::numeric_limits<int32_t>::min()}) {
        GaussianSmooth(src.Data(), dst.Data(), 9, 9, maskSize, 1.0f);
        EXPECT_EQ(TakeErrors(), std::string(kMaskLine) + kDeniedLines) << maskSize;
    }
    EXPECT_EQ(dst.Pixels(), GuardedPlane(9, 9, 3.0f).Pixels());
}

TEST_F(SmoothingKernels, ReportFailedScratchAndStillRunTheKernel)
{
    const GuardedPlane src = GuardedPlane::Fractions(9, 9, 25);
    GuardedPlane dst(9, 9, 3.0f);
    AllocationFaults faults({0});
    GaussianSmooth(src.Data(), dst.Data(), 9, 9, 7, 1.0f);
    EXPECT_EQ(TakeErrors(), kDeniedLines);
    EXPECT_EQ(dst.Pixels(), GuardedPlane(9, 9, 3.0f).Pixels());
    EXPECT_EQ(faults.Live, 0);
}

TEST_F(SmoothingKernels, OnlyTheKernelReportsNullPlanes)
{
    GuardedPlane plane(9, 9, 3.0f);
    AllocationFaults tally({});
    GaussianSmooth(nullptr, plane.Data(), 9, 9, 7, 1.0f);
    EXPECT_EQ(TakeErrors(), "Gaussian blur: ippStsNullPtrErr: Null pointer error.\n");
    GaussianSmooth(plane.Data(), nullptr, 9, 9, 7, 1.0f);
    EXPECT_EQ(TakeErrors(), "Gaussian blur: ippStsNullPtrErr: Null pointer error.\n");
    EXPECT_EQ(tally.Live, 0);
    EXPECT_EQ(tally.Requests, 2);
}

TEST_F(SmoothingKernels, KernelRejectsWhatItsSizeFunctionRejects)
{
    const GuardedPlane src(3, 3, 1.0f);
    GuardedPlane dst(3, 3, 3.0f);
    float scratch[256];
    EXPECT_EQ(GaussianKernel(src.Data(), dst.Data(), 0, 3, 7, 1.0f, scratch), KernelBadSize);
    EXPECT_EQ(GaussianKernel(src.Data(), dst.Data(), 3, 3, 6, 1.0f, scratch), KernelBadArgument);
    EXPECT_EQ(GaussianKernel(src.Data(), dst.Data(), 3, 3, 7, 1.0f, nullptr), KernelNullPointer);
    EXPECT_EQ(dst.Pixels(), GuardedPlane(3, 3, 3.0f).Pixels());
    int32_t size = -77;
    EXPECT_EQ(GaussianBufferSize(std::numeric_limits<int32_t>::max(), 1, 7, &size), KernelBadSize);
    EXPECT_EQ(size, -77);
}

TEST_F(SmoothingKernels, StackIsSmoothedPlaneByPlaneWithMaskSeven)
{
    const int32_t cols = 19;
    const int32_t rows = 11;
    GuardedPlane in[2] = {GuardedPlane::Fractions(cols, rows, 26),
                          GuardedPlane::Fractions(cols, rows, 27)};
    GuardedPlane out[2] = {GuardedPlane(cols, rows), GuardedPlane(cols, rows)};
    CPlaneStack source;
    CPlaneStack target;
    source.Cols = target.Cols = cols;
    source.Rows = target.Rows = rows;
    source.PlaneCount = target.PlaneCount = 2;
    source.Planes = {in[0].Data(), in[1].Data()};
    target.Planes = {out[0].Data(), out[1].Data()};

    // A sigma that a float cannot represent: it is rounded first.
    SmoothStack(source, target, 0.7);

    for (int i = 0; i < 2; ++i) {
        GuardedPlane expected(cols, rows);
        GaussianSmooth(in[i].Data(), expected.Data(), cols, rows, 7, 0.7f);
        EXPECT_EQ(out[i].Bits(), expected.Bits());
        EXPECT_TRUE(out[i].GuardsIntact());
    }
}

TEST_F(SmoothingKernels, EachPlaneReportsSeparately)
{
    GuardedPlane plane(4, 4, 3.0f);
    CPlaneStack source;
    source.Cols = source.Rows = 4;
    source.PlaneCount = 2;
    source.Planes = {nullptr, nullptr};
    CPlaneStack target = source;
    target.Planes = {plane.Data(), plane.Data()};
    SmoothStack(source, target, 0.7);
    EXPECT_EQ(TakeErrors(), "Gaussian blur: ippStsNullPtrErr: Null pointer error.\n"
                            "Gaussian blur: ippStsNullPtrErr: Null pointer error.\n");
    EXPECT_EQ(plane.Pixels(), GuardedPlane(4, 4, 3.0f).Pixels());
}

TEST_F(SmoothingKernels, InterleavedPixelsAreSeparatedAndSmoothedWithMaskFifteen)
{
    const VariantScope scope;
    for (const PlaneSize& size : AwkwardSizes()) {
        std::vector<uint8_t> pixels(static_cast<size_t>(3 * size.Cols * size.Rows));
        for (size_t i = 0; i < pixels.size(); ++i)
            pixels[i] = static_cast<uint8_t>(i * 2654435761u >> 13);
        for (IsaVariant variant : AvailableVariants()) {
            SCOPED_TRACE(testing::Message()
                         << "variant " << variant << ", " << size.Cols << " x " << size.Rows);
            SelectIsaVariant(variant);
            GuardedPlane out[3] = {GuardedPlane(size.Cols, size.Rows),
                                   GuardedPlane(size.Cols, size.Rows),
                                   GuardedPlane(size.Cols, size.Rows)};
            float* const planes[3] = {out[0].Data(), out[1].Data(), out[2].Data()};
            BlurInterleavedPixels(pixels.data(), size.Cols, size.Rows, 2.0f, planes);
            for (int c = 0; c < 3; ++c) {
                const GuardedPlane channel =
                    GuardedPlane::FromFunction(size.Cols, size.Rows, [&](int32_t x, int32_t y) {
                        return static_cast<float>(
                            pixels[static_cast<size_t>(3 * (y * size.Cols + x) + c)]);
                    });
                GuardedPlane expected(size.Cols, size.Rows);
                GaussianSmooth(channel.Data(), expected.Data(), size.Cols, size.Rows, 15, 2.0f);
                ASSERT_EQ(out[c].Bits(), expected.Bits()) << "plane " << c;
                ASSERT_TRUE(out[c].GuardsIntact());
            }
        }
    }
}

TEST_F(SmoothingKernels, InterleavedPixelsThrowWhenAnAllocationFailsAndLeakNothing)
{
    const std::vector<uint8_t> pixels(3 * 4 * 4, 9);
    for (int denied = 0; denied < 3; ++denied) {
        GuardedPlane out(4, 4, 3.0f);
        float* const planes[3] = {out.Data(), out.Data(), out.Data()};
        bool thrown = false;
        arrayRequests = 0;
        liveArrays = 0;
        deniedArray = denied;
        watchingArrays = true;
        try {
            BlurInterleavedPixels(pixels.data(), 4, 4, 2.0f, planes);
        } catch (const std::bad_alloc&) {
            thrown = true;
        }
        watchingArrays = false;
        EXPECT_TRUE(thrown);
        EXPECT_EQ(arrayRequests, denied + 1);
        EXPECT_EQ(liveArrays, 0);
        EXPECT_EQ(out.Pixels(), GuardedPlane(4, 4, 3.0f).Pixels());
    }
}

TEST_F(SmoothingKernels, InterleavedPixelsReportOncePerPlane)
{
    const std::vector<uint8_t> pixels(3 * 4 * 4, 9);
    GuardedPlane out(4, 4, 3.0f);
    float* const planes[3] = {out.Data(), out.Data(), out.Data()};
    {
        AllocationFaults faults({0, 1, 2});
        BlurInterleavedPixels(pixels.data(), 4, 4, 2.0f, planes);
        EXPECT_EQ(TakeErrors(), std::string(kDeniedLines) + kDeniedLines + kDeniedLines);
    }
    watchingArrays = true;
    BlurInterleavedPixels(pixels.data(), 0, 4, 2.0f, planes);
    watchingArrays = false;
    EXPECT_EQ(liveArrays, 0);
    const std::string lines = std::string(kSizeLine) + kDeniedLines;
    EXPECT_EQ(TakeErrors(), lines + lines + lines);
    EXPECT_EQ(out.Pixels(), GuardedPlane(4, 4, 3.0f).Pixels());
}

} // namespace
} // namespace vistaTrim
