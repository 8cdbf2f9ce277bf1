#include "batch/batch.h"

#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <string>
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
        // Waits until the others are there too, however busy the machine is.
        for (int tries = 0; tries < 500 && most < 3; ++tries)
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
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
    std::atomic<size_t> started{0};
    std::vector<size_t> emitted;
    std::atomic<bool> stop{false};
    BatchSteps steps;
    steps.Leave = [] {};
    steps.Work = [&](size_t index) {
        ++started;
        std::this_thread::sleep_for(std::chrono::milliseconds(index == 0 ? 30 : 2));
        if (index == 5)
            stop = true;
        return Numbered(index);
    };
    steps.Emit = [&](size_t index, PhotoResult&) { emitted.push_back(index); };
    steps.Stop = [&] { return stop.load(); };
    const size_t done = RunBatch(1000, 4, steps);
    EXPECT_EQ(done, started);
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

// The line drawn is the one for the time that has actually passed.
TEST(Progress, DrawsTheTimeLeftAtTheSpeedSoFar)
{
    using Clock = std::chrono::steady_clock;
    const auto secondsSince = [](Clock::time_point start) {
        return std::chrono::duration<double>(Clock::now() - start).count();
    };
    double least = 0;
    double most = 0;
    testing::internal::CaptureStderr();
    {
        const Clock::time_point before = Clock::now();
        Progress progress(1001, true);
        const Clock::time_point after = Clock::now();
        std::this_thread::sleep_for(std::chrono::milliseconds(60));
        least = secondsSince(after);
        progress.Show(1);
        most = secondsSince(before);
    }
    const std::string drawn = testing::internal::GetCapturedStderr();
    int minutes = -1;
    int seconds = -1;
    const size_t at = drawn.rfind("] 1/1001  ");
    ASSERT_NE(at, std::string::npos) << drawn;
    ASSERT_EQ(std::sscanf(drawn.c_str() + at, "] 1/1001  %d:%d left", &minutes, &seconds), 2);
    EXPECT_GE(60 * minutes + seconds, std::lround(1000 * least));
    EXPECT_LE(60 * minutes + seconds, std::lround(1000 * most));
}

} // namespace
} // namespace vistaTrim::cli
