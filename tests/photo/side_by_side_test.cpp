#include "picture/side_by_side.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "vistaTrimPhoto/picture_runtime.h"

namespace vistaTrim::photo {
namespace {

class SideBySideTest : public testing::Test {
protected:
    SideBySideTest()
    {
        StartPictureRuntime(); // the threads unregister from it as they end
    }
};

TEST_F(SideBySideTest, DoesEachPieceOnce)
{
    for (const int threads : {0, 1, 3, 20}) {
        SCOPED_TRACE(threads);
        std::mutex guard;
        std::multiset<size_t> done;
        std::set<std::thread::id> workers;
        SideBySide(12, threads, [&](size_t index) {
            const std::lock_guard<std::mutex> lock(guard);
            done.insert(index);
            workers.insert(std::this_thread::get_id());
        });
        EXPECT_EQ(done, (std::multiset<size_t>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}));
        EXPECT_LE(workers.size(), static_cast<size_t>(std::max(1, threads)));
    }
    SideBySide(0, 3, [](size_t) { FAIL(); });
}

TEST_F(SideBySideTest, WorksOnSeveralPiecesAtATime)
{
    std::mutex guard;
    std::condition_variable changed;
    int inside = 0;
    bool met = false;
    SideBySide(2, 2, [&](size_t) {
        std::unique_lock<std::mutex> lock(guard);
        met = ++inside == 2 || met;
        changed.notify_all();
        changed.wait_for(lock, std::chrono::seconds(20), [&met] { return met; });
        --inside;
    });
    EXPECT_TRUE(met);
}

TEST_F(SideBySideTest, RethrowsTheFirstFailureAndStartsNothingAfterIt)
{
    for (const int threads : {1, 3}) {
        std::mutex guard;
        std::vector<size_t> started;
        EXPECT_THROW(SideBySide(1000, threads,
                                [&](size_t index) {
                                    {
                                        const std::lock_guard<std::mutex> lock(guard);
                                        started.push_back(index);
                                    }
                                    if (index == 1)
                                        throw std::runtime_error("one");
                                    std::this_thread::sleep_for(std::chrono::milliseconds(5));
                                }),
                     std::runtime_error);
        EXPECT_LT(started.size(), 500U);
    }
}

} // namespace
} // namespace vistaTrim::photo
