// Milliseconds since construction.
#ifndef VISTATRIM_PHOTO_STOPWATCH_H
#define VISTATRIM_PHOTO_STOPWATCH_H

#include <chrono>

namespace vistaTrim::photo {

class Stopwatch {
public:
    double Milliseconds() const
    {
        return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - Start)
            .count();
    }

private:
    std::chrono::steady_clock::time_point Start = std::chrono::steady_clock::now();
};

} // namespace vistaTrim::photo

#endif
