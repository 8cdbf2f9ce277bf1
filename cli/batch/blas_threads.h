// Keeps the BLAS that the library is linked with on the calling thread.
#ifndef VISTATRIM_CLI_BATCH_BLAS_THREADS_H
#define VISTATRIM_CLI_BATCH_BLAS_THREADS_H

namespace vistaTrim::cli {

// Call before the first driver. Each worker is one thread; a BLAS that starts more for the small
// products of the analysis loses time and takes processors from other workers. Also stops threads
// it has already started, which would otherwise spin for a while looking for work.
void HoldBlasToOneThread();

} // namespace vistaTrim::cli

#endif
