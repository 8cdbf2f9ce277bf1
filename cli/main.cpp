// vistatrim: finds good crops of photographs.
#include <iostream>
#include <vector>

#include "batch/blas_threads.h"
#include "batch/interruption.h"
#include "batch/photo_list.h"
#include "batch/run_photos.h"
#include "commands/commands.h"
#include "options/options.h"
#include "vistaTrimPhoto/picture_runtime.h"

using namespace vistaTrim::cli;
namespace photo = vistaTrim::photo;

namespace {

int RunChosen(const Options& options)
{
    const std::vector<ListedPhoto> photos =
        ListPhotos(options.Photos, {options.Recursive, options.NullSeparated}, std::cin);
    switch (options.Chosen) {
    case Command::Suggest: return RunSuggest(options, photos);
    case Command::Crop: return RunCrop(options, photos);
    case Command::Report: return RunReport(options, photos);
    case Command::Maps: break;
    }
    return RunMaps(options, photos);
}

} // namespace

int main(int argc, char** argv)
{
    const CommandLine line = ParseCommandLine(argc, argv);
    if (line.ExitStatus)
        return *line.ExitStatus;
    try {
        HoldBlasToOneThread();
        photo::StartPictureRuntime(argv[0]);
        NoteInterruptions();
        const int status = RunChosen(line.Values);
        photo::StopPictureRuntime();
        return status;
    } catch (const std::exception& error) {
        Complain(error.what());
        return 1;
    }
}
