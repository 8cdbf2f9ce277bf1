// Makes every allocation fail once, whichever allocator serves it: operator new, the aligned
// allocator or one inside a library that we call. Each fault is injected into a child process,
// because the engine does not check that planes were allocated and crashes if they were not.
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <iostream>
#include <map>
#include <new>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "analysis/distance_maps.h"
#include "host_objects.h"
#include "numeric/kernel_test_support.h"
#include "numeric/linear_algebra.h"
#include "whole_process_allocator.h"

// OpenBLAS's own call: null without it.
extern "C" void openblas_set_num_threads(int count) __attribute__((weak));

namespace vistaTrim {
namespace {

using wholeProcessAllocator::Counts;
using wholeProcessAllocator::StartCounting;
using wholeProcessAllocator::StopCounting;

// What a child reports by its exit code.
enum Ending : int {
    RanThrough = 10, // as if nothing had failed
    Degraded = 11,   // finished with a different answer
    ThrewBadAlloc = 12,
    ResultTouched = 20, // this and the next three must not happen
    DriverBroken = 21,
    Leaked = 22,
    OtherException = 23,
    Faulted = 30 // ended by SIGSEGV
};

struct Outcome {
    int Ended;
    std::string Errors; // written to the error stream
};

// Runs the operation in a child and waits for it.
Outcome InChild(const std::function<int()>& operation)
{
    int ends[2];
    if (pipe(ends) != 0)
        throw std::bad_alloc();
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        const rlimit noCore = {0, 0};
        setrlimit(RLIMIT_CORE, &noCore);
        dup2(ends[1], 2);
        int code = OtherException;
        try {
            code = operation();
        } catch (...) {
        }
        _exit(code);
    }
    close(ends[1]);
    Outcome outcome = {-1, ""};
    char buffer[256];
    for (ssize_t n = 0; (n = read(ends[0], buffer, sizeof buffer)) > 0;)
        outcome.Errors.append(buffer, static_cast<size_t>(n));
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFEXITED(status))
        outcome.Ended = WEXITSTATUS(status);
    else if (WIFSIGNALED(status) && WTERMSIG(status) == SIGSEGV)
        outcome.Ended = Faulted;
    return outcome;
}

// The lines of a message, each once.
std::set<std::string> Lines(const std::string& text)
{
    std::set<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.insert(line);
    return lines;
}

VistaTrimParameters FewCandidates()
{
    VistaTrimParameters parameters;
    parameters.NumAspectRatios = 2;
    parameters.AspectRatios = new DoubleInfo[2];
    parameters.AspectRatios[0] = DoubleInfo(1.5);
    parameters.AspectRatios[1] = DoubleInfo(4.0);
    parameters.NumCropRectScaleRatios = 2;
    parameters.CropRectScaleRatios = new DoubleInfo[2];
    parameters.CropRectScaleRatios[0] = DoubleInfo(0.5);
    parameters.CropRectScaleRatios[1] = DoubleInfo(0.9);
    parameters.NumMaxCropRectsPerSide = 6;
    return parameters;
}

// The empty driver that no caller receives. Everything it would have held is freed.
constexpr long kAbandonedPieces = 1;
constexpr long kAbandonedBytes = 512;

class FaultInjection : public testing::Test {
protected:
    FaultInjection() : parameters(FewCandidates())
    {
        // One thread, so that the n-th allocation is always the same one. A full run first, so that
        // libraries have made their permanent allocations.
        if (openblas_set_num_threads != nullptr)
            openblas_set_num_threads(1);
        HostObjects warm(640, 64, parameters);
        warm.BestCrops(4, SuggestionParameters());
        std::cerr << "" << std::flush;
    }

    // True if a new driver gives the expected answer, as if nothing had failed.
    bool AnswersAsUsual(IImage* image, const std::vector<CInt32CropRect>& expected) const
    {
        IVistaTrim* driver = CreateVistaTrimObj(image, &parameters);
        const bool same = SameRecords(Best(driver), expected);
        DestroyVistaTrimObj(driver);
        return same;
    }

