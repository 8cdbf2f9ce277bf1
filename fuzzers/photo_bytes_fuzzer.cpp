// Reads files of arbitrary bytes as photographs: each gives a picture of the right size or is
// rejected with a reason. The decoders belong to libvips and are not instrumented; the target is
// how this library handles what they return.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include "fuzz_support.h"
#include "vistaTrimPhoto/photo_error.h"
#include "vistaTrimPhoto/photograph.h"
#include "vistaTrimPhoto/picture_runtime.h"

using namespace fuzzing;
using namespace vistaTrim::photo;

namespace {

int theFile = -1;
std::string thePath;

void CheckPhotograph()
{
    const Photograph photo = Photograph::FromFile(thePath);
    const PixelSize size = photo.Size();
    Demand(size.Width >= 1 && size.Height >= 1, "a photograph has pixels");
    // A header may promise any size; decoding a huge one would only fill the memory.
    if (int64_t{size.Width} * size.Height > 4000000)
        return;
    const WorkingPicture picture = photo.ReadWorkingPicture();
    Demand(std::max(picture.Pixels.Size.Width, picture.Pixels.Size.Height) == kWorkingLongSide,
           "working size");
    Demand(picture.Pixels.Bytes.size() == size_t{3} *
                                              static_cast<size_t>(picture.Pixels.Size.Width) *
                                              static_cast<size_t>(picture.Pixels.Size.Height),
           "three bytes per pixel");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char*** arguments)
{
    StartPictureRuntime((*arguments)[0]);
    // An unnamed file: nothing is left on disk.
    theFile = memfd_create("photograph", 0);
    Demand(theFile >= 0, "a file to write to");
    thePath = "/proc/self/fd/" + std::to_string(theFile);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count)
{
    Demand(ftruncate(theFile, 0) == 0 &&
               pwrite(theFile, bytes, count, 0) == static_cast<ssize_t>(count),
           "the file can be written");
    try {
        CheckPhotograph();
    } catch (const PhotoError& error) {
        const std::string reason = error.what();
        Demand(!reason.empty() && reason.find('\n') == std::string::npos, "a reason on one line");
    }
    return 0;
}
