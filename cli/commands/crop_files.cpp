#include "commands/crop_files.h"

#include <filesystem>
#include <memory>
#include <system_error>

#include <unistd.h>

#include "batch/program_error.h"
#include "batch/whole_file.h"
#include "vistaTrimPhoto/crop_writer.h"

namespace vistaTrim::cli {

namespace {

namespace fs = std::filesystem;

bool Exists(const std::string& file)
{
    return access(file.c_str(), F_OK) == 0;
}

void MakeFolderOf(const std::string& file)
{
    const fs::path folder = fs::path(file).parent_path();
    if (folder.empty())
        return;
    std::error_code error;
    fs::create_directories(folder, error);
    if (error)
        throw ProgramError("cannot make the folder " + folder.string() + ": " + error.message());
}

} // namespace

std::vector<PlannedFile> WriteCropFiles(const photo::Photograph& photograph,
                                        const std::vector<PlannedFile>& files,
                                        const Options& options)
{
    std::vector<PlannedFile> written;
    std::vector<photo::CropOutput> outputs;
    std::vector<std::string> paths;
    std::vector<std::unique_ptr<WholeFile>> whole;
    for (const PlannedFile& file : files) {
        if (options.Resume && Exists(file.Path))
            continue;
        written.push_back(file);
        outputs.push_back(file.Output);
        whole.push_back(std::make_unique<WholeFile>(file.Path, options.Force));
        paths.push_back(whole.back()->TemporaryPath());
    }

    for (const PlannedFile& file : written)
        MakeFolderOf(file.Path);
    photo::WriteCrops(photograph, outputs, paths);
    for (size_t i = whole.size(); i-- > 0;)
        whole[i]->Appear();
    return written;
}

bool HasAllCrops(const photo::Photograph& photograph, const ListedPhoto& photo,
                 const Options& options)
{
    const std::string ending =
        "." + photo::EndingOf(options.CropFiles.Format.value_or(photograph.NativeFormat()));
    for (const CropLabel& label : ExpectedLabels(options, options.Request.Top))
        for (const std::string& name : ExpectedNames(options, photo, label))
            if (!Exists((fs::path(options.Output) / (name + ending)).string()))
                return false;
    return true;
}

} // namespace vistaTrim::cli
