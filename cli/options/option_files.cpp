#include "options/option_files.h"

#include "options/program_error.h"
#include "options/text_file.h"

namespace vistaTrim::cli {

void CheckOptionFile(const std::string& option, const std::string& file)
{
    const std::string fault = FaultOfFile(file);
    if (!fault.empty())
        throw OptionFileError(option + ": " + fault);
}

std::string ReadOptionFile(const std::string& option, const std::string& file)
{
    try {
        return ReadTextFile(file);
    } catch (const ProgramError& error) {
        throw OptionFileError(option + ": " + error.what());
    }
}

} // namespace vistaTrim::cli
