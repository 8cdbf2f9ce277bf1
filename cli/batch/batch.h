// Processes many photographs, several at a time, and returns results in the order of the input.
#ifndef VISTATRIM_CLI_BATCH_BATCH_H
#define VISTATRIM_CLI_BATCH_BATCH_H

#include <cstddef>
#include <functional>

#include "batch/photo_result.h"

namespace vistaTrim::cli {

struct BatchSteps {
    // Runs in a worker, several at a time. Must not throw.
    std::function<PhotoResult(size_t index)> Work;
    // Runs for one result at a time, in input order, as soon as all earlier ones are done.
    std::function<void(size_t index, PhotoResult& result)> Emit;
    // True once the run should end. Photographs in progress are finished and emitted, and no new
    // ones start. Since they start in order, no finished one is lost.
    std::function<bool()> Stop;
    // Runs in every worker thread as it ends.
    std::function<void()> Leave;
};

// Returns the number of photographs emitted.
size_t RunBatch(size_t count, int workers, const BatchSteps& steps);

} // namespace vistaTrim::cli

#endif
