#include "batch/whole_file.h"

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

#include "options/program_error.h"
#include "text/shown_name.h"

namespace vistaTrim::cli {

namespace {

[[noreturn]] void Fail(const std::string& target, int error)
{
    if (error == EEXIST)
        throw ProgramError(Shown(target) + " exists already; --force replaces it");
    throw ProgramError("cannot write " + Shown(target) + ": " +
                       std::generic_category().message(error));
}

} // namespace

WholeFile::WholeFile(const std::string& target, bool replace) : Path(target), Replace(replace)
{
    // Fail before the work is done.
    if (!replace && access(target.c_str(), F_OK) == 0)
        Fail(target, EEXIST);
}

WholeFile::~WholeFile() = default;

const std::string& WholeFile::TemporaryPath()
{
    if (!Temporary)
        Temporary.emplace(Path);
    return Temporary->Path();
}

const std::string& WholeFile::Target() const
{
    return Path;
}

void WholeFile::Appear()
{
    const std::string from = TemporaryPath();
    if (Replace) {
        if (rename(from.c_str(), Path.c_str()) != 0)
            Fail(Path, errno);
    } else if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, Path.c_str(), RENAME_NOREPLACE) != 0) {
        // Not every file system supports that; link() fails too if the target exists.
        if ((errno != EINVAL && errno != ENOSYS) || link(from.c_str(), Path.c_str()) != 0)
            Fail(Path, errno);
    }
    Temporary.reset();
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
