// The frame that all commands share: workers, progress, faults, timings, the exit status.
#ifndef VISTATRIM_HOST_RUN_PHOTOS_H
#define VISTATRIM_HOST_RUN_PHOTOS_H

#include <functional>
#include <vector>

#include "options.h"
#include "photo_list.h"
#include "result.h"

namespace vistaTrim::host {

struct PhotoSteps {
    // Runs in a worker. What it throws becomes the result's Error.
    std::function<void(const ListedPhoto& photo, PhotoResult& result)> Work;
    // Gets every result, failed ones too, in the order of the input. If it throws PhotoError,
    // the output cannot be written and the run ends.
    std::function<void(const PhotoResult& result)> Emit;
};

// Returns the exit status: 0, 1 if anything failed, 128 + the signal's number if interrupted.
int RunPhotos(const Options& options, const std::vector<ListedPhoto>& photos,
              const PhotoSteps& steps);

// One line on standard error.
void Complain(const std::string& text);

} // namespace vistaTrim::host

#endif
