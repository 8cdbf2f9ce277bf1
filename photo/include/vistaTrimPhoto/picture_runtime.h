// What the whole process shares of the library that decodes and encodes pictures. Nobody needs
// to call any of this: the first photograph starts it.
#ifndef VISTATRIM_PHOTO_PICTURE_RUNTIME_H
#define VISTATRIM_PHOTO_PICTURE_RUNTIME_H

namespace vistaTrim::photo {

// Does nothing if it has started already. Throws PhotoError. The name is used in messages of the
// picture library. Starting sets and clears an environment variable: a program with threads that
// read the environment calls this before it starts them.
void StartPictureRuntime(const char* programName = "vistaTrim");
// At the end of the program, when no photograph is left; frees what tools would report as leaks.
void StopPictureRuntime();

// How many threads may decode or encode one picture. All processors by default.
void SetThreadsPerPicture(int count);

// Frees what the calling thread holds. For a thread that has used photographs and ends.
void LeavePictureThread();

} // namespace vistaTrim::photo

#endif
