#include <limits>

#include "numeric/image_kernels.h"
#include "numeric/kernel_test_support.h"
#include "numeric/raw_kernels.h"

namespace vistaTrim {
namespace {

TEST(StatusText, HasAMessageForEveryStatus)
{
    EXPECT_STREQ(StatusText(1), "ippStsNoOperation: No operation has been executed.");
    EXPECT_STREQ(StatusText(-5), "ippStsBadArgErr: Incorrect arg/param of the function.");
    EXPECT_STREQ(StatusText(-6), "ippStsSizeErr: Incorrect value for data size.");
    EXPECT_STREQ(StatusText(-8), "ippStsNullPtrErr: Null pointer error.");
    EXPECT_STREQ(StatusText(-14), "ippStsStepErr: Step value is not valid.");
    EXPECT_STREQ(StatusText(-33), "ippStsMaskSizeErr: Invalid mask size.");
    EXPECT_STREQ(StatusText(-34), "ippStsAnchorErr: Anchor point is outside the mask.");
    EXPECT_STREQ(StatusText(-108), "ippStsNotEvenStepErr: Step value is not pixel multiple.");
}

TEST(StatusText, AnythingElseIsUnknown)
{
    for (int32_t status : {0, 2, -1, -7, -109, std::numeric_limits<int32_t>::min(),
                           std::numeric_limits<int32_t>::max()})
        EXPECT_STREQ(StatusText(status), "ippStsUnknownStatusCodeErr: Unknown status code.")
            << status;
}

TEST(KernelBuffer, IsCacheLineAligned)
{
    for (int32_t size : {1, 63, 64, 65, 100000}) {
        AllocationFaults tally({});
        void* buffer = AllocateKernelBuffer(size);
        ASSERT_NE(buffer, nullptr);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(buffer) % 64, 0u);
        EXPECT_EQ(tally.Live, 1);
        FreeKernelBuffer(buffer);
        EXPECT_EQ(tally.Live, 0);
    }
}

TEST(KernelBuffer, IsNullBelowOneByteWithoutAllocating)
{
    AllocationFaults tally({});
    EXPECT_EQ(AllocateKernelBuffer(0), nullptr);
    EXPECT_EQ(AllocateKernelBuffer(-1), nullptr);
    EXPECT_EQ(AllocateKernelBuffer(std::numeric_limits<int32_t>::min()), nullptr);
    EXPECT_EQ(tally.Requests, 0);
    FreeKernelBuffer(nullptr);
}

TEST(KernelBuffer, IsNullWhenOutOfMemory)
{
    AllocationFaults exhausted({0});
    EXPECT_EQ(AllocateKernelBuffer(64), nullptr);
}

} // namespace
} // namespace vistaTrim
