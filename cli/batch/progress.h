// A progress bar on standard error, if that is a terminal.
#ifndef VISTATRIM_CLI_BATCH_PROGRESS_H
#define VISTATRIM_CLI_BATCH_PROGRESS_H

#include <chrono>
#include <cstddef>
#include <string>

namespace vistaTrim::cli {

// "[#####.....] 5/10  0:12 left"; seconds are those passed so far.
std::string ProgressLine(size_t done, size_t total, double seconds);

// Not guarded: one thread at a time.
class Progress {
public:
    // Shows nothing if `wanted` is false.
    Progress(size_t total, bool wanted);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // Takes the bar away, so that other lines can be written, until the next Show.
    void Hide();
    void Show(size_t done);

private:
    size_t Total;
    bool Wanted;
    std::chrono::steady_clock::time_point Start;
};

// A bar is wanted for more than one photograph, and only where a person looks.
bool StandardErrorIsTerminal();

} // namespace vistaTrim::cli

#endif
