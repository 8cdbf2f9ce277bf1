#include "commands.h"

#include <cstdio>

#include "freed_memory.h"
#include "map_pictures.h"
#include "photo_error.h"
#include "run_photos.h"
#include "stopwatch.h"

namespace vistaTrim::host {

int RunMaps(const Options& options, const std::vector<ListedPhoto>& photos)
{
    PhotoSteps steps;
    steps.Work = [&options](const ListedPhoto& photo, PhotoResult& result) {
        const std::string prefix = OutputPrefix(options, photo);
        const Stopwatch reading;
        const WorkingPicture picture =
            Photograph(photo.Path, options.Background).ReadWorkingPicture();
        ReturnFreedMemory();
        result.Times.Read = reading.Milliseconds();
        const Stopwatch analysing;
        const std::vector<MapPicture> maps = ReadMaps(picture);
        result.Times.Analyse = analysing.Milliseconds();
        const Stopwatch writing;
        result.Written = WriteMaps(maps, prefix, options.Force);
        result.Times.Write = writing.Milliseconds();
    };
    steps.Emit = [](const PhotoResult& result) {
        for (const std::string& name : result.Written)
            std::printf("%s\n", name.c_str());
        if (std::fflush(stdout) != 0)
            throw PhotoError("cannot write standard output");
    };
    return RunPhotos(options, WithoutNameClashes(photos), steps);
}

} // namespace vistaTrim::host
