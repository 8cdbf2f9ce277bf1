#include "vips_runtime.h"

#include <mutex>
#include <shared_mutex>
#include <string>
#include <vector>

#include <vips/vips8>

#include "photo_error.h"

namespace vistaTrim::host {

namespace {

std::shared_mutex insideVips;
std::mutex gate; // whoever waits to be alone holds it, so that nobody enters past him

// A damaged file makes libvips say so as a warning and as an error; the error is enough.
void DropMessage(const char*, GLogLevelFlags, const char*, void*)
{
}

// What libvips says of a file that none of its readers takes.
constexpr const char* kUnknownFormat = "source is not in a known format";

// "a: b\na: b\nc\n" becomes "a: b; c".
std::string OnOneLine(const std::string& text)
{
    std::vector<std::string> lines(1);
    for (const char c : text) {
        if (c == '\n')
            lines.emplace_back();
        else
            lines.back().push_back(c);
    }
    std::string joined;
    std::string before;
    for (const std::string& line : lines) {
        if (line.empty() || line == before)
            continue;
        joined += (joined.empty() ? "" : "; ") + line;
        before = line;
    }
    if (joined.find(kUnknownFormat) != std::string::npos)
        return "not a picture, or of a format that cannot be read";
    return joined.empty() ? "libvips gives no reason" : joined;
}

} // namespace

void StartVips(const char* programName)
{
    if (VIPS_INIT(programName) != 0)
        throw PhotoError("libvips does not start: " + OnOneLine(vips_error_buffer()));
    g_log_set_handler("VIPS", static_cast<GLogLevelFlags>(G_LOG_LEVEL_WARNING | G_LOG_LEVEL_INFO),
                      DropMessage, nullptr);
    // Loaders that were never hardened against hostile files stay shut, except these two that
    // photographs do come in.
    vips_block_untrusted_set(TRUE);
    vips_operation_block_set("VipsForeignLoadPpm", FALSE);
    vips_operation_block_set("VipsForeignLoadJxl", FALSE);
    // Every photograph is read once; remembered operations would only hold its memory.
    vips_cache_set_max(0);
    // One photograph is one worker's work; more threads inside it would fight the others.
    vips_concurrency_set(1);
}

void StopVips()
{
    vips_shutdown();
}

void LeaveVips()
{
    vips_thread_shutdown();
}

void RunVips(const std::function<void()>& work, const std::string& what)
{
    try {
        std::unique_lock<std::mutex> entering(gate);
        std::shared_lock<std::shared_mutex> inside(insideVips);
        entering.unlock();
        work();
        return;
    } catch (const vips::VError&) {
        // Again, alone, for the reason.
    }
    std::lock_guard<std::mutex> entering(gate);
    std::lock_guard<std::shared_mutex> alone(insideVips);
    vips_error_clear();
    try {
        work();
    } catch (const vips::VError& error) {
        const std::string reason = OnOneLine(error.what());
        vips_error_clear();
        throw PhotoError(what.empty() ? reason : what + " (" + reason + ")");
    }
}

} // namespace vistaTrim::host