    static std::vector<CInt32CropRect> Best(IVistaTrim* driver)
    {
        ICropRects* list = nullptr;
        GetNTopCropSuggestions(driver, 4, &list, Everything(), 0, WeightDistribution(1, 1, 1));
        const SmartPtr<CCropRects> owner(static_cast<CCropRects*>(list), false);
        return std::vector<CInt32CropRect>(list->Data(), list->Data() + list->Count());
    }

    static const SuggestionParameters* Everything()
    {
        static const SuggestionParameters everything;
        return &everything;
    }

    // Creates a driver with its k-th allocation denied, in this process.
    int CreateWithFault(IImage* image, size_t denied,
                        const std::vector<CInt32CropRect>& expected) const
    {
        IVistaTrim* driver = nullptr;
        bool threw = false;
        StartCounting(denied);
        try {
            driver = CreateVistaTrimObj(image, &parameters);
        } catch (const std::bad_alloc&) {
            threw = true;
        }
        const Counts counts = StopCounting();
        if (threw) {
            if (driver != nullptr)
                return ResultTouched;
            if (counts.LivePieces > kAbandonedPieces || counts.LiveBytes > kAbandonedBytes) {
                std::cerr << counts.LivePieces << " pieces, " << counts.LiveBytes << " bytes";
                return Leaked;
            }
            return AnswersAsUsual(image, expected) ? ThrewBadAlloc : DriverBroken;
        }
        const bool usual = SameRecords(Best(driver), expected);
        DestroyVistaTrimObj(driver);
        return usual ? RanThrough : Degraded;
    }

    size_t AllocationsOfADriver(IImage* image, size_t* aligned) const
    {
        StartCounting(0);
        IVistaTrim* driver = CreateVistaTrimObj(image, &parameters);
        const Counts counts = StopCounting();
        DestroyVistaTrimObj(driver);
        *aligned = counts.AlignedRequests;
        return counts.Requests;
    }

    const VistaTrimParameters parameters;
};

// Planes and kernel scratch of a picture lie inside the storage of its tables. Operator new
// provides that or throws, so no unchecked allocation remains.
TEST_F(FaultInjection, NoFailedAllocationOfADriverCrashes)
{
    if (!kFixedOrder)
        GTEST_SKIP() << "with BLAS some planes do not fit into the tables' storage";
    for (const auto& [cols, rows] : {std::pair(640U, 64U), std::pair(64U, 640U)}) {
        IImage* image = MakeTestImage(cols, rows);
        IVistaTrim* driver = CreateVistaTrimObj(image, &parameters);
        const std::vector<CInt32CropRect> expected = Best(driver);
        DestroyVistaTrimObj(driver);
        ASSERT_FALSE(expected.empty());

        size_t aligned = 0;
        const size_t allocations = AllocationsOfADriver(image, &aligned);
        EXPECT_EQ(aligned, 0U);
        EXPECT_GT(allocations, 50U);
        for (size_t k = 1; k <= allocations; ++k) {
            const Outcome outcome = InChild([&] { return CreateWithFault(image, k, expected); });
            ASSERT_EQ(outcome.Ended, ThrewBadAlloc)
                << "allocation " << k << " of " << allocations << ": " << outcome.Errors;
            EXPECT_EQ(outcome.Errors, "");
        }
        const Outcome beyond =
            InChild([&] { return CreateWithFault(image, allocations + 1, expected); });
        EXPECT_EQ(beyond.Ended, RanThrough);
        std::printf("driver of %u x %u: %zu allocations, each throws std::bad_alloc\n", cols, rows,
                    allocations);
        DestroyImageObj(image);
    }
}

TEST_F(FaultInjection, NoPlaneOfAnySizeComesFromTheHeap)
{
    if (!kFixedOrder)
        GTEST_SKIP() << "with BLAS some planes do not fit into the tables' storage";
    std::vector<uint32_t> sides = {100, 360, 480, 640};
    for (uint32_t side = 1; side <= 64; ++side)
        sides.push_back(side);
    const auto fromTheHeap = [&](uint32_t cols, uint32_t rows) {
        IImage* image = MakeTestImage(cols, rows);
        size_t aligned = 0;
        AllocationsOfADriver(image, &aligned);
        DestroyImageObj(image);
        return aligned;
    };
    for (const uint32_t side : sides) {
        EXPECT_EQ(fromTheHeap(640, side), 0U) << "640 x " << side;
        EXPECT_EQ(fromTheHeap(side, 640), 0U) << side << " x 640";
    }
}

