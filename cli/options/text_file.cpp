#include "options/text_file.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <system_error>

#include <unistd.h>

#include "options/program_error.h"
#include "text/shown_name.h"

namespace vistaTrim::cli {

namespace {

struct CloseFile {
    void operator()(std::FILE* file) const
    {
        std::fclose(file);
    }
};

std::string CannotRead(const std::string& file, int error)
{
    return "cannot read " + Shown(file) + ": " + std::generic_category().message(error);
}

} // namespace

// Not a stream of the standard library: on a read error those throw or end, and lose the reason.
std::string ReadTextFile(const std::string& file)
{
    const std::string fault = FaultOfFile(file);
    if (!fault.empty())
        throw ProgramError(fault);
    const std::unique_ptr<std::FILE, CloseFile> stream(std::fopen(file.c_str(), "rb"));
    if (!stream)
        throw ProgramError(CannotRead(file, errno));
    std::string text;
    std::array<char, 65536> part;
    size_t count = 0;
    while ((count = std::fread(part.data(), 1, part.size(), stream.get())) > 0)
        text.append(part.data(), count);
    if (std::ferror(stream.get()) != 0)
        throw ProgramError(CannotRead(file, errno));
    return text;
}

std::string FaultOfFile(const std::string& file)
{
    std::error_code unknown;
    if (std::filesystem::is_directory(file, unknown))
        return Shown(file) + " is a folder, not a file";
    return access(file.c_str(), R_OK) == 0 ? "" : CannotRead(file, errno);
}

} // namespace vistaTrim::cli
