#include "commands.h"

#include <cstdio>

#include "crop_writer.h"
#include "photo_error.h"
#include "run_photos.h"
#include "stopwatch.h"

namespace vistaTrim::host {

int RunCrop(const Options& options, const std::vector<ListedPhoto>& photos)
{
    PhotoSteps steps;
    steps.Work = [&options](const ListedPhoto& photo, PhotoResult& result) {
        const std::string prefix = OutputPrefix(options, photo);
        const Photograph photograph(photo.Path, options.Background);
        if (options.Resume && HasAllCrops(photograph, prefix, options))
            return;
        ReadAndSuggest(photograph, options, result);
        if (result.Crops.empty())
            throw PhotoError("no crop meets the request; suggest --explain tells why");
        const Stopwatch writing;
        result.Written = WriteCrops(photograph, result.Crops, prefix, options);
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
