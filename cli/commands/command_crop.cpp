#include "commands/commands.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <mutex>
#include <optional>
#include <set>
#include <system_error>

#include <unistd.h>

#include "batch/output_place.h"
#include "batch/run_photos.h"
#include "batch/run_record.h"
#include "batch/whole_file.h"
#include "commands/crop_choice.h"
#include "commands/crop_files.h"
#include "commands/crop_plan.h"
#include "commands/name_clashes.h"
#include "commands/suggest_crops.h"
#include "options/program_error.h"
#include "output/manifest.h"
#include "output/picture_snippet.h"
#include "output/xmp_sidecar.h"
#include "text/shown_name.h"
#include "vistaTrimPhoto/stopwatch.h"

namespace vistaTrim::cli {

namespace {

// --force allows replacing crops, but not photographs of this run: one not yet read would be
// cropped again, and the original lost.
void CheckThatNoPhotographIsReplaced(const std::set<std::string>& photographs,
                                     const std::vector<PlannedFile>& files)
{
    for (const PlannedFile& file : files)
        if (photographs.count(CanonicalPath(file.Path)) != 0)
            throw ProgramError("its crop " + Shown(file.Path) +
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
        Complain(
            "nothing was written; --name gives other names, such as {stem}-{extension}-{rank}");
    return !clashes.empty();
}

std::string ListOf(const std::vector<std::string>& names)
{
    std::string list;
    for (const std::string& name : names)
        list += (list.empty() ? "" : ", ") + name;
    return list;
}

// Hidden files do not count: people who empty the folder leave the hidden record behind.
bool HoldsFiles(const std::string& folder)
{
    std::error_code error;
    for (std::filesystem::directory_iterator it(folder, error);
         !error && it != std::filesystem::directory_iterator(); it.increment(error))
        if (it->path().filename().string()[0] != '.')
            return true;
    return false;
}

// The files besides the crops, written as the results come in.
class FilesBeside {
public:
    explicit FilesBeside(const Options& options) : How(options.CropFiles), Replace(options.Force)
    {
        if (!How.Manifest.empty())
            List.emplace(How.Manifest, Replace);
        if (!How.Picture.empty()) {
            CheckOutputFile(How.Picture);
            const WholeFile probe(How.Picture, Replace);
        }
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

class CropRun {
public:
    CropRun(const Options& options, const std::vector<ListedPhoto>& photos,
            const ChosenCrops& chosen, const RunRecord& record)
        : RunOptions(options), Photos(photos), Chosen(chosen), Record(record),
          HeldFiles(HoldsFiles(options.Output)), Beside(options)
    {
        if (options.Force)
            for (const ListedPhoto& photo : photos)
                Originals.insert(CanonicalPath(photo.Path));
    }

    int Run()
    {
        PhotoSteps steps;
        steps.Work = [this](const ListedPhoto& photo, PhotoResult& result) { Work(photo, result); };
        steps.Emit = [this](const PhotoResult& result) { Emit(result); };
        const int status = RunPhotos(RunOptions, Photos, steps);
        if (RunOptions.Force && status == 0 && RunOptions.Output != "-")
            Record.ReplacedAll();
        Beside.Finish();
        if (RunOptions.Resume && status == 0 && !WroteAny && !RunOptions.Quiet)
            Complain("nothing left to do: " + Shown(RunOptions.Output) + " holds all the crops");
        return status;
    }

private:
    void Work(const ListedPhoto& photo, PhotoResult& result)
    {
        const photo::Photograph photograph = OpenPhoto(RunOptions, photo);
        std::vector<std::string> missing;
        if (!Chosen.Photos.empty()) {
            TakeChosen(Chosen.Photos[static_cast<size_t>(&photo - Photos.data())], photograph,
                       result);
        } else {
            const bool sidecar = RunOptions.CropFiles.Xmp || RunOptions.CropFiles.XmpOnly;
            if (RunOptions.Resume && !sidecar && HasAllCrops(photograph, photo, RunOptions))
                return;
            missing = Search(photo, photograph, result);
        }
        const photo::Stopwatch writing;
        if (!result.Found.Crops.empty())
            Write(photo, photograph, result);
        result.WriteMilliseconds = writing.Milliseconds();
        if (!missing.empty())
            throw ProgramError("no crop of " + ListOf(missing) +
                               " meets the request; suggest --explain shows why");
    }

    // Returns the shapes that got no crop. Throws a ProgramError that says why if none got any.
    std::vector<std::string> Search(const ListedPhoto& photo, const photo::Photograph& photograph,
                                    PhotoResult& result) const
    {
        const photo::Analysis analysis = AnalyseFor(RunOptions.Request, photograph,
                                                    RegionsFor(RunOptions, photo, Photos.size()));
        std::vector<std::string> missing = SuggestCrops(analysis, RunOptions, result);
        if (!result.Found.Crops.empty())
            return missing;
        throw ProgramError("no crop" + (missing.size() < 2 ? "" : " of " + ListOf(missing)) + ": " +
                           WhyNoCrop(analysis, RunOptions));
    }

    void Write(const ListedPhoto& photo, const photo::Photograph& photograph, PhotoResult& result)
    {
        const std::vector<PlannedFile> files = PlanCropFiles(RunOptions, photo, photograph, result);
        if (RunOptions.Output == "-") {
            if (files.size() != 1)
                throw ProgramError("standard output takes one crop, not " +
                                   std::to_string(files.size()));
            Encoded = photo::EncodeCrops(photograph, {files[0].Output}).at(0);
            return;
        }
        // If the sidecar cannot be written, fail before the crops are.
        std::optional<WholeFile> sidecar;
        if (RunOptions.CropFiles.Xmp || RunOptions.CropFiles.XmpOnly) {
            const std::string path = OutputPrefix(RunOptions, photo) + ".xmp";
            if (!RunOptions.Resume || access(path.c_str(), F_OK) != 0)
                sidecar.emplace(path, RunOptions.Force);
        }
        if (!RunOptions.CropFiles.XmpOnly) {
            CheckThatNoPhotographIsReplaced(Originals, files);
            Claimed.Claim(files, photo.Path);
            for (const PlannedFile& file : WriteCropFiles(
                     photograph, files, RunOptions, ThreadsPerPhoto(RunOptions, Photos.size()),
                     [this] { BeginRecord(); })) {
                result.Written.push_back(file.Path);
                result.Crops.push_back({file.Path, file.Crop, file.Size});
            }
        }
        if (sidecar) {
            BeginRecord();
            WriteWholeFile(sidecar->Target(), RunOptions.Force,
                           XmpSidecar(result.Found.Crops[0].Rect, photograph.Size(),
                                      photograph.StoredOrientation()));
            result.Written.push_back(sidecar->Target());
        }
    }

    // Called only once there is something to write: a refused run leaves no trace.
    void BeginRecord()
    {
        const std::lock_guard<std::mutex> guard(RecordMutex);
        if (RecordBegun)
            return;
        MakeFolder(RunOptions.Output);
        Record.Begin(!HeldFiles);
        RecordBegun = true;
    }

    void Emit(const PhotoResult& result)
    {
        if (RunOptions.Output == "-")
            std::fwrite(Encoded.data(), 1, Encoded.size(), stdout);
        else
            for (const std::string& name : result.Written)
                std::printf("%s\n", Shown(name).c_str());
        if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
            throw ProgramError("cannot write standard output: " +
                               std::generic_category().message(errno));
        WroteAny = WroteAny || !result.Written.empty();
        Beside.Add(result);
    }

    const Options& RunOptions;
    const std::vector<ListedPhoto>& Photos;
    const ChosenCrops& Chosen; // empty: search for crops
    const RunRecord& Record;
    const bool HeldFiles; // before this run
    std::mutex RecordMutex;
    bool RecordBegun = false;
    bool WroteAny = false;
    FilesBeside Beside;
    std::set<std::string> Originals; // photographs that --force must not replace
    ClaimedNames Claimed;
    std::vector<uint8_t> Encoded; // the one crop for standard output
};

void CheckStandardOutput(const std::vector<ListedPhoto>& photos)
{
    if (photos.size() != 1)
        throw ProgramError("standard output takes a crop of one photograph, not of " +
                           std::to_string(photos.size()));
    if (isatty(STDOUT_FILENO) != 0)
        throw ProgramError("standard output is a terminal, which cannot show a picture; send it "
                           "to a file or a program");
}

RunRecord RecordOf(const Options& options, const std::vector<ListedPhoto>& photos,
                   const ChosenCrops& chosen)
{
    RecordedRun run;
    run.Options = options.ResultOptions;
    run.Options.erase("--format"); // what it changes is in the names
    if (!chosen.Photos.empty()) {
        run.Options["--from"] = chosen.Content; // works for standard input too
        return RunRecord::OfFolder(options.Output, run);
    }
    const ListedPhoto any{"{stem}.photo", "", "", nullptr};
    std::set<std::string> endings;
    for (const ListedPhoto& photo : photos)
        if (photo.Error.empty())
            endings.insert(ExpectedEnding(options, photo.Path));
    for (const CropLabel& label : ExpectedLabels(options, 1))
        for (const std::string& name : ExpectedNames(options, any, label))
            for (const std::string& ending : endings)
                run.Names.push_back(name + "." + ending);
    return RunRecord::OfFolder(options.Output, run);
}

void CheckStandingCrops(const Options& options, const RunRecord& record)
{
    if (options.Resume && HoldsFiles(options.Output) && !record.CheckResumed())
        Complain(Shown(options.Output) + " does not say with which options its crops were made; "
                                         "they are taken to be those of this run");
}

} // namespace

int RunCrop(const Options& options, const std::vector<ListedPhoto>& named)
{
    try {
        ChosenCrops chosen;
        std::vector<ListedPhoto> photos = named;
        if (!options.CropFiles.From.empty()) {
            chosen = ReadChoice(options.CropFiles.From, std::cin);
            photos = PhotosOf(chosen);
        }
        const RunRecord record = RecordOf(options, photos, chosen);
        if (options.Output == "-") {
            CheckStandardOutput(photos);
        } else {
            CheckOutputFolder(options.Output);
            CheckStandingCrops(options, record);
            constexpr int32_t kRanksToCompare = 20; // later ranks differ as these do
            const auto labelsOf = [&](size_t photo) {
                return chosen.Photos.empty() ? ExpectedLabels(options, kRanksToCompare)
                                             : chosen.Photos[photo].Labels;
            };
            if (ComplainOfClashes(NameClashes(options, photos, labelsOf)))
                return 1;
            for (size_t i = 0; i < photos.size(); ++i)
                ClearFoldersOf(photos[i], labelsOf(i), options);
        }
        return CropRun(options, photos, chosen, record).Run();
    } catch (const OptionFileError&) {
        throw; // with a status of its own
    } catch (const ProgramError& error) {
        Complain(error.what());
        return 1;
    }
}

} // namespace vistaTrim::cli
