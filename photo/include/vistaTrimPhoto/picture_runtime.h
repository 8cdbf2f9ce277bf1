// Process-wide settings of the library that decodes and encodes pictures. Calling any of this is
// optional: the first photograph starts the library.
#ifndef VISTATRIM_PHOTO_PICTURE_RUNTIME_H
#define VISTATRIM_PHOTO_PICTURE_RUNTIME_H

namespace vistaTrim::photo {

// Does nothing if the library is running. Throws PhotoError. The picture library puts the name into
// its messages. Starting sets and clears an environment variable: a program with threads that
// read the environment calls this before it starts them.
void StartPictureRuntime(const char* programName = "vistaTrim");
// Call it at the end of the program, when no photograph is left. Frees what leak checkers would
// report.
void StopPictureRuntime();

// How many threads may decode or encode one picture. All processors by default.
void SetThreadsPerPicture(int count);

// Frees what the library holds for the calling thread. Call it before a thread that used
// photographs ends.
void LeavePictureThread();

} // namespace vistaTrim::photo

#endif
