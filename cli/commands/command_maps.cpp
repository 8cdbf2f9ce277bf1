#include "commands/commands.h"

#include <cstdio>

#include "batch/output_place.h"
#include "batch/run_photos.h"
#include "commands/map_files.h"
#include "options/program_error.h"
#include "text/shown_name.h"
#include "vistaTrimPhoto/stopwatch.h"

namespace vistaTrim::cli {

int RunMaps(const Options& options, const std::vector<ListedPhoto>& photos)
{
    try {
        CheckOutputFolder(options.Output);
    } catch (const ProgramError& error) {
        Complain(error.what());
        return 1;
    }
    PhotoSteps steps;
    steps.Work = [&options](const ListedPhoto& photo, PhotoResult& result) {
        const std::string prefix = OutputPrefix(options, photo);
        photo::RegionOptions noRegions;
        noRegions.Faces = photo::FaceSearch::Off;
        const photo::Analysis analysis = Analyse(OpenPhoto(options, photo), noRegions);
        result.Found.Times.Read = analysis.Picture().ReadMilliseconds;
        result.Found.Times.Analyse = analysis.Milliseconds();
        const photo::Stopwatch writing;
        result.Written = WriteMapFiles(analysis.Maps(), prefix, options.Force);
        result.WriteMilliseconds = writing.Milliseconds();
    };
    steps.Emit = [](const PhotoResult& result) {
        for (const std::string& name : result.Written)
            std::printf("%s\n", Shown(name).c_str());
        if (std::fflush(stdout) != 0)
            throw ProgramError("cannot write standard output");
    };
    return RunPhotos(options, WithoutNameClashes(photos), steps);
}

} // namespace vistaTrim::cli
