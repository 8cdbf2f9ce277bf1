// vistatrim: finds good crops of photographs.
#include <iostream>
#include <vector>

#include "blas_threads.h"
#include "commands.h"
#include "interruption.h"
#include "options.h"
#include "photo_error.h"
#include "photo_list.h"
#include "run_photos.h"
#include "vips_runtime.h"

using namespace vistaTrim::host;

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
        StartVips(argv[0]);
        NoteInterruptions();
        const int status = RunChosen(line.Values);
        StopVips();
        return status;
    } catch (const std::exception& error) {
        Complain(error.what());
        return 1;
    }
}
