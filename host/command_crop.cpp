#include "commands.h"

#include <cstdio>
#include <filesystem>
#include <set>
#include <system_error>

#include "crop_writer.h"
#include "photo_error.h"
#include "run_photos.h"
#include "stopwatch.h"

namespace vistaTrim::host {

namespace {

std::string Canonical(const std::string& path)
{
    std::error_code error;
    const std::filesystem::path canonical = std::filesystem::weakly_canonical(path, error);
    return error ? path : canonical.string();
}

// --force allows to replace crops, not the photographs of this run: one that is yet to be read
// would be cropped again, and the original would be gone.
void CheckThatNoPhotographIsReplaced(const std::set<std::string>& photographs,
                                     const Photograph& photograph, size_t crops,
                                     const std::string& prefix, const Options& options)
{
    for (size_t rank = 1; rank <= crops; ++rank) {
        const std::string file = CropFile(photograph, prefix, rank, options);
        if (photographs.count(Canonical(file)) != 0)
            throw PhotoError("its crop " + file +
                             " would replace one of the photographs to be cropped");
    }
}

} // namespace

int RunCrop(const Options& options, const std::vector<ListedPhoto>& photos)
{
    std::set<std::string> paths;
    if (options.Force)
        for (const ListedPhoto& photo : photos)
            paths.insert(Canonical(photo.Path));

    PhotoSteps steps;
    steps.Work = [&options, &paths](const ListedPhoto& photo, PhotoResult& result) {
        const std::string prefix = OutputPrefix(options, photo);
        const Photograph photograph(photo.Path, options.Background);
        if (options.Resume && HasAllCrops(photograph, prefix, options))
            return;
        ReadAndSuggest(photograph, options, result);
        if (result.Crops.empty())
            throw PhotoError("no crop meets the request; suggest --explain tells why");
        CheckThatNoPhotographIsReplaced(paths, photograph, result.Crops.size(), prefix, options);
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
