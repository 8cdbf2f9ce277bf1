#include "batch/blas_threads.h"

// OpenBLAS' own calls. Weak, so that the host links with another BLAS as well. The environment
// variable of the same purpose is read when the BLAS is loaded, which is before main.
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
