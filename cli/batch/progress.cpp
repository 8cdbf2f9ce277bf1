#include "batch/progress.h"

#include <cmath>
#include <cstdio>

#include <unistd.h>

namespace vistaTrim::cli {

namespace {

constexpr size_t kBarWidth = 30;

} // namespace

std::string ProgressLine(size_t done, size_t total, double seconds)
{
    const size_t filled = total == 0 ? kBarWidth : kBarWidth * done / total;
    std::string line = "[" + std::string(filled, '#') + std::string(kBarWidth - filled, '.') +
                       "] " + std::to_string(done) + "/" + std::to_string(total);
    if (done > 0 && done < total) {
        const double left = seconds / static_cast<double>(done) * static_cast<double>(total - done);
        const auto whole = std::lround(left);
        const std::string rest = std::to_string(whole % 60);
        line +=
            "  " + std::to_string(whole / 60) + ":" + (rest.size() < 2 ? "0" : "") + rest + " left";
    }
    return line;
}

Progress::Progress(size_t total, bool wanted)
    : Total(total), Wanted(wanted), Start(std::chrono::steady_clock::now())
{
    Show(0);
}

Progress::~Progress()
{
    Hide();
}

void Progress::Hide()
{
    if (!Wanted)
        return;
    std::fputs("\r\x1b[K", stderr); // back to the start of the line, then clear it
    std::fflush(stderr);
}

void Progress::Show(size_t done)
{
    if (!Wanted)
        return;
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - Start;
    std::fprintf(stderr, "\r\x1b[K%s", ProgressLine(done, Total, passed.count()).c_str());
    std::fflush(stderr);
}

bool StandardErrorIsTerminal()
{
    return isatty(STDERR_FILENO) == 1;
}

} // namespace vistaTrim::cli
