#include "options/option_files.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

#include <unistd.h>

#include "text/shown_name.h"

namespace vistaTrim::cli {

std::string FaultOfFile(const std::string& option, const std::string& file)
{
    std::error_code unknown;
    if (std::filesystem::is_directory(file, unknown))
        return option + ": " + Shown(file) + " is a folder, not a file";
    if (access(file.c_str(), R_OK) != 0)
        return option + ": cannot read " + Shown(file) + ": " +
               std::generic_category().message(errno);
    return "";
}

} // namespace vistaTrim::cli
