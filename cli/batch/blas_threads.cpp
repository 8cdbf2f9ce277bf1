#include "batch/blas_threads.h"

// OpenBLAS functions. Weak, so that the program also links with another BLAS. The environment
// variable for this is read when the BLAS loads, before main.
extern "C" void openblas_set_num_threads(int count) __attribute__((weak));
extern "C" int blas_thread_shutdown_() __attribute__((weak));

namespace vistaTrim::cli {

void HoldBlasToOneThread()
{
    if (openblas_set_num_threads != nullptr)
        openblas_set_num_threads(1);
    // In this order: the first call would start the threads again.
    if (blas_thread_shutdown_ != nullptr)
        blas_thread_shutdown_();
}

} // namespace vistaTrim::cli
