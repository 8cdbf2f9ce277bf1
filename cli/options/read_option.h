// Options with values that this program parses itself.
#ifndef VISTATRIM_CLI_OPTIONS_READ_OPTION_H
#define VISTATRIM_CLI_OPTIONS_READ_OPTION_H

#include <functional>
#include <string>

#include <CLI/CLI.hpp>

namespace vistaTrim::cli {

using Reader = std::function<bool(const std::string&)>;

// An option whose value is parsed by `read`; `form` describes a valid value in messages.
CLI::Option* AddRead(CLI::App& app, const std::string& name, const std::string& form,
                     const std::string& description, const Reader& read, bool repeatable);

// An option that takes an integer from `least` to `most`.
CLI::Option* AddInteger(CLI::App& app, const std::string& name, int least, int most,
                        const std::string& description, const std::function<void(int)>& take);

CLI::Validator NotEmpty();

} // namespace vistaTrim::cli

#endif
