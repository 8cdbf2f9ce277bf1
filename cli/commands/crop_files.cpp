#include "commands/crop_files.h"

#include <filesystem>
#include <memory>

#include <unistd.h>

#include "batch/output_place.h"
#include "batch/whole_file.h"
#include "vistaTrimPhoto/crop_writer.h"

namespace vistaTrim::cli {

namespace {

namespace fs = std::filesystem;

bool Exists(const std::string& file)
{
    return access(file.c_str(), F_OK) == 0;
}

} // namespace

std::vector<PlannedFile> WriteCropFiles(const photo::Photograph& photograph,
                                        const std::vector<PlannedFile>& files,
                                        const Options& options, int threads,
                                        const std::function<void()>& begin)
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
    }

    photo::CheckCropFiles(photograph, outputs);
    if (!whole.empty())
        begin();
    for (const std::unique_ptr<WholeFile>& file : whole) {
        MakeFolder(fs::path(file->Target()).parent_path().string());
        paths.push_back(file->TemporaryPath());
    }
    photo::WriteCrops(photograph, outputs, paths, threads);
    for (size_t i = whole.size(); i-- > 0;)
        whole[i]->Appear();
    return written;
}

void ClearFoldersOf(const ListedPhoto& photo, const std::vector<CropLabel>& labels,
                    const Options& options)
{
    for (const CropLabel& label : labels)
        for (const std::string& name : ExpectedNames(options, photo, label))
            ClearAbandoned(FolderOf((fs::path(options.Output) / name).string()));
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
