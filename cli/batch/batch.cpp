#include "batch/batch.h"

#include <algorithm>
#include <condition_variable>
#include <map>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace vistaTrim::cli {

namespace {

class Batch {
public:
    Batch(size_t count, size_t window, const BatchSteps& steps)
        : Count(count), Window(window), Steps(steps)
    {
    }

    void WorkOn()
    {
        while (const std::optional<size_t> index = Begin()) {
            PhotoResult result = Steps.Work(*index);
            Finish(*index, std::move(result));
        }
        Steps.Leave();
    }

    size_t Emitted() const
    {
        return NextToEmit;
    }

private:
    // The next photograph; none if all have begun or the run stops.
    std::optional<size_t> Begin()
    {
        std::unique_lock<std::mutex> lock(Mutex);
        // One slow photograph must not let later results pile up without limit.
        RoomMade.wait(lock, [this] { return NextToBegin < NextToEmit + Window; });
        if (NextToBegin == Count || Steps.Stop())
            return std::nullopt;
        return NextToBegin++;
    }

    void Finish(size_t index, PhotoResult&& result)
    {
        const std::lock_guard<std::mutex> lock(Mutex);
        Waiting.emplace(index, std::move(result));
        for (auto first = Waiting.begin(); first != Waiting.end() && first->first == NextToEmit;
             first = Waiting.erase(first)) {
            Steps.Emit(first->first, first->second);
            ++NextToEmit;
        }
        RoomMade.notify_all();
    }

    const size_t Count;
    const size_t Window; // most photographs started but not yet emitted
    const BatchSteps& Steps;
    std::mutex Mutex;
    std::condition_variable RoomMade;
    size_t NextToBegin = 0;
    size_t NextToEmit = 0;
    std::map<size_t, PhotoResult> Waiting;
};

} // namespace

size_t RunBatch(size_t count, int workers, const BatchSteps& steps)
{
    const size_t threads = std::min(count, static_cast<size_t>(std::max(1, workers)));
    Batch batch(count, 8 * std::max<size_t>(1, threads), steps);
    std::vector<std::thread> others;
    for (size_t i = 1; i < threads; ++i)
        others.emplace_back([&batch] { batch.WorkOn(); });
    batch.WorkOn();
    for (std::thread& other : others)
        other.join();
    return batch.Emitted();
}

} // namespace vistaTrim::cli
