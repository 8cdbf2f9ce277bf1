// Holds the BLAS that the library is linked with to the calling thread.
#ifndef VISTATRIM_CLI_BATCH_BLAS_THREADS_H
#define VISTATRIM_CLI_BATCH_BLAS_THREADS_H

namespace vistaTrim::cli {

// Call before the first driver. Each worker is one thread; a BLAS that starts more for the
// small products of the analysis loses time and takes the other workers' processors. The threads
// that it has started already end here: they would look for work in a busy loop for a while.
void HoldBlasToOneThread();

} // namespace vistaTrim::cli

#endif