// A driver allocates its list of rectangles of interest last, when its parameters, candidates and
// analysis exist.
TEST_F(FaultInjection, DriverWithoutMemoryForItsRectanglesLeaksOnlyItself)
{
    IImage* image = MakeTestImage(640, 64);
    VistaTrimParameters withRects = parameters;
    delete[] withRects.RectsOfInterest;
    withRects.NumRectsOfInterest = 1;
    withRects.RectsOfInterest = new CRectOfInterest[1];
    StartCounting(0);
    IVistaTrim* driver = CreateVistaTrimObj(image, &withRects);
    const Counts whole = StopCounting();
    DestroyVistaTrimObj(driver);

    const Outcome outcome = InChild([&]() -> int {
        StartCounting(whole.Requests);
        bool threw = false;
        try {
            CreateVistaTrimObj(image, &withRects);
        } catch (const std::bad_alloc&) {
            threw = true;
        }
        const Counts counts = StopCounting();
        return threw && counts.LivePieces == kAbandonedPieces ? ThrewBadAlloc : Leaked;
    });
    EXPECT_EQ(outcome.Ended, ThrewBadAlloc);
    DestroyImageObj(image);
}

// Makes the aligned allocator itself fail, wherever its memory would come from.
TEST_F(FaultInjection, FailedAlignedAllocationDegradesAKernelOrCrashesAtAPlane)
{
    IImage* image = MakeTestImage(640, 64);
    IVistaTrim* driver = CreateVistaTrimObj(image, &parameters);
    const std::vector<CInt32CropRect> expected = Best(driver);
    DestroyVistaTrimObj(driver);

    int allocations = 0;
    {
        AllocationFaults none({});
        DestroyVistaTrimObj(CreateVistaTrimObj(image, &parameters));
        allocations = none.Requests;
        EXPECT_EQ(none.Live, 0);
    }
    ASSERT_GT(allocations, 30);
    std::map<int, int> endings;
    std::set<std::string> messages;
    for (int k = 0; k < allocations; ++k) {
        const Outcome outcome = InChild([&]() -> int {
            AllocationFaults faults({k});
            const int ending = CreateWithFault(image, 0, expected);
            // A kernel without scratch must free everything else.
            return faults.Live == 0 ? ending : static_cast<int>(Leaked);
        });
        ++endings[outcome.Ended];
        const std::set<std::string> lines = Lines(outcome.Errors);
        messages.insert(lines.begin(), lines.end());
        // A kernel that degrades the answer reports it.
        if (outcome.Ended == Degraded)
            EXPECT_FALSE(lines.empty()) << "aligned allocation " << k;
        else
            EXPECT_TRUE(outcome.Ended == Faulted || outcome.Ended == RanThrough)
                << "aligned allocation " << k << " ended " << outcome.Ended;
    }
    EXPECT_EQ(endings[Faulted] + endings[Degraded] + endings[RanThrough], allocations);
    EXPECT_GT(endings[Faulted], 0);
    EXPECT_GT(endings[Degraded], 0);
    const std::set<std::string> documented = {
        "Gaussian blur buffer allocation failure. ",
        "Gaussian blur: ippStsNullPtrErr: Null pointer error.",
        "Dilation buffer allocation: failed to allocate buffer.",
        "Dilation b: ippStsNullPtrErr: Null pointer error.",
        "ippStsNullPtrErr: Null pointer error."}; // of a resize, which adds no message of its own
    EXPECT_EQ(messages, documented);
    std::printf("%d aligned allocations: %d end the process, %d degrade the answer with a message, "
                "%d change nothing\n",
                allocations, endings[Faulted], endings[Degraded], endings[RanThrough]);
    DestroyImageObj(image);
}

