#include "photo_loop.h"

#include <atomic>
#include <cstdio>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

void ForEachPhoto(size_t count, int workers, const std::function<void(size_t)>& job)
{
    std::atomic<size_t> next{0};
    std::mutex lock;
    size_t finished = 0;
    std::exception_ptr failure;
    const auto work = [&] {
        for (size_t i = next++; i < count; i = next++) {
            try {
                job(i);
            } catch (...) {
                const std::lock_guard<std::mutex> held(lock);
                failure = std::current_exception();
                next = count;
                return;
            }
            const std::lock_guard<std::mutex> held(lock);
            ++finished;
            if (finished % 20 == 0 || finished == count)
                std::fprintf(stderr, "\r%zu of %zu photographs", finished, count);
        }
    };
    std::vector<std::thread> threads;
    threads.reserve(static_cast<size_t>(workers));
    for (int i = 0; i < workers; ++i)
        threads.emplace_back(work);
    for (std::thread& thread : threads)
        thread.join();
    std::fprintf(stderr, "\n");
    if (failure)
        std::rethrow_exception(failure);
}
