#include "batch/photo_list.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

#include "text/shown_name.h"
#include "vistaTrimPhoto/readable_formats.h"

namespace vistaTrim::cli {

namespace {

namespace fs = std::filesystem;

// Names that begin with a dot are hidden, including files being written.
bool IsHidden(const fs::path& path)
{
    const std::string name = path.filename().string();
    return !name.empty() && name[0] == '.';
}

// True if both are the same file or folder, however they are spelled. An output that does not exist
// yet matches nothing.
bool IsOutput(const fs::path& entry, const std::string& output)
{
    std::error_code unknown;
    return !output.empty() && fs::equivalent(entry, output, unknown);
}

void WalkFolder(const fs::path& folder, const fs::path& inside, const ListOptions& options,
                PhotoList& list)
{
    std::vector<fs::path> entries;
    std::error_code error;
    for (fs::directory_iterator it(folder, error); !error && it != fs::directory_iterator();
         it.increment(error))
        entries.push_back(it->path());
    if (error) {
        list.Photos.push_back({folder.string(), "", error.message(), nullptr});
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
                WalkFolder(entry, inside / entry.filename(), options, list);
            continue;
        }
        switch (photo::KindOfFile(entry.string())) {
        case photo::FileKind::Photograph:
            list.Photos.push_back({entry.string(), inside.string(), "", nullptr});
            break;
        case photo::FileKind::Raw: ++list.SkippedRaw; [[fallthrough]];
        case photo::FileKind::Other: ++list.Skipped; break;
        }
    }
}

void AddName(const std::string& name, const ListOptions& options, PhotoList& list)
{
    std::error_code unknown;
    if (!fs::is_directory(name, unknown)) {
        list.Photos.push_back({name, "", "", nullptr});
        return;
    }
    const size_t before = list.Photos.size();
    WalkFolder(name, "", options, list);
    if (list.Photos.size() == before)
        list.Photos.push_back(
            {name, "",
             options.Recursive
                 ? "no photograph in this folder or its subfolders"
                 : "no photograph in this folder; --recursive searches its subfolders",
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

void AddList(const std::string& name, std::istream& names, const ListOptions& options,
             PhotoList& list)
{
    constexpr const char* kByteOrderMark = "\xEF\xBB\xBF";
    bool any = false;
    bool first = true;
    std::string listed;
    while (std::getline(names, listed, options.NullSeparated ? '\0' : '\n')) {
        if (first && listed.compare(0, 3, kByteOrderMark) == 0)
            listed.erase(0, 3);
        first = false;
        if (!options.NullSeparated && !listed.empty() && listed.back() == '\r')
            listed.pop_back(); // lists from systems with CRLF line ends
        if (listed.empty())
            continue;
        any = true;
        AddName(listed, options, list);
    }
    if (!any)
        list.Photos.push_back({name, "", "the list names no photograph", nullptr});
}

} // namespace

PhotoList ListPhotos(const std::vector<std::string>& names, const ListOptions& options,
                     std::istream& input)
{
    PhotoList list;
    for (const std::string& name : names) {
        if (name == "-")
            list.Photos.push_back(FromStandardInput(input));
        else
            AddName(name, options, list);
    }
    for (const std::string& name : options.FilesFrom) {
        if (name == "-") {
            AddList(name, input, options, list);
            continue;
        }
        std::error_code unknown;
        std::ifstream file(name, std::ios::binary);
        if (!file)
            list.Photos.push_back(
                {name, "", "cannot read the list: " + std::generic_category().message(errno),
                 nullptr});
        else if (fs::is_directory(name, unknown))
            list.Photos.push_back({name, "", "is a folder, not a list of names", nullptr});
        else
            AddList(name, file, options, list);
    }
    return list;
}

std::string SkippedSentence(const PhotoList& list)
{
    if (list.Skipped == 0)
        return "";
    const bool isOne = list.Skipped == 1;
    const std::string count = std::to_string(list.Skipped);
    if (list.SkippedRaw == list.Skipped)
        return "skipped " + count +
               (isOne ? " raw photograph, which has" : " raw photographs, which have") +
               " to be developed to JPEG or TIFF first";
    std::string sentence =
        "skipped " + count +
        (isOne ? " file that is not a photograph" : " files that are not photographs");
    if (list.SkippedRaw > 0)
        sentence += ", or raw (" + std::to_string(list.SkippedRaw) +
                    "), and then to be developed to JPEG or TIFF first";
    return sentence;
}

std::string ShownName(const std::string& path)
{
    return path == "-" ? "standard input" : Shown(path);
}

} // namespace vistaTrim::cli
