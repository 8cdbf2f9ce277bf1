// Makes each allocation of an operation fail once. Checks what the host sees and what remains.
#include <functional>
#include <limits>
#include <memory>
#include <new>
#include <vector>

#include <gtest/gtest.h>

#include "failing_allocator.h"
#include "host_objects.h"

namespace vistaTrim {
namespace {

using failingAllocator::Denial;
using failingAllocator::Denied;
using failingAllocator::DenyAllocation;
using failingAllocator::Live;

ICropRects* const kUntouched = reinterpret_cast<ICropRects*>(uintptr_t{0x5555});

// Runs the operation with its n-th allocation denied. True if std::bad_alloc was thrown; false if
// the operation needs fewer allocations and finished.
bool RunsOutAt(size_t n, const std::function<void()>& operation)
{
    bool thrown = false;
    DenyAllocation(n);
    try {
        operation();
    } catch (const std::bad_alloc&) {
        thrown = true;
    }
    const bool denied = Denied();
    DenyAllocation(0);
    EXPECT_EQ(thrown, denied) << "allocation " << n;
    return thrown;
}

// Denies the operation's allocations one by one until it finishes, and returns their number.
size_t DenyEachInTurn(const std::function<void()>& operation, const std::function<void()>& after)
{
    size_t n = 1;
    while (RunsOutAt(n, operation)) {
        after();
        ++n;
        if (n > 100000 || testing::Test::HasFailure())
            break;
    }
    after();
    return n - 1;
}

VistaTrimParameters FewCandidates()
{
    VistaTrimParameters parameters;
    parameters.NumAspectRatios = 3;
    parameters.AspectRatios = new DoubleInfo[3];
    parameters.AspectRatios[0] = DoubleInfo(1.5);
    parameters.AspectRatios[1] = DoubleInfo(1.0, false);
    parameters.AspectRatios[2] = DoubleInfo(4.0);
    parameters.NumCropRectScaleRatios = 2;
    parameters.CropRectScaleRatios = new DoubleInfo[2];
    parameters.CropRectScaleRatios[0] = DoubleInfo(0.5);
    parameters.CropRectScaleRatios[1] = DoubleInfo(0.9);
    parameters.NumRectsOfInterest = 2;
    parameters.RectsOfInterest = new CRectOfInterest[2];
    parameters.RectsOfInterest[0] = CRectOfInterest(300, 320, 5, 25, false);
    parameters.RectsOfInterest[1] = CRectOfInterest(200, 220, 5, 25, false);
    parameters.RectsOfInterest[1].Kind = RoiHardExclude;
    parameters.NumMaxCropRectsPerSide = 6;
    return parameters;
}

// Denies each allocation of a request in turn, each time on a new driver, and then repeats the
// request there: the answer must be that of a driver that never ran out of memory.
void DenyEachOfARequest(const SuggestionParameters& request, bool best)
{
    const VistaTrimParameters parameters = FewCandidates();
    HostObjects reference(640, 40, parameters);
    const std::vector<CInt32CropRect> expected =
        best ? reference.BestCrops(4, request) : reference.Suggestions(request);
    ASSERT_FALSE(expected.empty());

    size_t n = 1;
    for (bool thrown = true; thrown; ++n) {
        HostObjects host(640, 40, parameters);
        ICropRects* result = kUntouched;
        const long before = Live();
        thrown = RunsOutAt(n, [&] {
            if (best)
                GetNTopCropSuggestions(host.Driver, 4, &result, &request, 0,
                                       WeightDistribution(1, 1, 1));
            else
                ComputeCropSuggestions(host.Driver, &result, &request);
        });
        if (!thrown) {
            ASSERT_NE(result, kUntouched);
            result->Release();
        } else {
            ASSERT_EQ(result, kUntouched) << "allocation " << n;
        }
        ASSERT_TRUE(
            SameRecords(best ? host.BestCrops(4, request) : host.Suggestions(request), expected))
            << "allocation " << n;
        // What the driver keeps is freed with it.
        DestroyVistaTrimObj(host.Driver);
        host.Driver = nullptr;
        EXPECT_LT(Live(), before) << "allocation " << n;
        if (n > 5000) {
            ADD_FAILURE() << "the request never finishes";
            return;
        }
    }
    EXPECT_GT(n, 8U); // there was something to deny
}

TEST(OutOfMemory, EachAllocationOfAFullRequestMayFail)
{
    DenyEachOfARequest(SuggestionParameters(), false);
}

TEST(OutOfMemory, EachAllocationOfARatioRequestMayFail)
{
    DenyEachOfARequest(SuggestionParameters(1.5, false), false);
}

TEST(OutOfMemory, EachAllocationOfARequestForANewRatioMayFail)
{
    DenyEachOfARequest(SuggestionParameters(2.25, false), false);
}

TEST(OutOfMemory, EachAllocationOfACropSizeRequestMayFail)
{
    DenyEachOfARequest(SuggestionParameters(51, 31, false), false);
}

TEST(OutOfMemory, EachAllocationOfASelectionMayFail)
{
    DenyEachOfARequest(SuggestionParameters(), true);
}

TEST(OutOfMemory, EachAllocationOfASelectionForARatioMayFail)
{
    DenyEachOfARequest(SuggestionParameters(4.0, false), true);
}

TEST(OutOfMemory, EachAllocationOfASelectionForACropSizeMayFail)
{
    DenyEachOfARequest(SuggestionParameters(51, 31, false), true);
}

TEST(OutOfMemory, EachAllocationOfTheOtherOperationsMayFail)
{
    HostObjects host(640, 40, FewCandidates());
    const std::vector<CInt32CropRect> expected = host.Suggestions(SuggestionParameters(1.5, false));
    const auto answers = [&] {
        ASSERT_TRUE(SameRecords(host.Suggestions(SuggestionParameters(1.5, false)), expected));
    };
    DoubleInfo* table = nullptr;
    uint32_t count = 0;
    EXPECT_EQ(DenyEachInTurn([&] { host.Driver->GetAspectRatios(&table, &count); }, answers), 1U);
    EXPECT_EQ(DenyEachInTurn([&] { host.Driver->GetCropRectScaleRatios(&table, &count); }, answers),
              1U);
    EXPECT_EQ(DenyEachInTurn([&] { host.Driver->GetParameters(); }, answers), 3U);
    CInt32CropRect rect(0, 99, 0, 9);
    DenyEachInTurn([&] { host.Driver->EvaluateScores(rect); }, answers);
    EXPECT_TRUE(rect.Score.Scored);
}

TEST(OutOfMemory, TablesAndRectanglesAreUnchanged)
{
    HostObjects host(640, 40, FewCandidates());
    EXPECT_TRUE(RunsOutAt(1, [&] { host.Driver->SetAspectRatioEnabled(7.0, true); }));
    EXPECT_EQ(host.NumAspectRows(), 3U);
    EXPECT_TRUE(RunsOutAt(1, [&] { host.Driver->SetCropRectScaleRatioEnabled(0.1, true); }));
    EXPECT_EQ(host.NumScaleRows(), 2U);
    const CRectOfInterest rect(0, 9, 0, 9, true);
    EXPECT_TRUE(RunsOutAt(1, [&] { host.Driver->AddRectOfInterest(rect); }));
    CRectOfInterest* table = nullptr;
    uint32_t count = 0;
    host.Driver->GetRectsOfInterest(&table, &count);
    EXPECT_EQ(count, 2U);
}

TEST(OutOfMemory, ImageIsFreedWhenItsBufferFailsToAllocate)
{
    const int32_t offsets[4] = {0, 1, 2, 3};
    const long before = Live();
    IImage* const untouched = reinterpret_cast<IImage*>(uintptr_t{0x5555});
    IImage* image = untouched;
    EXPECT_TRUE(RunsOutAt(1, [&] { image = CreateImageObj(4, 4, 3, offsets, nullptr); }));
    EXPECT_TRUE(RunsOutAt(2, [&] { image = CreateImageObj(4, 4, 3, offsets, nullptr); }));
    EXPECT_EQ(image, untouched);
    EXPECT_EQ(Live(), before);
    EXPECT_FALSE(RunsOutAt(3, [&] { image = CreateImageObj(4, 4, 3, offsets, nullptr); }));
    DestroyImageObj(image);
    EXPECT_EQ(Live(), before);
}

TEST(OutOfMemory, ImageIsNullWhereTheAllocatorReturnsNull)
{
    const int32_t offsets[4] = {0, 1, 2, 3};
    DenyAllocation(1, Denial::kReturnNull);
    IImage* image = CreateImageObj(4, 4, 3, offsets, nullptr);
    DenyAllocation(0);
    EXPECT_EQ(image, nullptr);
}

TEST(OutOfMemory, DefaultRecordIsNullWhereTheAllocatorReturnsNull)
{
    VistaTrimParameters parameters = DefaultParameters();
    HostObjects host(640, 40, parameters);
    CRectOfInterest something;
    CRectOfInterest* table = &something;
    uint32_t count = 99;
    DenyAllocation(1, Denial::kReturnNull);
    host.Driver->GetRectsOfInterest(&table, &count);
    DenyAllocation(0);
    EXPECT_EQ(table, nullptr);
    EXPECT_EQ(count, 0U);

    table = &something;
    EXPECT_TRUE(RunsOutAt(1, [&] { host.Driver->GetRectsOfInterest(&table, &count); }));
    EXPECT_EQ(table, &something);
}

TEST(OutOfMemory, FailedCopyOfParametersLeavesTheTargetAndFreesItsArrays)
{
    const VistaTrimParameters source = FewCandidates();
    VistaTrimParameters target;
    target.SetDefaults();
    DoubleInfo* const aspects = target.AspectRatios;
    DoubleInfo* const scales = target.CropRectScaleRatios;
    for (size_t n = 1; n <= 3; ++n) {
        const long before = Live();
        EXPECT_TRUE(RunsOutAt(n, [&] { target = source; }));
        EXPECT_EQ(Live(), before);
        EXPECT_EQ(target.AspectRatios, aspects);
        EXPECT_EQ(target.CropRectScaleRatios, scales);
        EXPECT_EQ(target.RectsOfInterest, nullptr);
        EXPECT_EQ(target.NumAspectRatios, 6U);
        EXPECT_EQ(target.NumMaxCropRectsPerSide, 25U);
        EXPECT_TRUE(RunsOutAt(n, [&] { const VistaTrimParameters copy(source); }));
        EXPECT_EQ(Live(), before);
    }
    EXPECT_FALSE(RunsOutAt(4, [&] { target = source; }));
    EXPECT_EQ(target.NumAspectRatios, 3U);
}

// The rows are written before their count.
TEST(OutOfMemory, FailedDefaultsLeaveNoCountWithoutItsRows)
{
    for (size_t n = 1; n <= 2; ++n) {
        VistaTrimParameters parameters;
        EXPECT_TRUE(RunsOutAt(n, [&] { parameters.SetDefaults(); }));
        EXPECT_EQ(parameters.NumAspectRatios, n == 1 ? 0U : 6U);
        EXPECT_EQ(parameters.NumCropRectScaleRatios, 0U);
    }
}

TEST(OutOfMemory, ByteCountPast32BitsRequestsTheLargestSize)
{
    VistaTrimParameters source;
    VistaTrimParameters target;
    struct Case {
        uint32_t VistaTrimParameters::*Count;
        uint32_t Rows;
    };
    // 2^32 bytes and the next size above; nothing is read, because nothing is allocated.
    for (const Case& oversized : {Case{&VistaTrimParameters::NumAspectRatios, 268435456U},
                                  Case{&VistaTrimParameters::NumCropRectScaleRatios, 268435456U},
                                  Case{&VistaTrimParameters::NumRectsOfInterest, 178956971U},
                                  Case{&VistaTrimParameters::NumRectsOfInterest, 0xFFFFFFFFU}}) {
        source.*oversized.Count = oversized.Rows;
        const long before = Live();
        DenyAllocation(0);
        EXPECT_THROW(target = source, std::bad_alloc);
        EXPECT_EQ(failingAllocator::LargestRefused(), std::numeric_limits<size_t>::max());
        EXPECT_THROW(const VistaTrimParameters copy(source), std::bad_alloc);
        EXPECT_EQ(Live(), before);
        source.*oversized.Count = 0;
    }
    EXPECT_EQ(target.AspectRatios, nullptr);
}

TEST(OutOfMemory, LargestByteCountOf32BitsIsRequestedUnchanged)
{
    VistaTrimParameters source;
    VistaTrimParameters target;
    source.NumAspectRatios = 268435455U; // of 16 bytes each: 16 below 2^32
    DenyAllocation(1);                   // four gigabytes would be allocated and filled
    EXPECT_THROW(target = source, std::bad_alloc);
    EXPECT_EQ(failingAllocator::LargestRefused(), 4294967280U);
    DenyAllocation(0);
    source.NumAspectRatios = 0;
}

// Leaks the incomplete driver on purpose.
TEST(OutOfMemory, FailedCreationReturnsNoDriver)
{
    IImage* image = MakeTestImage(640, 40);
    const VistaTrimParameters parameters = FewCandidates();
    IVistaTrim* driver = nullptr;
    const size_t allocations =
        DenyEachInTurn([&] { driver = CreateVistaTrimObj(image, &parameters); }, [] {});
    EXPECT_GT(allocations, 10U);
    ASSERT_NE(driver, nullptr);
    DestroyVistaTrimObj(driver);
    DestroyImageObj(image);
}

TEST(OutOfMemory, SecondInitializeThatFailsKeepsTheFirstCandidates)
{
    HostObjects host(640, 40, FewCandidates());
    const std::vector<CInt32CropRect> expected = host.Suggestions(SuggestionParameters(1.5, false));
    VistaTrimParameters others = FewCandidates();
    others.NumMaxCropRectsPerSide = 2;
    // Three arrays of the parameters, two lists of rows, the generator and its two tables.
    for (size_t n = 1; n <= 8; ++n) {
        EXPECT_TRUE(RunsOutAt(n, [&] { host.Driver->Initialize(host.Image, others); }));
        EXPECT_TRUE(SameRecords(host.Suggestions(SuggestionParameters(1.5, false)), expected))
            << "allocation " << n;
    }
}

TEST(Memory, DriverFreesEverything)
{
    const long before = Live();
    {
        HostObjects host(640, 40, FewCandidates());
        host.Suggestions(SuggestionParameters());
        host.Suggestions(SuggestionParameters(2.25, false));
        host.Suggestions(SuggestionParameters(51, 31, false));
        host.BestCrops(3, SuggestionParameters());
        host.Driver->SetAspectRatioEnabled(3.0, true);
        host.Driver->AddRectOfInterest(CRectOfInterest(0, 9, 0, 9, false));
    }
    EXPECT_EQ(Live(), before);
}

// Exactly the allocations that the driver leaks.
TEST(Memory, DefaultedDriverAbandonsTheThreeEmptyArraysOfItsCopy)
{
    const long before = Live();
    {
        HostObjects host(640, 40, VistaTrimParameters());
    }
    EXPECT_EQ(Live(), before + 3);
}

TEST(Memory, DefaultRecordIsNeverFreed)
{
    const long before = Live();
    {
        HostObjects host(640, 40);
        CRectOfInterest* table = nullptr;
        uint32_t count = 0;
        host.Driver->GetRectsOfInterest(&table, &count);
        host.Driver->GetRectsOfInterest(&table, &count);
    }
    EXPECT_EQ(Live(), before + 2);
}

TEST(Memory, SecondInitializeAbandonsWhatTheFirstBuilt)
{
    const long before = Live();
    {
        HostObjects host(640, 40);
        host.Driver->Initialize(host.Image, DefaultParameters());
        EXPECT_FALSE(host.Suggestions(SuggestionParameters()).empty());
    }
    EXPECT_GT(Live(), before);
}

} // namespace
} // namespace vistaTrim
