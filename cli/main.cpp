// vistatrim: finds good crops of photographs.
#include <algorithm>
#include <filesystem>
#include <iostream>
#include <system_error>
#include <vector>

#include "batch/blas_threads.h"
#include "batch/interruption.h"
#include "batch/photo_list.h"
#include "batch/run_photos.h"
#include "commands/commands.h"
#include "options/option_files.h"
#include "options/options.h"
#include "options/program_error.h"
#include "text/shown_name.h"
#include "vistaTrimPhoto/photo_error.h"
#include "vistaTrimPhoto/picture_runtime.h"

using namespace vistaTrim::cli;
namespace photo = vistaTrim::photo;

namespace {

// The presets and the ranking were read with the options.
void CheckOptionFiles(const Options& options)
{
    const auto check = [](const char* option, const std::string& file) {
        if (!file.empty())
            CheckOptionFile(option, file);
    };
    const std::string standardInput = "-";
    for (const std::string& list : options.FilesFrom)
        if (list != standardInput)
            check("--files-from", list);
    if (options.CropFiles.From != standardInput)
        check("--from", options.CropFiles.From);
    check("--regions", options.RegionsPath);
}

// A file that names none of the photographs was made for others or spells their names differently.
void ReadRegions(Options& options, const std::vector<ListedPhoto>& photos)
{
    if (options.RegionsPath.empty())
        return;
    try {
        options.Regions = photo::RegionsFile(ReadOptionFile("--regions", options.RegionsPath),
                                             Shown(options.RegionsPath));
    } catch (const photo::PhotoError& error) {
        throw OptionFileError(std::string("--regions: ") + error.what());
    }
    if (std::none_of(photos.begin(), photos.end(), [&options](const ListedPhoto& photo) {
            return options.Regions.Names(photo.Path);
        }))
        throw ProgramError(Shown(options.RegionsPath) + " names none of the photographs");
}

// A folder named as input is read even if it holds crops of earlier runs.
void WarnOfCropsAmongPhotographs(const Options& options, const std::string& output)
{
    std::error_code unknown;
    for (const std::string& name : options.Photos)
        if (std::filesystem::is_directory(name, unknown) &&
            std::filesystem::equivalent(name, output, unknown))
            Complain(Shown(name) +
                     " is both read and written: files of earlier runs in it count as "
                     "photographs");
}

int RunChosen(Options options)
{
    CheckOptionFiles(options);
    const std::string output = options.Output == "-" ? "" : options.Output;
    WarnOfCropsAmongPhotographs(options, output);
    const PhotoList list =
        ListPhotos(options.Photos,
                   {options.Recursive, options.NullSeparated, options.FilesFrom, output}, std::cin);
    const std::vector<ListedPhoto>& photos = list.Photos;
    ReadRegions(options, photos);
    const std::string skipped = SkippedSentence(list);
    if (!skipped.empty() && !options.Quiet)
        Complain(skipped);
    switch (options.Chosen) {
    case Command::Suggest: return RunSuggest(options, photos);
    case Command::Crop: return RunCrop(options, photos);
    case Command::Report: return RunReport(options, photos);
    case Command::Maps: return RunMaps(options, photos);
    case Command::ContactSheet: break;
    }
    return RunContactSheet(options, photos);
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
    } catch (const OptionFileError& error) {
        Complain(error.what());
        return kUsageFault;
    } catch (const std::exception& error) {
        Complain(error.what());
        return 1;
    }
}
