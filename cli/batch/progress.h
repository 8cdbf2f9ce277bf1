// A progress bar on standard error, if that is a terminal.
#ifndef VISTATRIM_CLI_BATCH_PROGRESS_H
#define VISTATRIM_CLI_BATCH_PROGRESS_H

#include <chrono>
#include <cstddef>
#include <string>

namespace vistaTrim::cli {

// "[#####.....] 5/10  0:12 left"; seconds is the time elapsed.
std::string ProgressLine(size_t done, size_t total, double seconds);

// Not thread-safe.
class Progress {
public:
    // Shows nothing if `wanted` is false.
    Progress(size_t total, bool wanted);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // Clears the bar until the next Show, so that other lines can be written.
    void Hide();
    void Show(size_t done);

private:
    size_t Total;
    bool Wanted;
    std::chrono::steady_clock::time_point Start;
};

// The bar is for more than one photograph, on a terminal only.
bool StandardErrorIsTerminal();

} // namespace vistaTrim::cli

#endif
