#include "commands/name_clashes.h"

#include <filesystem>
#include <map>
#include <set>
#include <system_error>
#include <utility>

#include "commands/crop_plan.h"
#include "text/shown_name.h"
#include "vistaTrimPhoto/image_format.h"

namespace vistaTrim::cli {

namespace {

namespace fs = std::filesystem;

} // namespace

std::string CanonicalPath(const std::string& file)
{
    std::error_code error;
    const fs::path canonical = fs::weakly_canonical(file, error);
    return error ? file : canonical.string();
}

// Judged by names only: reading the file shows whether its contents match its ending.
std::string ExpectedEnding(const Options& options, const std::string& photo)
{
    if (options.CropFiles.Format)
        return photo::EndingOf(*options.CropFiles.Format);
    const std::string ending = fs::path(photo).extension().string();
    const auto format = photo::FormatOfEnding(ending.empty() ? ending : ending.substr(1));
    return photo::EndingOf(format.value_or(photo::ImageFormat::Png));
}

std::vector<std::string>
NameClashes(const Options& options, const std::vector<ListedPhoto>& photos,
            const std::function<std::vector<CropLabel>(size_t photo)>& labelsOf)
{
    std::set<std::string> originals;
    if (options.Force)
        for (const ListedPhoto& photo : photos)
            originals.insert(CanonicalPath(photo.Path));

    std::vector<std::string> clashes;
    std::map<std::string, size_t> owners;
    for (size_t i = 0; i < photos.size(); ++i) {
        if (!photos[i].Error.empty())
            continue; // nothing will be written for it
        std::string clash;
        for (const CropLabel& label : labelsOf(i)) {
            for (const std::string& name : ExpectedNames(options, photos[i], label)) {
                const auto [owner, isFirst] = owners.emplace(name, i);
                const std::string file = (fs::path(options.Output) /
                                          (name + "." + ExpectedEnding(options, photos[i].Path)))
                                             .string();
                if (!isFirst && owner->second == i)
                    clash = "two of its crops would have the same name " + Shown(name) +
                            "; {rank}, {shape} and {width} in --name tell them apart";
                else if (!isFirst)
                    clash = "its files would have the same names as those of " +
                            Shown(photos[owner->second].Path);
                else if (originals.count(CanonicalPath(file)) != 0)
                    clash = "its crop " + Shown(file) +
                            " would replace one of the photographs to be cropped";
            }
        }
        if (!clash.empty())
            clashes.push_back(Shown(photos[i].Path) + ": " + clash);
    }
    return clashes;
}

} // namespace vistaTrim::cli
