// Runs a job for each photograph on several threads and shows progress on the error stream.
#ifndef VISTATRIM_TOOLS_PHOTO_LOOP_H
#define VISTATRIM_TOOLS_PHOTO_LOOP_H

#include <cstddef>
#include <functional>

// Calls job(i) once for every i below count, on any of the threads. When a job throws, no further
// job starts and the exception is rethrown here.
void ForEachPhoto(size_t count, int workers, const std::function<void(size_t)>& job);

#endif
