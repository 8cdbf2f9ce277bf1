#include "commands/commands.h"

#include <filesystem>
#include <map>
#include <utility>

#include "batch/freed_memory.h"
#include "batch/output_place.h"
#include "batch/run_photos.h"
#include "batch/temporary_files.h"
#include "options/program_error.h"
#include "text/shown_name.h"
#include "vistaTrimPhoto/photo_error.h"

namespace vistaTrim::cli {

photo::Photograph OpenPhoto(const Options& options, const ListedPhoto& photo)
{
    if (!photo.Bytes)
        return photo::Photograph::FromFile(photo.Path, options.Reading);
    try {
        return photo::Photograph::FromBytes(photo.Bytes->data(), photo.Bytes->size(),
                                            options.Reading);
    } catch (const photo::PhotoError& error) {
        if (error.GetKind() != photo::PhotoError::Kind::Unsupported)
            throw;
        throw ProgramError(std::string(error.what()) +
                           "; a list of names is read by --files-from -");
    }
}

photo::Analysis Analyse(const photo::Photograph& photograph, const photo::RegionOptions& regions)
{
    photo::WorkingPicture picture = photograph.ReadWorkingPicture();
    ReturnFreedMemory();
    return photo::Analysis(std::move(picture), regions);
}

photo::Analysis AnalyseFor(const photo::Request& request, const photo::Photograph& photograph,
                           const photo::RegionOptions& regions)
{
    photo::CheckRequest(request, photograph.Size());
    return Analyse(photograph, regions);
}

photo::RegionOptions RegionsFor(const Options& options, const ListedPhoto& photo, size_t photos)
{
    photo::RegionOptions regions = options.RegionUse;
    regions.Regions = options.Regions.RegionsOf(photo.Path);
    regions.Threads = ThreadsPerPhoto(options, photos);
    return regions;
}

std::string StemOf(const ListedPhoto& photo)
{
    return photo.Path == "-" ? "stdin" : std::filesystem::path(photo.Path).stem().string();
}

std::string ExtensionOf(const ListedPhoto& photo)
{
    const std::string extension = std::filesystem::path(photo.Path).extension().string();
    return extension.empty() ? extension : extension.substr(1);
}

std::string OutputPrefix(const Options& options, const ListedPhoto& photo)
{
    namespace fs = std::filesystem;
    const fs::path folder = fs::path(options.Output) / photo.Inside;
    MakeFolder(folder.string());
    ClearAbandoned(folder.string());
    return (folder / StemOf(photo)).string();
}

std::vector<ListedPhoto> WithoutNameClashes(const std::vector<ListedPhoto>& photos)
{
    namespace fs = std::filesystem;
    std::map<std::string, std::string> owners;
    std::vector<ListedPhoto> checked = photos;
    for (ListedPhoto& photo : checked) {
        const std::string name = (fs::path(photo.Inside) / StemOf(photo)).string();
        if (!photo.Error.empty())
            continue; // nothing will be written for it
        const auto [owner, isFirst] = owners.emplace(name, photo.Path);
        if (!isFirst)
            photo.Error = "its files would have the same names as those of " + Shown(owner->second);
    }
    return checked;
}

} // namespace vistaTrim::cli
