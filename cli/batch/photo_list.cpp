#include "batch/photo_list.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

#include "batch/shown_name.h"

namespace vistaTrim::cli {

namespace {

namespace fs = std::filesystem;

bool EndsLikePhotograph(const fs::path& path)
{
    constexpr const char* kEndings[] = {".jpg",  ".jpeg", ".jpe",  ".png", ".webp", ".tif", ".tiff",
                                        ".heic", ".heif", ".avif", ".gif", ".jxl",  ".ppm", ".pgm"};
    std::string ending = path.extension().string();
    for (char& c : ending)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return std::find(std::begin(kEndings), std::end(kEndings), ending) != std::end(kEndings);
}

// Names that begin with a dot are hidden, including files being written.
bool IsHidden(const fs::path& path)
{
    const std::string name = path.filename().string();
    return !name.empty() && name[0] == '.';
}

// The same file or folder, by whatever name. An output that is not there yet is nowhere else.
bool IsOutput(const fs::path& entry, const std::string& output)
{
    std::error_code unknown;
    return !output.empty() && fs::equivalent(entry, output, unknown);
}

void WalkFolder(const fs::path& folder, const fs::path& inside, const ListOptions& options,
                std::vector<ListedPhoto>& photos)
{
    std::vector<fs::path> entries;
    std::error_code error;
    for (fs::directory_iterator it(folder, error); !error && it != fs::directory_iterator();
         it.increment(error))
        entries.push_back(it->path());
    if (error) {
        photos.push_back({folder.string(), "", error.message(), nullptr});
        return;
    }
    std::sort(entries.begin(), entries.end());
    for (const fs::path& entry : entries) {
        if (IsHidden(entry) || IsOutput(entry, options.Output))
            continue;
        std::error_code unknown;
        if (fs::is_directory(entry, unknown)) {
            // Links to folders are not followed: they may form a cycle.
            if (options.Recursive && !fs::is_symlink(entry, unknown))
                WalkFolder(entry, inside / entry.filename(), options, photos);
        } else if (EndsLikePhotograph(entry)) {
            photos.push_back({entry.string(), inside.string(), "", nullptr});
        }
    }
}

void AddName(const std::string& name, const ListOptions& options, std::vector<ListedPhoto>& photos)
{
    std::error_code unknown;
    if (!fs::is_directory(name, unknown)) {
        photos.push_back({name, "", "", nullptr});
        return;
    }
    const size_t before = photos.size();
    WalkFolder(name, "", options, photos);
    if (photos.size() == before)
        photos.push_back({name, "",
                          options.Recursive
                              ? "no photograph in this folder or below it"
                              : "no photograph in this folder; --recursive looks below it",
                          nullptr});
}

ListedPhoto FromStandardInput(std::istream& input)
{
    auto bytes = std::make_shared<const std::string>(std::istreambuf_iterator<char>(input),
                                                     std::istreambuf_iterator<char>());
    if (bytes->empty())
        return {"-", "", "there is nothing to read", nullptr};
    return {"-", "", "", bytes};
}

void AddList(const std::string& name, std::istream& list, const ListOptions& options,
             std::vector<ListedPhoto>& photos)
{
    constexpr const char* kByteOrderMark = "\xEF\xBB\xBF";
    bool any = false;
    bool first = true;
    std::string listed;
    while (std::getline(list, listed, options.NullSeparated ? '\0' : '\n')) {
        if (first && listed.compare(0, 3, kByteOrderMark) == 0)
            listed.erase(0, 3);
        first = false;
        if (!options.NullSeparated && !listed.empty() && listed.back() == '\r')
            listed.pop_back(); // lists from other systems
        if (listed.empty())
            continue;
        any = true;
        AddName(listed, options, photos);
    }
    if (!any)
        photos.push_back({name, "", "the list names no photograph", nullptr});
}

} // namespace

std::vector<ListedPhoto> ListPhotos(const std::vector<std::string>& names,
                                    const ListOptions& options, std::istream& input)
{
    std::vector<ListedPhoto> photos;
    for (const std::string& name : names) {
        if (name == "-")
            photos.push_back(FromStandardInput(input));
        else
            AddName(name, options, photos);
    }
    for (const std::string& name : options.FilesFrom) {
        if (name == "-") {
            AddList(name, input, options, photos);
            continue;
        }
        std::error_code unknown;
        std::ifstream list(name, std::ios::binary);
        if (!list)
            photos.push_back({name, "",
                              "cannot read the list: " + std::generic_category().message(errno),
                              nullptr});
        else if (fs::is_directory(name, unknown))
            photos.push_back({name, "", "is a folder, not a list of names", nullptr});
        else
            AddList(name, list, options, photos);
    }
    return photos;
}

std::string ShownName(const std::string& path)
{
    return path == "-" ? "standard input" : Shown(path);
}

} // namespace vistaTrim::cli
