#include "batch/batch.h"

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "batch/progress.h"

namespace vistaTrim::cli {
namespace {

PhotoResult Numbered(size_t index)
{
    PhotoResult result;
    result.File = std::to_string(index);
    return result;
}

TEST(Batch, EmitsInOrderWhicheverFinishesFirst)
{
    for (const int workers : {1, 2, 5}) {
        std::vector<std::string> emitted;
        BatchSteps steps;
        steps.Leave = [] {};
        steps.Work = [](size_t index) {
            std::this_thread::sleep_for(std::chrono::milliseconds(index % 3 == 0 ? 4 : 0));
            return Numbered(index);
        };
        steps.Emit = [&](size_t index, PhotoResult& result) {
            EXPECT_EQ(result.File, std::to_string(index));
            emitted.push_back(result.File);
        };
        steps.Stop = [] { return false; };
        EXPECT_EQ(RunBatch(40, workers, steps), 40U);
        ASSERT_EQ(emitted.size(), 40U);
        for (size_t i = 0; i < emitted.size(); ++i)
            EXPECT_EQ(emitted[i], std::to_string(i));
    }
}

TEST(Batch, WorksOnSeveralAtATime)
{
    std::atomic<int> inside{0};
    std::atomic<int> most{0};
    BatchSteps steps;
    steps.Leave = [] {};
    steps.Work = [&](size_t index) {
        const int now = ++inside;
        for (int before = most; before < now && !most.compare_exchange_weak(before, now);) {
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        --inside;
        return Numbered(index);
    };
    steps.Emit = [](size_t, PhotoResult&) {};
    steps.Stop = [] { return false; };
    RunBatch(12, 3, steps);
    EXPECT_EQ(most, 3);
}

TEST(Batch, StoppedRunEmitsEverythingStarted)
{
    std::atomic<size_t> begun{0};
    std::vector<size_t> emitted;
    std::atomic<bool> stop{false};
    BatchSteps steps;
    steps.Leave = [] {};
    steps.Work = [&](size_t index) {
        ++begun;
        std::this_thread::sleep_for(std::chrono::milliseconds(index == 0 ? 30 : 2));
        if (index == 5)
            stop = true;
        return Numbered(index);
    };
    steps.Emit = [&](size_t index, PhotoResult&) { emitted.push_back(index); };
    steps.Stop = [&] { return stop.load(); };
    const size_t done = RunBatch(1000, 4, steps);
    EXPECT_EQ(done, begun);
    EXPECT_LT(done, 1000U);
    ASSERT_EQ(emitted.size(), done);
    for (size_t i = 0; i < done; ++i)
        EXPECT_EQ(emitted[i], i);
}

TEST(Batch, CallsLeaveInEveryWorker)
{
    std::atomic<int> left{0};
    BatchSteps steps;
    steps.Work = Numbered;
    steps.Emit = [](size_t, PhotoResult&) {};
    steps.Stop = [] { return false; };
    steps.Leave = [&] { ++left; };
    RunBatch(10, 3, steps);
    EXPECT_EQ(left, 3);
}

TEST(Batch, OfNothingEmitsNothing)
{
    BatchSteps steps;
    steps.Leave = [] {};
    steps.Work = Numbered;
    steps.Emit = [](size_t, PhotoResult&) { FAIL(); };
    steps.Stop = [] { return false; };
    EXPECT_EQ(RunBatch(0, 4, steps), 0U);
}

TEST(Progress, ShowsDoneTotalAndTimeLeft)
{
    EXPECT_EQ(ProgressLine(5, 10, 65.0), "[###############...............] 5/10  1:05 left");
    EXPECT_EQ(ProgressLine(0, 10, 0.0), "[..............................] 0/10");
    EXPECT_EQ(ProgressLine(10, 10, 65.0), "[##############################] 10/10");
}

} // namespace
} // namespace vistaTrim::cli
