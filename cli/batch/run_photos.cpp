#include "batch/run_photos.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <new>
#include <thread>

#include "batch/batch.h"
#include "batch/freed_memory.h"
#include "batch/interruption.h"
#include "batch/progress.h"
#include "options/program_error.h"
#include "text/shown_name.h"
#include "vistaTrimPhoto/photo_error.h"
#include "vistaTrimPhoto/picture_runtime.h"

namespace vistaTrim::cli {

namespace {

PhotoResult WorkSafely(const ListedPhoto& photo, const PhotoSteps& steps)
{
    PhotoResult result;
    result.File = photo.Path;
    result.Error = photo.Error;
    if (!result.Error.empty())
        return result;
    try {
        steps.Work(photo, result);
    } catch (const photo::PhotoError& error) {
        result.Error = error.Text(kWishPrefix);
    } catch (const std::bad_alloc&) {
        result.Error = "not enough memory";
    } catch (const std::exception& error) {
        result.Error = error.what();
    }
    return result;
}

std::string TimingLine(const PhotoResult& result)
{
    const photo::Timings& times = result.Found.Times;
    char line[200];
    std::snprintf(line, sizeof line,
                  "read %.1f ms, analyse %.1f ms, faces %.1f ms, score %.1f ms, write %.1f ms",
                  times.Read, times.Analyse, times.Faces, times.Score, result.WriteMilliseconds);
    return ShownName(result.File) + ": " + line;
}

} // namespace

void Complain(const std::string& text)
{
    std::fprintf(stderr, "vistatrim: %s\n", OneLine(text).c_str());
}

namespace {

int WorkersOf(const Options& options)
{
    return options.Workers != 0
               ? options.Workers
               : std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
}

} // namespace

int ThreadsPerPhoto(const Options& options, size_t photos)
{
    const auto workers = static_cast<size_t>(WorkersOf(options));
    return static_cast<int>(workers / std::clamp<size_t>(photos, 1, workers));
}

int RunPhotos(const Options& options, const std::vector<ListedPhoto>& photos,
              const PhotoSteps& steps)
{
    const int workers = WorkersOf(options);
    // A single photograph may use all processors; with several, each has one worker, and more
    // threads would compete with the other workers.
    photo::SetThreadsPerPicture(photos.size() == 1 ? workers : 1);
    if (photos.size() > 1)
        KeepFreedMemory();
    Progress progress(photos.size(),
                      !options.Quiet && photos.size() > 1 && StandardErrorIsTerminal());
    bool anyFailed = false;
    bool outputFailed = false;

    BatchSteps batch;
    batch.Work = [&](size_t index) { return WorkSafely(photos[index], steps); };
    batch.Emit = [&](size_t index, PhotoResult& result) {
        if (outputFailed)
            return;
        progress.Hide();
        if (!result.Error.empty()) {
            anyFailed = true;
            Complain(ShownName(result.File) + ": " + result.Error);
        }
        try {
            steps.Emit(result);
        } catch (const ProgramError& error) {
            outputFailed = true;
            Complain(error.what());
        }
        if (options.Timings && result.Error.empty())
            Complain(TimingLine(result));
        progress.Show(index + 1);
    };
    batch.Stop = [&] { return outputFailed || NotedInterruption() != 0; };
    batch.Leave = photo::LeavePictureThread;
    const size_t done = RunBatch(photos.size(), workers, batch);
    progress.Hide();

    if (done < photos.size() && NotedInterruption() != 0) {
        Complain("interrupted after " + std::to_string(done) + " of " +
                 std::to_string(photos.size()) + " photographs");
        return 128 + NotedInterruption();
    }
    return anyFailed || outputFailed ? 1 : 0;
}

} // namespace vistaTrim::cli
