// What all commands share: workers, progress, errors, timings and the exit status.
#ifndef VISTATRIM_CLI_BATCH_RUN_PHOTOS_H
#define VISTATRIM_CLI_BATCH_RUN_PHOTOS_H

#include <functional>
#include <vector>

#include "batch/photo_list.h"
#include "batch/photo_result.h"
#include "options/options.h"

namespace vistaTrim::cli {

struct PhotoSteps {
    // Runs in a worker. What it throws becomes the result's Error.
    std::function<void(const ListedPhoto& photo, PhotoResult& result)> Work;
    // Gets every result, failed ones too, in the order of the input. If it throws ProgramError,
    // the output cannot be written and the run ends.
    std::function<void(const PhotoResult& result)> Emit;
};

// How many threads the work on one photograph may use in a run over `photos` of them, so that all
// photographs in progress together use no more threads than there are workers.
int ThreadsPerPhoto(const Options& options, size_t photos);

// Returns the exit status: 0, 1 if anything failed, 128 + the signal's number if interrupted.
int RunPhotos(const Options& options, const std::vector<ListedPhoto>& photos,
              const PhotoSteps& steps);

// Writes one line to standard error; line breaks in the text are escaped.
void Complain(const std::string& text);

} // namespace vistaTrim::cli

#endif
