// Many photographs, several at a time, results in the order of the input.
#ifndef VISTATRIM_CLI_BATCH_BATCH_H
#define VISTATRIM_CLI_BATCH_BATCH_H

#include <cstddef>
#include <functional>

#include "batch/photo_result.h"

namespace vistaTrim::cli {

struct BatchSteps {
    // Runs in a worker, several at a time. Must not throw.
    std::function<PhotoResult(size_t index)> Work;
    // Runs for one result at a time, in the order of the input, as soon as all before it are
    // through.
    std::function<void(size_t index, PhotoResult& result)> Emit;
    // True once the run is to end. Photographs under work are then finished and emitted, and
    // no new ones are begun. They are begun in order, so nothing finished is left out.
    std::function<bool()> Stop;
    // Runs in every worker thread as it ends.
    std::function<void()> Leave;
};

// Returns the number of photographs emitted.
size_t RunBatch(size_t count, int workers, const BatchSteps& steps);

} // namespace vistaTrim::cli

#endif
