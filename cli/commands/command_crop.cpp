#include "commands/commands.h"

#include <cstdio>
#include <filesystem>
#include <set>
#include <system_error>

#include "batch/program_error.h"
#include "batch/run_photos.h"
#include "commands/crop_files.h"
#include "vistaTrimPhoto/stopwatch.h"

namespace vistaTrim::cli {

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
                                     const photo::Photograph& photograph, size_t crops,
                                     const std::string& prefix, const Options& options)
{
    for (size_t rank = 1; rank <= crops; ++rank) {
        const std::string file = CropFile(photograph, prefix, rank, options);
        if (photographs.count(Canonical(file)) != 0)
            throw ProgramError("its crop " + file +
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
    steps.Work = [&options, &paths, count = photos.size()](const ListedPhoto& photo,
                                                           PhotoResult& result) {
        const std::string prefix = OutputPrefix(options, photo);
        const photo::Photograph photograph = OpenPhoto(options, photo);
        if (options.Resume && HasAllCrops(photograph, prefix, options))
            return;
        result.Found =
            Analyse(photograph, RegionsFor(options, photo, count)).Suggest(options.Request);
        const std::vector<photo::Crop>& crops = result.Found.Crops;
        if (crops.empty())
            throw ProgramError("no crop meets the request; suggest --explain tells why");
        CheckThatNoPhotographIsReplaced(paths, photograph, crops.size(), prefix, options);
        const photo::Stopwatch writing;
        result.Written = WriteCropFiles(photograph, crops, prefix, options);
        result.WriteMilliseconds = writing.Milliseconds();
    };
    steps.Emit = [](const PhotoResult& result) {
        for (const std::string& name : result.Written)
            std::printf("%s\n", name.c_str());
        if (std::fflush(stdout) != 0)
            throw ProgramError("cannot write standard output");
    };
    return RunPhotos(options, WithoutNameClashes(photos), steps);
}

} // namespace vistaTrim::cli
