#include "picture/side_by_side.h"

#include <algorithm>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

#include "vistaTrimPhoto/picture_runtime.h"

namespace vistaTrim::photo {

namespace {

class Pieces {
public:
    Pieces(size_t count, const std::function<void(size_t)>& work) : Count(count), Work(work)
    {
    }

    void WorkOn()
    {
        size_t index = 0;
        while (Begin(index)) {
            try {
                Work(index);
            } catch (...) {
                const std::lock_guard<std::mutex> lock(Mutex);
                Next = Count;
                if (!Failure)
                    Failure = std::current_exception();
            }
        }
    }

    void Finish() const
    {
        if (Failure)
            std::rethrow_exception(Failure);
    }

private:
    bool Begin(size_t& index)
    {
        const std::lock_guard<std::mutex> lock(Mutex);
        index = Next;
        Next += index < Count ? 1 : 0;
        return index < Count;
    }

    const size_t Count;
    const std::function<void(size_t)>& Work;
    std::mutex Mutex;
    size_t Next = 0;
    std::exception_ptr Failure;
};

} // namespace

void SideBySide(size_t count, int threads, const std::function<void(size_t index)>& work)
{
    Pieces pieces(count, work);
    const size_t wanted = std::min(count, static_cast<size_t>(std::max(1, threads)));
    std::vector<std::thread> others;
    others.reserve(wanted);
    try {
        while (others.size() + 1 < wanted)
            others.emplace_back([&pieces] {
                pieces.WorkOn();
                LeavePictureThread();
            });
    } catch (const std::system_error&) {
        // Fewer threads do the same work.
    }
    pieces.WorkOn();
    for (std::thread& other : others)
        other.join();
    pieces.Finish();
}

} // namespace vistaTrim::photo
