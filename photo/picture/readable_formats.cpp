#include "vistaTrimPhoto/readable_formats.h"

#include <algorithm>
#include <map>

#include <sys/stat.h>

#include "picture/loaders.h"
#include "picture/path_ending.h"
#include "picture/unread_formats.h"
#include "picture/vips_runtime.h"
#include "vistaTrimPhoto/picture_runtime.h"

namespace vistaTrim::photo {

namespace {

// libvips' names and ours. A format missing here is shown as libvips calls it.
const std::map<std::string, std::string> kNames = {
    {"Jpeg", "JPEG"},      {"Png", "PNG"},     {"Webp", "WebP"}, {"Tiff", "TIFF"},
    {"Nsgif", "GIF"},      {"Heif", "HEIF"},   {"Ppm", "PPM"},   {"Jxl", "JPEG XL"},
    {"Jp2k", "JPEG 2000"}, {"Rad", "Radiance"}};

struct MoreEnding {
    const char* Family;
    const char* Ending;
};

// Endings in use that libvips does not list.
constexpr MoreEnding kMoreEndings[] = {{"Jpeg", "jfif"}, {"Jpeg", "jif"}, {"Heif", "hif"}};

void AddMoreEndings(Loader& loader)
{
    for (const MoreEnding& more : kMoreEndings)
        if (loader.Family == more.Family && std::find(loader.Endings.begin(), loader.Endings.end(),
                                                      more.Ending) == loader.Endings.end())
            loader.Endings.emplace_back(more.Ending);
}

std::vector<ReadableFormat> ListFormats()
{
    StartPictureRuntime();
    std::vector<ReadableFormat> formats;
    for (Loader& loader : AllowedLoaders()) {
        AddMoreEndings(loader);
        const auto name = kNames.find(loader.Family);
        formats.push_back({name == kNames.end() ? loader.Family : name->second, loader.Endings});
    }
    std::sort(formats.begin(), formats.end(),
              [](const ReadableFormat& a, const ReadableFormat& b) { return a.Name < b.Name; });
    return formats;
}

bool HasEnding(const std::vector<ReadableFormat>& formats, const std::string& ending)
{
    return std::any_of(formats.begin(), formats.end(), [&ending](const ReadableFormat& format) {
        return std::find(format.Endings.begin(), format.Endings.end(), ending) !=
               format.Endings.end();
    });
}

bool IsReadableEnding(const std::string& ending)
{
    // Most folders hold only files that are read without modules, so they need not wait for them.
    static const std::vector<ReadableFormat> kWithoutModules = ListFormats();
    return HasEnding(kWithoutModules, ending) || HasEnding(ReadableFormats(), ending);
}

FileKind KindOfContent(const std::string& path)
{
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_size == 0)
        return FileKind::Other;
    FileKind kind = FileKind::Other;
    const auto look = [&path, &kind] {
        const vips::VSource source = vips::VSource::new_from_file(path.c_str());
        if (!LoaderOf(source).empty())
            kind = FileKind::Photograph;
        if (UnreadSentence(source, "") == kRawSentence)
            kind = FileKind::Raw;
    };
    try {
        RunVips(look, PhotoError::Kind::Unreadable);
        if (kind == FileKind::Other) {
            LoadVipsModules();
            RunVips(look, PhotoError::Kind::Unreadable);
        }
    } catch (const PhotoError&) { // the user did not name this file
        return FileKind::Other;
    }
    return kind;
}

} // namespace

const std::vector<ReadableFormat>& ReadableFormats()
{
    static const std::vector<ReadableFormat> kFormats = [] {
        LoadVipsModules();
        return ListFormats();
    }();
    return kFormats;
}

FileKind KindOfFile(const std::string& path)
{
    const std::string ending = EndingOfPath(path);
    if (ending.empty())
        return KindOfContent(path);
    if (IsReadableEnding(ending))
        return FileKind::Photograph;
    if (!IsRawEnding(ending))
        return FileKind::Other;
    // A developed file may keep its raw extension; it is read if its contents are a readable
    // picture.
    return KindOfContent(path) == FileKind::Photograph ? FileKind::Photograph : FileKind::Raw;
}

} // namespace vistaTrim::photo
