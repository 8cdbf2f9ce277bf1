#include "batch/whole_file.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

#include "batch/program_error.h"

namespace vistaTrim::cli {

namespace {

std::string TemporaryName(const std::string& target)
{
    static std::atomic<unsigned> counter{0};
    const std::filesystem::path path(target);
    const std::string name = ".vistatrim-" + std::to_string(getpid()) + "-" +
                             std::to_string(counter++) + path.extension().string();
    return (path.parent_path() / name).string();
}

[[noreturn]] void Fail(const std::string& target, int error)
{
    if (error == EEXIST)
        throw ProgramError(target + " exists already; --force replaces it");
    throw ProgramError("cannot write " + target + ": " + std::generic_category().message(error));
}

} // namespace

WholeFile::WholeFile(const std::string& target, bool replace)
    : Path(target), Temporary(TemporaryName(target)), Replace(replace)
{
    // Check before doing the work.
    if (!replace && access(target.c_str(), F_OK) == 0)
        Fail(target, EEXIST);
}

WholeFile::~WholeFile()
{
    if (!Done)
        unlink(Temporary.c_str());
}

const std::string& WholeFile::TemporaryPath() const
{
    return Temporary;
}

const std::string& WholeFile::Target() const
{
    return Path;
}

void WholeFile::Appear()
{
    if (Replace) {
        if (rename(Temporary.c_str(), Path.c_str()) != 0)
            Fail(Path, errno);
        Done = true;
        return;
    }
    if (renameat2(AT_FDCWD, Temporary.c_str(), AT_FDCWD, Path.c_str(), RENAME_NOREPLACE) == 0) {
        Done = true;
        return;
    }
    // Some file systems do not support that. link() also fails if the target exists; the destructor
    // removes the temporary name.
    if (errno != EINVAL && errno != ENOSYS)
        Fail(Path, errno);
    if (link(Temporary.c_str(), Path.c_str()) != 0)
        Fail(Path, errno);
}

void WriteWholeFile(const std::string& target, bool replace, const std::string& text)
{
    WholeFile file(target, replace);
    std::ofstream stream(file.TemporaryPath(), std::ios::binary);
    stream.write(text.data(), static_cast<std::streamsize>(text.size()));
    stream.close();
    if (!stream)
        Fail(target, errno != 0 ? errno : EIO);
    file.Appear();
}

} // namespace vistaTrim::cli