// Each request runs on a new driver, with its k-th allocation denied.
TEST_F(FaultInjection, NoFailedAllocationOfARequestCrashes)
{
    const SuggestionParameters requests[] = {SuggestionParameters(),
                                             SuggestionParameters(1.5, false),
                                             SuggestionParameters(90, 60, false)};
    size_t throwing = 0;
    for (const SuggestionParameters& request : requests)
        for (const bool best : {false, true}) {
            HostObjects reference(640, 64, parameters);
            const std::vector<CInt32CropRect> expected =
                best ? reference.BestCrops(3, request) : reference.Suggestions(request);
            size_t denied = 1;
            for (int ended = ThrewBadAlloc; ended == ThrewBadAlloc; ++denied) {
                const Outcome outcome = InChild([&]() -> int {
                    HostObjects host(640, 64, parameters);
                    ICropRects* const untouched = reinterpret_cast<ICropRects*>(uintptr_t{0x5550});
                    ICropRects* result = untouched;
                    bool threw = false;
                    StartCounting(denied);
                    try {
                        if (best)
                            GetNTopCropSuggestions(host.Driver, 3, &result, &request, 0,
                                                   WeightDistribution(1, 1, 1));
                        else
                            ComputeCropSuggestions(host.Driver, &result, &request);
                    } catch (const std::bad_alloc&) {
                        threw = true;
                    }
                    StopCounting();
                    if (threw && result != untouched)
                        return ResultTouched;
                    if (!threw)
                        result->Release();
                    if (!SameRecords(best ? host.BestCrops(3, request) : host.Suggestions(request),
                                     expected))
                        return DriverBroken;
                    return threw ? ThrewBadAlloc : RanThrough;
                });
                ended = outcome.Ended;
                EXPECT_TRUE(ended == ThrewBadAlloc || ended == RanThrough)
                    << "allocation " << denied << " ended " << ended << ": " << outcome.Errors;
                EXPECT_EQ(outcome.Errors, "");
            }
            EXPECT_GT(denied, 10U);
            throwing += denied - 2; // the last one succeeded, and the count went one further
        }
    std::printf("six requests: %zu allocations, each throws std::bad_alloc\n", throwing);
}

TEST_F(FaultInjection, ImageThrowsAndAScoredRectangleNeedsNoMemory)
{
    const int32_t offsets[4] = {0, 1, 2, 3};
    IImage* image = nullptr;
    for (size_t k = 1; k <= 2; ++k) {
        StartCounting(k);
        EXPECT_THROW(image = CreateImageObj(8, 8, 3, offsets, nullptr), std::bad_alloc);
        EXPECT_EQ(StopCounting().LivePieces, 0);
    }
    EXPECT_EQ(image, nullptr);

    HostObjects host(640, 64, parameters);
    CInt32CropRect rect(10, 200, 3, 30);
    StartCounting(0);
    EvaluateScores(host.Driver, &rect);
    EXPECT_EQ(StopCounting().Requests, 0U);
    EXPECT_TRUE(rect.Score.Scored);
}

// Our own linear algebra needs no memory. With BLAS the inversion goes through LAPACKE in column
// order, which needs no copy of the matrix, and the product takes its buffers from BLAS's pool.
TEST_F(FaultInjection, BlasAllocatesNothing)
{
    const float covariance[9] = {90, 20, 10, 20, 80, 5, 10, 5, 70};
    float inverse[9];
    InvertRegularised(covariance, 3, 10.0f, inverse); // first use
    StartCounting(0);
    InvertRegularised(covariance, 3, 10.0f, inverse);
    EXPECT_EQ(StopCounting().Requests, 0U);

    std::vector<float> a(3 * 512, 1.0f);
    std::vector<float> product(3 * 512);
    StartCounting(0);
    linearAlgebra::MultiplyBySymmetric(512, 3, inverse, a.data(), product.data());
    EXPECT_EQ(StopCounting().Requests, 0U);
    EXPECT_NE(product[0], 0.0f);
}

} // namespace
} // namespace vistaTrim
