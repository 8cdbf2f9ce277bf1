#include "commands/commands.h"

#include <cstdio>
#include <optional>
#include <set>

#include "batch/program_error.h"
#include "batch/run_photos.h"
#include "batch/whole_file.h"
#include "commands/asked_crops.h"
#include "commands/crop_files.h"
#include "commands/crop_plan.h"
#include "commands/name_clashes.h"
#include "output/manifest.h"
#include "output/picture_snippet.h"
#include "vistaTrimPhoto/stopwatch.h"

namespace vistaTrim::cli {

namespace {

// --force allows to replace crops, not the photographs of this run: one that is yet to be read
// would be cropped again, and the original would be gone.
void CheckThatNoPhotographIsReplaced(const std::set<std::string>& photographs,
                                     const std::vector<PlannedFile>& files)
{
    for (const PlannedFile& file : files)
        if (photographs.count(CanonicalPath(file.Path)) != 0)
            throw ProgramError("its crop " + file.Path +
                               " would replace one of the photographs to be cropped");
}

bool ComplainOfClashes(const std::vector<std::string>& clashes)
{
    constexpr size_t kMost = 10;
    for (size_t i = 0; i < clashes.size() && i < kMost; ++i)
        Complain(clashes[i]);
    if (clashes.size() > kMost)
        Complain("and " + std::to_string(clashes.size() - kMost) + " more");
    if (!clashes.empty())
        Complain("nothing was written; --name gives other names");
    return !clashes.empty();
}

std::string ListOf(const std::vector<std::string>& names)
{
    std::string list;
    for (const std::string& name : names)
        list += (list.empty() ? "" : ", ") + name;
    return list;
}

// What is written beside the crops, as the results come in.
class FilesBeside {
public:
    explicit FilesBeside(const Options& options) : How(options.CropFiles), Replace(options.Force)
    {
        if (!How.Manifest.empty())
            List.emplace(How.Manifest, Replace);
        if (!How.Picture.empty())
            const WholeFile probe(How.Picture, Replace);
    }

    void Add(const PhotoResult& result)
    {
        if (List)
            List->Add(result);
        if (!How.Picture.empty())
            Pictures += PictureSnippet(result, How.Picture, How.Sizes);
    }

    void Finish()
    {
        if (List)
            List->Finish();
        if (!How.Picture.empty())
            WriteWholeFile(How.Picture, Replace, Pictures);
    }

private:
    const CropFileOptions& How;
    bool Replace;
    std::optional<Manifest> List;
    std::string Pictures;
};

void WriteCropsOf(const ListedPhoto& photo, const photo::Photograph& photograph,
                  const Options& options, const std::set<std::string>& photographs,
                  ClaimedNames& claimed, PhotoResult& result)
{
    const std::vector<PlannedFile> files = PlanCropFiles(options, photo, photograph, result);
    CheckThatNoPhotographIsReplaced(photographs, files);
    claimed.Claim(files, photo.Path);
    const photo::Stopwatch writing;
    for (const PlannedFile& file : WriteCropFiles(photograph, files, options)) {
        result.Written.push_back(file.Path);
        result.Crops.push_back({file.Path, file.Crop, file.Size});
    }
    result.WriteMilliseconds = writing.Milliseconds();
}

} // namespace

int RunCrop(const Options& options, const std::vector<ListedPhoto>& photos)
{
    constexpr int32_t kRanksToCompare = 20; // those further down differ as these do
    if (ComplainOfClashes(NameClashes(options, photos, [&options](size_t) {
            return ExpectedLabels(options, kRanksToCompare);
        })))
        return 1;

    std::set<std::string> paths;
    if (options.Force)
        for (const ListedPhoto& photo : photos)
            paths.insert(CanonicalPath(photo.Path));

    try {
        FilesBeside beside(options);
        ClaimedNames claimed;
        PhotoSteps steps;
        steps.Work = [&](const ListedPhoto& photo, PhotoResult& result) {
            const photo::Photograph photograph = OpenPhoto(options, photo);
            if (options.Resume && HasAllCrops(photograph, photo, options))
                return;
            const std::vector<std::string> missing = SuggestAsked(
                Analyse(photograph, RegionsFor(options, photo, photos.size())), options, result);
            if (!result.Found.Crops.empty())
                WriteCropsOf(photo, photograph, options, paths, claimed, result);
            else if (missing.size() < 2)
                throw ProgramError("no crop meets the request; suggest --explain tells why");
            if (!missing.empty())
                throw ProgramError("no crop of " + ListOf(missing) +
                                   " meets the request; suggest --explain tells why");
        };
        steps.Emit = [&beside](const PhotoResult& result) {
            for (const std::string& name : result.Written)
                std::printf("%s\n", name.c_str());
            if (std::fflush(stdout) != 0)
                throw ProgramError("cannot write standard output");
            beside.Add(result);
        };
        const int status = RunPhotos(options, photos, steps);
        beside.Finish();
        return status;
    } catch (const ProgramError& error) {
        Complain(error.what());
        return 1;
    }
}

} // namespace vistaTrim::cli
