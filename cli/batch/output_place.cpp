#include "batch/output_place.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

#include <unistd.h>

#include "options/program_error.h"
#include "text/shown_name.h"

namespace vistaTrim::cli {

namespace {

namespace fs = std::filesystem;

fs::path WithoutSlash(const std::string& folder)
{
    const fs::path path = fs::path(folder).lexically_normal();
    return path.has_filename() || !path.has_parent_path() || path == path.root_path()
               ? path
               : path.parent_path();
}

} // namespace

std::string FolderOf(const std::string& file)
{
    const fs::path path(file);
    return path.has_parent_path() ? path.parent_path().string() : ".";
}

void CheckOutputFile(const std::string& file)
{
    std::error_code unknown;
    if (fs::is_directory(file, unknown))
        throw ProgramError(Shown(file) + " is a folder; --output takes the name of a file");
    const std::string folder = FolderOf(file);
    if (!fs::exists(folder, unknown))
        throw ProgramError("cannot write " + Shown(file) + ": there is no folder " + Shown(folder));
    if (!fs::is_directory(folder, unknown))
        throw ProgramError("cannot write " + Shown(file) + ": " + Shown(folder) +
                           " is a file, not a folder");
}

void CheckOutputFolder(const std::string& folder)
{
    std::error_code unknown;
    fs::path there = WithoutSlash(folder);
    while (!fs::exists(there, unknown) && there != FolderOf(there.string()))
        there = FolderOf(there.string());
    if (!fs::is_directory(there, unknown))
        throw ProgramError("cannot create the folder " + Shown(folder) + ": " +
                           Shown(there.string()) + " is a file");
    if (there != WithoutSlash(folder) && access(there.c_str(), W_OK | X_OK) != 0)
        throw ProgramError("cannot create the folder " + Shown(folder) + ": " +
                           std::generic_category().message(errno));
}

void MakeFolder(const std::string& folder)
{
    const fs::path path = WithoutSlash(folder);
    if (path.empty())
        return;
    std::error_code error;
    fs::create_directories(path, error);
    if (error)
        throw ProgramError("cannot create the folder " + Shown(path.string()) + ": " +
                           error.message());
}

} // namespace vistaTrim::cli
