// The defaults of options, and how help shows them.
#ifndef VISTATRIM_CLI_OPTIONS_OPTION_DEFAULTS_H
#define VISTATRIM_CLI_OPTIONS_OPTION_DEFAULTS_H

#include <string>

#include <CLI/CLI.hpp>

namespace vistaTrim::cli {

// In the words of help, the manual page and the guide; a test compares the three. "none" for
// options that then have no effect.
std::string DefaultOf(const CLI::App& command, const CLI::Option& option);

// Help that ends every description of an option that takes a value with its default.
class HelpWithDefaults : public CLI::Formatter {
public:
    std::string make_help(const CLI::App* app, std::string name,
                          CLI::AppFormatMode mode) const override;
    std::string make_option_desc(const CLI::Option* option) const override;

private:
    mutable const CLI::App* Shown = nullptr; // the command whose help is being made
};

} // namespace vistaTrim::cli

#endif
